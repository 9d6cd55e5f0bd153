#pragma once

#include <string>

#include "tools/DlgReplaceInCells.h"
#include "tools/MetadataTable.h"
#include "ui/GridRows.h"
#include "ui/Windows.h"

/// Shows the properties of documents as a table and writes what the user has changed in it.
class CDlgSpreadsheet {
public:
    /// Borrows the table.
    CDlgSpreadsheet(DialogServices services, CMetadataTable& table);
    CDlgSpreadsheet(const CDlgSpreadsheet&) = delete;
    CDlgSpreadsheet& operator=(const CDlgSpreadsheet&) = delete;

    /// Comes back when the user has closed it.
    void Show();

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] FormControl PlainButton(const char* label, void (CDlgSpreadsheet::*act)());
    [[nodiscard]] FormControl FilterRow();
    [[nodiscard]] FormControl ToolRow();
    [[nodiscard]] std::string Heading() const;
    [[nodiscard]] std::string Status() const;

    void Filter();
    void Undo();
    void Redo();
    void AddFields();
    void Replace();
    void Import();
    [[nodiscard]] bool MayImport(const ImportPlan& plan, const std::string& path, const std::string& set);
    void Export();
    void Apply();
    FormAnswer Close();
    void Pasted(const PasteResult& result);
    void Warn(const std::string& text) { m_services.windows.Message(MessageKind::Warning, text); }

    DialogServices m_services;
    CMetadataTable& m_table;
    CGridRows m_rows;
    CDlgReplaceInCells m_replace;
    std::string m_filter, m_said;
    int m_filterScope = 0;
    bool m_changedOnly = false;
};
