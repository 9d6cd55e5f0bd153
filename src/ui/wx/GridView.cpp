#include <wx/brush.h>
#include <wx/clipbrd.h>
#include <wx/control.h>
#include <wx/dc.h>
#include <wx/grid.h>
#include <wx/settings.h>

#include <algorithm>
#include <string>

#include "base/Unicode.h"
#include "ui/FormControls.h"
#include "ui/GridRows.h"
#include "ui/wx/System.h"
#include "ui/wx/Text.h"
#include "ui/wx/View.h"

namespace {

constexpr std::size_t kMostDrawn = 400;  // bytes of a cell; no screen is wider

// A cell shows one line, and the field that edits it may lose control characters: their pictures stand for them.

constexpr char32_t kLineEndPicture = 0x23CE, kFirstPicture = 0x2400;
constexpr char32_t kFirstPrintable = 0x20;

std::string PictureText(std::string_view cell)
{
    std::string shown;
    for (std::size_t at = 0; at < cell.size();) {
        const char32_t character = NextUtf8(cell, at);
        if (character == '\r' && at < cell.size() && cell[at] == '\n') ++at;
        if (character == '\r' || character == '\n')
            AppendUtf8(shown, kLineEndPicture);
        else
            AppendUtf8(shown, character < kFirstPrintable ? kFirstPicture + character : character);
    }
    return shown;
}

std::string TextOfPictures(std::string_view shown)
{
    std::string cell;
    for (std::size_t at = 0; at < shown.size();) {
        const char32_t character = NextUtf8(shown, at);
        if (character == kLineEndPicture)
            cell += '\n';
        else if (character >= kFirstPicture && character < kFirstPicture + kFirstPrintable)
            cell += static_cast<char>(character - kFirstPicture);
        else
            AppendUtf8(cell, character);
    }
    return cell;
}

std::size_t At(int number) { return static_cast<std::size_t>(std::max(number, 0)); }

/// Draws a cell in one line; one that was changed bold and with a mark in its corner.
class CCellRenderer final : public wxGridCellStringRenderer {
public:
    explicit CCellRenderer(const CGridRows& rows) : m_rows(rows) {}

    void Draw(wxGrid& grid, wxGridCellAttr& attr, wxDC& dc, const wxRect& rect, int row, int column,
              bool isSelected) override
    {
        wxGridCellRenderer::Draw(grid, attr, dc, rect, row, column, isSelected);
        if (At(row) >= m_rows.Size() || At(column) >= m_rows.Model().Columns()) return;
        const bool changed = m_rows.Model().IsChanged({m_rows.Row(At(row)), At(column)});
        SetTextColoursAndFont(grid, attr, dc, isSelected);
        if (changed) dc.SetFont(dc.GetFont().Bold());
        wxRect inside = rect;
        inside.Deflate(grid.FromDIP(3), 0);
        const std::string_view cell = m_rows.Text(At(row), At(column));
        const wxString text = Shown(PictureText(cell.substr(0, kMostDrawn)));
        grid.DrawTextRectangle(dc, wxControl::Ellipsize(text, dc, wxELLIPSIZE_END, inside.width), inside, attr,
                               wxALIGN_LEFT, wxALIGN_CENTRE_VERTICAL);
        if (changed) DrawMark(grid, dc, rect);
    }
    wxGridCellRenderer* Clone() const override { return new CCellRenderer(m_rows); }

private:
    static void DrawMark(const wxGrid& grid, wxDC& dc, const wxRect& rect)
    {
        const int size = grid.FromDIP(7);
        const wxPoint corners[] = {rect.GetTopLeft(), rect.GetTopLeft() + wxPoint(size, 0),
                                   rect.GetTopLeft() + wxPoint(0, size)};
        dc.SetPen(*wxTRANSPARENT_PEN);
        dc.SetBrush(wxBrush(wxColour(200, 80, 0)));
        dc.DrawPolygon(3, corners);
    }

    const CGridRows& m_rows;
};

/// What the toolkit asks about cells. It keeps none.
class CCellTable final : public wxGridTableBase {
public:
    explicit CCellTable(CGridRows& rows) : m_rows(rows), m_editable(Attribute(true)), m_fixed(Attribute(false)) {}

    int GetNumberRows() override { return static_cast<int>(m_rows.Size()); }
    int GetNumberCols() override { return static_cast<int>(m_rows.Model().Columns()); }
    wxString GetValue(int row, int column) override { return Shown(PictureText(Cell(row, column))); }
    // What nobody changed stays as it is: not everything can be shown.
    void SetValue(int row, int column, const wxString& value) override
    {
        if (value != GetValue(row, column)) (void)m_rows.Edit(At(row), At(column), TextOfPictures(Typed(value)));
    }
    wxString GetRowLabelValue(int row) override { return wxString::Format("%d", row + 1); }
    wxString GetColLabelValue(int column) override
    {
        std::string label = m_rows.Model().Column(At(column)).name;
        const bool sorted = m_rows.Sorting() != SortOrder::Original && m_rows.SortColumn() == At(column);
        if (sorted) label += m_rows.Sorting() == SortOrder::Ascending ? " \u25B2" : " \u25BC";
        return Shown(label);
    }
    bool CanHaveAttributes() override { return true; }
    wxGridCellAttr* GetAttr(int, int column, wxGridCellAttr::wxAttrKind) override
    {
        const bool exists = column >= 0 && At(column) < m_rows.Model().Columns();
        const bool editable = exists && m_rows.Model().Column(At(column)).editable;
        wxGridCellAttr* const attribute = (editable ? m_editable : m_fixed).get();
        attribute->IncRef();
        return attribute;
    }

private:
    wxGridCellAttrPtr Attribute(bool editable) const
    {
        wxGridCellAttrPtr attribute(new wxGridCellAttr);
        attribute->SetRenderer(new CCellRenderer(m_rows));
        attribute->SetReadOnly(!editable);
        attribute->SetAlignment(wxALIGN_LEFT, wxALIGN_CENTRE_VERTICAL);
        if (!editable) {
            attribute->SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
            attribute->SetTextColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNTEXT));
        }
        return attribute;
    }
    const std::string& Cell(int row, int column) const
    {
        static const std::string none;
        const bool exists = At(row) < m_rows.Size() && At(column) < m_rows.Model().Columns();
        return exists ? m_rows.Text(At(row), At(column)) : none;
    }

    CGridRows& m_rows;
    wxGridCellAttrPtr m_editable, m_fixed;
};

void PutOnClipboard(const std::string& text)
{
    const wxClipboardLocker clipboard;
    if (!clipboard) return;
    wxTheClipboard->SetData(new wxTextDataObject(Shown(text)));
    wxTheClipboard->Flush();
}

std::string TextOnClipboard()
{
    const wxClipboardLocker clipboard;
    wxTextDataObject data;
    if (!clipboard || !wxTheClipboard->GetData(data)) return {};
    return Typed(data.GetText());
}

class CCellsView final : public CView {
public:
    CCellsView(const FormControl& control, wxWindow* parent, CFormEvents& events)
        : CView(control), m_view(std::get<GridView>(control.what)), m_rows(*m_view.rows), m_events(events)
    {
        m_grid = new wxGrid(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxWANTS_CHARS | wxBORDER_THEME);
        m_table = new CCellTable(m_rows);
        m_grid->SetTable(m_table, true, wxGrid::wxGridSelectCells);
        SetLook();
        m_window = m_grid;
        m_focus = m_grid->GetGridWindow();
        m_widens = m_tall = true;
        NameForReaders(*m_grid, LabelOf(control), nullptr);
        NameCell();
        Listen();
    }

    void Load() override
    {
        SetShape();
        const GridCell cursor = m_rows.Cursor();
        const int row = static_cast<int>(cursor.row), column = static_cast<int>(cursor.column);
        const bool moved = row != m_grid->GetGridCursorRow() || column != m_grid->GetGridCursorCol();
        if (moved && m_rows.Size() > 0) m_grid->SetGridCursor(row, column);
        // Before it is shown it has no room, and would be scrolled to its last column.
        if (moved && m_rows.Size() > 0 && m_grid->IsShownOnScreen()) m_grid->MakeCellVisible(row, column);
        if (Selected() != m_rows.Selection()) Select();
        m_grid->ForceRefresh();
        NameCell();
    }
    void Store() override
    {
        if (m_grid->IsCellEditControlEnabled()) m_grid->DisableCellEditControl();
        if (m_rows.Size() == 0) return;
        m_rows.MoveTo({At(m_grid->GetGridCursorRow()), At(m_grid->GetGridCursorCol())});
        m_rows.Select(Selected());
    }

private:
    void SetLook()
    {
        const int height = m_grid->GetCharHeight() + m_grid->FromDIP(8);
        m_grid->SetDefaultRowSize(height);
        m_grid->SetDefaultCellFont(m_grid->GetFont());
        m_grid->SetLabelFont(m_grid->GetFont());
        m_grid->SetColLabelSize(height + m_grid->FromDIP(4));
        m_grid->SetRowLabelSize(TextWidth(*m_grid, 7));
        m_grid->SetRowLabelAlignment(wxALIGN_RIGHT, wxALIGN_CENTRE);
        m_grid->SetColLabelAlignment(wxALIGN_LEFT, wxALIGN_CENTRE);
        m_grid->SetCellHighlightROPenWidth(m_grid->GetCellHighlightPenWidth());
        m_grid->DisableDragRowSize();
        m_grid->SetTabBehaviour(wxGrid::Tab_Leave);
        m_grid->SetMinSize(wxSize(TextWidth(*m_grid, m_view.width), height * (m_view.lines + 1)));
        m_columns = m_grid->GetNumberCols();
        m_shownRows = m_grid->GetNumberRows();
        SetWidths(0);
    }
    void SetWidths(int first)
    {
        for (int column = first; column < m_columns; ++column)
            m_grid->SetColSize(column, TextWidth(*m_grid, m_rows.Model().Column(At(column)).width));
    }

    void Listen()
    {
        m_grid->Bind(wxEVT_CHAR_HOOK, [this](wxKeyEvent& event) {
            if (!Key(event)) event.Skip();
        });
        m_grid->Bind(wxEVT_GRID_CELL_CHANGED, [this](wxGridEvent&) { m_events.Changed(m_control); });
        m_grid->Bind(wxEVT_GRID_LABEL_LEFT_CLICK, [this](wxGridEvent& event) {
            if (event.GetCol() < 0 || event.ControlDown() || event.ShiftDown())
                event.Skip();
            else
                Sort(event.GetCol());
        });
        m_grid->Bind(wxEVT_GRID_COL_SIZE, [this](wxGridSizeEvent& event) {
            const int column = event.GetRowOrCol();
            m_rows.Model().SetWidth(At(column), m_grid->GetColSize(column) / TextWidth(*m_grid, 1));
        });
        m_grid->Bind(wxEVT_GRID_SELECT_CELL, [this](wxGridEvent& event) {
            event.Skip();
            NameForReaders(*m_focus, CellName(At(event.GetRow()), At(event.GetCol())), nullptr);
        });
    }

    /// True when the key was for the grid as a whole. Inside of a cell all but Escape are for the text.
    bool Key(const wxKeyEvent& event)
    {
        const int key = event.GetKeyCode();
        if (m_grid->IsCellEditControlShown()) return key == WXK_ESCAPE && LeaveCell();
        if (event.GetModifiers() == wxMOD_ALT && key == WXK_DOWN) return Sort(m_grid->GetGridCursorCol());
        if (event.GetModifiers() == wxMOD_NONE && key == WXK_DELETE) return Do([this] { (void)m_rows.Clear(); });
        if (event.GetModifiers() != wxMOD_CONTROL) return false;
        switch (key) {
            case 'C':
                return Do([this] { PutOnClipboard(m_rows.Copy()); });
            case 'X':
                return Do([this] {
                    PutOnClipboard(m_rows.Copy());
                    (void)m_rows.Clear();
                });
            case 'V':
                return Do([this] { Paste(); });
            case 'Z':
                return Do([this] { (void)m_rows.Undo(); });
            case 'Y':
                return Do([this] { (void)m_rows.Redo(); });
            case 'F':
                if (m_view.finds.empty()) return false;
                m_events.Activate(m_view.finds);
                return true;
            default:
                return false;
        }
    }

    template <class Work>
    bool Do(Work work)
    {
        Store();
        work();
        Load();
        m_events.Changed(m_control);
        return true;
    }

    bool Sort(int column)
    {
        return Do([this, column] { m_rows.SortNext(At(column)); });
    }

    void Paste()
    {
        const PasteResult result = m_rows.Paste(TextOnClipboard());
        if (m_view.pasted) m_view.pasted(result);
    }

    bool LeaveCell()
    {
        wxGridCellEditor* const editor =
            m_grid->GetCellEditor(m_grid->GetGridCursorRow(), m_grid->GetGridCursorCol());
        editor->Reset();
        editor->DecRef();
        m_grid->DisableCellEditControl();
        return true;
    }

    /// Tells the toolkit how many rows and columns there are now.
    void SetShape()
    {
        const int rows = m_table->GetNumberRows(), columns = m_table->GetNumberCols();
        if (rows > m_shownRows) Tell(wxGRIDTABLE_NOTIFY_ROWS_APPENDED, rows - m_shownRows);
        if (rows < m_shownRows) Tell(wxGRIDTABLE_NOTIFY_ROWS_DELETED, rows, m_shownRows - rows);
        m_shownRows = rows;
        if (columns <= m_columns) return;
        const int first = m_columns;
        Tell(wxGRIDTABLE_NOTIFY_COLS_APPENDED, columns - first);
        m_columns = columns;
        SetWidths(first);
    }
    void Tell(int what, int first, int second = -1)
    {
        wxGridTableMessage message(m_table, what, first, second);
        m_grid->ProcessTableMessage(message);
    }

    std::vector<GridBlock> Selected() const
    {
        std::vector<GridBlock> blocks;
        for (const wxGridBlockCoords& block : m_grid->GetSelectedBlocks())
            blocks.push_back(
                {At(block.GetTopRow()), At(block.GetLeftCol()), At(block.GetBottomRow()), At(block.GetRightCol())});
        const GridCell cursor{At(m_grid->GetGridCursorRow()), At(m_grid->GetGridCursorCol())};
        if (blocks.empty()) blocks.push_back({cursor.row, cursor.column, cursor.row, cursor.column});
        return blocks;
    }
    void Select()
    {
        m_grid->ClearSelection();
        const std::vector<GridBlock> blocks = m_rows.Selection();
        const bool one = blocks.size() == 1 && blocks[0].top == blocks[0].bottom && blocks[0].left == blocks[0].right;
        if (one) return;  // the cursor shows it
        for (const GridBlock& block : blocks)
            m_grid->SelectBlock(static_cast<int>(block.top), static_cast<int>(block.left),
                                static_cast<int>(block.bottom), static_cast<int>(block.right), true);
    }

    // Screen readers know no cells here: the name of what has the keyboard says where the cursor is.
    std::string CellName(std::size_t place, std::size_t column) const
    {
        const std::string name = LabelOf(m_control);
        if (place >= m_rows.Size() || column >= m_rows.Model().Columns()) return name;
        return name + ": " + m_rows.Model().Column(column).name + ", " + std::to_string(place + 1) + ": " +
               PictureText(m_rows.Text(place, column).substr(0, kMostDrawn));
    }
    void NameCell() { NameForReaders(*m_focus, CellName(m_rows.Cursor().row, m_rows.Cursor().column), nullptr); }

    const GridView& m_view;
    CGridRows& m_rows;
    CFormEvents& m_events;
    wxGrid* m_grid;
    CCellTable* m_table;  // the grid's
    int m_shownRows = 0, m_columns = 0;
};

}  // namespace

std::unique_ptr<CView> MakeGridView(const FormControl& control, wxWindow* parent, CFormEvents& events)
{
    return std::make_unique<CCellsView>(control, parent, events);
}
