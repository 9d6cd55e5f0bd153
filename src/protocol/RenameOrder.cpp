#include "protocol/RenameOrder.h"

#include <cstdint>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "protocol/Json.h"

namespace {

constexpr int kRenameOrderVersion = 1;
constexpr char kNewName[] = "newName";
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
    if (order.scriptSeconds != kScriptSeconds) object["scriptSeconds"] = order.scriptSeconds;
    return object;
}

Expected<RenameOrder> RenameOrderFrom(const Json& object)
{
    if (const int version = CountAt(object, "version"); version != kRenameOrderVersion)
        return Failure("The order to rename files is written in version " + std::to_string(version) +
                       ", and only version " + std::to_string(kRenameOrderVersion) + " is known here.");
    RenameOrder order{.overwrite = FlagAt(object, "overwrite")};
    if (const int seconds = CountAt(object, "scriptSeconds"); seconds > 0) order.scriptSeconds = seconds;
    return order;
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

Json NamingOrderJson(const NamingOrder& order)
{
    Json object = {
        {"name", order.name}, {"textCase", order.textCase}, {"longest", order.longest}, {"rules", Json::array()}};
    for (const NamingOrder::Rule& rule : order.rules)
        object["rules"].push_back(
            {{"search", rule.search}, {"replace", rule.replace}, {"expression", rule.isExpression}});
    return object;
}

NamingOrder NamingOrderFrom(const Json& object)
{
    NamingOrder order{.name = TextAt(object, "name"),
                      .textCase = CountAt(object, "textCase"),
                      .longest = CountAt(object, "longest")};
    if (const Json* const rules = ArrayAt(object, "rules"))
        for (const Json& rule : *rules)
            order.rules.push_back({TextAt(rule, "search"), TextAt(rule, "replace"), FlagAt(rule, "expression")});
    return order;
}

Json NewNameJson(const NewName& name)
{
    return Json::array({{{kNewName, name.name}, {"overwrite", name.overwrite}}});
}

std::optional<NewName> NewNameFrom(const Json& findings)
{
    for (const Json& finding : findings)
        if (std::string name = TextAt(finding, kNewName); !name.empty())
            return NewName{std::move(name), FlagAt(finding, "overwrite")};
    return std::nullopt;
}
