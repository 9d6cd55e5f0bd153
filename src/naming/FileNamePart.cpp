#include "naming/FileNamePart.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "platform/NarrowText.h"

namespace {

constexpr char kMode[] = "FileConstructionMode";
constexpr char kCustomTextNarrow[] = "CustomText";
constexpr char kCustomTextWide[] = "CustomTextW";
constexpr char kTableText[] = "LookupTableText";
constexpr char kTableMap[] = "LookupTable";
constexpr char kSearchQuery[] = "SearchQuery";
constexpr char kChildren[] = "Childs";
constexpr char kNumChildren[] = "NumChilds";

struct NumberRow {
    const char* key;
    std::int32_t CFileNamePart::*field;
};
constexpr NumberRow kNumbers[] = {{"StartingNumber", &CFileNamePart::startingNumber},
                                  {"PageNumber", &CFileNamePart::pageNumber},
                                  {"IncrementBy", &CFileNamePart::increment},
                                  {"NumPadWithZeroes", &CFileNamePart::padWithZeroes}};

struct FlagRow {
    const char* key;
    bool CFileNamePart::*field;
};
constexpr FlagRow kFlags[] = {{"AddSpaceInFront", &CFileNamePart::addSpaceInFront},
                              {"ReplaceMissingValues", &CFileNamePart::replaceMissingValues},
                              {"SearchAndReplaceBeforeLookup", &CFileNamePart::replaceBeforeLookup}};

struct TextRow {
    const char* key;
    std::string CFileNamePart::*field;
};
constexpr TextRow kTexts[] = {{"MissingValuesText", &CFileNamePart::missingValueText},
                              {"SearchRegexBeforeLookup", &CFileNamePart::searchBeforeLookup},
                              {"ReplaceRegexBeforeLookup", &CFileNamePart::replacementBeforeLookup}};

struct EdgeRow {
    const char* key;
    double SettingsRectangle::*field;
};
constexpr EdgeRow kEdges[] = {{"PageRectLeft", &SettingsRectangle::left},
                              {"PageRectRight", &SettingsRectangle::right},
                              {"PageRectTop", &SettingsRectangle::top},
                              {"PageRectBottom", &SettingsRectangle::bottom}};

/// A text as UTF-8, whether it was stored narrow or wide.
std::string Utf8Of(const CSettingsRecord& record, std::string_view key)
{
    const CSettingsRecord::Value* const value = record.Find(key);
    if (value && std::holds_alternative<std::string>(*value))
        return platform::Utf8FromNarrow(std::get<std::string>(*value));
    return record.AnyText(key);
}

LookupTable TableOf(const CSettingsRecord& record)
{
    if (record.Known(kTableText)) return LookupTableFromText(Utf8Of(record, kTableText));
    LookupTable table;
    for (const auto& [key, value] : ReadMap(record, kTableMap)) table.insert_or_assign(key, value);
    return table;
}

std::string WithPrefix(const std::string& prefix, const std::string& text)
{
    return text.starts_with(prefix) ? text : prefix + text;
}

}  // namespace

Expected<std::vector<CFileNamePart>> CFileNamePart::ReadChildren(const CSettingsRecord& record, int depth)
{
    std::vector<CFileNamePart> children;
    const CSettingsRecord* const list = record.Record(kChildren);
    const int count = list ? list->Int(kNumChildren, 0) : 0;
    for (int i = 0; i < count; ++i) {
        // A number of children that the record does not hold must not cost time.
        const CSettingsRecord* const child = list->Record(std::to_string(i));
        if (!child) return Failure(FormatText("Part %d of %d of a replaced text is missing.", i + 1, count));
        auto part = ReadAt(*child, depth + 1);
        if (!part) return Failure(part.Error());
        children.push_back(std::move(*part));
    }
    return children;
}

Expected<CFileNamePart> CFileNamePart::ReadAt(const CSettingsRecord& record, int depth)
{
    if (depth > kMaxNamePartDepth)
        return Failure(FormatText("Filename components are nested more than %d deep.", kMaxNamePartDepth));
    CFileNamePart part;
    part.kind = static_cast<NamePartKind>(record.Int(kMode, 0));
    for (const EdgeRow& row : kEdges) part.area.*row.field = record.Double(row.key, 0);
    for (const NumberRow& row : kNumbers) part.*row.field = record.Int(row.key, part.*row.field);
    for (const FlagRow& row : kFlags) part.*row.field = record.Bool(row.key, false);
    for (const TextRow& row : kTexts) part.*row.field = Utf8Of(record, row.key);
    part.customText = Utf8Of(record, record.Known(kCustomTextNarrow) ? kCustomTextNarrow : kCustomTextWide);
    part.lookupTable = TableOf(record);
    if (const CSettingsRecord* const query = record.Record(kSearchQuery)) part.searchQuery = SearchRule::Read(*query);
    auto children = ReadChildren(record, depth);
    if (!children) return Failure(children.Error());
    part.children = std::move(*children);
    return part;
}

Expected<CFileNamePart> CFileNamePart::Read(const CSettingsRecord& record) { return ReadAt(record, 1); }

CSettingsRecord CFileNamePart::Write() const
{
    CSettingsRecord record;
    record.PutInt(kMode, static_cast<std::int32_t>(kind));
    for (const EdgeRow& row : kEdges) record.PutDouble(row.key, area.*row.field);
    for (const NumberRow& row : kNumbers) record.PutInt(row.key, this->*row.field);
    for (const FlagRow& row : kFlags) record.PutBool(row.key, this->*row.field);
    for (const TextRow& row : kTexts) record.PutWide(row.key, this->*row.field);
    record.PutWide(kCustomTextWide, customText);
    record.PutWide(kTableText, LookupTableText(lookupTable));
    record.PutRecord(kSearchQuery, searchQuery.Write());
    CSettingsRecord list;
    list.PutInt(kNumChildren, static_cast<std::int32_t>(children.size()));
    for (std::size_t i = 0; i < children.size(); ++i) list.PutRecord(std::to_string(i), children[i].Write());
    record.PutRecord(kChildren, std::move(list));
    return record;
}

std::string CFileNamePart::Description() const
{
    // Any number may stand in a file; the next page of the last one is no int.
    const long long page = static_cast<long long>(pageNumber) + 1;
    const std::string from = FormatText(" (from page %lld)", page);
    switch (kind) {
        case NamePartKind::Number:
            return FormatText("Add incrementing number from %d (increment by %d)", startingNumber, increment);
        case NamePartKind::Letter:
            return "Add auto-incrementing letter";
        case NamePartKind::PageRange:
            return "Add page range";
        case NamePartKind::PageLabel:
            return "Add page label";
        case NamePartKind::AreaText:
            return FormatText("Add text from page %lld (%3.1f,%3.1f,%3.1f,%3.1f)", page, area.left, area.top,
                              area.right, area.bottom);
        case NamePartKind::FoundText:
            return "Add text by search: " + searchQuery.expression + from;
        case NamePartKind::CustomText:
            return WithPrefix("Custom Text: ", customText);
        case NamePartKind::OriginalName:
            return "Add original filename";
        case NamePartKind::RuleText:
            return "Rule: " + (searchQuery.description.empty() ? searchQuery.expression : searchQuery.description) +
                   from;
        case NamePartKind::Lookup: {
            std::string key;
            for (const CFileNamePart& child : children) key += (key.empty() ? "" : ", ") + child.Description();
            return "Replace " + key +
                   FormatText(" using lookup table (%d entries)", static_cast<int>(lookupTable.size()));
        }
    }
    return "Unknown";
}
