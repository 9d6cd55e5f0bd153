#include "tools/ProtectWork.h"

#include <string_view>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "commands/PasswordTable.h"
#include "common/Log.h"
#include "hostcalls/Application.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "sequence/Findings.h"
#include "sequence/StepChecks.h"

namespace {

constexpr std::uint64_t kLongestPasswordFile = 64 * 1024;
constexpr std::uint64_t kLongestTable = 64 * 1024 * 1024;
constexpr std::uint32_t kAllRights = 0xFFFFFFFF;

/// "The open password file /x", for sentences.
std::string The(const char* what, const std::string& path) { return std::string("The ") + what + ' ' + path; }

Expected<std::string> ReadText(const char* what, const std::string& path, std::uint64_t longest)
{
    platform::FileResult read;
    auto text = platform::ReadWholeFile(path, longest, &read);
    if (text) return std::move(*text);
    return Failure(The(what, path) + " cannot be read (" + platform::ErrorText(read.errorNumber) + ").");
}

/// The text behind a byte order mark.
std::string_view WithoutMark(std::string_view text)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return text.starts_with(kMark) ? text.substr(kMark.size()) : text;
}

/// The first line; empty without a file.
Expected<std::string> ReadPassword(const char* what, const std::string& path)
{
    if (path.empty()) return std::string();
    const auto text = ReadText(what, path, kLongestPasswordFile);
    if (!text) return text;
    const std::string_view lines = WithoutMark(*text);
    std::string password(lines.substr(0, lines.find('\n')));
    if (password.ends_with('\r')) password.pop_back();
    if (!IsValidUtf8(password)) return Failure(The(what, path) + " is not written in UTF-8.");
    if (Trim(password).empty()) return Failure(The(what, path) + " holds no password in its first line.");
    return platform::NarrowFromUtf8(password);
}

/// Told of by `which`, never by its text.
void CheckLength(const std::string& which, const std::string& password, std::vector<std::string>& warnings)
{
    const std::string trimmed = Trim(password);
    if (trimmed != password) warnings.push_back("Blanks around the " + which + " password do not count.");
    if (trimmed.size() > kLongestPassword)
        warnings.push_back("Of the " + which + " password only the first " + std::to_string(kLongestPassword) +
                           " bytes count.");
}

}  // namespace

CProtectWork::CProtectWork(ProtectOrder order, PasswordFiles files)
    : CChangingWork({order.inPlace, order.breakSignatures}, kProtecting),
      m_order(std::move(order)),
      m_files(std::move(files)),
      m_settings(SettingsFor(m_order.method, m_order.allowed))
{
    m_settings.passwordProtect = true;
}

CProtectWork::CProtectWork(ProtectOrder order, SecuritySettings settings)
    : CChangingWork({order.inPlace, order.breakSignatures}, kProtecting),
      m_order(std::move(order)),
      m_settings(std::move(settings))
{
}

std::string CProtectWork::Load(CLogWriter& log)
{
    std::string problem = ReadPasswords();
    if (problem.empty()) problem = CheckPasswords();
    if (!problem.empty()) log.NameValue("Protection is rejected", problem, 1);
    return problem;
}

std::string CProtectWork::ReadPasswords()
{
    auto owner = ReadPassword(kOwnerPasswordFile, m_files.owner);
    if (!owner) return owner.Error();
    auto open = ReadPassword(kOpenPasswordFile, m_files.open);
    if (!open) return open.Error();
    m_settings.permPassword = std::move(*owner);
    m_settings.password = std::move(*open);
    if (m_files.table.empty()) return {};
    return ReadTable();
}

std::string CProtectWork::ReadTable()
{
    const std::string which = The(kPasswordTable, m_files.table);
    const auto text = ReadText(kPasswordTable, m_files.table, kLongestTable);
    if (!text) return text.Error();
    const std::string_view content = WithoutMark(*text);
    if (!IsValidUtf8(content)) return which + " is not written in UTF-8.";
    const auto pairs = PasswordTableFromText(platform::NarrowFromUtf8(content));
    if (!pairs) return which + " cannot be used. " + pairs.Error();
    if (pairs->empty()) return which + " lists no file.";
    for (const auto& [path, password] : *pairs) {
        const std::string name = FileName(path);
        const auto [place, isNew] = m_table.emplace(MatchedName(name), password);
        if (!isNew && place->second != password) return which + " has two passwords for " + name + '.';
    }
    return {};
}

/// The first sentence that keeps the run from starting. What is only to be known becomes a warning.
std::string CProtectWork::CheckPasswords()
{
    const bool restricts = PermissionWord(m_settings) != kAllRights;
    const bool opensToAll = m_settings.password.empty() && m_table.empty();
    if (opensToAll && m_settings.permPassword.empty()) return "There is no password to protect documents with.";
    if (restricts && m_settings.permPassword.empty())
        return "Rights are restricted, but there is no owner password: whoever can open a document could lift the "
               "restrictions. Give an owner password, or allow everything.";
    if (opensToAll && !restricts)
        m_warnings.emplace_back(
            "Everybody can open the results and has all rights. Say what stays allowed, or give a password to open "
            "them.");
    Protection protection;
    protection.openPassword = Trim(m_settings.password);
    protection.permissionsPassword = Trim(m_settings.permPassword);
    protection.mayGetOpenPassword = !m_table.empty();
    protection.restricts = restricts;
    protection.isRc4 = m_order.method == ProtectMethod::Rc4;
    CSequenceFindings findings;
    CheckProtection(protection, findings);
    const bool aes256 = m_order.method == ProtectMethod::Aes256;
    CheckPasswordIsTaken("owner", protection.permissionsPassword, aes256, findings);
    CheckPasswordIsTaken("open", protection.openPassword, aes256, findings);
    for (const auto& [name, password] : m_table)
        CheckPasswordIsTaken(("table's (" + name + ")").c_str(), Trim(password), aes256, findings);
    CheckLength("owner", m_settings.permPassword, m_warnings);
    CheckLength("open", m_settings.password, m_warnings);
    for (const SequenceFinding& finding : findings.All()) {
        if (finding.severity == SequenceFinding::Severity::Error) return finding.text;
        if (finding.severity == SequenceFinding::Severity::Warning) m_warnings.push_back(finding.text);
    }
    return {};
}

Expected<CChangingWork::Applied> CProtectWork::Apply(CAcrobatDoc& document, ProcessedFile& file) const
{
    SecuritySettings settings = m_settings;
    const std::string name = FileName(file.path);
    if (const auto listed = m_table.find(MatchedName(name)); listed != m_table.end())
        settings.password = listed->second;
    else if (!m_table.empty() && settings.password.empty())
        return Failure("The table of passwords does not list it, and there is no open password for such files.");
    if (!HasSecurityWork(settings)) return Failure("There is no password to protect it with.");
    std::string problem = ApplySecurity(document, settings, name, GetHostVersion().major);
    if (!problem.empty()) return Failure(std::move(problem));
    return Applied::Changed;
}
