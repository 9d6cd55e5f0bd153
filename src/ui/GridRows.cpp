#include "ui/GridRows.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "common/SeparatedText.h"

namespace {

/// What a cell is sorted by, made once for each row.
struct SortKey {
    enum class Kind { Number, Text, Empty } kind = Kind::Empty;
    double number = 0;
    std::string text = {};
};

SortKey KeyOf(const std::string& cell)
{
    const std::string text = Trim(cell);
    if (text.empty()) return {};
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    const bool isNumber = error == std::errc() && read == end && number == number;
    if (isNumber && text.find_first_of("0123456789") != std::string::npos) return {SortKey::Kind::Number, number};
    return {SortKey::Kind::Text, 0, MatchedName(text)};
}

bool ComesBefore(const SortKey& a, const SortKey& b, bool descending)
{
    const bool emptyA = a.kind == SortKey::Kind::Empty, emptyB = b.kind == SortKey::Kind::Empty;
    if (emptyA || emptyB) return !emptyA && emptyB;
    if (descending) return ComesBefore(b, a, false);
    if (a.kind != b.kind) return a.kind < b.kind;
    return a.kind == SortKey::Kind::Number ? a.number < b.number : a.text < b.text;
}

GridBlock Ordered(const GridBlock& block)
{
    return {std::min(block.top, block.bottom), std::min(block.left, block.right), std::max(block.top, block.bottom),
            std::max(block.left, block.right)};
}

template <class Visit>
void ForEachCell(const GridBlock& block, Visit visit)
{
    for (std::size_t place = block.top; place <= block.bottom; ++place)
        for (std::size_t column = block.left; column <= block.right; ++column) visit(place, column);
}

using Values = std::vector<std::vector<std::string>>;

// Text from somewhere else may hold a quote that is none of the form's.
Values ValuesOf(std::string_view text)
{
    auto records = ParseSeparated(text, {.separator = '\t'});
    if (!records) records = ParseSeparated(text, {.separator = '\t', .quotes = false});
    Values values;
    for (SeparatedRecord& record : *records) values.push_back(std::move(record.values));
    return values;
}

}  // namespace

CGridRows::CGridRows(CGridModel& model) : m_model(model) { Refresh(); }

std::optional<std::size_t> CGridRows::PlaceOf(std::size_t row) const
{
    const auto found = std::ranges::find(m_order, row);
    if (found == m_order.end()) return std::nullopt;
    return static_cast<std::size_t>(found - m_order.begin());
}

void CGridRows::SortBy(std::size_t column, SortOrder order)
{
    m_sortColumn = column;
    m_sorting = order;
    Refresh();
}

void CGridRows::SortNext(std::size_t column)
{
    const bool same = column == m_sortColumn;
    if (!same || m_sorting == SortOrder::Original) return SortBy(column, SortOrder::Ascending);
    SortBy(column, m_sorting == SortOrder::Ascending ? SortOrder::Descending : SortOrder::Original);
}

void CGridRows::Filter(GridFilter filter)
{
    m_filter = std::move(filter);
    m_wanted = MatchedName(m_filter.text);
    Refresh();
}

void CGridRows::Refresh()
{
    const std::optional<std::size_t> row =
        m_cursor.row < m_order.size() ? std::optional(Row(m_cursor.row)) : std::nullopt;
    m_order.clear();
    const std::vector<std::size_t> changed =
        m_filter.changedOnly ? m_model.ChangedRows() : std::vector<std::size_t>();
    for (std::size_t at = 0; at < m_model.Rows(); ++at) {
        if (m_filter.changedOnly && !std::ranges::binary_search(changed, at)) continue;
        if (Passes(at)) m_order.push_back(at);
    }
    if (m_sorting != SortOrder::Original && m_sortColumn < m_model.Columns()) Sort();
    m_selection.clear();
    m_cursor.row = row ? PlaceOf(*row).value_or(0) : 0;
    Limit();
}

bool CGridRows::Passes(std::size_t row) const
{
    if (m_wanted.empty()) return true;
    const std::size_t first = m_filter.column.value_or(0);
    const std::size_t end = m_filter.column ? first + 1 : m_model.Columns();
    for (std::size_t column = first; column < end && column < m_model.Columns(); ++column)
        if (MatchedName(m_model.Cell({row, column})).find(m_wanted) != std::string::npos) return true;
    return false;
}

void CGridRows::Sort()
{
    std::vector<SortKey> keys;
    keys.reserve(m_order.size());
    for (const std::size_t row : m_order) keys.push_back(KeyOf(m_model.Cell({row, m_sortColumn})));
    std::vector<std::size_t> places(m_order.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    std::ranges::stable_sort(places, [&](std::size_t a, std::size_t b) {
        return ComesBefore(keys[a], keys[b], m_sorting == SortOrder::Descending);
    });
    for (std::size_t& place : places) place = m_order[place];
    m_order = std::move(places);
}

/// Keeps cursor and selection within what is there.
void CGridRows::Limit()
{
    const std::size_t rows = m_order.size(), columns = m_model.Columns();
    if (rows == 0 || columns == 0) {
        m_cursor = {};
        m_selection.clear();
        return;
    }
    m_cursor = {std::min(m_cursor.row, rows - 1), std::min(m_cursor.column, columns - 1)};
    std::erase_if(m_selection, [&](const GridBlock& block) { return block.top >= rows || block.left >= columns; });
    for (GridBlock& block : m_selection) {
        block.bottom = std::min(block.bottom, rows - 1);
        block.right = std::min(block.right, columns - 1);
    }
}

void CGridRows::MoveTo(GridCell cursor)
{
    m_cursor = cursor;
    m_selection.clear();
    Limit();
}

void CGridRows::Select(std::vector<GridBlock> blocks)
{
    m_selection = std::move(blocks);
    for (GridBlock& block : m_selection) block = Ordered(block);
    Limit();
}

std::vector<GridBlock> CGridRows::Selection() const
{
    if (!m_selection.empty()) return m_selection;
    if (m_order.empty() || m_model.Columns() == 0) return {};
    return {{m_cursor.row, m_cursor.column, m_cursor.row, m_cursor.column}};
}

std::vector<std::size_t> CGridRows::SelectedRows() const
{
    std::vector<bool> selected(m_order.size());
    for (const GridBlock& block : Selection())
        for (std::size_t place = block.top; place <= block.bottom; ++place) selected[place] = true;
    std::vector<std::size_t> rows;
    for (std::size_t place = 0; place < selected.size(); ++place)
        if (selected[place]) rows.push_back(Row(place));
    return rows;
}

bool CGridRows::IsSelected(std::size_t place, std::size_t column) const
{
    return std::ranges::any_of(Selection(), [&](const GridBlock& block) {
        return block.top <= place && place <= block.bottom && block.left <= column && column <= block.right;
    });
}

bool CGridRows::Edit(std::size_t place, std::size_t column, std::string text)
{
    if (place >= Size()) return false;
    return m_model.Change({{{Row(place), column}, std::move(text)}}) > 0;
}

std::string CGridRows::Copy() const
{
    const std::vector<GridBlock> blocks = Selection();
    if (blocks.empty()) return {};
    GridBlock around = blocks.front();
    for (const GridBlock& block : blocks)
        around = {std::min(around.top, block.top), std::min(around.left, block.left),
                  std::max(around.bottom, block.bottom), std::max(around.right, block.right)};
    std::string copied;
    ForEachCell(around, [&](std::size_t place, std::size_t column) {
        if (column > around.left)
            copied += '\t';
        else if (place > around.top)
            copied += "\r\n";
        if (blocks.size() == 1 || IsSelected(place, column)) copied += SeparatedValue(Text(place, column), '\t');
    });
    return copied;
}

std::size_t CGridRows::Clear()
{
    std::vector<CellChange> changes;
    for (const GridBlock& block : Selection())
        ForEachCell(block, [&](std::size_t place, std::size_t column) {
            changes.push_back({{Row(place), column}, ""});
        });
    return m_model.Change(std::move(changes));
}

PasteResult CGridRows::Paste(std::string_view text)
{
    const std::vector<GridBlock> blocks = Selection();
    Values values = ValuesOf(text);
    PasteResult result;
    if (blocks.empty() || values.empty()) return result;
    std::vector<CellChange> changes;
    const auto put = [&](std::size_t place, std::size_t column, std::string value) {
        if (place < Size() && column < m_model.Columns() && m_model.Column(column).editable)
            changes.push_back({{Row(place), column}, std::move(value)});
        else
            ++result.refused;
    };
    if (values.size() == 1 && values[0].size() == 1) {
        for (const GridBlock& block : blocks)
            ForEachCell(block, [&](std::size_t place, std::size_t column) { put(place, column, values[0][0]); });
    } else {
        for (std::size_t row = 0; row < values.size(); ++row)
            for (std::size_t column = 0; column < values[row].size(); ++column)
                put(blocks[0].top + row, blocks[0].left + column, std::move(values[row][column]));
    }
    result.changed = m_model.Change(std::move(changes));
    return result;
}

bool CGridRows::Show(const std::vector<GridCell>& cells)
{
    for (const GridCell& cell : cells)
        if (const auto place = PlaceOf(cell.row)) {
            MoveTo({*place, cell.column});
            break;
        }
    return !cells.empty();
}
