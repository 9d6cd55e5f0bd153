#pragma once

#include "naming/FileNamePart.h"
#include "ui/Windows.h"

/// Asks for a text with tags that becomes part of a new file name. Works on a copy of the component.
class CDlgEnterCustomText {
public:
    CDlgEnterCustomText(DialogServices services, const CFileNamePart& part)
        : m_services(std::move(services)), m_part(part)
    {
    }
    CDlgEnterCustomText(const CDlgEnterCustomText&) = delete;
    CDlgEnterCustomText& operator=(const CDlgEnterCustomText&) = delete;

    /// True when the user has confirmed; then Part() has the answer.
    [[nodiscard]] bool Show();
    [[nodiscard]] const CFileNamePart& Part() const { return m_part; }

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] Group TagGroup();
    [[nodiscard]] FormAnswer Confirm();

    DialogServices m_services;
    CFileNamePart m_part;
};
