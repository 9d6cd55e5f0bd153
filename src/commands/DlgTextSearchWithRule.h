#pragma once

#include <string>

#include "commands/AreaFields.h"
#include "search/SearchRules.h"
#include "ui/Windows.h"

/// Asks for one rule of a search. Works on a copy of it.
class CDlgTextSearchWithRule {
public:
    CDlgTextSearchWithRule(DialogServices services, const SearchRule& rule);
    CDlgTextSearchWithRule(const CDlgTextSearchWithRule&) = delete;
    CDlgTextSearchWithRule& operator=(const CDlgTextSearchWithRule&) = delete;

    /// True when the user has confirmed; then Rule() has the answer.
    [[nodiscard]] bool Show();
    [[nodiscard]] const SearchRule& Rule() const { return m_rule; }

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] Group ExpressionGroup();
    [[nodiscard]] Group PlaceGroup();
    [[nodiscard]] Group ActionGroup();
    [[nodiscard]] Group CopyGroup();
    [[nodiscard]] FormControl HelpButton(const char* label, const char* topic);
    void AddElement();
    void EditArea();
    void ChooseCopyFolder();
    [[nodiscard]] FormAnswer Confirm();
    /// What is wrong; empty when the pages are in the rule.
    [[nodiscard]] std::string TakePages();

    DialogServices m_services;
    SearchRule m_rule;
    // Contents of controls that are no fields of the rule, UTF-8.
    int m_selection, m_subset;
    std::string m_firstPage, m_lastPage, m_copyFolder;
};

/// Asks for a rectangle on a page, in points.
class CDlgTextSearchArea {
public:
    CDlgTextSearchArea(DialogServices services, const SettingsRectangle& area);
    CDlgTextSearchArea(const CDlgTextSearchArea&) = delete;
    CDlgTextSearchArea& operator=(const CDlgTextSearchArea&) = delete;

    [[nodiscard]] bool Show();
    [[nodiscard]] const SettingsRectangle& Area() const { return m_area; }

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] FormAnswer Confirm();

    DialogServices m_services;
    SettingsRectangle m_area;
    CAreaFields m_fields;
    std::string m_page = "1";
};

/// "%3.1f, %3.1f, %3.1f, %3.1f" as left, bottom, right and top, or "Whole page".
[[nodiscard]] std::string AreaText(const SearchRule& rule);
