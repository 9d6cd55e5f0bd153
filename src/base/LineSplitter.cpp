#include "base/LineSplitter.h"

#include <utility>

void CLineSplitter::Keep(std::string_view part) { m_line += part.substr(0, m_longest - m_line.size()); }

void CLineSplitter::Add(std::string_view bytes, std::vector<std::string>& lines)
{
    while (!bytes.empty()) {
        const auto end = bytes.find('\n');
        Keep(bytes.substr(0, end));
        m_begun = end == std::string_view::npos;
        if (m_begun) return;
        lines.push_back(std::exchange(m_line, {}));
        bytes.remove_prefix(end + 1);
    }
}

void CLineSplitter::Finish(std::vector<std::string>& lines)
{
    if (std::exchange(m_begun, false)) lines.push_back(std::exchange(m_line, {}));
}
