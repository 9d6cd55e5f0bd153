#include "supervisor/journal/LineReader.h"

bool CLineReader::Open(const std::string& path)
{
    m_stream = std::ifstream(path, std::ios::binary);
    m_offset = m_nextOffset = m_lineNumber = 0;
    return m_stream.is_open();
}

bool CLineReader::Next(std::string& line)
{
    line.clear();
    if (!std::getline(m_stream, line) || m_stream.eof()) return false;
    ++m_lineNumber;
    m_offset = m_nextOffset;
    m_nextOffset += line.size() + 1;
    return true;
}

void CLineReader::Seek(std::uint64_t offset)
{
    m_stream.clear();
    m_stream.seekg(static_cast<std::streamoff>(offset));
    m_nextOffset = offset;
}
