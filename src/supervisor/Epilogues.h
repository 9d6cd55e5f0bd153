// The last lines of several workers as the last lines of one run.
#pragma once

#include <string>
#include <vector>

class CEpilogues {
public:
    /// What differs from earlier ones only in times takes the place of those.
    void Add(std::vector<std::string> lines);
    bool Empty() const { return m_epilogues.empty(); }
    /// What each has of its own, one after the other, and then what all of them end with. A worker that could open
    /// none of its files has nothing of its own.
    [[nodiscard]] std::vector<std::string> Joined() const;

private:
    std::vector<std::vector<std::string>> m_epilogues;  // none like another
};
