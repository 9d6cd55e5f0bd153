#pragma once

#include <string>
#include <vector>

#include "tools/InputFileList.h"
#include "ui/Windows.h"

/// Asks which documents a tool is to work on: files, and folders with all that is below them.
class CDlgAddFiles {
public:
    /// `prompt` is the tool's own instruction.
    CDlgAddFiles(DialogServices services, std::string title, std::string prompt);
    CDlgAddFiles(const CDlgAddFiles&) = delete;
    CDlgAddFiles& operator=(const CDlgAddFiles&) = delete;

    /// A file that is in the list from the start.
    void Add(const std::string& path) { (void)m_list.AddFile(path); }
    /// True when the user has confirmed.
    [[nodiscard]] bool Show();
    /// The chosen files as they are there now.
    [[nodiscard]] std::vector<std::string> Files() const { return m_list.Files(); }

    [[nodiscard]] DialogForm Describe();

private:
    void AddFiles();
    void AddFolder();
    void Remove();
    void Clear();

    DialogServices m_services;
    std::string m_title, m_prompt;
    CInputFileList m_list;
    std::vector<std::size_t> m_selected;
};
