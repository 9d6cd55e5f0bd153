#include "supervisor/Scheduler.h"

#include <algorithm>
#include <utility>

CScheduler::CScheduler(Source source, std::size_t lookahead) : m_source(std::move(source)), m_lookahead(lookahead) {}

std::optional<PlannedFile> CScheduler::Take()
{
    if (auto file = TakeHeldBack()) return file;
    while (m_heldBack.size() < m_lookahead) {
        auto file = Read();
        if (!file) return std::nullopt;
        if (!IsBusy(*file)) return Handed(std::move(*file));
        m_heldBack.push_back(std::move(*file));
    }
    return std::nullopt;
}

bool CScheduler::Empty()
{
    if (!m_heldBack.empty()) return false;
    if (!m_peeked) m_peeked = Read();
    return !m_peeked;
}

std::optional<PlannedFile> CScheduler::TakeHeldBack()
{
    const auto place =
        std::find_if(m_heldBack.begin(), m_heldBack.end(), [this](const PlannedFile& file) { return !IsBusy(file); });
    if (place == m_heldBack.end()) return std::nullopt;
    PlannedFile file = std::move(*place);
    m_heldBack.erase(place);
    return Handed(std::move(file));
}

std::optional<PlannedFile> CScheduler::Read()
{
    if (m_peeked) return std::exchange(m_peeked, std::nullopt);
    if (m_sourceEnded) return std::nullopt;
    auto file = m_source();
    m_sourceEnded = !file;
    return file;
}

PlannedFile CScheduler::Handed(PlannedFile file)
{
    if (file.group != 0) m_busy.insert(file.group);
    return file;
}
