#pragma once

#include "naming/FileNamePart.h"
#include "tools/rename/NamePartList.h"
#include "ui/Windows.h"

/// Asks for the components whose text is looked up in a table, and for the table. Works on a copy of the component.
class CDlgReplaceWithLookupTable {
public:
    /// `depth`: how many lookups the component stands in, and 1.
    CDlgReplaceWithLookupTable(DialogServices services, const CFileNamePart& part, int depth);
    CDlgReplaceWithLookupTable(const CDlgReplaceWithLookupTable&) = delete;
    CDlgReplaceWithLookupTable& operator=(const CDlgReplaceWithLookupTable&) = delete;

    /// True when the user has confirmed; then Part() has the answer.
    [[nodiscard]] bool Show();
    [[nodiscard]] const CFileNamePart& Part() const { return m_part; }

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] Group KeyGroup();
    [[nodiscard]] Row TableRow();
    void EditTable();
    [[nodiscard]] std::string Problem() const;
    [[nodiscard]] FormAnswer Confirm();

    DialogServices m_services;
    CFileNamePart m_part;
    CNamePartList m_children;
};
