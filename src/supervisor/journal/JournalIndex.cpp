#include "supervisor/journal/JournalIndex.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "base/Names.h"

namespace {

// Lowest bits first: done, logged, outcome (3), journal (16), offset (43).
constexpr int kLoggedBit = 1, kOutcomeShift = 2, kJournalShift = 5, kOffsetShift = 21;

}  // namespace

DonePlace CDoneIndex::At(int number) const
{
    const std::uint64_t packed = m_places[static_cast<std::size_t>(number)];
    return {.offset = packed >> kOffsetShift,
            .journal = static_cast<int>((packed >> kJournalShift) & 0xFFFF),
            .outcome = static_cast<FileOutcome>((packed >> kOutcomeShift) & 7),
            .logged = ((packed >> kLoggedBit) & 1) != 0};
}

void CDoneIndex::Set(int number, const DonePlace& place)
{
    m_places[static_cast<std::size_t>(number)] = 1 | static_cast<std::uint64_t>(place.logged) << kLoggedBit |
                                                 static_cast<std::uint64_t>(place.outcome) << kOutcomeShift |
                                                 static_cast<std::uint64_t>(place.journal) << kJournalShift |
                                                 place.offset << kOffsetShift;
}

namespace {

std::uint64_t HashOfTarget(const std::string& path) { return std::hash<std::string>{}(path); }

std::string NoSuchFile(int number) { return "there is no file " + std::to_string(number) + " in the manifest"; }

}  // namespace

bool IsRetried(FileOutcome outcome)
{
    return outcome != FileOutcome::Saved && outcome != FileOutcome::CopiedUnchanged;
}

std::optional<std::uint64_t> CJournalIndex::ToldOutcome(int number) const
{
    if (m_told[static_cast<std::size_t>(number)] && m_done.IsDone(number)) return m_done.At(number).offset;
    const auto before = m_toldBefore.find(number);
    return before == m_toldBefore.end() ? std::nullopt : std::optional(before->second);
}

bool CJournalIndex::HasTarget(const std::string& path) const
{
    return std::binary_search(m_targets.begin(), m_targets.end(), HashOfTarget(path));
}

void CJournalIndex::Complete()
{
    std::sort(m_targets.begin(), m_targets.end());
    // Blocks go out in input order, so after a sudden end those before the first gap were out.
    for (int number = 1; m_done.Contains(number) && m_done.IsDone(number); ++number) {
        DonePlace place = m_done.At(number);
        place.logged = true;
        m_done.Set(number, place);
    }
    m_sinceEnd = {};
}

std::string CJournalIndex::OnIntent(Intent intent)
{
    if (!m_done.Contains(intent.number)) return NoSuchFile(intent.number);
    m_ending.clear();
    if (!intent.target.empty() && intent.act != Act::Start) {
        m_targets.push_back(HashOfTarget(intent.target));
        m_targetFolders.insert(FolderOf(intent.target));
    }
    m_open[intent.number].intents.push_back(std::move(intent));
    return {};
}

std::string CJournalIndex::OnDone(const FileRecord& record, std::uint64_t offset)
{
    const int number = record.number;
    if (!m_done.Contains(number)) return NoSuchFile(number);
    if (m_done.IsDone(number) && m_done.At(number).outcome != FileOutcome::Stopped)
        return "file " + std::to_string(number) + " (" + record.path + ") has an outcome already";
    m_ending.clear();
    m_done.Set(number, {.offset = offset, .journal = m_journal, .outcome = record.outcome, .logged = false});
    m_sinceEnd.push_back(number);
    m_told[static_cast<std::size_t>(number)] = false;
    // A file that was stopped is begun again, and what was done of it must not be done twice.
    if (record.outcome == FileOutcome::Stopped) return {};
    const auto begun = m_open.find(number);
    if (begun == m_open.end()) return {};
    if (m_retries && IsRetried(record.outcome)) m_notSaved[number] = std::move(begun->second);
    m_open.erase(begun);
    return {};
}

std::string CJournalIndex::OnAgain(int number, ToDo toDo)
{
    if (!m_done.Contains(number)) return NoSuchFile(number);
    m_ending.clear();
    FileHistory history;
    if (m_done.IsDone(number)) history.earlierOffset = m_done.At(number).offset;
    if (const auto told = ToldOutcome(number)) m_toldBefore[number] = *told;
    if (toDo == ToDo::FinalAction) history.resultsOffset = history.earlierOffset;
    m_done.Forget(number);
    m_notSaved.erase(number);
    m_open[number] = std::move(history);
    return {};
}

std::string CJournalIndex::OnEnd(const std::string& outcome, std::vector<std::string> epilogue)
{
    m_ending = outcome;
    m_epilogue = std::move(epilogue);
    MarkAllLogged();
    return {};
}

void CJournalIndex::MarkAllLogged()
{
    for (const int number : m_sinceEnd) {
        if (!m_done.IsDone(number)) continue;
        DonePlace place = m_done.At(number);
        place.logged = true;
        m_done.Set(number, place);
        m_told[static_cast<std::size_t>(number)] = true;
    }
    m_sinceEnd.clear();
}
