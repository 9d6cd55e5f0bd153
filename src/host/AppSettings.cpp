#include "host/AppSettings.h"

#include "common/Log.h"
#include "common/SettingsFile.h"

#include <utility>

namespace {

constexpr char kAllowLogging[] = "AllowLogging";
constexpr char kPasswordTool[] = "PasswordProtectFiles";

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
    return settings;
}

bool SaveAppSettings(const std::string& path, const AppSettings& settings, CLogWriter& log)
{
    SettingsFileContent file = ReadSettingsFile(path);
    if (!MayBeReplaced(file.state)) return NotSaved(log, file.problem);

    CSettingsRecord tool;
    tool.PutRecord(kSecuritySettingsKey, WriteSecuritySettings(settings.passwordTool));
    file.record.PutRecord(kPasswordTool, std::move(tool));
    file.record.PutBool(kAllowLogging, settings.allowLogging);
    const platform::FileResult written = WriteSettingsFile(path, file.record);
    return written.Ok() || NotSaved(log, platform::ErrorText(written.errorNumber));
}
