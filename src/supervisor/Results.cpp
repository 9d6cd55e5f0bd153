#include "supervisor/Results.h"

#include <algorithm>
#include <cctype>
#include <utility>

using platform::FileResult;

namespace {

constexpr std::string_view kStopLine = "LOG STOPPED: ";

/// The same for lines that differ in the moment only.
std::string WithoutMoment(const std::string& line)
{
    return line.starts_with(kStopLine) ? std::string(kStopLine) : line;
}

bool IsSameEpilogue(const std::vector<std::string>& one, const std::vector<std::string>& other)
{
    return std::equal(
        one.begin(), one.end(), other.begin(), other.end(),
        [](const std::string& a, const std::string& b) { return WithoutMoment(a) == WithoutMoment(b); });
}

}  // namespace

void MergeEpilogue(std::vector<std::vector<std::string>>& epilogues, std::vector<std::string> lines)
{
    if (lines.empty()) return;
    for (std::vector<std::string>& known : epilogues)
        if (IsSameEpilogue(known, lines)) return known.swap(lines);
    epilogues.push_back(std::move(lines));
}

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
    if (done.record.outcome != FileOutcomeClass::Saved) ++m_progress.notSaved;
    if (m_parts.order) m_parts.order->Done(done, place.logged);
    m_parts.observer.FileDone(done.record, m_progress);
}

void CResults::AddEpilogue(std::vector<std::string> lines) { MergeEpilogue(m_epilogues, std::move(lines)); }

std::vector<std::string> CResults::Epilogue() const
{
    std::vector<std::string> all;
    for (const std::vector<std::string>& lines : m_epilogues) all.insert(all.end(), lines.begin(), lines.end());
    return all;
}
