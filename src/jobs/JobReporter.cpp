#include "jobs/JobReporter.h"

#include "hostapi/JobsTable.h"
#include "hostcalls/Jobs.h"

namespace {

int JobOutcome(FileOutcome outcome)
{
    switch (outcome) {
        case FileOutcome::Saved:
            return kJobFileSaved;
        case FileOutcome::CopiedUnchanged:
            return kJobFileCopiedUnchanged;
        case FileOutcome::Incomplete:
            return kJobFileIncomplete;
        case FileOutcome::Failed:
            return kJobFileFailed;
        case FileOutcome::Skipped:
            return kJobFileSkipped;
        case FileOutcome::Stopped:
            return kJobFileStopped;
    }
    return kJobFileFailed;
}

int JobEnd(RunEnd end)
{
    switch (end) {
        case RunEnd::Finished:
            return kJobRunFinished;
        case RunEnd::NotStarted:
            return kJobRunNotStarted;
        case RunEnd::Broken:
            return kJobRunBroken;
    }
    return kJobRunBroken;
}

}  // namespace

void CJobReporter::RunStarts(int inputs) { JobRunStarts(inputs); }

void CJobReporter::SequencePreflight(bool begins)
{
    JobLogMark(begins ? kJobMarkSequencePreflightBegins : kJobMarkSequencePreflightEnds);
}

void CJobReporter::FinalActionBegins() { JobFinalActionBegins(); }

void CJobReporter::FileDone(const ProcessedFile& file)
{
    JobFileDone(file.path, JobOutcome(file.outcome), file.message);
}

void CJobReporter::RunEnds(RunEnd end, const std::string& message) { JobRunEnds(JobEnd(end), message); }
