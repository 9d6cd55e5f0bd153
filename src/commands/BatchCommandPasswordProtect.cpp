#include "commands/BatchCommandPasswordProtect.h"

#include "commands/PasswordProtection.h"
#include "hostcalls/Application.h"
#include "hostcalls/CabRecord.h"
#include "pdflib/AcrobatDoc.h"

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
bool CBatchCommandPasswordProtect::ProcessDocument(PDDoc document, CCabView parameters)
{
    CAcrobatDoc wrapped(document);
    ApplySecurity(wrapped, ReadSecuritySettings(RecordFromCab(parameters)), GetHostVersion().major);
    return true;
}
