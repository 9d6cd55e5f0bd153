#pragma once

#include "ui/GridSearch.h"
#include "ui/Windows.h"

/// Finds and replaces texts in the cells of a grid. Remembers what was entered for the next time.
class CDlgReplaceInCells {
public:
    CDlgReplaceInCells(DialogServices services, CGridRows& rows) : m_services(std::move(services)), m_rows(rows) {}
    CDlgReplaceInCells(const CDlgReplaceInCells&) = delete;
    CDlgReplaceInCells& operator=(const CDlgReplaceInCells&) = delete;

    /// Shows itself; finding moves the cursor of the grid and closes the dialog, replacing is one step.
    void Show();

    [[nodiscard]] DialogForm Describe();

private:
    FormAnswer FindNext();
    FormAnswer ReplaceAll();
    FormAnswer Tell(const std::string& problem);
    [[nodiscard]] CellSearch Search() const;

    DialogServices m_services;
    CGridRows& m_rows;
    CellSearch m_search;
    int m_scope = 0;
};
