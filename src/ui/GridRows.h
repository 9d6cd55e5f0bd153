// The rows of a grid as somebody looks at them and works on them: their order, a filter, and what is selected.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ui/GridModel.h"

enum class SortOrder { Original, Ascending, Descending };

/// Which rows are shown.
struct GridFilter {
    std::string text = {};                   ///< in any letter case; empty: any
    std::optional<std::size_t> column = {};  ///< in which it stands; none: in any
    bool changedOnly = false;
};

/// A rectangle of cells by the places of their rows; the last ones belong to it.
struct GridBlock {
    std::size_t top = 0, left = 0, bottom = 0, right = 0;
    bool operator==(const GridBlock&) const = default;
};

/// What pasting has done.
struct PasteResult {
    std::size_t changed = 0;  ///< cells
    std::size_t refused = 0;  ///< values for cells that cannot be edited or are not there
};

/// A view of a model, which is borrowed: places from 0, each of which shows a row of the model. It has no texts of
/// its own. A row stays at its place when its cells change, until it is sorted or filtered anew.
class CGridRows {
public:
    explicit CGridRows(CGridModel& model);

    CGridModel& Model() const { return m_model; }
    std::size_t Size() const { return m_order.size(); }
    std::size_t Row(std::size_t place) const { return m_order.at(place); }
    [[nodiscard]] std::optional<std::size_t> PlaceOf(std::size_t row) const;
    const std::string& Text(std::size_t place, std::size_t column) const
    {
        return m_model.Cell({Row(place), column});
    }

    /// Numbers come before texts and in the order of their values; texts without regard to letter case. Empty cells
    /// are the last in either order. Equal rows keep the order of the model.
    void SortBy(std::size_t column, SortOrder order);
    /// Ascending, descending, original, and again; another column begins with ascending.
    void SortNext(std::size_t column);
    std::size_t SortColumn() const { return m_sortColumn; }
    SortOrder Sorting() const { return m_sorting; }
    void Filter(GridFilter filter);
    const GridFilter& CurrentFilter() const { return m_filter; }
    /// Filters and sorts anew, after rows were added, too. The selection is kept as far as its row is still shown.
    void Refresh();

    // Where the user is. Nothing is ever selected that is not there.

    GridCell Cursor() const { return m_cursor; }  ///< its row is a place
    void MoveTo(GridCell cursor);
    /// One after the other; none: the cursor's cell.
    void Select(std::vector<GridBlock> blocks);
    [[nodiscard]] std::vector<GridBlock> Selection() const;
    /// The rows of the model in which something is selected, in the order in which they are shown.
    [[nodiscard]] std::vector<std::size_t> SelectedRows() const;

    // What the user does. Each is one step that can be undone.

    /// False when the cell cannot be edited or has this text.
    bool Edit(std::size_t place, std::size_t column, std::string text);
    /// The smallest block around what is selected, as spreadsheets exchange it: tabs between cells, CR LF between
    /// rows, quotes where they are needed. Cells in it that are not selected are empty.
    [[nodiscard]] std::string Copy() const;
    /// Empties what is selected and can be edited.
    std::size_t Clear();
    /// Puts such a block where the selection begins. One value fills all that is selected.
    PasteResult Paste(std::string_view text);
    /// Undo and redo move the cursor to what has changed, where it is shown.
    bool Undo() { return Show(m_model.Undo()); }
    bool Redo() { return Show(m_model.Redo()); }

private:
    bool Passes(std::size_t row) const;
    void Sort();
    void Limit();
    bool IsSelected(std::size_t place, std::size_t column) const;
    bool Show(const std::vector<GridCell>& cells);

    CGridModel& m_model;
    std::vector<std::size_t> m_order;  // rows by their places
    std::size_t m_sortColumn = 0;
    SortOrder m_sorting = SortOrder::Original;
    GridFilter m_filter;
    std::string m_wanted;  // the text of the filter in small letters
    GridCell m_cursor;
    std::vector<GridBlock> m_selection;
};
