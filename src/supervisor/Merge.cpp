#include "supervisor/Merge.h"

#include <deque>
#include <set>
#include <utility>

#include "base/Names.h"
#include "platform/Files.h"
#include "supervisor/journal/JournalIndex.h"
#include "supervisor/journal/Manifest.h"
#include "supervisor/results/OutcomeRecorder.h"
#include "supervisor/results/OutputGuard.h"
#include "supervisor/results/RunLog.h"
#include "supervisor/workers/Worker.h"

namespace {

constexpr std::size_t kMostJournals = 65535;
constexpr int kFilesNamed = 10;

class CMerge {
public:
    CMerge(const MergeOptions& options, CRunObserver& observer)
        : m_options(options), m_observer(observer), m_record(observer)
    {
    }

    RunResult Run()
    {
        if (CheckNames() && Load() && CheckComplete() && OpenOutputs()) Write();
        if (m_problem.empty()) return std::move(m_result);
        m_result.exit = ExitClass::Broken;
        m_result.message = m_problem;
        return std::move(m_result);
    }

private:
    bool Broken(std::string message)
    {
        if (m_problem.empty()) m_problem = std::move(message);
        return false;
    }

    bool CheckNames()
    {
        m_guard.AddOutput(OutputKind::Record, m_options.recordPath);
        m_guard.AddOutput(OutputKind::Report, m_options.reportPath);
        m_guard.AddOutput(OutputKind::Log, m_options.logPath);
        m_guard.AddNeeded("the manifest", m_options.manifestPath);
        for (const std::string& path : m_options.journalPaths) m_guard.AddNeeded("a journal", path);
        std::string problem = m_guard.Problem();
        return problem.empty() || Broken(std::move(problem));
    }

    bool Load()
    {
        CManifestReader manifest;
        auto header = manifest.Open(m_options.manifestPath);
        if (!header) return Broken(header.Error());
        m_header = std::move(*header);
        m_record.SetRun(m_header.reach, m_header.total, false);
        PlanSummary& plan = m_result.plan;
        plan.run = m_header.order.run;
        plan.total = m_header.total;
        plan.bytes = m_header.bytes;
        m_done.emplace(m_header.total);
        if (m_options.journalPaths.size() > kMostJournals) return Broken("There are too many journals.");
        for (const std::string& path : m_options.journalPaths)
            if (!LoadJournal(path)) return false;
        return true;
    }

    bool LoadJournal(const std::string& path)
    {
        CJournalIndex index(*m_done, static_cast<int>(m_readers.size()));
        const auto content = ReadJournal(path, m_header.order.run, index);
        if (!content)
            return Broken(content.Error() + " When it is the right one, do its part once more with a new journal.");
        if (!content->name) return Broken("The journal " + path + " is missing or empty.");
        if (!m_shards.insert(content->name->shard).second)
            return Broken("There are two journals of shard " + content->name->shard + "; the second is " + path +
                          ".");
        for (const auto& [number, history] : index.Open())
            if (!m_done->IsDone(number)) m_begun.insert(number);
        m_closingLines.Add(index.Epilogue());
        if (!m_readers.emplace_back().Open(path)) return Broken("The journal " + path + " cannot be opened.");
        return true;
    }

    bool CheckComplete()
    {
        CManifestReader manifest;
        if (auto header = manifest.Open(m_options.manifestPath); !header) return Broken(header.Error());
        std::string names;
        int missing = 0;
        while (const auto file = manifest.Next()) {
            if (std::string problem = m_guard.ProblemWithInput(*file); !problem.empty())
                return Broken(std::move(problem));
            if (m_done->IsDone(file->number) || ++missing > kFilesNamed) continue;
            names += "\n" + std::to_string(file->number) + ": " + file->path;
            if (m_begun.contains(file->number)) names += " (begun, not finished)";
        }
        if (!manifest.Problem().empty()) return Broken(manifest.Problem());
        if (missing == 0) return true;
        if (missing > kFilesNamed) names += "\nand " + std::to_string(missing - kFilesNamed) + " more";
        return Broken(std::to_string(missing) + " of " + std::to_string(m_header.total) +
                      " files have no outcome; do their shards again:" + names);
    }

    bool OpenOutputs()
    {
        if (!m_options.recordPath.empty()) {
            if (const auto opened = m_record.Open(m_options.recordPath); !opened)
                return Broken("The record " + m_options.recordPath + " cannot be written (" +
                              platform::ErrorText(opened.errorNumber) + ").");
            m_result.recordPath = m_options.recordPath;
        }
        if (IsDevice(m_options.logPath)) return true;
        const std::string logPath = m_options.logPath.empty() ? UserPaths().logFile : m_options.logPath;
        // Where Ferrule has never run there is no folder for it yet; when it cannot be made, opening says so.
        if (m_options.logPath.empty()) (void)platform::CreateFolders(FolderOf(logPath));
        if (m_log.Open(logPath)) {
            m_result.logPath = logPath;
            return true;
        }
        m_result.logProblem = "The log " + logPath + " cannot be written, or a run is writing to it.";
        m_observer.Warning(m_result.logProblem);
        return true;
    }

    void Write()
    {
        m_log.Preamble(m_header.preamble);
        COutcomeSorter order(
            *m_done,
            [this](const DonePlace& place) {
                return m_readers[static_cast<std::size_t>(place.journal)].DoneAt(place.offset);
            },
            [this](const DoneFile& done, bool) {
                ++m_result.counts[static_cast<std::size_t>(done.record.outcome)];
                m_record.Add(done.record);
                m_log.File(done, false);
                m_observer.FileDone(done.record, {});
            });
        order.Finish();
        m_log.Epilogue(m_closingLines.Empty() ? m_header.epilogue : m_closingLines.Joined());
        if (order.Failed()) Broken("A journal cannot be read again.");
        if (m_log.Failed()) Broken("The log " + m_result.logPath + " cannot be written completely.");
        m_log.Close();
        if (const auto closed = m_record.Close(); !closed)
            Broken("The record " + m_options.recordPath + " cannot be written completely (" +
                   platform::ErrorText(closed.errorNumber) + ").");
        const bool fine = m_result.Count(FileOutcome::Saved) == m_header.total && m_header.unreadableFolders == 0;
        m_result.exit = fine ? ExitClass::Fine : ExitClass::SomeNotSaved;
    }

    const MergeOptions& m_options;
    CRunObserver& m_observer;
    ManifestHeader m_header;
    std::optional<CDoneIndex> m_done;
    std::deque<CJournalReader> m_readers;
    std::set<std::string> m_shards;
    std::set<int> m_begun;  // without outcome
    CClosingLines m_closingLines;
    COutputGuard m_guard;
    CRunLog m_log;
    CRecordWriter m_record;
    std::string m_problem;
    RunResult m_result;
};

}  // namespace

RunResult MergeShards(const MergeOptions& options, CRunObserver& observer) { return CMerge(options, observer).Run(); }
