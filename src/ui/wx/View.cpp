#include "ui/wx/View.h"

#include <wx/statbox.h>

#include <algorithm>

#include "ui/FormControls.h"
#include "ui/wx/Text.h"

bool CView::Update(bool enabled, bool shown)
{
    enabled = enabled && IsEnabled(m_control);
    shown = shown && IsShown(m_control);
    const bool changed = enabled != m_enabled || shown != m_shown;
    const bool moved = shown != m_shown;
    m_enabled = enabled;
    m_shown = shown;
    if (changed) Apply(enabled, shown);
    return UpdateParts(enabled, shown) || moved;
}

void CView::Apply(bool enabled, bool shown)
{
    for (wxWindow* const window : {static_cast<wxWindow*>(m_label), m_window}) {
        if (!window) continue;
        window->Enable(enabled);
        window->Show(shown);
    }
}

wxStaticText* MakeLabel(wxWindow* parent, const std::string& label)
{
    return label.empty() ? nullptr : new wxStaticText(parent, wxID_ANY, Shown(label));
}

int TextWidth(const wxWindow& window, int characters) { return window.GetTextExtent("0").x * characters; }

// Null: the window is not known yet, as in rows of rows; then as for the first screen.
int Gap(const wxWindow* window) { return wxWindow::FromDIP(6, window); }

bool Grows(const FormControl& control)
{
    const std::vector<FormControl>* inside = nullptr;
    if (const auto* group = std::get_if<Group>(&control.what)) inside = &group->controls;
    if (const auto* row = std::get_if<Row>(&control.what)) inside = &row->controls;
    return control.grows || (inside && std::ranges::any_of(*inside, Grows));
}

namespace {

bool IsButton(const CView& view) { return std::holds_alternative<Button>(view.Control().what); }

void AddTo(wxSizer& sizer, const CView& view, const wxSizerFlags& flags)
{
    if (view.Window())
        sizer.Add(view.Window(), flags);
    else
        sizer.Add(view.Sizer(), flags);
}

wxWindow* AnyWindow(const CView& view)
{
    return view.Label() ? view.Label() : view.Window() ? view.Window() : view.Sizer()->GetContainingWindow();
}

/// What holds others: they are enabled and shown with it.
class CContainerView : public CView {
public:
    using CView::CView;

protected:
    void Apply(bool, bool) override {}
    bool UpdateParts(bool enabled, bool shown) override
    {
        bool moved = false;
        for (const auto& part : m_parts) moved = part->Update(enabled, shown) || moved;
        return moved;
    }

    std::vector<std::unique_ptr<CView>> m_parts;
};

class CGroupView final : public CContainerView {
public:
    CGroupView(const FormControl& control, wxWindow* parent, CFormEvents& events, std::vector<CView*>& all)
        : CContainerView(control)
    {
        const auto& group = std::get<Group>(control.what);
        m_widens = m_tall = true;
        if (group.title.empty()) {
            m_parts = MakeViews(group.controls, parent, events, all);
            m_sizer = StackViews(m_parts, new wxBoxSizer(wxVERTICAL));
            return;
        }
        auto* const framed = new wxStaticBoxSizer(wxVERTICAL, parent, Shown(group.title));
        m_box = framed->GetStaticBox();
        m_parts = MakeViews(group.controls, m_box, events, all);
        auto* const inside = new wxBoxSizer(wxVERTICAL);
        (void)StackViews(m_parts, inside);
        framed->Add(inside, wxSizerFlags(1).Expand().Border(wxALL, Gap(m_box)));
        m_sizer = framed;
    }

protected:
    void Apply(bool enabled, bool shown) override
    {
        if (!m_box) return;
        m_box->Enable(enabled);
        m_box->Show(shown);
    }

private:
    wxStaticBox* m_box = nullptr;
};

class CRowView final : public CContainerView {
public:
    CRowView(const FormControl& control, wxWindow* parent, CFormEvents& events, std::vector<CView*>& all)
        : CContainerView(control)
    {
        const auto& row = std::get<Row>(control.what);
        m_parts = MakeViews(row.controls, parent, events, all);
        m_widens = true;
        m_tall = std::ranges::any_of(m_parts, [](const auto& part) { return part->Tall(); });
        m_sizer = new wxBoxSizer(wxHORIZONTAL);
        // The label of the first stands in the column of the labels around.
        if (!m_parts.empty() && !m_tall) m_label = m_parts.front()->Label();
        for (const auto& part : m_parts) AddPart(*part, part == m_parts.front());
    }

private:
    void AddPart(const CView& part, bool first)
    {
        const int gap = first ? 0 : 2 * Gap(AnyWindow(part));
        const wxSizerFlags beside = m_tall ? wxSizerFlags().Top() : wxSizerFlags().CentreVertical();
        if (part.Label() && part.Label() != m_label)
            m_sizer->Add(part.Label(), wxSizerFlags(beside).Border(wxLEFT, gap));
        wxSizerFlags flags = part.Tall() && Grows(part.Control()) ? wxSizerFlags().Expand() : beside;
        const bool isText = std::holds_alternative<StaticText>(part.Control().what);
        const bool widens = part.Widens() && (Grows(part.Control()) || (!part.Tall() && !isText));
        const int before = part.Label() && part.Label() != m_label ? Gap(part.Label()) : part.Label() ? 0 : gap;
        AddTo(*m_sizer, part, flags.Proportion(widens ? 1 : 0).Border(wxLEFT, before));
    }
};

void AddToStack(wxSizer& stack, const CView& view, bool expandButtons, bool last)
{
    const int gap = Gap(AnyWindow(view));
    const int proportion = Grows(view.Control()) ? 1 : 0;
    const wxSizerFlags below = wxSizerFlags(proportion).Border(wxBOTTOM, last ? 0 : gap);
    const bool expands = view.Widens() || (expandButtons && IsButton(view));
    if (!view.Label()) return AddTo(stack, view, expands ? wxSizerFlags(below).Expand() : wxSizerFlags(below).Left());
    auto* const line = new wxBoxSizer(wxHORIZONTAL);
    const bool tall = view.Tall();
    line->Add(view.Label(), (tall ? wxSizerFlags().Top() : wxSizerFlags().CentreVertical()).Border(wxRIGHT, gap));
    wxSizerFlags body(view.Widens() ? 1 : 0);
    AddTo(*line, view, tall ? body.Expand() : body.CentreVertical());
    stack.Add(line, wxSizerFlags(below).Expand());
}

}  // namespace

wxSizer* StackViews(const std::vector<std::unique_ptr<CView>>& views, wxSizer* into)
{
    int widest = 0;
    for (const auto& view : views)
        if (view->Label()) widest = std::max(widest, view->Label()->GetBestSize().x);
    const bool onlyButtons = std::ranges::all_of(views, [](const auto& view) { return IsButton(*view); });
    for (const auto& view : views) {
        if (view->Label()) view->Label()->SetMinSize(wxSize(widest, -1));
        AddToStack(*into, *view, onlyButtons, view == views.back());
    }
    return into;
}

std::vector<std::unique_ptr<CView>> MakeViews(const std::vector<FormControl>& controls, wxWindow* parent,
                                              CFormEvents& events, std::vector<CView*>& all)
{
    std::vector<std::unique_ptr<CView>> views;
    for (const FormControl& control : controls) views.push_back(MakeView(control, parent, events, all));
    return views;
}

namespace {

struct ViewMaker {
    const FormControl& control;
    wxWindow* parent;
    CFormEvents& events;
    std::vector<CView*>& all;

    using View = std::unique_ptr<CView>;
    View operator()(const StaticText&) const { return MakeTextView(control, parent); }
    View operator()(const CheckBox&) const { return MakeCheckView(control, parent, events); }
    View operator()(const TextField& field) const
    {
        return field.secret ? MakeSecretView(control, parent, events) : MakeFieldView(control, parent, events);
    }
    View operator()(const Choice& choice) const
    {
        return choice.asButtons ? MakeRadioView(control, parent, events) : MakeChoiceView(control, parent, events);
    }
    View operator()(const ListView&) const { return MakeListView(control, parent, events); }
    View operator()(const TreeView&) const { return MakeTreeView(control, parent, events); }
    View operator()(const GridView&) const { return MakeGridView(control, parent, events); }
    View operator()(const Button&) const { return MakeButtonView(control, parent, events); }
    View operator()(const Group&) const { return std::make_unique<CGroupView>(control, parent, events, all); }
    View operator()(const Row&) const { return std::make_unique<CRowView>(control, parent, events, all); }
};

}  // namespace

std::unique_ptr<CView> MakeView(const FormControl& control, wxWindow* parent, CFormEvents& events,
                                std::vector<CView*>& all)
{
    const std::size_t place = all.size();
    all.push_back(nullptr);
    auto view = std::visit(ViewMaker{control, parent, events, all}, control.what);
    all[place] = view.get();
    return view;
}
