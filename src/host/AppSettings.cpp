#include "host/AppSettings.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "common/Log.h"
#include "common/SettingsFile.h"
#include "platform/Files.h"

namespace {

constexpr std::size_t kLongestModulePath = 255;  // characters

/// Bytes that are no text count as characters.
std::string FirstCharacters(const std::string& text, std::size_t count)
{
    if (!IsValidUtf8(text)) return text.substr(0, count);
    std::size_t end = 0;
    for (; count > 0 && end < text.size(); --count) (void)NextUtf8(text, end);
    return text.substr(0, end);
}

}  // namespace

AppPaths MakeAppPaths(const std::string& moduleFile, const std::string& applicationDataFolder)
{
    AppPaths paths;
    static_cast<ProductPaths&>(paths) = MakeProductPaths(applicationDataFolder);
    paths.modulePath = UpperCasedName(FirstCharacters(moduleFile, kLongestModulePath));
    paths.helpFile = ReplaceAll(paths.modulePath, ".API", ".CHM");
    paths.helpFolder = WithTrailingSeparator(FolderOf(moduleFile) + "Ferrule" + kSeparator + "help");
    paths.logFileEnabled = true;
    return paths;
}

void CreateSettingsFolder(const AppPaths& paths) { (void)platform::CreateFolders(paths.settingsFolder); }

namespace {

constexpr char kAllowLogging[] = "AllowLogging";
constexpr char kPasswordTool[] = "PasswordProtectFiles";
constexpr char kMetadataTool[] = "EditMetadata";
constexpr char kColumnWidths[] = "ColumnWidths";
constexpr int kLeastWidth = 1, kMostWidth = 1000;  // characters

bool MayBeReplaced(SettingsFileState state)
{
    return state == SettingsFileState::Ok || state == SettingsFileState::Missing ||
           state == SettingsFileState::Damaged;  // ours, and nothing in it can be used any more
}

bool NotSaved(CLogWriter& log, const std::string& reason)
{
    log.NameValue("Settings are not saved", reason, 0);
    return false;
}

}  // namespace

AppSettings LoadAppSettings(const std::string& path)
{
    AppSettings settings;
    const SettingsFileContent file = ReadSettingsFile(path);
    if (!file.Ok()) return settings;
    settings.allowLogging = file.record.Bool(kAllowLogging, true);
    const CSettingsRecord* tool = file.record.Record(kPasswordTool);
    const CSettingsRecord* security = tool != nullptr ? tool->Record(kSecuritySettingsKey) : nullptr;
    if (security != nullptr) settings.passwordTool = ReadSecuritySettings(*security);
    if (const CSettingsRecord* metadata = file.record.Record(kMetadataTool))
        for (const auto& [column, width] : ReadMap(*metadata, kColumnWidths))
            settings.metadataWidths[column] = std::clamp(ParseDecimal(width), kLeastWidth, kMostWidth);
    return settings;
}

bool SaveAppSettings(const std::string& path, const AppSettings& settings, CLogWriter& log)
{
    SettingsFileContent file = ReadSettingsFile(path);
    if (!MayBeReplaced(file.state)) return NotSaved(log, file.problem);

    CSettingsRecord tool;
    tool.PutRecord(kSecuritySettingsKey, WriteSecuritySettings(settings.passwordTool));
    file.record.PutRecord(kPasswordTool, std::move(tool));
    TextPairs widths;
    for (const auto& [column, width] : settings.metadataWidths) widths.emplace_back(column, std::to_string(width));
    CSettingsRecord metadata;
    PutMap(metadata, kColumnWidths, widths);
    if (!widths.empty()) file.record.PutRecord(kMetadataTool, std::move(metadata));
    file.record.PutBool(kAllowLogging, settings.allowLogging);
    const platform::FileResult written = WriteSettingsFile(path, file.record);
    return written.Ok() || NotSaved(log, platform::ErrorText(written.errorNumber));
}
