#include "jobs/JobHost.h"

#include "hostapi/JobsTable.h"
#include "hostcalls/Jobs.h"

static_assert(static_cast<int>(Act::Put) == kJobActPut && static_cast<int>(Act::Move) == kJobActMove &&
              static_cast<int>(Act::Delete) == kJobActDelete && static_cast<int>(Act::Start) == kJobActStart);

CJobOverseer::CJobOverseer(bool pretends) : m_pretends(pretends), m_installed(JobsTablePresent())
{
    if (m_installed) m_before = InstallOverseer(this);
}

CJobOverseer::~CJobOverseer()
{
    if (m_installed) InstallOverseer(m_before);
}

COverseer::Answer CJobOverseer::Ask(Act act, const std::string& file, const std::string& target)
{
    switch (JobMayAct(static_cast<int>(act), file, target)) {
        case kJobActAllowed:
            // A host that lets a trial run act has misunderstood.
            return m_pretends ? Answer::Refuse : Answer::Go;
        case kJobActPretended:
            return Answer::Pretend;
        default:
            return Answer::Refuse;
    }
}

std::optional<bool> CJobOverseer::Exists(const std::string& path) const
{
    if (!m_pretends) return std::nullopt;
    switch (JobPathState(path)) {
        case kJobPathThere:
            return true;
        case kJobPathGone:
            return false;
        default:
            return std::nullopt;
    }
}

static_assert(static_cast<int>(FileOutcome::Saved) == kJobFileSaved &&
              static_cast<int>(FileOutcome::CopiedUnchanged) == kJobFileCopiedUnchanged &&
              static_cast<int>(FileOutcome::Incomplete) == kJobFileIncomplete &&
              static_cast<int>(FileOutcome::Failed) == kJobFileFailed &&
              static_cast<int>(FileOutcome::Skipped) == kJobFileSkipped &&
              static_cast<int>(FileOutcome::Stopped) == kJobFileStopped);
static_assert(static_cast<int>(RunEnd::Finished) == kJobRunFinished &&
              static_cast<int>(RunEnd::NotStarted) == kJobRunNotStarted &&
              static_cast<int>(RunEnd::Broken) == kJobRunBroken);

void CJobReporter::RunStarts(int inputs) { JobRunStarts(inputs); }

void CJobReporter::InputsCounted() { JobLogMark(kJobMarkInputsCounted); }

void CJobReporter::SequencePreflight(bool begins)
{
    JobLogMark(begins ? kJobMarkSequencePreflightBegins : kJobMarkSequencePreflightEnds);
}

void CJobReporter::FinalActionBegins() { JobFinalActionBegins(); }

void CJobReporter::FileDone(const ProcessedFile& file)
{
    if (!file.findings.empty()) JobFileFound(file.findings);
    JobFileDone(file.path, static_cast<int>(file.outcome), file.message);
}

void CJobReporter::RunEnds(RunEnd end, const std::string& message) { JobRunEnds(static_cast<int>(end), message); }
