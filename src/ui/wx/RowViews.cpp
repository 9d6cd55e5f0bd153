#include <wx/dcmemory.h>
#include <wx/imaglist.h>
#include <wx/listctrl.h>
#include <wx/treectrl.h>

#include <algorithm>

#include "ui/FormControls.h"
#include "ui/wx/System.h"
#include "ui/wx/Text.h"
#include "ui/wx/View.h"

namespace {

constexpr int kIconSize = 16;

// The icons are drawn here: those of the system differ, and some systems have none.

const wxColour kTransparent(255, 0, 255);

void DrawError(wxDC& dc, int size)
{
    dc.SetPen(*wxTRANSPARENT_PEN);
    dc.SetBrush(wxBrush(wxColour(200, 30, 30)));
    dc.DrawCircle(size / 2, size / 2, size * 7 / 16);
    dc.SetPen(wxPen(*wxWHITE, std::max(size / 8, 1)));
    const int near = size * 5 / 16, far = size * 11 / 16;
    dc.DrawLine(near, near, far, far);
    dc.DrawLine(near, far, far, near);
}

void DrawWarning(wxDC& dc, int size)
{
    const wxPoint corners[] = {{size / 2, size / 16}, {size * 15 / 16, size * 14 / 16}, {size / 16, size * 14 / 16}};
    dc.SetPen(wxPen(wxColour(150, 100, 0)));
    dc.SetBrush(wxBrush(wxColour(250, 190, 20)));
    dc.DrawPolygon(3, corners);
    dc.SetPen(wxPen(*wxBLACK, std::max(size / 8, 1)));
    dc.DrawLine(size / 2, size * 6 / 16, size / 2, size * 9 / 16);
    dc.DrawLine(size / 2, size * 12 / 16, size / 2, size * 12 / 16 + 1);
}

/// Asks for its rows when it draws them.
class CRows final : public wxListCtrl {
public:
    CRows(wxWindow* parent, const ListView& list)
        : wxListCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                     wxBORDER_THEME | wxLC_REPORT | wxLC_VIRTUAL | (list.several ? 0 : wxLC_SINGLE_SEL)),
          m_list(list)
    {
        if (list.icon) AddIcons();
        for (std::size_t column = 0; column < list.columns.size(); ++column)
            InsertColumn(static_cast<long>(column), Shown(list.columns[column].title));
        const int height = GetCharHeight() + FromDIP(6);
        SetMinSize(wxSize(TextWidth(*this, list.width), height * (list.lines + 1) + FromDIP(8)));
        Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
            event.Skip();
            SetWidths();
        });
        SetWidths();
    }

    void SetWidths()
    {
        int rest = GetClientSize().x - FromDIP(kScrollBar);
        int open = 0;
        for (const ListColumn& column : m_list.columns) {
            rest -= WidthOf(column);
            open += column.width == 0;
        }
        for (std::size_t place = 0; place < m_list.columns.size(); ++place) {
            const ListColumn& column = m_list.columns[place];
            const int width = column.width > 0 ? WidthOf(column) : std::max(rest / open, TitleWidth(column));
            if (GetColumnWidth(static_cast<int>(place)) != width) SetColumnWidth(static_cast<int>(place), width);
        }
    }

private:
    static constexpr int kScrollBar = 20;

    wxString OnGetItemText(long row, long column) const override
    {
        return Shown(m_list.text(static_cast<std::size_t>(row), static_cast<std::size_t>(column)));
    }
    int OnGetItemImage(long row) const override
    {
        const ListIcon icon = m_list.icon ? m_list.icon(static_cast<std::size_t>(row)) : ListIcon::None;
        return icon == ListIcon::None ? -1 : icon == ListIcon::Error ? 0 : 1;
    }

    int TitleWidth(const ListColumn& column) const
    {
        return GetTextExtent(Shown(column.title)).x + FromDIP(kScrollBar);
    }
    int WidthOf(const ListColumn& column) const
    {
        return column.width > 0 ? std::max(TextWidth(*this, column.width), TitleWidth(column)) : 0;
    }

    void AddIcons()
    {
        const wxSize size = FromDIP(wxSize(kIconSize, kIconSize));
        auto* const icons = new wxImageList(size.x, size.y, true, 2);
        for (const auto draw : {&DrawError, &DrawWarning}) {
            wxBitmap bitmap(size);
            {
                wxMemoryDC dc(bitmap);
                dc.SetBackground(wxBrush(kTransparent));
                dc.Clear();
                draw(dc, size.x);
            }
            icons->Add(bitmap, kTransparent);
        }
        AssignImageList(icons, wxIMAGE_LIST_SMALL);
    }

    const ListView& m_list;
};

class CListView final : public CView {
public:
    CListView(const FormControl& control, wxWindow* parent, CFormEvents& events)
        : CView(control), m_list(std::get<ListView>(control.what))
    {
        m_rows = new CRows(parent, m_list);
        m_window = m_rows;
        m_widens = m_tall = true;
        NameForReaders(*m_rows, LabelOf(control), nullptr);
        if (m_list.selected) {
            const auto changed = [this, &events](wxListEvent& event) {
                event.Skip();
                if (!m_loading) ChangedSoon(events);
            };
            m_rows->Bind(wxEVT_LIST_ITEM_SELECTED, changed);
            m_rows->Bind(wxEVT_LIST_ITEM_DESELECTED, changed);
        }
        if (!m_list.activates.empty())
            m_rows->Bind(wxEVT_LIST_ITEM_ACTIVATED,
                         [this, &events](wxListEvent&) { events.Activate(m_list.activates); });
    }

    void Load() override
    {
        m_loading = true;
        const std::size_t count = m_list.count();
        if (m_rows->GetItemCount() != static_cast<int>(count)) m_rows->SetItemCount(static_cast<long>(count));
        if (m_list.selected && Selected() != *m_list.selected) Select();
        if (count > 0) m_rows->RefreshItems(m_rows->GetTopItem(), Last(count));
        m_loading = false;
    }
    void Store() override
    {
        if (m_list.selected) *m_list.selected = Selected();
    }

private:
    long Last(std::size_t count) const
    {
        return std::min(static_cast<long>(count) - 1, m_rows->GetTopItem() + m_rows->GetCountPerPage());
    }

    std::vector<std::size_t> Selected() const
    {
        std::vector<std::size_t> rows;
        for (long row = -1; (row = m_rows->GetNextItem(row, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)) != -1;)
            rows.push_back(static_cast<std::size_t>(row));
        return rows;
    }

    void Select()
    {
        for (const std::size_t row : Selected())
            m_rows->SetItemState(static_cast<long>(row), 0, wxLIST_STATE_SELECTED);
        for (const std::size_t row : *m_list.selected)
            m_rows->SetItemState(static_cast<long>(row), wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
        if (!m_list.selected->empty()) m_rows->EnsureVisible(static_cast<long>(m_list.selected->front()));
    }

    // A range of rows is selected by one event for each: they count as one change.
    void ChangedSoon(CFormEvents& events)
    {
        if (m_changes) return;
        m_changes = true;
        m_rows->CallAfter([this, &events] {
            m_changes = false;
            events.Changed(m_control);
        });
    }

    const ListView& m_list;
    CRows* m_rows;
    bool m_loading = false;
    bool m_changes = false;
};

class CTreeView final : public CView {
public:
    CTreeView(const FormControl& control, wxWindow* parent, CFormEvents& events)
        : CView(control), m_view(std::get<TreeView>(control.what))
    {
        constexpr long kStyle = wxBORDER_THEME | wxTR_HIDE_ROOT | wxTR_HAS_BUTTONS | wxTR_LINES_AT_ROOT | wxTR_SINGLE;
        m_tree = new wxTreeCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, kStyle);
        Fill();
        const int height = m_tree->GetCharHeight() + m_tree->FromDIP(6);
        m_tree->SetMinSize(wxSize(TextWidth(*m_tree, kTreeWidth), height * m_view.lines));
        m_window = m_tree;
        m_widens = m_tall = true;
        NameForReaders(*m_tree, LabelOf(control), nullptr);
        m_tree->Bind(wxEVT_TREE_SEL_CHANGED, [this, &events](wxTreeEvent&) {
            if (!m_loading) events.Changed(m_control);
        });
        if (!m_view.activates.empty())
            m_tree->Bind(wxEVT_TREE_ITEM_ACTIVATED,
                         [this, &events](wxTreeEvent&) { events.Activate(m_view.activates); });
    }
    void Load() override
    {
        if (Selected() == *m_view.selected) return;
        m_loading = true;
        if (*m_view.selected < 0)
            m_tree->UnselectAll();
        else if (static_cast<std::size_t>(*m_view.selected) < m_items.size())
            m_tree->SelectItem(m_items[static_cast<std::size_t>(*m_view.selected)]);
        m_loading = false;
    }
    void Store() override { *m_view.selected = Selected(); }

private:
    static constexpr int kTreeWidth = 40;  // characters

    void Fill()
    {
        const wxTreeItemId root = m_tree->AddRoot("");
        for (const TreeNode& node : m_view.nodes) {
            const wxTreeItemId branch = m_tree->AppendItem(root, Shown(node.label));
            m_items.push_back(branch);
            for (const std::string& leaf : node.leaves) m_items.push_back(m_tree->AppendItem(branch, Shown(leaf)));
        }
        m_tree->ExpandAll();
        if (!m_items.empty()) m_tree->ScrollTo(m_items.front());
    }

    int Selected() const
    {
        const auto found = std::ranges::find(m_items, m_tree->GetSelection());
        return found == m_items.end() ? -1 : static_cast<int>(found - m_items.begin());
    }

    const TreeView& m_view;
    wxTreeCtrl* m_tree;
    std::vector<wxTreeItemId> m_items;
    bool m_loading = false;
};

}  // namespace

std::unique_ptr<CView> MakeListView(const FormControl& control, wxWindow* parent, CFormEvents& events)
{
    return std::make_unique<CListView>(control, parent, events);
}

std::unique_ptr<CView> MakeTreeView(const FormControl& control, wxWindow* parent, CFormEvents& events)
{
    return std::make_unique<CTreeView>(control, parent, events);
}
