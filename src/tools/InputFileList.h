// The files and folders that somebody has chosen for a tool that works on many documents.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>

/// A list of lines, each a file or a whole folder, in the order in which they were added. Paths are absolute, in the
/// narrow code page. Changes and expansion take time in proportion to the list.
class CInputFileList {
public:
    /// False when the list has this path already.
    bool AddFile(const std::string& path);
    /// Adds one line for the PDF files of a folder and of those below it. Answers how many there are at this moment.
    std::size_t AddFolder(const std::string& folder);
    /// Takes lines away, by their places from 0; other numbers mean nothing.
    void Remove(const std::vector<std::size_t>& places);
    void Clear();

    std::size_t Size() const { return m_lines.size(); }
    const std::string& Line(std::size_t place) const { return m_lines[place].text; }
    /// The number of lines, as people read it.
    [[nodiscard]] std::string CountLabel() const;

    /// The chosen files, in the order of the lines. Folders are looked through now; one that is gone adds nothing. A
    /// file that several lines lead to stands once, under its own name rather than that of a link.
    [[nodiscard]] std::vector<std::string> Files() const;

private:
    struct Entry {
        std::string text;
        bool isFile = true;    // then the text is its path
        std::string folder{};  // when the text of a folder's line does not tell it
    };

    std::vector<Entry> m_lines;
    std::unordered_set<std::string> m_files;
};
