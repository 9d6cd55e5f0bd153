// Finding and replacing texts in the cells of a grid.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/RegularExpression.h"
#include "ui/GridRows.h"

struct CellSearch {
    std::string text = {};         ///< empty with wholeCell: empty cells
    std::string replacement = {};  ///< of an expression: with \1 and its like
    bool expression = false;
    bool wholeCell = false;
    bool matchCase = false;
    std::vector<std::size_t> columns = {};  ///< ascending; empty: all
};

/// A search made ready.
class CCellFinder {
public:
    /// Fails with a sentence when nothing is searched for or the expression is none.
    static Expected<CCellFinder> Make(CellSearch search);

    // Each fails when the expression gives up, see CRegularExpression.

    /// The first cell that matches behind `from`, row by row as they are shown and from the start again; the cell
    /// itself is the last. Its row is a place.
    [[nodiscard]] Expected<std::optional<GridCell>> Next(const CGridRows& rows, GridCell from) const;
    /// What replacing in all rows that are shown would change; cells that can be edited only.
    [[nodiscard]] Expected<std::vector<CellChange>> Replacements(const CGridRows& rows) const;

private:
    [[nodiscard]] Expected<bool> Matches(const std::string& cell) const;
    [[nodiscard]] Expected<std::string> Replaced(const std::string& cell) const;
    [[nodiscard]] std::vector<std::size_t> Columns(const CGridModel& model) const;

    CellSearch m_search;
    CRegularExpression m_expression;
};
