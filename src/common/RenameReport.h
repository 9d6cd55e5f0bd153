// The report on a renaming, for people: what was renamed, what was not, and why.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What is told of a file that cannot get its new name, behind its path or "It".
[[nodiscard]] std::string RenameFailure(const std::string& target, int errorNumber);
/// What is told of a file without a new name, likewise.
inline constexpr char kRenameSkipped[] = " has been skipped - no valid output filename specified";

/// Collects what became of the files, in their order. Paths are bytes, and so is the text.
class CRenameReport {
public:
    /// `remark`: what went wrong all the same, a sentence; else empty.
    void Renamed(const std::string& from, const std::string& to, std::string_view remark = {});
    /// The messages are those of the file's outcome, sentences about "It".
    void Skipped(const std::string& path, const std::string& message);
    void Failed(const std::string& path, const std::string& message);

    std::size_t RenamedFiles() const { return m_renamed.lines; }
    std::size_t OtherFiles() const { return m_skipped + m_failed; }

    /// Lines end with CR and LF. `date`: when the files were renamed, for people.
    [[nodiscard]] std::string Text(const std::string& buildDate, const std::string& date) const;

private:
    struct Numbered {
        std::string text;
        std::size_t lines = 0;
        void Add(std::string_view line);
    };

    Numbered m_renamed, m_problems;
    std::size_t m_skipped = 0, m_failed = 0;
};
