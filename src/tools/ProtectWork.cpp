#include "tools/ProtectWork.h"

#include <string_view>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "commands/PasswordTable.h"
#include "common/Log.h"
#include "common/Progress.h"
#include "engine/InputOpening.h"
#include "engine/OutputSaving.h"
#include "hostcalls/Application.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/Jobs.h"
#include "pdflib/AcrobatDoc.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "sequence/Findings.h"
#include "sequence/StepChecks.h"

namespace {

constexpr char kCannotOpen[] = "Cannot open input document. Document can be already password protected.";
constexpr char kCannotApply[] = "Cannot apply security settings. Please check document access permissions.";
constexpr char kCannotSave[] = "An error occured while trying to save the document.";  // sic

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

std::string AsSentence(std::string reason)
{
    if (!reason.empty() && !reason.ends_with('.')) reason += '.';
    return reason;
}

}  // namespace

CProtectWork::CProtectWork(ProtectOrder order, PasswordFiles files)
    : m_order(std::move(order)), m_files(std::move(files)), m_settings(SettingsFor(m_order.method, m_order.allowed))
{
    m_settings.passwordProtect = true;
}

CProtectWork::CProtectWork(ProtectOrder order, SecuritySettings settings)
    : m_order(std::move(order)), m_settings(std::move(settings))
{
}

bool CProtectWork::WasNotOpened(const ProcessedFile& file) { return file.message.starts_with(kCannotOpen); }

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
        const auto [place, isNew] = m_table.emplace(LowerCasedName(name), password);
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

Expected<std::vector<std::string>> CProtectWork::InputPlaces(const ExecutorSettings& settings,
                                                             const std::vector<std::string>&, Asking,
                                                             CLogWriter& log) const
{
    std::vector<std::string> places = ChosenPlaces(settings);
    if (places.empty()) return Failure("No files or folders are named to protect.");
    log.NameNumber("Number of chosen files and folders", static_cast<long long>(places.size()), 1);
    return places;
}

WorkFacts CProtectWork::Facts(const PlanRequest& request) const
{
    const std::string& output = request.settings.alternativeOutputPath;
    WorkFacts facts{.noun = "protection",
                    .noInputs = "Protecting has no input files of its own.",
                    .inputsMayBeGone = true,
                    .usesOutputFolder = !m_order.inPlace,
                    .replacesInputs = m_order.inPlace,
                    .resultsPerFile = 1,
                    .warnings = m_warnings};
    if (!m_order.inPlace && output.empty()) facts.objection = "There is no output folder. Name one with --output.";
    if (!m_order.inPlace) facts.results.push_back({.folder = output});
    return facts;
}

void CProtectWork::Begin(const WorkServices& services) { m_run.emplace(services); }

ProcessedFile CProtectWork::Process(const std::string& path, int number)
{
    m_run->log.NameValue("Opening input document", path, 1);
    m_run->progress.SetOperationText(path);
    m_run->progress.SetCurrentValue(number);
    ProcessedFile file{.path = path, .input = platform::StampOf(path)};
    CAcrobatDoc document;
    if (const std::string reason = Open(document, path); !reason.empty()) {
        Fail(file, kCannotOpen, reason);
        return file;
    }
    ProtectOpen(document, file);
    if (const auto error = CatchHostError([&] { (void)document.Close(); }))
        m_run->log.NameValue("Exception occured during a document closing", error->text, 1);  // sic
    return file;
}

/// Answers why it is not open.
std::string CProtectWork::Open(CAcrobatDoc& document, const std::string& path) const
{
    std::string reason;
    if (!IsPdfPath(path)) return "Its name does not end with .pdf.";
    const auto error = CatchHostError([&] { reason = OpenInput(document, path, m_run->log); });
    return error ? error->text : reason;
}

void CProtectWork::ProtectOpen(CAcrobatDoc& document, ProcessedFile& file) const
{
    if (const auto error = CatchHostError([&] { file.loss = document.Loss(); }))
        return Fail(file, kCannotOpen, error->text);
    if (m_run->settings.acceptDamaged) file.message = std::exchange(file.loss, {});
    if (m_order.inPlace && !file.loss.empty())
        return Fail(file, kCannotSave, "The document is damaged, so its file stays as it is. " + file.loss);
    if (const std::string reason = Objection(document, file); !reason.empty())
        return Fail(file, kCannotApply, reason);
    if (const std::string reason = Apply(document, file.path); !reason.empty())
        return Fail(file, kCannotApply, reason);
    if (const std::string reason = Save(document, file); !reason.empty()) return Fail(file, kCannotSave, reason);
    m_run->log.Line("Document has been saved successfully");
    if (m_order.inPlace) file.input = platform::StampOf(file.path);
    if (file.loss.empty()) return;
    file.outcome = FileOutcome::Incomplete;
    file.message = file.loss;
}

/// Why the document is left alone; empty when it need not be.
std::string CProtectWork::Objection(const CAcrobatDoc& document, const ProcessedFile& file) const
{
    if (m_order.inPlace && platform::NameIsLink(file.path))
        return "It is a link, which would be replaced while the document stays as it is. Name the file that it leads "
               "to: " +
               platform::ResolvedPath(file.path);
    if (!m_order.breakSignatures && JobDocumentSigned(document.Document()).value_or(false))
        return "It is signed, certified or has usage rights, which would be worthless afterwards; --break-signatures "
               "protects it all the same.";
    return {};
}

std::string CProtectWork::Apply(CAcrobatDoc& document, const std::string& path) const
{
    SecuritySettings settings = m_settings;
    const std::string name = FileName(path);
    if (const auto listed = m_table.find(LowerCasedName(name)); listed != m_table.end())
        settings.password = listed->second;
    else if (!m_table.empty() && settings.password.empty())
        return "The table of passwords does not list it, and there is no open password for such files.";
    if (!HasSecurityWork(settings)) return "There is no password to protect it with.";
    std::string problem;
    const auto error =
        CatchHostError([&] { problem = ApplySecurity(document, settings, name, GetHostVersion().major); });
    return error ? error->text : problem;
}

std::string CProtectWork::Save(CAcrobatDoc& document, const ProcessedFile& file) const
{
    if (m_order.inPlace) return SaveInPlace(document, file);
    OutputSettings output;
    output.optimizePdf = false;
    const SavingInput input{file.path, AlternativeOutputFolder(m_run->settings), {}};
    SaveResult result;
    const auto error = CatchHostError([&] { result = SaveProcessed(document, output, input, m_run->log); });
    if (error) return error->text;
    if (result.status == SaveStatus::Saved) return {};
    return result.reason.empty() ? "Nothing was written." : result.reason;
}

std::string CProtectWork::SaveInPlace(CAcrobatDoc& document, const ProcessedFile& file) const
{
    const auto changed = [&] { return HasChanged(file.path, file.input); };
    const std::string why = "The file stays as it is, because " + std::string(kInputChanged) + '.';
    if (changed()) return why;
    m_run->log.NameValue("Saving output file:", file.path, 1);
    const auto error = CatchHostError([&] { document.SaveTo(file.path, 0); });
    if (!error) return {};
    return changed() ? why : error->text;
}

void CProtectWork::Fail(ProcessedFile& file, const char* failure, const std::string& reason) const
{
    m_run->log.NameValue(std::string("ERROR: ") + failure, reason, 1);
    file.outcome = FileOutcome::Failed;
    file.message = std::string(failure) + " Reason: " + AsSentence(reason);
}
