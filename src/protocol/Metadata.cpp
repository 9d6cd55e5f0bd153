#include "protocol/Metadata.h"

#include <utility>

#include "protocol/Json.h"

namespace {

constexpr char kProperties[] = "properties";
constexpr std::size_t kLongestKey = 127;  // bytes that readers have to take of a name

}  // namespace

Json MetadataOrderJson(const MetadataOrder& order) { return {{"keys", TextsOf(order.keys)}}; }

Expected<MetadataOrder> MetadataOrderFrom(const Json& object)
{
    MetadataOrder order{.keys = BytesListAt(object, "keys")};
    for (const std::string& key : order.keys)
        if (std::string problem = KeyProblem(key); !problem.empty()) return Failure(std::move(problem));
    return order;
}

std::string KeyProblem(const std::string& key)
{
    if (key.empty()) return "A field needs a name.";
    if (key.size() > kLongestKey) return "The name of the field \"" + key + "\" is longer than readers take.";
    if (key.find_first_of("#/\0") != key.npos || key.find('\0') != key.npos)
        return "The name of the field \"" + key + "\" may hold neither \"#\" nor \"/\".";
    return {};
}

Json PropertiesJson(const std::vector<std::string>& texts) { return Json::array({{{kProperties, texts}}}); }

std::optional<std::vector<std::string>> PropertiesFrom(const Json& findings)
{
    for (const Json& finding : findings)
        if (ArrayAt(finding, kProperties)) return TextsAt(finding, kProperties);
    return std::nullopt;
}
