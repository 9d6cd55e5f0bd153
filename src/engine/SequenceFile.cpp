#include "engine/SequenceFile.h"

#include "common/Log.h"
#include "engine/WorkflowToCab.h"
#include "engine/WorkflowXml.h"
#include "hostcalls/CabFile.h"
#include "hostcalls/HostFrame.h"
#include "platform/Files.h"

#include <optional>
#include <utility>

namespace {

Expected<CSequence> LoadEitherForm(const std::string& path, CLogWriter& log)
{
    if (!platform::FileExists(path)) {
        log.NameValue("Sequence file does not existing at specified location", path, 0);  // sic
        return Failure("There is no sequence file at " + path + ".");
    }
    // Asked first because the host would wait for ever on a pipe.
    if (const platform::FileResult readable = platform::CheckReadable(path); !readable) {
        const std::string reason = platform::ErrorText(readable.errorNumber);
        log.NameValue("Error loading XML format", reason, 0);
        return Failure("The sequence file " + path + " cannot be read: " + reason + ".");
    }
    if (Expected<CCab> cab = ReadCabFile(path); cab) return CSequence(std::move(*cab));
    const Expected<Workflow> workflow = ReadWorkflowFile(path);
    if (!workflow) {
        log.NameValue("Error loading XML format", workflow.Error(), 0);
        return Failure("The sequence file " + path + " cannot be read: " + workflow.Error());
    }
    std::optional<CSequence> sequence;
    if (const auto error = CatchHostError([&] { sequence.emplace(CabFromWorkflow(*workflow)); })) {
        log.NameValue("Sequence file cannot be converted", error->text, 0);
        return Failure("The sequence file " + path + " cannot be converted: " + error->text);
    }
    log.NameValue("Sequence file is loaded from XML format", "", 1);
    return std::move(*sequence);
}

}  // namespace

Expected<CSequence> LoadSequenceFile(const std::string& path, CLogWriter& log)
{
    Expected<CSequence> sequence = LoadEitherForm(path, log);
    if (!sequence) log.NameValue("Error reading sequence file", path, 0);
    return sequence;
}
