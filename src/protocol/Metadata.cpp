#include "protocol/Metadata.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/PdfDate.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "protocol/Json.h"

namespace {

constexpr char kProperties[] = "properties";
constexpr char kEntry[] = "entry";
constexpr const char* kDateKeys[] = {"CreationDate", "ModDate"};
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

Json MetadataChangeJson(const MetadataChangeOrder& order)
{
    Json object = {
        {"entries", order.entries}, {"inPlace", order.inPlace}, {"breakSignatures", order.breakSignatures}};
    if (order.rewrite) object["rewrite"] = true;
    for (const auto& [path, entries] : order.ofDocuments) object["ofDocuments"][TextFromBytes(path)] = entries;
    return object;
}

namespace {

/// Fails with a sentence for an entry that cannot be written as asked.
Expected<std::map<std::string, std::string>> EntriesFrom(const Json& object)
{
    std::map<std::string, std::string> entries;
    for (const auto& [key, value] : object.items()) {
        if (std::string problem = KeyProblem(key); !problem.empty()) return Failure(std::move(problem));
        auto text = EntryText(key, value.is_string() ? value.get<std::string>() : std::string());
        if (!text) return Failure(text.Error());
        entries.emplace(key, std::move(*text));
    }
    return entries;
}

}  // namespace

Expected<MetadataChangeOrder> MetadataChangeFrom(const Json& object)
{
    MetadataChangeOrder order{.inPlace = FlagAt(object, "inPlace"),
                              .breakSignatures = FlagAt(object, "breakSignatures"),
                              .rewrite = FlagAt(object, "rewrite")};
    auto entries = EntriesFrom(ObjectAt(object, "entries"));
    if (!entries) return Failure(entries.Error());
    order.entries = std::move(*entries);
    for (const auto& [path, value] : ObjectAt(object, "ofDocuments").items()) {
        auto own = EntriesFrom(value.is_object() ? value : Json::object());
        if (!own) return Failure(own.Error());
        order.ofDocuments.emplace(BytesFromText(path), std::move(*own));
    }
    return order;
}

Expected<std::string> EntryText(const std::string& key, const std::string& text)
{
    if (text.find('\0') != text.npos || !IsValidUtf8(text))
        return Failure("The text of the field \"" + key + "\" holds something that is no character.");
    if (text.empty() || std::ranges::find(kDateKeys, key) == std::end(kDateKeys)) return text;
    if (auto date = PdfDateFrom(text)) return std::move(*date);
    return Failure("The field \"" + key + "\" takes a date, such as 2024-01-31 or 2024-01-31T09:30:00+01:00, and \"" +
                   text + "\" is none.");
}

Json ChangesJson(const std::vector<PropertyChange>& changes)
{
    Json array = Json::array();
    for (const PropertyChange& change : changes)
        array.push_back({{kEntry, change.key}, {"before", change.before}, {"after", change.after}});
    return array;
}

std::vector<PropertyChange> ChangesFrom(const Json& findings)
{
    std::vector<PropertyChange> changes;
    for (const Json& finding : findings)
        if (std::string key = TextAt(finding, kEntry); !key.empty())
            changes.push_back({std::move(key), TextAt(finding, "before"), TextAt(finding, "after")});
    return changes;
}
