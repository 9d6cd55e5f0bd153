#include "supervisor/RunLog.h"

void CRunLog::File(const DoneFile& done, bool written)
{
    const bool hasPreflight = done.preflightEnd != 0;
    const bool dropPreflight = hasPreflight && m_preflightSeen;
    m_preflightSeen = m_preflightSeen || hasPreflight;
    if (written) return;
    if (!dropPreflight) return Write(done.log);
    std::vector<std::string> lines(done.log.begin(), done.log.begin() + static_cast<long>(done.preflightBegin));
    lines.insert(lines.end(), done.log.begin() + static_cast<long>(done.preflightEnd), done.log.end());
    Write(lines);
}

void CRunLog::Write(const std::vector<std::string>& lines)
{
    if (!IsOpen()) return;
    for (const std::string& line : lines) m_failed = m_failed || !m_log.Line(line);
}
