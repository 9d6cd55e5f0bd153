#include "protocol/RenameOrder.h"

#include <cstdint>

#include "base/Names.h"
#include "base/Text.h"
#include "protocol/Json.h"

namespace {

constexpr int kRenameOrderVersion = 1;
constexpr std::string_view kWaitingPrefix = ".ferrule_waits_";
constexpr std::size_t kWaitingDigits = 32;

/// FNV-1a with this start: two of them are enough to tell paths of a folder apart, and a name that is taken all the
/// same is not used.
std::string Digits(std::string_view path, std::uint64_t hash)
{
    for (const char byte : path) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    return FormatText("%016llx", static_cast<unsigned long long>(hash));
}

}  // namespace

Json RenameOrderJson(const RenameOrder& order)
{
    Json object = {{"version", kRenameOrderVersion}};
    if (order.overwrite) object["overwrite"] = true;
    return object;
}

Expected<RenameOrder> RenameOrderFrom(const Json& object)
{
    if (const int version = CountAt(object, "version"); version != kRenameOrderVersion)
        return Failure("The order to rename files is written in version " + std::to_string(version) +
                       ", and only version " + std::to_string(kRenameOrderVersion) + " is known here.");
    return RenameOrder{.overwrite = FlagAt(object, "overwrite")};
}

std::string WaitingPlaceOf(const std::string& path)
{
    return FolderOf(path) + std::string(kWaitingPrefix) + Digits(path, 0xCBF29CE484222325) +
           Digits(path, 0x84222325CBF29CE4);
}

bool IsWaitingPlace(std::string_view path)
{
    const std::string name = FileName(path);
    return name.starts_with(kWaitingPrefix) && name.size() == kWaitingPrefix.size() + kWaitingDigits;
}
