#include "openhost/jobs/LineStream.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace openhost {

namespace {

constexpr std::size_t kWritePiece = 64 * 1024;

/// False when the reader is gone.
bool WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto written = ::write(descriptor, bytes.data(), std::min(bytes.size(), kWritePiece));
        if (written < 0 && errno != EINTR) return false;
        if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

CLineStream::~CLineStream()
{
    Flush();
    ::close(m_input);
    ::close(m_output);
}

void CLineStream::Put(std::string_view line)
{
    m_waiting += line;
    m_waiting += '\n';
    if (m_waiting.size() >= kWritePiece) Flush();
}

bool CLineStream::Flush()
{
    if (m_writable) m_writable = WriteAll(m_output, m_waiting);
    m_waiting.clear();
    return m_writable;
}

std::optional<std::string> CLineStream::NextLine()
{
    std::size_t end;
    for (std::size_t searched = m_next; (end = m_read.find('\n', searched)) == std::string::npos;) {
        searched = m_read.size();
        std::array<char, 4096> part;
        const auto length = ::read(m_input, part.data(), part.size());
        if (length < 0 && errno == EINTR) continue;
        if (length <= 0) return std::nullopt;
        m_read.append(part.data(), static_cast<std::size_t>(length));
    }
    std::string line = m_read.substr(m_next, end - m_next);
    m_next = end + 1;
    if (m_next == m_read.size()) {
        m_read.clear();
        m_next = 0;
    }
    return line;
}

}  // namespace openhost
