#include "supervisor/Results.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

using Lines = std::vector<std::string>;

constexpr std::string_view kStopLine = "LOG STOPPED: ";

/// The same for lines that differ in the moment only.
bool IsSameLine(const std::string& one, const std::string& other)
{
    return one == other || (one.starts_with(kStopLine) && other.starts_with(kStopLine));
}

std::size_t CommonEnd(const Lines& one, const Lines& other)
{
    const auto ends = std::mismatch(one.rbegin(), one.rend(), other.rbegin(), other.rend(), IsSameLine);
    return static_cast<std::size_t>(std::distance(one.rbegin(), ends.first));
}

}  // namespace

void CEpilogues::Add(Lines lines)
{
    if (lines.empty()) return;
    const auto same = std::ranges::find_if(
        m_epilogues, [&](const Lines& known) { return std::ranges::equal(known, lines, IsSameLine); });
    if (same != m_epilogues.end()) m_epilogues.erase(same);
    m_epilogues.push_back(std::move(lines));
}

Lines CEpilogues::Joined() const
{
    if (Empty()) return {};
    const Lines& latest = m_epilogues.back();
    std::size_t common = latest.size();
    for (const Lines& lines : m_epilogues) common = std::min(common, CommonEnd(latest, lines));
    Lines joined;
    for (const Lines& lines : m_epilogues)
        joined.insert(joined.end(), lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(common));
    joined.insert(joined.end(), latest.end() - static_cast<std::ptrdiff_t>(common), latest.end());
    return joined;
}

using platform::FileResult;

FileResult CResults::AddIntent(const Intent& intent)
{
    return m_parts.journal ? m_parts.journal->AddIntent(intent) : FileResult{};
}

FileResult CResults::AddAgain(int number, ToDo toDo)
{
    return m_parts.journal ? m_parts.journal->AddAgain(number, toDo) : FileResult{};
}

FileResult CResults::AddDone(const DoneFile& done)
{
    DonePlace place{.outcome = done.record.outcome};
    if (m_parts.journal)
        if (const FileResult added = m_parts.journal->AddDone(done, &place.offset); !added) return added;
    Count(done, place);
    return {};
}

void CResults::KeepDone(const DoneFile& done, const DonePlace& place) { Count(done, place); }

void CResults::Count(const DoneFile& done, const DonePlace& place)
{
    m_parts.done.Set(done.record.number, place);
    ++m_progress.filesDone;
    m_progress.bytesDone += done.record.size;
    if (done.record.outcome != FileOutcome::Saved) ++m_progress.notSaved;
    if (m_parts.order) m_parts.order->Done(done, place.logged);
    m_parts.observer.FileDone(done.record, m_progress);
}
