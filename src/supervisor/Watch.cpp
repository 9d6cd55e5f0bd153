#include "supervisor/Watch.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <unordered_map>
#include <utility>

#include "base/Names.h"
#include "base/Sha256.h"
#include "base/Text.h"
#include "platform/AtomicFile.h"
#include "platform/Clock.h"
#include "platform/FileDigest.h"
#include "platform/Files.h"
#include "platform/HeldFiles.h"
#include "platform/ThisProcess.h"
#include "protocol/Json.h"
#include "protocol/RunReach.h"
#include "supervisor/RunArchive.h"
#include "supervisor/RunFolder.h"
#include "supervisor/Supervisor.h"
#include "supervisor/journal/Journal.h"
#include "supervisor/journal/LineReader.h"
#include "supervisor/journal/Manifest.h"
#include "supervisor/resume/CleanUp.h"
#include "supervisor/watch/BatchOutcomes.h"
#include "supervisor/watch/FolderLook.h"
#include "supervisor/watch/WatchJournal.h"

namespace {

constexpr std::size_t kFilesOfBatch = 200;  // a stop or a crash leaves no more than so many to be gone on with
constexpr std::uint64_t kShortestRestMs = 1000, kRestPerLook = 10;
constexpr std::uint64_t kFirstPauseMs = 5000, kLongestPauseMs = 300'000, kSlice = 100;
constexpr std::uint64_t kHouseKeepingMs = 24ULL * 60 * 60 * 1000;
constexpr std::int64_t kRemembered = 30LL * 24 * 60 * 60;  // seconds
constexpr std::size_t kWatchKeyLength = 32;

using Records = std::unordered_map<std::string, FileRecord>;

std::int64_t SecondsNow() { return platform::NanosecondsSince1970() / 1'000'000'000; }

/// Passes on what is told of a batch, and keeps the outcomes: also those of earlier starts, which only the record
/// has.
class CBatchObserver final : public CRunObserver {
public:
    explicit CBatchObserver(CRunObserver& observer) : m_observer(observer) {}

    void FileDone(const FileRecord& record, const RunProgress& progress) override
    {
        if (record.outcome == FileOutcome::Saved) ++saved;
        m_observer.FileDone(record, progress);
    }
    void RecordLine(const std::string& json) override
    {
        const auto object = ParseObject(json);
        if (auto record = object ? FileRecordFrom(*object) : std::nullopt) records[record->path] = std::move(*record);
    }
    void Remark(const std::string& text) override { m_observer.Remark(text); }
    void Warning(const std::string& text) override { m_observer.Warning(text); }

    Records records;
    std::uint64_t saved = 0;  // by this start

private:
    CRunObserver& m_observer;
};

/// The outcomes that a journal of a batch has, for a batch that cannot be gone on with.
class CDoneRecords final : public CJournalVisitor {
public:
    std::string OnIntent(Intent) override { return {}; }
    std::string OnDone(const FileRecord& record, std::uint64_t) override
    {
        records[record.path] = record;
        return {};
    }
    std::string OnAgain(int, ToDo) override { return {}; }
    std::string OnEnd(const std::string&, std::vector<std::string>) override { return {}; }

    Records records;
};

class CWatch {
public:
    CWatch(const WatchOptions& options, CWatchObserver& observer)
        : m_options(options),
          m_observer(observer),
          m_watched(options.request.inputs.front()),
          m_home(WatchFolder(m_watched)),
          m_model(options.rules),
          m_journal(m_home + "watch.jsonl")
    {
        platform::CountInterrupts();
        m_interruptsSeen = platform::Interrupts();
        m_look.folder = m_watched;
        m_look.extensions = ExtensionList(options.request.extensions);
        m_look.subfolders = !options.request.noSubfolders;
        // A folder that is the watched one itself is not left out: its results are known by their names.
        const RunDescription& request = options.request;
        for (const std::string& folder : {request.outputFolder, request.keepOriginals, options.recordsFolder,
                                          WantsFolder(request.finalAction) ? request.destination : std::string()})
            if (!folder.empty() && platform::ResolvedPath(folder) != platform::ResolvedPath(m_watched))
                m_look.leftOut.push_back(folder);
        for (const std::string& file : {options.logPath, options.quarantinePath})
            if (!file.empty()) m_look.leftOut.push_back(file);
        for (const WorkFile& file : request.work.files) m_look.leftOut.push_back(file.path);
        m_result.quarantinePath =
            options.quarantinePath.empty() ? m_home + "quarantine.jsonl" : options.quarantinePath;
    }

    WatchResult Run()
    {
        if (m_options.dryRun)
            Try();
        else if (Prepare())
            Loop();
        m_result.quarantined = m_model.Quarantined().size();
        m_result.leftOpen = m_options.dryRun ? 0 : m_journal.OpenBatch().size();
        m_result.waiting = m_model.Waiting() - std::min(m_model.Waiting(), m_result.leftOpen);
        return std::move(m_result);
    }

private:
    // ---- beginning

    bool Broken(std::string message)
    {
        m_result.exit = ExitClass::Broken;
        m_result.message = std::move(message);
        return false;
    }

    bool Prepare()
    {
        if (const auto made = platform::CreateFolders(m_home); !made)
            return Broken("The folder " + m_home + " cannot be made (" + platform::ErrorText(made.errorNumber) +
                          ").");
        (void)platform::MakeFolderPrivate(m_home);
        if (!TakeTheLock()) return false;
        // What an earlier start was writing here when it was killed.
        (void)RemoveTemporaries({m_home}, platform::TemporaryPrefix({}));
        if (std::string problem = m_journal.Open(m_model, platform::MonotonicMilliseconds()); !problem.empty())
            return Broken(std::move(problem));
        if (!PlanOfNothing()) return false;
        if (m_options.retryQuarantined)
            if (std::string problem = m_journal.Forget(m_model.ReleaseQuarantined()); !problem.empty())
                return Broken(std::move(problem));
        if (!m_journal.OpenBatch().empty()) return true;
        // The last start may have ended between the two.
        KeepRecord();
        ForgetBatch();
        return true;
    }

    bool TakeTheLock()
    {
        const std::string path = m_home + "lock";
        const auto taken = m_lock.TryLock(path);
        if (taken) return true;
        if (platform::ProblemOf(taken) == platform::FileProblem::InUse)
            return Broken("The folder " + m_watched + " is being watched by another process already (" + path +
                          " is locked).");
        return Broken("The file " + path + " cannot be locked (" + platform::ErrorText(taken.errorNumber) + ").");
    }

    /// What is wrong with the sequence or with the options is said at the start, and not when the first file comes.
    bool PlanOfNothing()
    {
        const CScratchFolder empty;
        if (empty.Path().empty()) return Broken("No folder for temporary files can be made.");
        PlanOptions plan{.engine = m_options.engine, .request = m_options.request};
        plan.request.inputs = {empty.Path()};
        plan.request.minAgeSeconds = 0;
        CRunObserver nobody;
        const RunResult result = PlanRun(plan, nobody);
        if (result.exit == ExitClass::Fine) {
            for (const std::string& warning : result.plan.warnings) m_observer.Warning(warning);
            return true;
        }
        m_result.exit = result.exit;
        m_result.message = result.message;
        return false;
    }

    // ---- the loop

    bool Interrupted() const { return platform::Interrupts() > m_interruptsSeen; }

    void Loop()
    {
        while (!Interrupted()) {
            if (!m_journal.OpenBatch().empty()) {
                if (WorkOff(true) || Interrupted()) continue;
            } else {
                if (platform::MonotonicMilliseconds() >= m_nextLook && !Look() && m_options.once) {
                    m_problem = m_lookProblem;
                    break;
                }
                if (BeginBatch()) {
                    if (WorkOff(false) || Interrupted()) continue;
                } else if (m_problem.empty()) {
                    if (m_options.once && m_looks > 1) break;
                    WaitUntil(m_nextLook);
                    continue;
                }
            }
            if (m_options.once) break;
            WaitUntil(platform::MonotonicMilliseconds() + m_pause);
            m_pause = std::min(m_pause * 2, kLongestPauseMs);
        }
        End();
    }

    void End()
    {
        if (Interrupted())
            m_result.exit = ExitClass::Stopped;
        else if (!m_problem.empty())
            (void)Broken(m_problem);
        else
            m_result.exit =
                m_result.failed == 0 && m_model.Quarantined().empty() ? ExitClass::Fine : ExitClass::SomeNotSaved;
    }

    /// The system's clock may be set meanwhile; this one is not.
    void WaitUntil(std::uint64_t timeMs) const
    {
        while (!Interrupted()) {
            const std::uint64_t now = platform::MonotonicMilliseconds();
            if (now >= timeMs) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(std::min(kSlice, timeMs - now)));
        }
    }

    /// Says it once, and not at each try.
    bool Trouble(const std::string& problem)
    {
        Tell(problem);
        m_problem = problem;
        return false;
    }

    void Tell(const std::string& problem)
    {
        if (problem != m_told) m_observer.Notice(problem);
        m_told = problem;
    }

    void NoTrouble()
    {
        m_problem.clear();
        m_told.clear();
        m_pause = kFirstPauseMs;
    }

    // ---- looking

    /// False: there was nothing to be seen.
    bool Look()
    {
        const std::uint64_t begin = platform::MonotonicMilliseconds();
        const FolderLook look = LookInto(m_look);
        const std::uint64_t end = platform::MonotonicMilliseconds();
        // A large folder on a slow share is not looked at all the time.
        m_nextLook = end + std::max({m_options.rules.minAgeMs, kShortestRestMs, kRestPerLook * (end - begin)});
        if (SayWhatIsUnreadable(look)) return false;
        m_model.Look(look.files, look.whole, begin, SecondsNow());
        ++m_looks;
        KeepHouse(look, end);
        WriteQuarantine();
        return true;
    }

    /// True: there was nothing to be seen.
    bool SayWhatIsUnreadable(const FolderLook& look)
    {
        std::string problem;
        if (!look.problem.empty())
            problem = "The folder " + m_watched + " cannot be read (" + look.problem +
                      "); waiting until it can be read again.";
        else if (!look.whole)
            problem = "Some folders in " + m_watched + " cannot be read; the others are watched.";
        if (problem != m_lookProblem)
            m_observer.Notice(problem.empty() ? "The folder " + m_watched + " can be read again." : problem);
        m_lookProblem = problem;
        return !look.problem.empty();
    }

    void KeepHouse(const FolderLook& look, std::uint64_t nowMs)
    {
        // Each day, too: only a compacted journal says what was there lately.
        const bool wanted = !m_compacted || m_nextHouseKeeping <= nowMs || m_journal.WantsCompacting();
        if (look.whole && m_journal.OpenBatch().empty() && wanted) {
            // A share that is not there may show an empty folder.
            if (!look.files.empty()) m_model.ForgetOlderThan(SecondsNow() - kRemembered);
            const std::string problem = m_journal.Compact(m_model);
            m_compacted = problem.empty();
            if (!problem.empty()) Tell(problem);
        }
        if (m_nextHouseKeeping > nowMs) return;
        m_nextHouseKeeping = nowMs + kHouseKeepingMs;
        CRunArchive(m_home).RemoveOld();
    }

    void WriteQuarantine()
    {
        std::string text;
        for (const WatchedFile& file : m_model.Quarantined()) {
            Json line;
            line["path"] = TextFromBytes(file.path);
            line["reason"] = file.trouble.reason;
            line["tries"] = file.tries;
            line["first"] = platform::UtcText(file.trouble.firstSeconds * 1'000'000'000);
            line["last"] = platform::UtcText(file.trouble.lastSeconds * 1'000'000'000);
            line["size"] = file.stamp.size;
            text += LineOf(line) + '\n';
        }
        if (m_quarantineWritten && text == m_quarantineText) return;
        const auto written = platform::WriteFileAtomically(m_result.quarantinePath, text, platform::Readers::AsUsual);
        m_quarantineWritten = written.Ok();
        m_quarantineText = std::move(text);
        if (!written && !std::exchange(m_quarantineTold, true))
            m_observer.Notice("The quarantine list " + m_result.quarantinePath + " cannot be written (" +
                              platform::ErrorText(written.errorNumber) + "); it is tried again at each look.");
        if (written) m_quarantineTold = false;
    }

    // ---- choosing

    /// A new time alone makes no new version.
    bool IsDoneAlready(const SeenFile& file, std::vector<WatchedFile>* kept)
    {
        const std::string done = m_model.DoneHash(file.path);
        if (done.empty() || platform::Sha256OfFile(file.path) != done) return false;
        if (kept) kept->push_back(m_model.Done(file.path, file.stamp, done, SecondsNow()));
        return true;
    }

    static bool IsUnchanged(const SeenFile& file)
    {
        const auto stamp = platform::StampOf(file.path);
        return stamp &&
               file.stamp.IsSameVersion({.size = stamp->size, .modifiedNanoseconds = stamp->modifiedNanoseconds});
    }

    /// Of those that are ready, the ones that may be begun with now.
    std::vector<SeenFile> Choose(std::size_t most, std::vector<WatchedFile>* kept)
    {
        std::vector<SeenFile> chosen;
        for (SeenFile& file : m_model.Ready(platform::MonotonicMilliseconds(), most)) {
            if (file.path != RemoveQuotes(file.path)) {
                if (kept)
                    kept->push_back(m_model.Quarantine(
                        file, {}, "A name that ends with a blank or a double quote cannot be passed on.",
                        SecondsNow()));
            } else if (IsUnchanged(file) && !platform::IsInUse(file.path) && !IsDoneAlready(file, kept)) {
                chosen.push_back(std::move(file));
            }
        }
        return chosen;
    }

    bool BeginBatch()
    {
        std::vector<SeenFile> files;
        // When all that were chosen turn out to be done already, others wait behind them.
        for (bool more = true; more && files.empty() && !Interrupted();) {
            std::vector<WatchedFile> kept;
            files = Choose(kFilesOfBatch, &kept);
            if (std::string problem = m_journal.Add(kept); !problem.empty()) return Trouble(problem);
            more = !kept.empty();
        }
        m_problem.clear();
        if (files.empty()) return false;
        ForgetBatch();
        if (std::string problem = m_journal.BeginBatch(files); !problem.empty()) return Trouble(problem);
        return true;
    }

    // ---- working

    std::string BatchFolder() const { return m_home + "batch"; }

    void ForgetBatch() const
    {
        (void)platform::DeleteFile(ManifestIn(BatchFolder()));
        (void)platform::DeleteFile(JournalIn(BatchFolder()));
        (void)platform::DeleteFile(BatchRecord());
    }
    std::string BatchRecord() const { return BatchFolder() + kSeparator + "record.jsonl"; }

    RunOptions BatchOptions(bool resumes) const
    {
        RunOptions run{.engine = m_options.engine, .request = m_options.request, .logPath = m_options.logPath};
        run.request.inputs.clear();
        run.request.minAgeSeconds = 0;
        run.request.sparesRepaired = true;
        run.request.extensions.clear();
        run.folder = BatchFolder();
        run.resume = resumes && platform::FileExists(ManifestIn(run.folder));
        // A plan that is there says itself what became of its files. One that is still to be made has those that are.
        for (const SeenFile& file : m_journal.OpenBatch())
            if (run.resume || IsUnchanged(file)) run.request.inputs.push_back(file.path);
        if (!m_options.recordsFolder.empty()) run.recordPath = BatchRecord();
        return run;
    }

    enum class Batch { Done, GivenUp };

    /// Does the open batch. False: it is still open.
    bool WorkOff(bool resumes)
    {
        if (resumes && !m_resumeTold)
            m_observer.Notice("Going on with a batch of " + std::to_string(m_journal.OpenBatch().size()) +
                              " files that was interrupted.");
        m_resumeTold = true;
        CBatchObserver observer(m_observer);
        const RunOptions run = BatchOptions(resumes);
        if (run.request.inputs.empty()) return EndBatch({}, Batch::GivenUp);
        const RunResult result = RunPlanned(run, observer);
        m_result.done += observer.saved;
        if (result.exit == ExitClass::Stopped) return false;
        if (result.exit == ExitClass::Broken) {
            if (!run.resume || result.resumable) return Trouble(result.message);
            m_observer.Notice("The batch cannot be gone on with; the files that it has not done are begun anew. " +
                              result.message);
            return EndBatch(GiveUpBatch(), Batch::GivenUp);
        }
        return EndBatch(observer.records, Batch::Done);
    }

    /// What it has done counts; what it has begun is cleaned up, and done anew as the folder is now.
    Records GiveUpBatch()
    {
        CDoneRecords done;
        if (const auto read = ReadJournal(JournalIn(BatchFolder()), {}, done); !read)
            m_observer.Warning(read.Error());
        GiveUpRun(ManifestIn(BatchFolder()), JournalIn(BatchFolder()), m_observer);
        return std::move(done.records);
    }

    bool EndBatch(const Records& records, Batch batch)
    {
        CBatchOutcomes outcomes(m_model, m_watched);
        if (!records.empty() || batch == Batch::Done)
            outcomes.Take(m_journal.OpenBatch(), records, m_options.request.finalAction,
                          platform::MonotonicMilliseconds(), SecondsNow());
        if (std::string problem = m_journal.EndBatch(outcomes.Kept(), outcomes.Gone()); !problem.empty())
            return Trouble(problem);
        NoTrouble();
        for (const WatchedFile& file : outcomes.Kept()) {
            if (file.state == WatchState::Done) continue;
            ++m_result.failed;
            m_observer.Trouble(file);
        }
        KeepRecord();
        ForgetBatch();
        WriteQuarantine();
        return true;
    }

    void KeepRecord()
    {
        if (m_options.recordsFolder.empty() || !platform::FileExists(BatchRecord())) return;
        CLineReader reader;
        std::string line;
        if (reader.Open(BatchRecord())) (void)reader.Next(line);
        const auto first = ParseObject(line);
        const std::string run = first ? RunReachFrom(ObjectAt(*first, "run")).run : std::string();
        std::string name = platform::UtcText(platform::NanosecondsSince1970());
        std::erase_if(name, [](char letter) { return letter == '-' || letter == ':'; });
        const std::string target = WithTrailingSeparator(m_options.recordsFolder) + name + '-' + run + ".jsonl";
        if (const auto moved = platform::MoveFile(BatchRecord(), target, platform::Existing::Fail); !moved)
            m_observer.Notice("The record " + target + " cannot be written (" +
                              platform::ErrorText(moved.errorNumber) + ").");
    }

    // ---- trying

    void Try()
    {
        if (std::string problem = m_journal.Read(m_model, platform::MonotonicMilliseconds()); !problem.empty()) {
            (void)Broken(std::move(problem));
            return;
        }
        if (m_options.retryQuarantined) (void)m_model.ReleaseQuarantined();
        for (int look = 0; look < 2 && !Interrupted(); ++look) {
            const FolderLook seen = LookInto(m_look);
            if (SayWhatIsUnreadable(seen)) {
                (void)Broken(m_lookProblem);
                return;
            }
            m_model.Look(seen.files, seen.whole, platform::MonotonicMilliseconds(), SecondsNow());
            if (look == 0) WaitUntil(platform::MonotonicMilliseconds() + m_options.rules.minAgeMs);
        }
        for (const SeenFile& file : Choose(m_model.Size(), nullptr)) {
            m_observer.WouldTake(file.path);
            ++m_result.done;
        }
        m_result.exit = Interrupted() ? ExitClass::Stopped : ExitClass::Fine;
    }

    const WatchOptions& m_options;
    CWatchObserver& m_observer;
    std::string m_watched, m_home;  // the second with its separator
    LookRules m_look;
    CWatchModel m_model;
    CWatchJournal m_journal;
    platform::CFileLock m_lock;
    WatchResult m_result;
    int m_interruptsSeen = 0, m_looks = 0;
    std::uint64_t m_nextLook = 0, m_nextHouseKeeping = 0, m_pause = kFirstPauseMs;
    std::string m_problem, m_told, m_lookProblem, m_quarantineText;
    bool m_compacted = false, m_quarantineWritten = false, m_quarantineTold = false, m_resumeTold = false;
};

}  // namespace

WatchResult Watch(const WatchOptions& options, CWatchObserver& observer) { return CWatch(options, observer).Run(); }

std::string WatchFolder(const std::string& watched)
{
    CSha256 digest;
    const std::string folder = platform::ResolvedPath(watched);
    digest.Add(folder.data(), folder.size());
    return RunsFolder() + "watch-" + digest.Digest().substr(0, kWatchKeyLength) + kSeparator;
}
