#include "supervisor/watch/BatchOutcomes.h"

#include <algorithm>

#include "base/Names.h"
#include "platform/FileDigest.h"
#include "platform/Files.h"

WatchVerdict VerdictOn(const FileRecord& record, FinalAction finalAction)
{
    switch (record.outcome) {
        case FileOutcome::Saved:
            break;
        case FileOutcome::Stopped:
            return WatchVerdict::NotDone;
        case FileOutcome::Failed:
            return record.outputs.empty() ? WatchVerdict::TryAgain : WatchVerdict::Quarantine;
        case FileOutcome::CopiedUnchanged:
        case FileOutcome::Incomplete:
        case FileOutcome::Skipped:
            return WatchVerdict::Quarantine;
    }
    const bool moved = VacatesInput(finalAction) && record.finalAction &&
                       record.finalAction->state == FinalActionRecord::State::Done;
    return moved ? WatchVerdict::Gone : WatchVerdict::Done;
}

namespace {

WatchStamp StampNow(const std::string& path, const WatchStamp& fallback)
{
    const auto stamp = platform::StampOf(path);
    if (!stamp) return fallback;
    return {.size = stamp->size, .modifiedNanoseconds = stamp->modifiedNanoseconds};
}

/// What was not done because somebody has changed it or taken it away has not failed.
WatchVerdict Verdict(const SeenFile& file, const FileRecord& record, FinalAction finalAction)
{
    const WatchVerdict verdict = VerdictOn(record, finalAction);
    if (record.outcome == FileOutcome::Saved || !record.outputs.empty()) return verdict;
    if (!platform::NameExists(file.path)) return WatchVerdict::Gone;
    return StampNow(file.path, file.stamp).IsSameVersion(file.stamp) ? verdict : WatchVerdict::NotDone;
}

bool WasReplaced(const FileRecord& record)
{
    return std::ranges::any_of(record.outputs, [&](const FileOutput& output) { return output.path == record.path; });
}

}  // namespace

CBatchOutcomes::CBatchOutcomes(CWatchModel& model, const std::string& folder)
    : m_model(model),
      m_folder(WithTrailingSeparator(folder)),
      m_realFolder(WithTrailingSeparator(platform::ResolvedPath(folder)))
{
}

void CBatchOutcomes::Take(const std::vector<SeenFile>& batch,
                          const std::unordered_map<std::string, FileRecord>& records, FinalAction finalAction,
                          std::uint64_t nowMs, std::int64_t nowSeconds)
{
    for (const SeenFile& file : batch) {
        const auto record = records.find(file.path);
        if (record != records.end())
            TakeOne(file, record->second, Verdict(file, record->second, finalAction), nowMs, nowSeconds);
        else if (records.empty())  // else it would be handed out again and again
            m_kept.push_back(m_model.Failed(file, {}, "The run has not taken the file.", nowMs, nowSeconds));
    }
    // Behind the inputs: a result may stand in the place of one.
    for (const auto& [path, record] : records) TakeResults(record, nowSeconds);
}

void CBatchOutcomes::TakeOne(const SeenFile& file, const FileRecord& record, WatchVerdict verdict,
                             std::uint64_t nowMs, std::int64_t nowSeconds)
{
    const std::string reason = record.message.empty() ? OutcomePhrase(record.outcome) : record.message;
    switch (verdict) {
        case WatchVerdict::Done:
            m_kept.push_back(m_model.Done(file.path, file.stamp, record.sha256, nowSeconds));
            break;
        case WatchVerdict::Gone:
            if (m_model.IsKept(file.path)) m_gone.push_back(file.path);
            m_model.Forget(file.path);
            break;
        case WatchVerdict::TryAgain:
            m_kept.push_back(m_model.Failed(file, record.sha256, reason, nowMs, nowSeconds));
            break;
        case WatchVerdict::Quarantine:
            m_kept.push_back(
                m_model.Quarantine({file.path, WasReplaced(record) ? StampNow(file.path, file.stamp) : file.stamp},
                                   record.sha256, reason, nowSeconds));
            break;
        case WatchVerdict::NotDone:
            break;
    }
}

void CBatchOutcomes::TakeResults(const FileRecord& record, std::int64_t nowSeconds)
{
    for (const FileOutput& output : record.outputs)
        if (output.path != record.path || record.outcome == FileOutcome::Saved)
            TakeResult(output.path, output.sha256, nowSeconds);
    if (record.finalAction && record.finalAction->state == FinalActionRecord::State::Done)
        TakeResult(record.finalAction->target, record.sha256, nowSeconds);
}

/// Only what has the content of the result is the result: somebody may have put a new document in its place.
void CBatchOutcomes::TakeResult(const std::string& path, const std::string& sha256, std::int64_t nowSeconds)
{
    const std::string real = platform::ResolvedPath(path);
    if (sha256.empty() || !real.starts_with(m_realFolder)) return;
    const WatchStamp stamp = StampNow(path, {});
    if (stamp == WatchStamp() || platform::Sha256OfFile(path) != sha256) return;
    // Under the name that a look has for it.
    m_kept.push_back(m_model.Done(m_folder + real.substr(m_realFolder.size()), stamp, sha256, nowSeconds));
}
