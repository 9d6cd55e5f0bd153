#include "commands/BatchCommandProcessExternal.h"

#include "base/Names.h"
#include "base/Text.h"
#include "common/Log.h"
#include "hostcalls/HostFrame.h"
#include "pdflib/AcrobatDoc.h"
#include "platform/Files.h"
#include "platform/Programs.h"
#include "sequence/StepChecks.h"
#include "sequence/StepDescription.h"

namespace {

constexpr char kProgram[] = "File";
constexpr char kCommandLine[] = "CommandLine";  // kept with the parameters, used by nothing

const OpenParameter kOfStep[] = {{kProgram}};
const StepDescription kStartExternal{
    .handler = "QLNX_FerruleProcessWithExternalAppCommand",
    .startsPrograms = true,
    .open = kOfStep,
    .check = [](const SequenceStep& step, CSequenceFindings& findings) { CheckNamedFile(step, kProgram, findings); }};

/// The file itself and not a program of that name somewhere in the search path.
std::string ThisVeryFile(const std::string& path)
{
    return FolderOf(path).empty() ? std::string(".") + kSeparator + path : path;
}

}  // namespace

CBatchCommandProcessExternal::CBatchCommandProcessExternal(CLogWriter& log)
    : CBatchCommand(FerruleStep(kStartExternal, "Start External Application")), m_log(log)
{
}

void CBatchCommandProcessExternal::SetDefaultParameters(CCabEditor parameters)
{
    parameters.MakeEmpty();
    parameters.PutString(kProgram, {});
    parameters.PutString(kCommandLine, {});
}

std::vector<std::string> CBatchCommandProcessExternal::DescribeParameters(CCabView parameters) const
{
    return {ReplaceAll("Application To Start: %s", "%s", parameters.StringOrText(kProgram).value_or(""))};
}

// The default extension is the one of the catalog's indexes.
DialogOutcome CBatchCommandProcessExternal::ShowSettingsDialog(CCabEditor parameters, const DialogServices& dialogs)
{
    return ChooseFileParameter(parameters, kProgram, dialogs,
                               {.filter = "Application (*.exe)|*.exe|Batch File (*.bat)|*.bat|All Files (*.*)|*.*||",
                                .defaultExtension = "pdx"});
}

bool CBatchCommandProcessExternal::ProcessDocument(const CommandTarget& target, CCabView parameters)
{
    // A host error ends the step for this document and nothing more.
    (void)CatchHostError([&] {
        const std::string program = parameters.StringOrText(kProgram).value_or("");
        const std::string documentPath = CAcrobatDoc(target.document).CurrentFile();
        if (!platform::FileExists(program)) return;
        // A document that is not in a file yet, as after a conversion, has nothing to hand over.
        const bool started =
            !documentPath.empty() &&
            platform::OpenWithShell('"' + ThisVeryFile(program) + '"', documentPath, platform::ShellArgument::AsItIs);
        m_log.NameValue(started ? "External application started" : "Could not start external application", program,
                        3);
    });
    return true;
}
