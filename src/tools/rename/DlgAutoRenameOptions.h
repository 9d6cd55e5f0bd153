#pragma once

#include <string>

#include "naming/RenameSettings.h"
#include "ui/Windows.h"

/// Asks for the letter case and the greatest length of new file names.
class CDlgAutoRenameOptions {
public:
    CDlgAutoRenameOptions(DialogServices services, NameCase textCase, std::int32_t maxFilename);
    CDlgAutoRenameOptions(const CDlgAutoRenameOptions&) = delete;
    CDlgAutoRenameOptions& operator=(const CDlgAutoRenameOptions&) = delete;

    /// True when the user has confirmed; then the two below are the answer.
    [[nodiscard]] bool Show();
    [[nodiscard]] NameCase TextCase() const { return static_cast<NameCase>(m_case); }
    [[nodiscard]] std::int32_t MaxFilename() const { return m_maxFilename; }

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] FormAnswer Confirm();

    DialogServices m_services;
    int m_case;
    std::int32_t m_maxFilename;
    std::string m_length;
};

/// "Original Case", "Lowercase" or "Uppercase".
[[nodiscard]] const char* NameCaseText(NameCase textCase);
