#include "jobs/SequenceChecks.h"
#include "platform/Files.h"
#include "sequence/Sequence.h"

namespace {

std::vector<std::string> NamedPaths(CCabView input)
{
    std::vector<std::string> paths;
    const CCabView files = input.Cab("PreselectedFilesPaths");
    for (const std::string& key : files.Keys())
        if (auto path = PathEntry(files, key.c_str())) paths.push_back(std::move(*path));
    return paths;
}

void CheckThere(const std::string& path, CSequenceFindings& findings)
{
    if (!platform::NameExists(path))
        findings.Warning("source-missing", "The source " + path + " does not exist here.");
}

void CheckFiles(CCabView input, CSequenceFindings& findings)
{
    const auto paths = NamedPaths(input);
    if (paths.empty())
        findings.Error("no-source", "The sequence takes chosen files but names none; give the run its input.");
    for (const std::string& path : paths) CheckThere(path, findings);
}

void CheckFolder(CCabView input, CSequenceFindings& findings)
{
    if (const auto folder = PathEntry(input, "PreselectedFolderPath")) return CheckThere(*folder, findings);
    const auto paths = NamedPaths(input);
    if (paths.empty())
        return findings.Error("no-source", "The sequence takes a folder but names none; give the run its input.");
    findings.Warning("folder-source", "The sequence names the folder " + paths.front() +
                                          " as its source. A run that is started by the environment does not look "
                                          "there: set FERRULEALTPATH.");
    for (const std::string& path : paths) CheckThere(path, findings);
}

void CheckMixedSources(const Workflow& workflow, CSequenceFindings& findings)
{
    for (const WorkflowSource& source : workflow.sources)
        if (source.isFolder != workflow.sources.front().isFolder)
            return findings.Warning("mixed-sources",
                                    "Files and folders are mixed among the sources; the first one decides.");
}

}  // namespace

void CheckInput(const SequenceSource& source, const RunSurroundings& run, CSequenceFindings& findings)
{
    if (run.hasInput) return;
    if (source.workflow) CheckMixedSources(*source.workflow, findings);
    const CCabView input = source.sequence.Input();
    switch (const int kind = input.Int("FileVariation", -1)) {
        case kInputFiles:
            return CheckFiles(input, findings);
        case kInputFolder:
            return CheckFolder(input, findings);
        case kInputAskUser:
            return findings.Note("no-source", "The sequence names no input; give it to the run.");
        default:
            findings.Error("unknown-input", "There is no input kind " + std::to_string(kind) +
                                                "; give the run its input, which takes its place.");
    }
}
