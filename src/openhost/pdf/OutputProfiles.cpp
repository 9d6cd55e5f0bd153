#include "openhost/pdf/OutputProfiles.h"

#include <algorithm>
#include <string_view>

#include <qpdf/QPDF.hh>

#include "platform/Files.h"

namespace openhost {
namespace {

constexpr std::uint64_t kLargestFile = 64 * 1024 * 1024;
/// The header of a profile, or what decompressing and decrypting begin with.
constexpr std::size_t kSpoiled = 128;

bool StreamBeginsAt(std::string_view bytes, std::uint64_t offset)
{
    if (offset > bytes.size()) return false;
    const std::string_view before = bytes.substr(0, static_cast<std::size_t>(offset));
    return before.ends_with("stream\n") || before.ends_with("stream\r\n");
}

std::vector<std::uint64_t> ProfilesOf(QPDFObjectHandle intents)
{
    std::vector<std::uint64_t> offsets;
    for (int at = 0; intents.isArray() && at < intents.getArrayNItems(); ++at) {
        QPDFObjectHandle intent = intents.getArrayItem(at);
        QPDFObjectHandle profile = intent.isDictionary() ? intent.getKey("/DestOutputProfile") : intent;
        if (profile.isStream()) offsets.push_back(static_cast<std::uint64_t>(profile.getParsedOffset()));
    }
    return offsets;
}

}  // namespace

std::vector<std::uint64_t> OutputProfilesIn(CPdfDocument& document)
{
    try {
        std::vector<std::uint64_t> offsets = ProfilesOf(document.Library().getRoot().getKey("/OutputIntents"));
        if (offsets.empty() || platform::FileSize(document.Path()).value_or(kLargestFile + 1) > kLargestFile)
            return {};
        return offsets;
    } catch (const std::exception&) {
        return {};  // what cannot be read there costs the text nothing
    }
}

void SpoilOutputProfiles(std::string& bytes, const std::vector<std::uint64_t>& offsets)
{
    for (const std::uint64_t offset : offsets) {
        if (!StreamBeginsAt(bytes, offset)) continue;
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
        const auto left = static_cast<std::size_t>(bytes.end() - begin);
        std::fill_n(begin, std::min(kSpoiled, left), '\0');
    }
}

}  // namespace openhost
