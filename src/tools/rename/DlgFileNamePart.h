#pragma once

#include <string>

#include "commands/AreaFields.h"
#include "naming/FileNamePart.h"
#include "ui/Windows.h"

/// Asks for the settings of a filename component whose kind has numbers, a page area, a search, or nothing of its
/// own. Works on a copy of it.
class CDlgFileNamePart {
public:
    CDlgFileNamePart(DialogServices services, const CFileNamePart& part);
    CDlgFileNamePart(const CDlgFileNamePart&) = delete;
    CDlgFileNamePart& operator=(const CDlgFileNamePart&) = delete;

    /// True when the user has confirmed; then Part() has the answer.
    [[nodiscard]] bool Show();
    [[nodiscard]] const CFileNamePart& Part() const { return m_part; }

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] Group NumberGroup();
    [[nodiscard]] Group AreaGroup();
    [[nodiscard]] Group SearchGroup();
    [[nodiscard]] FormControl PageField(const char* label);
    void EditRule();
    [[nodiscard]] FormAnswer Confirm();
    /// What is wrong; empty when the fields are in `part`.
    [[nodiscard]] std::string Take(CFileNamePart& part) const;
    [[nodiscard]] std::string TakeNumbers(CFileNamePart& part) const;
    [[nodiscard]] std::string TakePage(CFileNamePart& part) const;

    DialogServices m_services;
    CFileNamePart m_part;
    CAreaFields m_area;
    std::string m_start, m_increment, m_digits, m_page;
};
