#include "supervisor/undo/Undo.h"

#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "platform/AtomicFile.h"
#include "platform/NarrowText.h"
#include "platform/ThisProcess.h"
#include "supervisor/RunArchive.h"
#include "supervisor/RunFolder.h"
#include "supervisor/journal/Manifest.h"
#include "supervisor/resume/CleanUp.h"
#include "supervisor/undo/UndoJournal.h"

using Kind = UndoStep::Kind;

namespace {

std::string UndoJournalPath(const std::string& run) { return RunsFolder() + "undo-" + run + ".jsonl"; }

/// The folder in which the run has its plan still; empty when there is none.
std::string FolderOfRun(const std::string& run)
{
    for (const platform::FolderEntry& entry : platform::ListFolder(RunsFolder())) {
        if (!entry.isFolder) continue;
        const std::string folder = RunsFolder() + entry.name;
        CManifestReader manifest;
        const auto header = manifest.Open(ManifestIn(folder));
        if (header && header->order.run == run) return folder;
    }
    return {};
}

/// The packed run or the journal that was written last.
std::string LastRun()
{
    std::string last;
    std::int64_t latest = 0;
    for (const platform::FolderEntry& entry : platform::ListFolder(RunsFolder())) {
        const std::string path = entry.isFolder ? JournalIn(RunsFolder() + entry.name) : RunsFolder() + entry.name;
        if (!entry.isFolder && !CRunArchive::IsPack(path)) continue;
        const auto stamp = platform::StampOf(path);
        if (!stamp || stamp->modifiedNanoseconds <= latest) continue;
        latest = stamp->modifiedNanoseconds;
        last = path;
    }
    return last;
}

bool HasLine(const std::string& path)
{
    CLineReader reader;
    std::string line;
    return reader.Open(path) && reader.Next(line);
}

void RemoveEmptyFolders(const std::string& folder)
{
    std::error_code ignored;
    for (const platform::FolderEntry& entry : platform::ListFolder(folder))
        if (entry.isFolder)
            std::filesystem::remove(platform::StandardPath(folder + kSeparator + entry.name), ignored);
    std::filesystem::remove(platform::StandardPath(folder), ignored);
}

class CUndo {
public:
    CUndo(const UndoOptions& options, CUndoObserver& observer)
        : m_options(options), m_observer(observer), m_interruptsSeen(platform::Interrupts())
    {
    }

    UndoResult Run()
    {
        if (Find() && Lock() && ReadJournal() && ReadActs()) Work();
        return std::move(m_result);
    }

private:
    bool Broken(std::string message)
    {
        m_result.exit = ExitClass::Broken;
        m_result.message = std::move(message);
        return false;
    }

    bool NothingToDo(std::string message)
    {
        Broken(std::move(message));
        m_result.exit = ExitClass::Fine;
        return false;
    }

    /// Finds the file that tells what the run has done.
    bool Find()
    {
        m_path = m_options.path.empty() ? LastRun() : m_options.path;
        if (m_path.empty()) return Broken("There is no run of yours that could be taken back.");
        m_shownPath = m_path;
        if (CRunArchive::IsPack(m_path)) {
            if (m_scratch.Path().empty()) return Broken("No folder for temporary files can be made.");
            const std::string unpacked = JournalIn(m_scratch.Path());
            if (std::string problem = CRunArchive::Unpack(m_path, unpacked); !problem.empty())
                return Broken(std::move(problem));
            m_path = unpacked;
        }
        // Interrupted while its journal began.
        if (m_options.path.empty() && !HasLine(m_path))
            return NothingToDo(
                "The last run had done nothing when it was interrupted; there is nothing to take back.");
        const auto run = CActsToUndo::RunOf(m_path);
        if (!run) return Broken(ReplaceAll(run.Error(), m_path, m_shownPath));
        m_result.run = *run;
        m_folder = FolderOfRun(m_result.run);
        return true;
    }

    /// Neither the run itself nor another undo may go on meanwhile.
    bool Lock()
    {
        if (!m_options.dryRun) (void)platform::CreateFolders(RunsFolder());
        std::string problem;
        if (platform::FolderExists(RunsFolder())) problem = TakeLock(m_lock, RunsFolder() + "undo.lock");
        if (problem.empty() && !m_folder.empty()) problem = TakeLock(m_runLock, m_folder + kSeparator + "lock");
        const std::string lockOfPart = m_path + ".lock";
        if (problem.empty() && platform::NameExists(lockOfPart)) problem = TakeLock(m_partLock, lockOfPart);
        return problem.empty() || Broken(std::move(problem));
    }

    bool ReadActs()
    {
        auto acts = CActsToUndo::Open(m_path);
        if (!acts) return Broken(ReplaceAll(acts.Error(), m_path, m_shownPath));
        m_acts.emplace(std::move(*acts));
        return IsOfThePlan() ||
               Broken(m_shownPath + " names other folders than the plan of this run, so somebody has edited it. " +
                      "Without RECORD the last run is taken back from its own journal. Nothing was touched.");
    }

    /// A record says itself what the run could reach. Where the plan is still there, it knows better.
    bool IsOfThePlan() const
    {
        CManifestReader manifest;
        if (m_folder.empty()) return true;
        const auto header = manifest.Open(ManifestIn(m_folder));
        return !header || m_acts->Reach().IsWithin(header->reach);
    }

    bool ReadJournal()
    {
        std::string problem = m_journal.Read(UndoJournalPath(m_result.run), m_result.run);
        return problem.empty() || Broken(std::move(problem));
    }

    /// Only once something is going to be touched: a run that has a journal of its undo is not gone on with.
    bool OpenJournal()
    {
        std::string problem = m_journal.Open(UndoJournalPath(m_result.run), m_result.run);
        return problem.empty() || Broken(std::move(problem));
    }

    void Work()
    {
        m_observer.Begins(m_result.run, m_acts->Count());
        if (!LookAtAll()) return;
        if (m_acts->Count() != 0 && m_actsLeft == 0) {
            if (!m_options.dryRun) CleanUp();
            NothingToDo("This run was taken back already; nothing is left to do.");
            return;
        }
        if (m_options.dryRun) return End();
        if (m_result.problems != 0 && !m_options.partly) {
            Broken("Nothing was touched. With --partly everything else is taken back.");
            return;
        }
        if (!OpenJournal()) return;
        m_result.counts = {};
        m_result.problems = 0;
        platform::SetTemporaryTag(m_result.run);
        RemoveTemporaries(TouchedFolders(), platform::TemporaryPrefix(m_result.run));
        if (!UndoAll()) return;
        (void)m_journal.AddEnd(m_result.problems);
        CleanUp();
        End();
    }

    /// Everywhere where the run, or an earlier start of this, may have left something unfinished.
    std::set<std::string> TouchedFolders() const
    {
        std::set<std::string> folders = m_acts->Folders();
        if (const std::string& kept = m_acts->Reach().kept; !kept.empty())
            for (const platform::FolderEntry& entry : platform::ListFolder(kept))
                if (entry.isFolder) folders.insert(WithTrailingSeparator(kept) + entry.name + kSeparator);
        folders.insert(m_acts->Reach().folders.begin(), m_acts->Reach().folders.end());
        CManifestReader manifest;
        if (m_folder.empty() || !manifest.Open(ManifestIn(m_folder))) return folders;
        while (const auto file = manifest.Next()) folders.insert(FolderOf(file->path));
        return folders;
    }

    void End() { m_result.exit = m_result.problems == 0 ? ExitClass::Fine : ExitClass::SomeNotSaved; }

    void Count(const ActToUndo& undo, Kind kind, const std::string& problem)
    {
        ++m_result.counts[static_cast<std::size_t>(kind)];
        if (!problem.empty()) ++m_result.problems;
        const bool deletes = undo.act.act == Act::Delete;
        m_observer.Step(kind, deletes || kind == Kind::MoveBack ? undo.act.file : undo.act.target);
    }

    bool LookAtAll()
    {
        CFutureNames names;
        std::string problem = m_acts->ForEach([&](const ActToUndo& undo) {
            names.Expect(undo);
            if (!m_journal.IsUndone(undo.act)) ++m_actsLeft;
            return true;
        });
        names.BeginToUse();
        CUndoDecider decider(names);
        std::size_t looked = 0;
        if (problem.empty())
            problem = m_acts->ForEach([&](const ActToUndo& undo) {
                if (Interrupted()) return false;
                m_observer.Progress("looked at", ++looked, m_acts->Count());
                UndoStep step;
                if (!m_journal.IsUndone(undo.act)) step = decider.Decide(undo);
                if (!step.remark.empty()) m_observer.Remark(step.remark);
                if (!step.problem.empty()) {
                    m_observer.Problem(step.problem);
                    m_told.insert(CUndoJournal::KeyOf(undo.act));
                }
                if (m_options.dryRun || !step.problem.empty()) Count(undo, step.kind, step.problem);
                names.Undone(undo, step);
                return true;
            });
        return problem.empty() ? !Stopped() : Broken(std::move(problem));
    }

    bool UndoAll()
    {
        CNames names;
        CUndoDecider decider(names);
        platform::FileResult journaled;
        std::size_t done = 0;
        std::string problem = m_acts->ForEach([&](const ActToUndo& undo) {
            if (Interrupted()) return false;
            m_observer.Progress("taken back", ++done, m_acts->Count());
            if (m_journal.IsUndone(undo.act)) return true;
            const UndoStep step = decider.Decide(undo);
            const UndoneStep undone = DoUndo(undo, step);
            if (!step.problem.empty() && !m_told.contains(CUndoJournal::KeyOf(undo.act)))
                m_observer.Problem(step.problem);
            if (!undone.problem.empty()) m_observer.Problem(undone.problem);
            Count(undo, undone.done ? step.kind : Kind::Leave, step.problem + undone.problem);
            if (!undone.problem.empty() || !step.problem.empty()) return true;
            journaled = m_journal.Add(undo.act, step);
            return journaled.Ok();
        });
        if (problem.empty() && !journaled)
            problem = "The journal of the undo cannot be written (" + platform::ErrorText(journaled.errorNumber) +
                      "). Nothing more was touched; give the command again to go on.";
        return problem.empty() ? !Stopped() : Broken(std::move(problem));
    }

    bool Interrupted() const { return platform::Interrupts() != m_interruptsSeen; }

    bool Stopped()
    {
        if (!Interrupted()) return false;
        m_result.exit = ExitClass::Stopped;
        m_result.message = "Stopped. Give the command again to go on.";
        return true;
    }

    /// What is left belongs to nobody any more, and the run is none that could be gone on with.
    void CleanUp()
    {
        const std::string& kept = m_acts->Reach().kept;
        if (!kept.empty()) RemoveEmptyFolders(kept);
        // Whoever died between keeping a file and asking for the act has left it there.
        if (m_result.problems == 0 && platform::FolderExists(kept)) m_result.leftOver = kept;
        if (m_folder.empty()) return;
        const CRunArchive archive(RunsFolder());
        const bool packed = archive.Has(m_result.run) ||
                            archive.Keep(m_result.run, ManifestIn(m_folder), JournalIn(m_folder)).empty();
        if (!packed) return;
        (void)platform::DeleteFile(ManifestIn(m_folder));
        (void)platform::DeleteFile(JournalIn(m_folder));
    }

    const UndoOptions& m_options;
    CUndoObserver& m_observer;
    int m_interruptsSeen;
    CScratchFolder m_scratch;
    std::optional<CActsToUndo> m_acts;
    std::string m_path;       // of record or journal
    std::string m_shownPath;  // of what somebody knows it by
    std::string m_folder;     // of the run, when it has one still
    platform::CFileLock m_lock, m_runLock, m_partLock;
    CUndoJournal m_journal;
    std::set<CUndoJournal::Key> m_told;  // acts of which it was told beforehand that something stays
    std::size_t m_actsLeft = 0;          // that no earlier start has taken back
    UndoResult m_result;
};

}  // namespace

UndoResult UndoRun(const UndoOptions& options, CUndoObserver& observer)
{
    platform::CountInterrupts();
    return CUndo(options, observer).Run();
}

std::string UndoneSentence(const std::string& run)
{
    if (!platform::NameExists(UndoJournalPath(run))) return {};
    return "This run was taken back, wholly or in part, and is not gone on with; \"ferrule undo\" finishes that.";
}
