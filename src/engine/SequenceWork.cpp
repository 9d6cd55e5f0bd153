#include "engine/SequenceWork.h"

#include "common/Log.h"
#include "engine/CommandList.h"
#include "engine/SequenceInputs.h"
#include "engine/SequencePlanning.h"
#include "hostcalls/Application.h"
#include "sequence/OutputSettings.h"
#include "sequence/SequenceFile.h"

namespace {

constexpr int kFirstSupportedMajor = 6;

}  // namespace

std::string CSequenceWork::Load(CLogWriter& log)
{
    if (!m_sequence) {
        Expected<CSequence> loaded = LoadSequenceFile(m_path, log);
        if (!loaded) return loaded.Error();
        m_sequence = std::move(*loaded);
    }
    log.NameValue("Processing batch sequence", m_path, 1);
    return {};
}

std::string CSequenceWork::Refusal(CLogWriter& log)
{
    std::string problem;
    if (GetHostVersion().major < kFirstSupportedMajor) {
        problem = "Sequences need a host of version " + std::to_string(kFirstSupportedMajor) + " or later.";
    } else if (!m_sequence->IsComplete()) {
        problem = "The sequence lacks its commands, its input or its output part.";
    }
    if (problem.empty()) {
        log.Line("Sequence information has been successfully loaded.");
    } else {
        log.NameValue("Sequence is rejected", problem, 1);
    }
    return problem;
}

std::vector<std::string> CSequenceWork::Extensions(CLogWriter& log) const
{
    return AcceptedExtensions(m_sequence->Input(), log);
}

Expected<std::vector<std::string>> CSequenceWork::InputPlaces(const ExecutorSettings& settings,
                                                              const std::vector<std::string>& extensions,
                                                              Asking asking, CLogWriter& log) const
{
    return SequencePlaces(settings, m_sequence->Input(), extensions, asking, log);
}

std::vector<std::string> CSequenceWork::FurtherInputPlaces() const
{
    const CSequenceInput input = m_sequence->Input();
    const bool listed = input.Kind() == kInputFolder && !input.NamesFolder();
    return listed ? input.Listed() : std::vector<std::string>();
}

std::vector<std::string> CSequenceWork::OwnOutputFolders() const
{
    const OutputSettings output = OutputSettings::Read(m_sequence->Output());
    // A sequence that names a destination is sent into the folder of each input.
    const bool redirected = output.namesDestination && GetHostVersion().major >= kFirstMajorWithSaveStep;
    const bool used = output.kind == kOutputFolder || output.kind == kOutputAskUser;
    if (!output.selectedFolder || !used || redirected) return {};
    return {*output.selectedFolder};
}

WorkFacts CSequenceWork::Facts(const PlanRequest& request) const
{
    WorkFacts facts = FactsOfSequence(ReadSequenceFacts(*m_sequence, GetHostVersion().major), request);
    facts.errors = SequenceErrors(m_path, request);
    return facts;
}

void CSequenceWork::Begin(const WorkServices& services)
{
    m_run.emplace(RunContext{services.settings, *m_sequence, services.log, services.progress, m_commands,
                             services.logsForWholeRun, GetHostVersion().major, services.fileCount, false});
}

ProcessedFile CSequenceWork::Process(const std::string& path, int number)
{
    CFileRun fileRun(*m_run, path, number);
    ProcessedFile file = fileRun.Process();
    m_stopReason = fileRun.StopReason();
    return file;
}

void CSequenceWork::Finish() { PostflightSequence(m_commands, m_run->log); }
