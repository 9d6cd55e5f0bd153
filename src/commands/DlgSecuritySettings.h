#pragma once

#include <string>

#include "commands/SecuritySettings.h"
#include "ui/Windows.h"

/// Asks how documents are to be secured. Works on a copy of the settings.
class CDlgSecuritySettings {
public:
    /// `storage` tells where the passwords are going to be kept; one sentence, may be empty.
    CDlgSecuritySettings(DialogServices services, const SecuritySettings& settings, std::string storage = {});
    CDlgSecuritySettings(const CDlgSecuritySettings&) = delete;
    CDlgSecuritySettings& operator=(const CDlgSecuritySettings&) = delete;

    /// True when the user has confirmed; then Settings() has the answer.
    [[nodiscard]] bool Show();
    [[nodiscard]] const SecuritySettings& Settings() const { return m_settings; }

    [[nodiscard]] DialogForm Describe();

private:
    enum PrintingRow { kNoPrinting, kLowResolution, kHighResolution };
    enum ChangesRow { kAllChanges, kNoChanges, kFormsOnly };

    [[nodiscard]] Group OpenGroup();
    [[nodiscard]] Group RestrictGroup();
    [[nodiscard]] bool RestrictionsAreVoid() const;
    void EditTable();
    [[nodiscard]] FormAnswer Confirm();
    /// What is wrong, and the control that it is about; `settings` is filled as far as all is well.
    [[nodiscard]] std::string Take(SecuritySettings& settings);
    [[nodiscard]] std::string TakeOpenPassword(SecuritySettings& settings);
    [[nodiscard]] std::string TakeRestrictions(SecuritySettings& settings);

    DialogServices m_services;
    SecuritySettings m_settings;
    std::string m_storage;
    // The controls' contents, UTF-8.
    bool m_requiresOpen, m_restricts, m_usesTable, m_canCopy;
    std::string m_open, m_openAgain, m_permissions, m_permissionsAgain;
    int m_printing, m_changes;
    TextPairs m_table;
};

/// Asks for a table of file names and their passwords as text.
class CDlgPasswordTable {
public:
    CDlgPasswordTable(DialogServices services, const TextPairs& table);
    CDlgPasswordTable(const CDlgPasswordTable&) = delete;
    CDlgPasswordTable& operator=(const CDlgPasswordTable&) = delete;

    /// True when the user has confirmed; then Table() has the answer.
    [[nodiscard]] bool Show();
    [[nodiscard]] const TextPairs& Table() const { return m_table; }

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] FormAnswer Confirm();

    DialogServices m_services;
    TextPairs m_table;
    std::string m_text;
};
