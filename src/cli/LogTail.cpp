#include "cli/LogTail.h"

#include "platform/FileProblem.h"

namespace cli {

namespace {

constexpr std::size_t kPiece = 64 * 1024;

bool SameFile(const platform::FileStamp& one, const platform::FileStamp& other)
{
    return one.device == other.device && one.inode == other.inode;
}

}  // namespace

std::string CLogTail::ReadOpen()
{
    if (!m_stream) return {};
    std::string bytes(kPiece, '\0');
    // Not every library goes on reading behind an end that it has seen, unless it is positioned anew.
    std::fseek(m_stream.get(), 0, SEEK_CUR);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), m_stream.get()));
    if (std::ferror(m_stream.get())) m_result = platform::StreamFailure();
    m_position += bytes.size();
    return bytes;
}

bool CLogTail::Reopen()
{
    const auto stamp = platform::StampOf(m_path);
    if (!stamp) return false;
    const bool same = m_stream && SameFile(*stamp, m_stamp);
    if (same && stamp->size >= m_position) return false;
    m_stream = platform::OpenStream(m_path, "rb", &m_result);
    if (!m_stream) return false;
    m_stamp = *stamp;
    m_position = 0;
    return true;
}

std::string CLogTail::Poll()
{
    // The old file first: what was added before it was set aside must not be lost.
    std::string bytes = ReadOpen();
    if (bytes.empty() && Reopen()) bytes = ReadOpen();
    return bytes;
}

}  // namespace cli
