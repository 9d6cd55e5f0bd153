// Cuts the private log of a worker into the parts of its files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "protocol/Messages.h"
#include "supervisor/journal/LineReader.h"

struct LogBlock {
    std::vector<std::string> lines = {};               ///< bytes, without number and line end
    std::size_t preflightBegin = 0, preflightEnd = 0;  ///< both 0: none
};

class CWorkerLog {
public:
    explicit CWorkerLog(std::string path) : m_path(std::move(path)) {}

    /// Takes in what has been logged by now.
    void Read();
    /// This is the place in what has been logged by now.
    void Note(LogPlace place);
    /// The present block ends here, although it is taken only later.
    void MarkEnd() { m_end = m_block.lines.size(); }
    /// What has been taken in since the last block, up to its mark when it has one.
    [[nodiscard]] LogBlock Take();
    /// What was logged before the inputs were counted; it belongs to no block.
    [[nodiscard]] std::vector<std::string> TakePreamble() { return std::move(m_preamble); }

private:
    std::string m_path;
    bool m_open = false;
    CLineReader m_reader;
    std::string m_line;
    bool m_inPreamble = true;
    std::vector<std::string> m_preamble;
    LogBlock m_block;
    static constexpr std::size_t kNoEnd = static_cast<std::size_t>(-1);
    std::size_t m_end = kNoEnd;
};

/// The entry in a line of a log file: without number and line end.
[[nodiscard]] std::string LogEntry(std::string_view line);
