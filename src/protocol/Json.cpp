#include "protocol/Json.h"

#include <charconv>
#include <limits>

#include "base/Text.h"

namespace {

const Json* Find(const Json& object, const char* key)
{
    if (!object.is_object()) return nullptr;
    const auto place = object.find(key);
    return place == object.end() ? nullptr : &*place;
}

}  // namespace

std::optional<Json> ParseObject(std::string_view text)
{
    Json value = Json::parse(text, nullptr, false);
    if (!value.is_object()) return std::nullopt;
    return value;
}

std::string LineOf(const Json& value) { return value.dump(-1, ' ', false, Json::error_handler_t::replace); }

std::string SortedLineOf(const Json& value)
{
    return nlohmann::json(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string TextAt(const Json& object, const char* key)
{
    const Json* value = Find(object, key);
    return value && value->is_string() ? value->get<std::string>() : std::string();
}

std::string BytesAt(const Json& object, const char* key) { return BytesFromText(TextAt(object, key)); }

std::int64_t IntegerAt(const Json& object, const char* key)
{
    const Json* value = Find(object, key);
    return value && value->is_number_integer() ? value->get<std::int64_t>() : 0;
}

std::uint64_t UnsignedAt(const Json& object, const char* key)
{
    const Json* value = Find(object, key);
    return value && value->is_number_unsigned() ? value->get<std::uint64_t>() : 0;
}

std::optional<std::uint64_t> MaybeUnsignedAt(const Json& object, const char* key)
{
    const Json* value = Find(object, key);
    return value && value->is_number_unsigned() ? std::optional(value->get<std::uint64_t>()) : std::nullopt;
}

std::int64_t DecimalAt(const Json& object, const char* key)
{
    const std::string decimal = TextAt(object, key);
    std::int64_t number = 0;
    (void)std::from_chars(decimal.data(), decimal.data() + decimal.size(), number);
    return number;
}

int CountAt(const Json& object, const char* key)
{
    const std::uint64_t value = UnsignedAt(object, key);
    return value > static_cast<std::uint64_t>(std::numeric_limits<int>::max()) ? 0 : static_cast<int>(value);
}

bool FlagAt(const Json& object, const char* key, bool fallback)
{
    const Json* value = Find(object, key);
    return value && value->is_boolean() ? value->get<bool>() : fallback;
}

const Json* ArrayAt(const Json& object, const char* key)
{
    const Json* value = Find(object, key);
    return value && value->is_array() ? value : nullptr;
}

std::vector<std::string> TextsAt(const Json& object, const char* key)
{
    std::vector<std::string> texts;
    const Json* values = ArrayAt(object, key);
    if (!values) return texts;
    for (const Json& text : *values)
        if (text.is_string()) texts.push_back(text.get<std::string>());
    return texts;
}

std::vector<std::string> BytesListAt(const Json& object, const char* key)
{
    std::vector<std::string> texts = TextsAt(object, key);
    for (std::string& text : texts) text = BytesFromText(text);
    return texts;
}

Json TextsOf(const std::vector<std::string>& bytes)
{
    Json texts = Json::array();
    for (const std::string& text : bytes) texts.push_back(TextFromBytes(text));
    return texts;
}

const Json& ObjectAt(const Json& object, const char* key)
{
    static const Json kEmpty = Json::object();
    const Json* value = Find(object, key);
    return value && value->is_object() ? *value : kEmpty;
}

std::string HeaderProblem(const std::string& path, const char* format, int version, const std::string& line)
{
    const auto header = ParseObject(line);
    const int found = header && TextAt(*header, "ferrule") == format ? CountAt(*header, "version") : 0;
    if (found == 0 || found == version) return path + " is no " + format + ", or it is damaged.";
    return "The " + std::string(format) + ' ' + path + " was written by " +
           (found > version ? "a newer" : "an older") + " version of Ferrule.";
}
