#include "search/SearchRules.h"

#include <algorithm>

#include "base/Names.h"
#include "base/Text.h"
#include "common/SettingsFile.h"
#include "platform/NarrowText.h"

namespace {

constexpr char kVerticalTab = '\v';
constexpr char kNumItems[] = "NumItems";
constexpr char kFontFilter[] = "FontFilter";
constexpr char kCustomFields[] = "CustomFields";

struct FlagRow {
    const char* key;
    bool SearchRule::*field;
};
constexpr FlagRow kFlags[] = {{"MatchCase", &SearchRule::matchCase},
                              {"WholeWords", &SearchRule::wholeWords},
                              {"CountLineEnds", &SearchRule::countLineEnds},
                              {"UseRegExp", &SearchRule::useExpression},
                              {"UseArea", &SearchRule::useArea},
                              {"ExecuteCode", &SearchRule::executeCode},
                              {"StopSearchOnMatch", &SearchRule::stopOnMatch},
                              {"CopyFile", &SearchRule::copyFile}};

struct TextRow {
    const char* key;
    std::string SearchRule::*field;
};
constexpr TextRow kTexts[] = {{"RegExp", &SearchRule::expression},       {"Format", &SearchRule::format},
                              {"Description", &SearchRule::description}, {"ActionCode", &SearchRule::actionCode},
                              {"Suffix", &SearchRule::suffix},           {"Prefix", &SearchRule::prefix}};

struct SettingRow {
    const char* key;
    bool SearchSettings::*field;
};
constexpr SettingRow kSettings[] = {{"AppendReport", &SearchSettings::appendReport},
                                    {"OverwriteReport", &SearchSettings::overwriteReport},
                                    {"CreateReport", &SearchSettings::createReport}};
constexpr char kReportFile[] = "ReportFile";
constexpr char kCopyFolder[] = "CopyFolder";
constexpr char kPageRange[] = "PageRange";
constexpr char kArea[] = "Area";
constexpr char kUserData[] = "UserData";

/// A text as UTF-8, whether it was stored narrow or wide.
std::string Utf8At(const CSettingsRecord& record, std::string_view key)
{
    const CSettingsRecord::Value* const value = record.Find(key);
    if (value && std::holds_alternative<std::string>(*value))
        return platform::Utf8FromNarrow(std::get<std::string>(*value));
    return record.AnyText(key);
}

/// The same as narrow text, as paths are.
std::string NarrowAt(const CSettingsRecord& record, std::string_view key)
{
    const CSettingsRecord::Value* const value = record.Find(key);
    if (value && std::holds_alternative<WideText>(*value))
        return platform::NarrowFromUtf8(std::get<WideText>(*value).utf8);
    return record.AnyText(key);
}

/// Narrow, unless the code page would lose something.
void PutUtf8(CSettingsRecord& record, const char* key, const std::string& utf8)
{
    const std::string narrow = platform::NarrowFromUtf8(utf8);
    if (platform::Utf8FromNarrow(narrow) == utf8) {
        record.PutString(key, narrow);
    } else {
        record.PutWide(key, utf8);
    }
}

}  // namespace

SearchRule SearchRule::Read(const CSettingsRecord& record)
{
    SearchRule rule;
    for (const FlagRow& row : kFlags) rule.*row.field = record.Bool(row.key, rule.*row.field);
    for (const TextRow& row : kTexts) rule.*row.field = Utf8At(record, row.key);
    if (const CSettingsRecord* const pages = record.Record(kPageRange)) rule.pages = PageRange::Read(*pages);
    rule.userData = record.Int(kUserData, 0);
    if (const auto* const filter = record.Find(kFontFilter)) rule.fontFilter = *filter;
    rule.area = ReadRectangle(record, kArea, {});
    rule.copyFolder = NarrowAt(record, kCopyFolder);
    if (const CSettingsRecord* const fields = record.Record(kCustomFields)) rule.customFields = *fields;
    return rule;
}

CSettingsRecord SearchRule::Write() const
{
    CSettingsRecord record;
    for (const FlagRow& row : kFlags) record.PutBool(row.key, this->*row.field);
    for (const TextRow& row : kTexts) PutUtf8(record, row.key, this->*row.field);
    std::string code = actionCode;
    std::ranges::replace(code, kVerticalTab, ' ');
    PutUtf8(record, "ActionCode", code);
    CSettingsRecord range;
    pages.Write(range);
    record.PutRecord(kPageRange, std::move(range));
    record.PutInt(kUserData, userData);
    if (fontFilter) record.PutValue(kFontFilter, *fontFilter);
    PutRectangle(record, kArea, area);
    record.PutString(kCopyFolder, copyFolder);
    if (customFields) record.PutRecord(kCustomFields, *customFields);
    return record;
}

Expected<SearchSettings> SearchSettings::Read(const CSettingsRecord& record)
{
    SearchSettings settings;
    for (const SettingRow& row : kSettings) settings.*row.field = record.Bool(row.key, settings.*row.field);
    settings.reportFile = NarrowAt(record, kReportFile);
    const int count = record.Int(kNumItems, 0);
    for (int i = 0; i < count; ++i) {
        const CSettingsRecord* const rule = record.Record(std::to_string(i));
        if (!rule) {
            return Failure(FormatText(
                "There should be %d search rules, but number %d is missing; nothing is searched.", count, i + 1));
        }
        settings.rules.push_back(SearchRule::Read(*rule));
    }
    return settings;
}

CSettingsRecord SearchSettings::Write() const
{
    CSettingsRecord record;
    record.PutInt(kNumItems, static_cast<std::int32_t>(rules.size()));
    for (std::size_t i = 0; i < rules.size(); ++i) record.PutRecord(std::to_string(i), rules[i].Write());
    for (const SettingRow& row : kSettings) record.PutBool(row.key, this->*row.field);
    record.PutString(kReportFile, reportFile);
    return record;
}

SearchSettingsReview Review(const SearchSettings& settings)
{
    SearchSettingsReview review;
    if (settings.rules.empty()) review.mistakes.push_back("Please enter at least one search term.");
    for (std::size_t i = 0; i < settings.rules.size(); ++i) {
        const SearchRule& rule = settings.rules[i];
        const std::string name = "Rule " + std::to_string(i + 1) + ": ";
        if (rule.expression.empty()) {
            review.mistakes.push_back(name + "there is nothing to search for.");
        } else if (const auto compiled = CompileItem(rule.Item()); !compiled) {
            review.mistakes.push_back(name + "Invalid search expression specified. Please check expression syntax. " +
                                      compiled.Error());
        }
        if (rule.copyFile && rule.copyFolder.empty())
            review.remarks.push_back(name + "files are to be copied, but no folder is given; nothing is copied.");
        if (rule.executeCode && Trim(rule.actionCode).empty())
            review.remarks.push_back(name + "a script is to be run, but it is empty.");
    }
    const bool reports = settings.createReport && !settings.reportFile.empty();
    if (reports && EqualsIgnoreCaseAscii(Extension(settings.reportFile), "csv"))
        review.mistakes.push_back("The report \"" + settings.reportFile +
                                  "\" has the name of its own CSV report; give it another extension, such as .txt.");
    if (reports && !settings.appendReport && !settings.overwriteReport)
        review.remarks.push_back(
            "The report is neither appended to nor overwritten: each document gets a report of its "
            "own, with a number in its name.");
    return review;
}

Expected<SearchSettings> ReadSearchSettings(const std::string& path)
{
    constexpr char kCannotRead[] = "An error occured while trying to read settings from selected file.";  // sic
    const auto refused = [&](const std::string& why) { return Failure(path + ": " + kCannotRead + ' ' + why); };
    const SettingsFileContent content = ReadSettingsFile(path);
    if (!content.Ok()) return refused(content.problem);
    if (!content.record.Known(kNumItems)) return refused("It holds other settings than those of a search.");
    auto settings = SearchSettings::Read(content.record);
    if (!settings) return refused(settings.Error());
    return settings;
}

std::string WriteSearchSettings(const std::string& path, const SearchSettings& settings)
{
    const platform::FileResult written = WriteSettingsFile(path, settings.Write());
    if (written.Ok()) return {};
    return path + ": Error saving file to disk. " + platform::ErrorText(written.errorNumber);
}
