#include "ui/GridModel.h"

#include <algorithm>
#include <utility>

std::optional<std::size_t> CGridModel::ColumnNamed(std::string_view name) const
{
    const auto found = std::ranges::find(m_columns, name, &CSpreadsheetColumn::name);
    if (found == m_columns.end()) return std::nullopt;
    return static_cast<std::size_t>(found - m_columns.begin());
}

void CGridModel::AddRow(std::vector<std::string> cells)
{
    cells.resize(m_columns.size());
    m_rows.push_back(std::move(cells));
}

void CGridModel::AddColumn(CSpreadsheetColumn column, std::vector<std::string> cells)
{
    cells.resize(m_rows.size());
    m_columns.push_back(std::move(column));
    for (std::size_t row = 0; row < m_rows.size(); ++row) m_rows[row].push_back(std::move(cells[row]));
}

const std::string& CGridModel::Original(GridCell cell) const
{
    const auto found = m_originals.find(NumberOf(cell));
    return found == m_originals.end() ? Cell(cell) : found->second;
}

std::vector<std::size_t> CGridModel::ChangedRows() const
{
    std::vector<std::size_t> rows;
    for (const auto& [number, text] : m_originals) rows.push_back(number / kMostColumns);
    std::ranges::sort(rows);
    const auto rest = std::ranges::unique(rows);
    rows.erase(rest.begin(), rest.end());
    return rows;
}

std::size_t CGridModel::Change(std::vector<CellChange> changes)
{
    Step step;
    for (CellChange& change : changes) {
        const GridCell cell = change.cell;
        const bool exists = cell.row < m_rows.size() && cell.column < m_columns.size();
        if (!exists || !m_columns[cell.column].editable || Cell(cell) == change.text) continue;
        Exchange(change);
        step.push_back(std::move(change));
    }
    const std::size_t count = step.size();
    if (count == 0) return 0;
    // One cell may be named twice: what stood there first has to be the last to come back.
    std::ranges::reverse(step);
    m_done.push_back(std::move(step));
    m_undone.clear();
    return count;
}

/// Puts the text into the cell, and the cell's into the change.
void CGridModel::Exchange(CellChange& change)
{
    std::string& text = m_rows[change.cell.row][change.cell.column];
    const auto original = m_originals.find(NumberOf(change.cell));
    if (original == m_originals.end())
        m_originals.emplace(NumberOf(change.cell), text);
    else if (original->second == change.text)
        m_originals.erase(original);
    std::swap(text, change.text);
}

std::vector<GridCell> CGridModel::Move(std::deque<Step>& from, std::deque<Step>& to)
{
    if (from.empty()) return {};
    Step step = std::move(from.back());
    from.pop_back();
    std::vector<GridCell> cells;
    for (CellChange& change : step) {
        Exchange(change);
        cells.push_back(change.cell);
    }
    std::ranges::reverse(step);
    to.push_back(std::move(step));
    return cells;
}

void CGridModel::Accept(std::size_t row)
{
    for (std::size_t column = 0; column < m_columns.size(); ++column) m_originals.erase(NumberOf({row, column}));
}

void CGridModel::Refresh(GridCell cell, std::string text)
{
    if (!m_columns.at(cell.column).editable) m_rows.at(cell.row).at(cell.column) = std::move(text);
}
