#include "jobs/JobReporter.h"

#include "hostapi/JobsTable.h"
#include "hostcalls/Jobs.h"

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
    JobFileDone(file.path, static_cast<int>(file.outcome), file.message);
}

void CJobReporter::RunEnds(RunEnd end, const std::string& message) { JobRunEnds(static_cast<int>(end), message); }
