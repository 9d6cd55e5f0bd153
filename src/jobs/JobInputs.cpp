#include "jobs/JobInputs.h"

#include <utility>

int CJobInputs::Total()
{
    m_first = NextJobInput();
    m_ended = !m_first;
    return m_first ? m_first->total : 0;
}

std::optional<RunInput> CJobInputs::Next()
{
    if (m_ended) return std::nullopt;
    const auto next = m_first ? std::exchange(m_first, std::nullopt) : NextJobInput();
    m_ended = !next;
    if (!next) return std::nullopt;
    return RunInput{next->path, next->number, next->finalActionOnly};
}
