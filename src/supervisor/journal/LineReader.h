// Files of lines that are read as a stream and, by offset, once more.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

/// Memory: the longest line. Lines end with a line feed; a last line without one counts as incomplete.
class CLineReader {
public:
    /// False when the file cannot be opened.
    [[nodiscard]] bool Open(const std::string& path);
    /// The next complete line, without its end, into `line`; false at the end, and then `line` is whatever came
    /// after the last line end.
    [[nodiscard]] bool Next(std::string& line);
    /// Of the line that Next gave last.
    std::uint64_t Offset() const { return m_offset; }
    /// How many lines Next has given since Open.
    std::uint64_t LineNumber() const { return m_lineNumber; }
    /// Where the next line begins: at the end, the length of what counts.
    std::uint64_t NextOffset() const { return m_nextOffset; }
    /// Reading failed, which is not the end.
    bool Failed() const { return m_stream.bad(); }
    /// The next line is the one at `offset`.
    void Seek(std::uint64_t offset);

private:
    std::ifstream m_stream;
    std::uint64_t m_offset = 0, m_nextOffset = 0, m_lineNumber = 0;
};
