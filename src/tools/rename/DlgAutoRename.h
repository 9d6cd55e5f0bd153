#pragma once

#include <string>
#include <vector>

#include "naming/RenameSettings.h"
#include "tools/rename/NamePartList.h"
#include "ui/Windows.h"

/// Asks what new file names are made of, and what is done with the files. Works on a copy of the settings.
class CDlgAutoRename {
public:
    CDlgAutoRename(DialogServices services, const RenameSettings& settings);
    CDlgAutoRename(const CDlgAutoRename&) = delete;
    CDlgAutoRename& operator=(const CDlgAutoRename&) = delete;

    /// True when the user has confirmed; then Settings() has the answer, which names can be built from.
    [[nodiscard]] bool Show();
    [[nodiscard]] const RenameSettings& Settings() const { return m_settings; }

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] FormControl PlainButton(const char* label, void (CDlgAutoRename::*act)());
    [[nodiscard]] Group RuleGroup();
    [[nodiscard]] Group OptionGroup();
    [[nodiscard]] Group ScriptGroup();

    void AddRule();
    void EditRule();
    void RemoveRules();
    void RuleUp() { MoveRule(-1); }
    void RuleDown() { MoveRule(1); }
    void MoveRule(int by);
    void EditOptions();
    void ChooseFolder();
    void Load();
    void Save();

    void Use(RenameSettings settings);
    [[nodiscard]] bool OneRuleSelected(const char* request);
    [[nodiscard]] std::string Problem() const;
    [[nodiscard]] FormAnswer Confirm();
    void Warn(const std::string& text) { m_services.windows.Message(MessageKind::Warning, text); }

    DialogServices m_services;
    RenameSettings m_settings;
    CNamePartList m_components;
    std::vector<std::size_t> m_selectedRules;
};
