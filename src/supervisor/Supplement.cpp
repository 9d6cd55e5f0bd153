#include "supervisor/Supplement.h"

#include "platform/Files.h"
#include "supervisor/JournalIndex.h"
#include "supervisor/Manifest.h"
#include "supervisor/Planning.h"

#include <algorithm>
#include <functional>
#include <string>
#include <unordered_set>

namespace {

/// The manifest as it is, then what is new of another one.
class CSupplement {
public:
    CSupplement(const ManifestHeader& header, const CJournalIndex& journal) : m_header(header), m_journal(journal) {}

    /// False: nothing has changed on disk.
    bool Write(const std::string& manifestPath, const std::string& otherPath)
    {
        CManifestWriter writer(manifestPath);
        if (!CopyKnown(manifestPath, writer) || !AddNew(otherPath, writer)) return false;
        return writer.Finish(m_header).Ok();
    }

private:
    bool CopyKnown(const std::string& path, CManifestWriter& writer)
    {
        CManifestReader reader;
        if (!reader.Open(path)) return false;
        while (const auto file = reader.Next()) {
            m_known.insert(std::hash<std::string>{}(file->path));
            m_lastGroup = std::max(m_lastGroup, file->group);
            writer.Add(*file);
        }
        return reader.Problem().empty();
    }

    bool AddNew(const std::string& path, CManifestWriter& writer)
    {
        CManifestReader reader;
        const auto header = reader.Open(path);
        if (!header) return false;
        m_header.unreadableFolders = header->unreadableFolders;
        while (auto file = reader.Next()) {
            if (m_known.contains(std::hash<std::string>{}(file->path)) || m_journal.HasTarget(file->path)) continue;
            file->number = ++m_header.total;
            if (file->group != 0) file->group += m_lastGroup;
            m_header.bytes += file->size;
            writer.Add(*file);
        }
        return reader.Problem().empty();
    }

    ManifestHeader m_header;
    const CJournalIndex& m_journal;
    std::unordered_set<std::size_t> m_known;  // hashes of paths
    std::uint32_t m_lastGroup = 0;
};

/// Nothing of a plan that is only looked through.
class CSilence final : public CRunObserver {};

}  // namespace

void AddLeftOutFiles(const CWorkerStarter& starter, const RunDescription& request, const std::string& manifestPath,
                     const std::string& journalPath, int interruptsSeen, CRunObserver& observer)
{
    CManifestReader manifest;
    const auto header = manifest.Open(manifestPath);
    if (!header || header->unreadableFolders == 0) return;
    CDoneIndex done(header->total);
    CJournalIndex journal(done);
    if (!ReadJournal(journalPath, header->order.run, journal)) return;  // the run itself says why
    journal.Complete();
    const std::string otherPath = manifestPath + ".again";
    CSilence silence;
    CPlanning planning(starter, request, interruptsSeen, silence);
    const bool planned = planning.Run(otherPath, header->order.run, false);
    if (!planned || !CSupplement(*header, journal).Write(manifestPath, otherPath))
        observer.Warning("Folders that could not be read when the run was planned are left out still. " +
                         planning.Failure().message);
    (void)platform::DeleteFile(otherPath);
}
