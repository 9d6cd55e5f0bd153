#include "commands/BatchCommandPasswordProtect.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "commands/DlgSecuritySettings.h"
#include "commands/PagePassword.h"
#include "commands/SecuritySettings.h"
#include "hostcalls/Application.h"
#include "hostcalls/Cab.h"
#include "hostcalls/Commands.h"
#include "pdflib/AcrobatDoc.h"
#include "protocol/Json.h"
#include "protocol/ProtectOrder.h"
#include "sequence/Findings.h"
#include "sequence/SequenceFile.h"
#include "sequence/StepChecks.h"

namespace {

constexpr char kHandler[] = "QLNX_FerrulePasswordProtectCommand";
constexpr std::uint32_t kAllRights = 0xFFFFFFFF;

// ---- what is to be said about such a step

/// What is true of all protection by this encryption.
void CheckReadable(CSequenceFindings& findings)
{
    findings.Note("metadata-readable",
                  "The descriptive metadata of the document (title, author, keywords and the like) stay readable "
                  "without a password; its pages do not.");
}

/// All changes allowed means all rights given.
void CheckVoidRights(const SecuritySettings& settings, CSequenceFindings& findings)
{
    const bool refusesSome = !settings.canPrint || !settings.hiResPrinting || !settings.canCopy;
    if (settings.allowAll && refusesSome)
        findings.Warning("restrictions-void",
                         "The step refuses printing or copying, but these restrictions have no effect while all "
                         "changes are allowed (\"AllowAll\").");
}

void CheckTable(const SecuritySettings& settings, CSequenceFindings& findings)
{
    if (settings.useFileMapping && settings.fileMapping.empty())
        findings.Warning("empty-table", "The step is to look up passwords, but the table is empty.");
    if (!settings.useFileMapping && !settings.fileMapping.empty())
        findings.Warning("unused-table", "The step has a table of passwords but is not told to use it.");
    const auto isEmpty = [](const auto& pair) { return Trim(pair.second).empty(); };
    if (settings.useFileMapping && std::any_of(settings.fileMapping.begin(), settings.fileMapping.end(), isEmpty))
        findings.Warning(
            "no-password",
            "The table of passwords holds an empty one: the step fails for that file, which is not saved.");
}

void CheckUnusedSources(const SecuritySettings& settings, CSequenceFindings& findings)
{
    if (settings.useDataSourceForOpenPassword || settings.useDataSourceForPermissionsPassword)
        findings.Error("password-source-unused",
                       "Passwords from a data source cannot be had: the step fails for every file.");
}

void CheckPagePassword(const SecuritySettings& settings, CSequenceFindings& findings)
{
    if (!WantsPagePassword(settings)) return;
    if (const std::string problem = PagePasswordProblem(settings); !problem.empty())
        findings.Error("page-password", "The step fails for every file: " + problem);
    if (settings.extractPasswordFromPage && !settings.searchForPassword &&
        settings.extractionArea == SettingsRectangle())
        findings.Error("page-password",
                       "The step fails for every file: it takes the password from an area of a page, but the area is "
                       "empty.");
    if (!Trim(settings.password).empty())
        findings.Note("page-password",
                      "The step takes the open password from the text of pages; its own counts for no file.");
}

bool HasPassword(const SecuritySettings& settings)
{
    return !Trim(settings.password).empty() || !Trim(settings.permPassword).empty();
}

/// Why a step without work has none.
std::string WhyNothing(const SecuritySettings& settings)
{
    if (HasPassword(settings) && !settings.passwordProtect)
        return "all rights are given, and the passwords count only with \"PasswordProtect\" set to true (a boolean)";
    if (settings.useFileMapping && !settings.fileMapping.empty())
        return "all rights are given, and a table of passwords counts only beside a password for the other files and "
               "with \"PasswordProtect\" set to true";
    return "it has neither passwords nor restrictions";
}

/// Restrictions bring the passwords into force, too.
void CheckFlag(const SecuritySettings& settings, CSequenceFindings& findings)
{
    if (settings.passwordProtect || WantsPagePassword(settings) || !HasPassword(settings)) return;
    findings.Note("passwords-count",
                  "\"PasswordProtect\" is not true, but the passwords count nevertheless, because the step restricts "
                  "rights.");
}

/// What is cut from a password. Told of it by `which`, never by its text.
void CheckPasswordText(const char* which, const std::string& password, CSequenceFindings& findings)
{
    const std::string trimmed = Trim(password);
    if (trimmed.size() != password.size())
        findings.Warning("password-trimmed", std::string("Blanks around the ") + which + " password do not count.");
    if (trimmed.size() > kLongestPassword)
        findings.Warning("password-cut", std::string("Of the ") + which + " password only the first " +
                                             std::to_string(kLongestPassword) + " bytes count.");
}

void CheckProtectStep(const SequenceStep& step, CSequenceFindings& findings)
{
    const CSettingsRecord record = RecordFromCab(step.parameters);
    const SecuritySettings settings = ReadSecuritySettings(record);
    CheckUnusedSources(settings, findings);
    if (record.Empty() || !HasSecurityWork(settings))
        return findings.Warning("protects-nothing", "The step protects nothing: " + WhyNothing(settings) + ".");
    CheckFlag(settings, findings);
    if (settings.encryptionMethod < 0 || settings.encryptionMethod > 3)
        findings.Error("parameter-value", "There is no encryption method " +
                                              std::to_string(settings.encryptionMethod) +
                                              "; use 3 for AES with 256 bits.");
    if (settings.encryptionMethod == 0)
        findings.Note("encryption-default", "The host chooses the encryption; use method 3 for AES with 256 bits.");
    Protection protection;
    protection.openPassword = Trim(settings.password);
    protection.permissionsPassword = Trim(settings.permPassword);
    protection.mayGetOpenPassword =
        WantsPagePassword(settings) || (settings.useFileMapping && !settings.fileMapping.empty());
    protection.restricts = PermissionWord(settings) != kAllRights;
    protection.isRc4 = settings.encryptionMethod == 1;
    CheckProtection(protection, findings);
    CheckPasswordText("open", record.AnyText("Password"), findings);
    CheckPasswordText("permissions", record.AnyText("PermPassword"), findings);
    const bool aes256 = settings.encryptionMethod == 3;
    CheckPasswordIsTaken("open", protection.openPassword, aes256, findings);
    CheckPasswordIsTaken("permissions", protection.permissionsPassword, aes256, findings);
    if (!protection.isRc4) CheckReadable(findings);
    CheckVoidRights(settings, findings);
    CheckTable(settings, findings);
    CheckPagePassword(settings, findings);
}

// ---- such a step made from words

/// The parameter of each right.
constexpr std::pair<DocumentRight, const char*> kRights[] = {
    {DocumentRight::Print, "CanPrint"},         {DocumentRight::PrintHigh, "HiResPrinting"},
    {DocumentRight::Copy, "CanCopy"},           {DocumentRight::Edit, "CanEdit"},
    {DocumentRight::Annotate, "CanEditNotes"},  {DocumentRight::FillForms, "CanFillForms"},
    {DocumentRight::Assemble, "CanAssemble"},   {DocumentRight::Templates, "CanCreateTemplates"},
    {DocumentRight::Extract, "CanExtractPages"}};

Expected<ProtectMethod> MethodToUse(const std::string& word)
{
    if (word.empty()) return ProtectMethod::Aes256;
    if (const auto method = FindProtectMethod(word)) return *method;
    return Failure("There is no encryption method \"" + word + "\"; choose \"aes256\", \"aes128\" or \"rc4\".");
}

/// The rights to give; all of them when none are named.
Expected<DocumentRights> RightsToGive(const Json& protect)
{
    if (!protect.contains("allow")) return AllDocumentRights();
    return DocumentRightsFrom(BytesListAt(protect, "allow"));
}

Expected<WorkflowCommand> ProtectStepFromWords(const Json& protect)
{
    const std::string user = BytesAt(protect, "userPassword"), owner = BytesAt(protect, "ownerPassword");
    if (Trim(user).empty() && Trim(owner).empty())
        return Failure("Give a password to open the documents, one for their permissions, or both.");
    const auto method = MethodToUse(BytesAt(protect, "method"));
    if (!method) return Failure(method.Error());
    const auto rights = RightsToGive(protect);
    if (!rights) return Failure(rights.Error());
    WorkflowCommand command{kHandler, "Protect", {}, "", ""};
    CSettingsRecord& items = command.parameters;
    items.PutBool("AllowAll", false);
    for (const auto& [right, parameter] : kRights) items.PutBool(parameter, rights->contains(right));
    items.PutInt("EncryptionMethod", EncryptionCode(*method));
    items.PutBool("PasswordProtect", true);
    if (!user.empty()) items.PutWide("Password", user);
    if (!owner.empty()) items.PutWide("PermPassword", owner);
    return command;
}

// ---- the description

const StepDescription& Description()
{
    static const std::vector<OpenParameter> open = OpenSecurityParameters();
    static const StepDescription description{.handler = kHandler,
                                             .protects = true,
                                             .open = open,
                                             .check = CheckProtectStep,
                                             .fromWords = {"protect", ProtectStepFromWords}};
    return description;
}

// ---- the work

/// A document that was made from another file has no name yet: the table may list that file or the PDF to be.
std::string NameForLookup(const CAcrobatDoc& document, const SecuritySettings& settings, AVCommand command)
{
    std::string name = FileName(document.CurrentFile());
    if (!name.empty() || !settings.useFileMapping) return name;
    name = CommandInputName(command);
    return FindMappedPassword(settings, name) ? name : SplitPath(name).base + ".pdf";
}

}  // namespace

CBatchCommandPasswordProtect::CBatchCommandPasswordProtect()
    : CBatchCommand(FerruleStep(Description(), "Password Protect Documents"))
{
}

void CBatchCommandPasswordProtect::SetDefaultParameters(CCabEditor parameters)
{
    parameters.MakeEmpty();
    parameters.CopyFrom(CabFromRecord(WriteSecuritySettings({})).View());
}

std::vector<std::string> CBatchCommandPasswordProtect::DescribeParameters(CCabView parameters) const
{
    // Kept: both lines test the open password.
    if (ReadSecuritySettings(RecordFromCab(parameters)).password.empty()) {
        return {"No document opening password specified", "No document access password specified"};
    }
    return {"Require a password to open the document", "Restrict editing or printing of the document"};
}

DialogOutcome CBatchCommandPasswordProtect::ShowSettingsDialog(CCabEditor parameters, const DialogServices& dialogs)
{
    CDlgSecuritySettings dialog(dialogs, ReadSecuritySettings(RecordFromCab(parameters)),
                                "The passwords become part of the sequence, in clear: whoever can read its file can "
                                "read them.");
    if (!dialog.Show()) return DialogOutcome::Cancelled;
    parameters.CopyFrom(CabFromRecord(WriteSecuritySettings(dialog.Settings())).View());
    return DialogOutcome::Confirmed;
}

// A host error goes up: the command must not end as done when the document could not be secured.
bool CBatchCommandPasswordProtect::ProcessDocument(const CommandTarget& target, CCabView parameters)
{
    CAcrobatDoc document(target.document);
    const SecuritySettings settings = ReadSecuritySettings(RecordFromCab(parameters));
    const std::string name = NameForLookup(document, settings, target.command);
    const std::string problem = ApplySecurity(document, settings, name, GetHostVersion().major);
    if (!problem.empty()) RememberCommandError(target.command, problem);
    return problem.empty();
}
