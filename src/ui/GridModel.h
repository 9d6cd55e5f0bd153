// The cells of a grid: what stands in them, what did originally, and the way back.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct CSpreadsheetColumn {
    std::string name = {};
    bool editable = false;
    int width = 20;  ///< in characters
};

struct GridCell {
    std::size_t row = 0, column = 0;
    bool operator==(const GridCell&) const = default;
};

struct CellChange {
    GridCell cell;
    std::string text;
};

/// Rows by columns of texts in UTF-8. Rows and columns keep their numbers, which count from 0 in the order in which
/// they were added. Owns the texts, each once; of changed cells the original ones, too, and what undoing needs.
class CGridModel {
public:
    explicit CGridModel(std::vector<CSpreadsheetColumn> columns) : m_columns(std::move(columns)) {}
    CGridModel(const CGridModel&) = delete;
    CGridModel& operator=(const CGridModel&) = delete;

    std::size_t Rows() const { return m_rows.size(); }
    std::size_t Columns() const { return m_columns.size(); }
    const CSpreadsheetColumn& Column(std::size_t column) const { return m_columns.at(column); }
    void SetWidth(std::size_t column, int characters) { m_columns.at(column).width = characters; }
    void MakeEditable(std::size_t column) { m_columns.at(column).editable = true; }
    [[nodiscard]] std::optional<std::size_t> ColumnNamed(std::string_view name) const;

    /// Cells that are missing are empty, those beyond the columns are dropped.
    void AddRow(std::vector<std::string> cells);
    /// Likewise, one cell for each row. What was changed before can still be undone.
    void AddColumn(CSpreadsheetColumn column, std::vector<std::string> cells);

    const std::string& Cell(GridCell cell) const { return m_rows.at(cell.row).at(cell.column); }
    const std::string& Original(GridCell cell) const;
    bool IsChanged(GridCell cell) const { return m_originals.contains(NumberOf(cell)); }
    std::size_t ChangedCells() const { return m_originals.size(); }
    /// Ascending, each once.
    [[nodiscard]] std::vector<std::size_t> ChangedRows() const;

    /// Makes all the changes one step that can be undone, and answers how many cells have another text now. Cells of
    /// columns that cannot be edited, and those that do not exist, stay as they are.
    std::size_t Change(std::vector<CellChange> changes);
    bool CanUndo() const { return !m_done.empty(); }
    bool CanRedo() const { return !m_undone.empty(); }
    /// Takes the last step back; the cells that it changed, none when there is no step.
    std::vector<GridCell> Undo() { return Move(m_done, m_undone); }
    std::vector<GridCell> Redo() { return Move(m_undone, m_done); }

    /// What stands in the row is what counts as the original from now on.
    void Accept(std::size_t row);
    /// Shows what has become of a cell that cannot be edited, which is no change; others stay as they are.
    void Refresh(GridCell cell, std::string text);

private:
    using Step = std::vector<CellChange>;  // the texts that the cells have when the step is taken back

    // Columns are few: see the limit in the code.
    std::size_t NumberOf(GridCell cell) const { return cell.row * kMostColumns + cell.column; }
    void Exchange(CellChange& change);
    std::vector<GridCell> Move(std::deque<Step>& from, std::deque<Step>& to);

    static constexpr std::size_t kMostColumns = 65536;
    std::vector<CSpreadsheetColumn> m_columns;
    std::vector<std::vector<std::string>> m_rows;
    std::unordered_map<std::size_t, std::string> m_originals;  // of changed cells, by their numbers
    std::deque<Step> m_done, m_undone;
};
