#pragma once

#include <string>
#include <vector>

#include "search/SearchRules.h"
#include "ui/Windows.h"

/// Asks for the rules and the report of a search. Works on a copy of the settings.
class CDlgSearchText {
public:
    CDlgSearchText(DialogServices services, const SearchSettings& settings);
    CDlgSearchText(const CDlgSearchText&) = delete;
    CDlgSearchText& operator=(const CDlgSearchText&) = delete;

    /// True when the user has confirmed; then Settings() has the answer.
    [[nodiscard]] bool Show();
    [[nodiscard]] const SearchSettings& Settings() const { return m_settings; }

    [[nodiscard]] DialogForm Describe();

private:
    enum ReportRow { kNewReport, kAppend, kOverwrite };

    [[nodiscard]] Row RuleButtons();
    [[nodiscard]] Row FileButtons();
    [[nodiscard]] Group ReportGroup();
    [[nodiscard]] FormControl PlainButton(const char* label, void (CDlgSearchText::*act)());
    /// The selected rule; null, said, when none is.
    [[nodiscard]] SearchRule* Selected();
    void Add();
    void Edit();
    void Delete();
    void MoveUp();
    void MoveDown();
    void Move(int by);
    void Load();
    void Save();
    void ExportTerms();
    void ImportTerms();
    void ChooseReport();
    /// Puts the controls' contents into the settings.
    void Take();
    [[nodiscard]] bool SaveInto();
    [[nodiscard]] FormAnswer Confirm();
    void Warn(const std::string& text) { m_services.windows.Message(MessageKind::Warning, text); }

    DialogServices m_services;
    SearchSettings m_settings;
    std::vector<std::size_t> m_selected;
    int m_report;
    std::string m_reportFile;  // UTF-8
};
