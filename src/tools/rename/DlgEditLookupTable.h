#pragma once

#include <string>

#include "naming/LookupTable.h"
#include "ui/Windows.h"

/// Lets the user edit a lookup table as text, and import one. Works on a copy of it.
class CDlgEditLookupTable {
public:
    CDlgEditLookupTable(DialogServices services, const LookupTable& table);
    CDlgEditLookupTable(const CDlgEditLookupTable&) = delete;
    CDlgEditLookupTable& operator=(const CDlgEditLookupTable&) = delete;

    /// True when the user has confirmed; then Table() has the answer.
    [[nodiscard]] bool Show();
    [[nodiscard]] const LookupTable& Table() const { return m_table; }

    [[nodiscard]] DialogForm Describe();

private:
    void Import();
    [[nodiscard]] FormAnswer Confirm();

    DialogServices m_services;
    LookupTable m_table;
    std::string m_text;
};
