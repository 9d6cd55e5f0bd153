#include "naming/RenameSettings.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <utility>

#include "base/Text.h"
#include "common/SettingsFile.h"
#include "platform/NarrowText.h"

namespace {

constexpr char kPart[] = "NamePart";
constexpr std::string_view kRule = "Rule";
constexpr char kNumRules[] = "NumRenameRules";

struct SettingRow {
    const char* key;
    bool RenameSettings::*field;
};
constexpr SettingRow kSettingFlags[] = {{"MoveOnSuccess", &RenameSettings::moveOnSuccess},
                                        {"OverwriteExisting", &RenameSettings::overwriteExisting},
                                        {"UseReplaceRules", &RenameSettings::useReplaceRules},
                                        {"ExecuteScript", &RenameSettings::executeScript}};

/// The rules with a number below the count, in the order of their numbers; what is missing is left out. Goes by what
/// the record holds: a count of two thousand million costs nothing.
std::vector<CFileRenameRule> RulesOf(const CSettingsRecord& record)
{
    const int count = record.Int(kNumRules, 0);
    std::map<int, const CSettingsRecord*> found;
    for (const CSettingsRecord::Entry& entry : record.Entries()) {
        if (!entry.key.starts_with(kRule)) continue;
        const std::string digits = entry.key.substr(kRule.size());
        int number = -1;
        (void)std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (std::to_string(number) != digits || number < 0 || number >= count) continue;
        if (const CSettingsRecord* const rule = record.Record(entry.key)) found[number] = rule;
    }
    std::vector<CFileRenameRule> rules;
    for (const auto& [number, rule] : found) rules.push_back(CFileRenameRule::Read(*rule));
    return rules;
}

}  // namespace

Expected<RenameSettings> RenameSettings::Read(const CSettingsRecord& record)
{
    RenameSettings settings;
    for (const SettingRow& row : kSettingFlags) settings.*row.field = record.Bool(row.key, false);
    settings.outputFolder = record.Known("OutputFolder") ? platform::Utf8FromNarrow(record.String("OutputFolder"))
                                                         : record.Wide("OutputFolderW");
    settings.textCase = static_cast<NameCase>(record.Int("TextCase", 0));
    settings.maxFilename = record.Int("MaxFilename", settings.maxFilename);
    settings.script = platform::Utf8FromNarrow(record.String("Script"));
    settings.rules = RulesOf(record);
    for (int i = 0;; ++i) {
        const CSettingsRecord* const stored = record.Record(kPart + std::to_string(i));
        if (!stored) break;
        auto part = CFileNamePart::Read(*stored);
        // Names of only some components would be other names than those asked for.
        if (!part) return Failure(FormatText("Filename component %d: ", i + 1) + part.Error());
        settings.components.push_back(std::move(*part));
    }
    if (settings.components.empty()) return Failure("It holds no filename components.");
    return settings;
}

CSettingsRecord RenameSettings::Write() const
{
    CSettingsRecord record;
    for (std::size_t i = 0; i < components.size(); ++i)
        record.PutRecord(kPart + std::to_string(i), components[i].Write());
    record.PutBool("MoveOnSuccess", moveOnSuccess);
    record.PutWide("OutputFolderW", outputFolder);
    record.PutInt("TextCase", static_cast<std::int32_t>(textCase));
    record.PutBool("OverwriteExisting", overwriteExisting);
    record.PutInt("MaxFilename", maxFilename);
    record.PutBool("UseReplaceRules", useReplaceRules);
    record.PutBool("ExecuteScript", executeScript);
    record.PutString("Script", platform::NarrowFromUtf8(script));
    record.PutInt(kNumRules, static_cast<std::int32_t>(rules.size()));
    for (std::size_t i = 0; i < rules.size(); ++i)
        record.PutRecord(std::string(kRule) + std::to_string(i), rules[i].Write());
    return record;
}

std::string RenameSettings::Description() const
{
    std::string text = "Settings Description:\n";
    text += FormatText("Maximum file name length: %d (characters)\n", maxFilename);
    text += FormatText("Number of filenaming components: %d\n", static_cast<int>(components.size()));
    int number = 0;
    for (const CFileNamePart& part : components) text += FormatText("   %d: ", ++number) + part.Description() + '\n';
    if (rules.empty()) return text;
    text += FormatText("Number of search and replace rules: %d\n", static_cast<int>(rules.size()));
    number = 0;
    for (const CFileRenameRule& rule : rules) text += FormatText("   %d: ", ++number) + rule.Description() + '\n';
    return text;
}

Expected<RenameSettings> ReadRenameSettings(const std::string& path)
{
    constexpr char kCannotRead[] = "An error occured while trying to read settings from selected file.";  // sic
    const SettingsFileContent content = ReadSettingsFile(path);
    auto settings =
        content.Ok() ? RenameSettings::Read(content.record) : Expected<RenameSettings>(Failure(content.problem));
    if (!settings) return Failure(path + ": " + kCannotRead + ' ' + settings.Error());
    return settings;
}

std::string WriteRenameSettings(const std::string& path, const RenameSettings& settings)
{
    const platform::FileResult written = WriteSettingsFile(path, settings.Write());
    if (written.Ok()) return {};
    return path + ": Error saving file to disk. " + platform::ErrorText(written.errorNumber);
}
