#include "jobs/SequencePasswords.h"

#include "common/Text.h"
#include "hostapi/HostConstants.h"

#include <algorithm>

namespace {

constexpr char kHostSecurityStep[] = "DocSecurity";

bool Contains(const std::vector<std::string>& keys, const char* key)
{
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

/// Names of any maker's parameters. A password's field in a table of data is none.
bool SoundsLikePassword(const std::string& key)
{
    const std::string name = ToLowerAscii(key);
    if (name.ends_with("field")) return false;
    for (const char* word : {"password", "passphrase", "passwd"})
        if (name.find(word) != std::string::npos) return true;
    return name.ends_with("pw");
}

/// A lookup table is a flat list in which each file name is followed by its password.
bool IsSecondOfPair(const std::string& key)
{
    return !key.empty() && key.find_first_not_of("0123456789") == std::string::npos && (key.back() - '0') % 2 == 1;
}

bool IsFilledText(CCabView cab, const char* key)
{
    switch (cab.Type(key)) {
        case kASValueText:
        case kASValueString:
            return !cab.StringOrText(key).value_or("").empty();
        case kASValueBinary:
            return !cab.Binary(key).value_or("").empty();
        case kASValueAtom:
            return true;
        default:
            return false;
    }
}

bool AnyPassword(const std::string& handler, CCabView cab, std::vector<std::string>& keys)
{
    for (const std::string& key : cab.Keys()) {
        keys.push_back(key);
        const bool found = cab.Type(key.c_str()) == kASValueCabinet
                               ? AnyPassword(handler, cab.Cab(key.c_str()), keys)
                               : IsPasswordEntry(handler, keys) && IsFilledText(cab, key.c_str());
        keys.pop_back();
        if (found) return true;
    }
    return false;
}

}  // namespace

bool IsPasswordEntry(const std::string& handler, const std::vector<std::string>& keys)
{
    if (keys.empty()) return false;
    if (SoundsLikePassword(keys.back())) return true;
    if (keys.size() > 1 && keys[keys.size() - 2] == "FileMapping") return IsSecondOfPair(keys.back());
    // What stands there is a security handler's own business, so nothing of it is told.
    return handler == kHostSecurityStep && keys.size() > 1 && Contains(keys, "SecuritySettings");
}

bool HoldsPassword(const std::string& handler, CCabView parameters)
{
    std::vector<std::string> keys;
    return AnyPassword(handler, parameters, keys);
}
