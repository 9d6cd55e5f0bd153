#include "supervisor/results/OutcomeRecorder.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

COutcomeSorter::COutcomeSorter(const CDoneIndex& done, Reader reader, Taker taker)
    : m_done(done), m_reader(std::move(reader)), m_taker(std::move(taker))
{
}

void COutcomeSorter::Done(const DoneFile& done, bool written)
{
    if (done.record.number != m_next) {
        if (!m_reader) m_waiting.insert_or_assign(done.record.number, done);
        return;
    }
    ++m_next;
    m_taker(done, written);
    Advance();
}

void COutcomeSorter::Finish()
{
    for (; m_next <= m_done.Total(); ++m_next)
        if (m_done.IsDone(m_next)) PassOn(m_next);
}

void COutcomeSorter::Advance()
{
    for (; m_next <= m_done.Total() && m_done.IsDone(m_next); ++m_next) PassOn(m_next);
}

void COutcomeSorter::PassOn(int number)
{
    const DonePlace place = m_done.At(number);
    if (!m_reader) {
        auto kept = m_waiting.extract(number);
        if (kept) return m_taker(kept.mapped(), place.logged);
        m_failed = true;
        return;
    }
    const auto done = m_reader(place);
    if (done && done->record.number == number) return m_taker(*done, place.logged);
    m_failed = true;
}

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

void CClosingLines::Add(Lines lines)
{
    if (lines.empty()) return;
    const auto same = std::ranges::find_if(
        m_closingLines, [&](const Lines& known) { return std::ranges::equal(known, lines, IsSameLine); });
    if (same != m_closingLines.end()) m_closingLines.erase(same);
    m_closingLines.push_back(std::move(lines));
}

Lines CClosingLines::Joined() const
{
    if (Empty()) return {};
    const Lines& latest = m_closingLines.back();
    std::size_t common = latest.size();
    for (const Lines& lines : m_closingLines) common = std::min(common, CommonEnd(latest, lines));
    Lines joined;
    for (const Lines& lines : m_closingLines)
        joined.insert(joined.end(), lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(common));
    joined.insert(joined.end(), latest.end() - static_cast<std::ptrdiff_t>(common), latest.end());
    return joined;
}

using platform::FileResult;

FileResult COutcomeRecorder::AddIntent(const Intent& intent, std::uint64_t* order)
{
    return m_parts.journal ? m_parts.journal->AddIntent(intent, order) : FileResult{};
}

FileResult COutcomeRecorder::AddAgain(int number, ToDo toDo)
{
    return m_parts.journal ? m_parts.journal->AddAgain(number, toDo) : FileResult{};
}

FileResult COutcomeRecorder::AddDone(const DoneFile& done)
{
    DonePlace place{.outcome = done.record.outcome};
    if (m_parts.journal)
        if (const FileResult added = m_parts.journal->AddDone(done, &place.offset); !added) return added;
    Count(done, place);
    return {};
}

void COutcomeRecorder::KeepDone(const DoneFile& done, const DonePlace& place) { Count(done, place); }

void COutcomeRecorder::Count(const DoneFile& done, const DonePlace& place)
{
    m_parts.done.Set(done.record.number, place);
    ++m_progress.filesDone;
    m_progress.bytesDone += done.record.size;
    if (done.record.outcome != FileOutcome::Saved) ++m_progress.notSaved;
    if (m_parts.order) m_parts.order->Done(done, place.logged);
    m_parts.observer.FileDone(done.record, m_progress);
}
