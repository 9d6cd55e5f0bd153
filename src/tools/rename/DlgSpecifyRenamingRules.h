#pragma once

#include <string>
#include <vector>

#include "naming/FileRenameRule.h"
#include "ui/Windows.h"

/// Asks for a rule that changes the whole of a new file name: one of the predefined ones, or texts of the user.
class CDlgSpecifyRenamingRules {
public:
    /// `rule`: shown at first; one without valid index selects none.
    explicit CDlgSpecifyRenamingRules(DialogServices services, const CFileRenameRule& rule = {});
    CDlgSpecifyRenamingRules(const CDlgSpecifyRenamingRules&) = delete;
    CDlgSpecifyRenamingRules& operator=(const CDlgSpecifyRenamingRules&) = delete;

    /// True when the user has confirmed; then Rule() is the answer.
    [[nodiscard]] bool Show();
    [[nodiscard]] CFileRenameRule Rule() const;

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] bool TakesTexts() const;
    [[nodiscard]] std::string Problem() const;
    [[nodiscard]] FormAnswer Confirm();

    DialogServices m_services;
    std::vector<std::size_t> m_selected;  // by index - 1
    std::string m_search, m_replace;
};
