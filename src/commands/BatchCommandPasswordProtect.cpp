#include "commands/BatchCommandPasswordProtect.h"

#include "base/PathNames.h"
#include "commands/PasswordProtection.h"
#include "hostcalls/Application.h"
#include "hostcalls/CabRecord.h"
#include "hostcalls/CommandErrors.h"
#include "hostcalls/HandlerRegistration.h"
#include "pdflib/AcrobatDoc.h"

namespace {

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
    : CBatchCommand(FerruleStep("QLNX_FerrulePasswordProtectCommand", "Password Protect Documents"))
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

DialogOutcome CBatchCommandPasswordProtect::ShowSettingsDialog(CCabEditor) { return DialogOutcome::Canceled; }

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
