#include "supervisor/workers/WorkerLog.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

std::string LogEntry(std::string_view line)
{
    if (line.ends_with('\r')) line.remove_suffix(1);
    const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
    if (digits != 0 && line.substr(digits).starts_with(": ")) line.remove_prefix(digits + 2);
    return std::string(line);
}

void CWorkerLog::Read()
{
    if (!m_open) m_open = m_reader.Open(m_path);
    if (!m_open) return;
    m_reader.Seek(m_reader.NextOffset());
    std::vector<std::string>& lines = m_inPreamble ? m_preamble : m_block.lines;
    while (m_reader.Next(m_line)) lines.push_back(LogEntry(m_line));
}

void CWorkerLog::Note(LogPlace place)
{
    Read();
    switch (place) {
        case LogPlace::SequencePreflightBegins:
            m_block.preflightBegin = m_block.lines.size();
            break;
        case LogPlace::SequencePreflightEnds:
            m_block.preflightEnd = m_block.lines.size();
            break;
        case LogPlace::InputsCounted:
            m_inPreamble = false;
            break;
    }
}

LogBlock CWorkerLog::Take()
{
    LogBlock rest;
    if (m_end < m_block.lines.size()) {
        const auto from = m_block.lines.begin() + static_cast<std::ptrdiff_t>(m_end);
        rest.lines.assign(std::make_move_iterator(from), std::make_move_iterator(m_block.lines.end()));
        m_block.lines.erase(from, m_block.lines.end());
    }
    m_end = kNoEnd;
    LogBlock block = std::exchange(m_block, std::move(rest));
    // Marks that came in the wrong order, or only one of them, mark nothing.
    const bool marked = block.preflightBegin < block.preflightEnd && block.preflightEnd <= block.lines.size();
    if (!marked) block.preflightBegin = block.preflightEnd = 0;
    return block;
}
