#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Makes whole lines of bytes that come in pieces. A line is kept up to `longest` bytes, the rest of it is dropped.
class CLineSplitter {
public:
    explicit CLineSplitter(std::size_t longest) : m_longest(longest) {}

    /// Appends the lines that these bytes complete, without their line ends.
    void Add(std::string_view bytes, std::vector<std::string>& lines);
    /// What has come of a last line without line end, if anything.
    void Finish(std::vector<std::string>& lines);

private:
    void Keep(std::string_view part);

    std::size_t m_longest;
    std::string m_line;
    bool m_begun = false;
};
