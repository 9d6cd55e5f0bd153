#include "supervisor/resume/CleanUp.h"

#include <set>

#include "base/Names.h"
#include "platform/AtomicFile.h"
#include "platform/Files.h"
#include "supervisor/resume/ResumePoint.h"

namespace {

int CountDone(const CDoneIndex& done)
{
    int count = 0;
    for (int number = 1; number <= done.Total(); ++number) count += done.IsDone(number) ? 1 : 0;
    return count;
}

void EndOpenFiles(CManifestReader& manifest, CJournalIndex& journal, const ResumeRules& rules)
{
    while (!journal.Open().empty()) {
        const auto file = manifest.Next();
        if (!file) return;
        const auto place = journal.Open().find(file->number);
        if (place == journal.Open().end()) continue;
        const ResumePoint point = FindResumePoint(*file, place->second.intents, std::nullopt, rules);
        for (const std::string& path : point.takeBack) (void)platform::DeleteFile(path);
        journal.Open().erase(place);
    }
}

}  // namespace

int RemoveTemporaries(const std::set<std::string>& folders, const std::string& prefix)
{
    int removed = 0;
    for (const std::string& folder : folders) {
        if (folder.empty()) continue;
        for (const platform::FolderEntry& entry : platform::ListFolder(folder))
            if (!entry.isFolder && entry.name.starts_with(prefix))
                removed += platform::DeleteFile(WithTrailingSeparator(folder) + entry.name).Ok() ? 1 : 0;
    }
    return removed;
}

void RemoveUnfinishedFiles(const std::string& manifestPath, const RunFacts& facts, const CJournalIndex& journal,
                           const std::string& temporaryTag)
{
    std::set<std::string> folders = journal.TargetFolders();
    folders.insert(facts.folders.begin(), facts.folders.end());
    CManifestReader manifest;
    if (!manifest.Open(manifestPath)) return;
    while (const auto file = manifest.Next()) folders.insert(FolderOf(file->path));
    RemoveTemporaries(folders, platform::TemporaryPrefix(temporaryTag));
}

void GiveUpRun(const std::string& manifestPath, const std::string& journalPath, CRunObserver& observer)
{
    CManifestReader manifest;
    const auto header = manifest.Open(manifestPath);
    if (!header) {
        if (platform::FileExists(manifestPath))
            observer.Warning("An earlier run of the same request is given up: " + header.Error());
        return;
    }
    CDoneIndex done(header->total);
    CJournalIndex journal(done);
    const auto content = ReadJournal(journalPath, header->order.run, journal);
    if (!content) return observer.Warning("An earlier run of the same request is given up: " + content.Error());
    journal.Complete();
    if (!content->name || journal.Ending() == "finished") return;
    observer.Warning("An earlier run of the same request was not finished: " + std::to_string(CountDone(done)) +
                     " of " + std::to_string(done.Total()) +
                     " files were done. It is given up, and this one begins with the files as they are now.");
    RunFacts facts = ReadRunFacts(*header);
    facts.rules.redoResults = true;
    EndOpenFiles(manifest, journal, facts.rules);
    RemoveUnfinishedFiles(manifestPath, facts, journal, header->order.run);
}
