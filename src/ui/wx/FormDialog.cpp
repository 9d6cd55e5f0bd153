#include "ui/wx/FormDialog.h"

#include <wx/display.h>

#include <algorithm>

#include "ui/FormControls.h"
#include "ui/wx/System.h"
#include "ui/wx/Text.h"

namespace {

bool AnyGrows(const DialogForm& form) { return std::ranges::any_of(form.controls, Grows); }

long StyleFor(const DialogForm& form) { return wxDEFAULT_DIALOG_STYLE | (AnyGrows(form) ? wxRESIZE_BORDER : 0); }

constexpr int kNarrow = 24;  // characters of long fields on a screen that is too small for all of them
constexpr int kNarrowest = 6;

wxSize RoomOfScreen(const wxWindow* window)
{
    const int number = wxDisplay::GetFromWindow(window);
    return wxDisplay(static_cast<unsigned>(std::max(number, 0))).GetClientArea().GetSize();
}

}  // namespace

CFormDialog::CFormDialog(wxWindow* owner, const DialogForm& form)
    : wxDialog(owner, wxID_ANY, Shown(form.title), wxDefaultPosition, wxDefaultSize, StyleFor(form)), m_form(form)
{
    Build();
    SetEscapeId(wxID_NONE);
    Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent&) { Cancel(); });
    Bind(wxEVT_CHAR_HOOK, [this](wxKeyEvent& event) {
        if (event.GetKeyCode() == WXK_ESCAPE && !event.HasAnyModifiers())
            Cancel();
        else
            event.Skip();
    });
}

// The views speak to windows until they are gone.
CFormDialog::~CFormDialog() { m_acting = true; }

void CFormDialog::Build()
{
    const int border = FromDIP(12);
    m_controls = MakeViews(m_form.controls, this, *this, m_all);
    auto* const inside = new wxBoxSizer(wxVERTICAL);
    (void)StackViews(m_controls, inside);
    auto* const whole = new wxBoxSizer(wxVERTICAL);
    whole->Add(inside, wxSizerFlags(1).Expand().Border(wxALL, border));
    whole->Add(ButtonRow(), wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, border));
    SetSizer(whole);
    ShowFields();
    (void)UpdateStates();
    Fit();
    for (CView* const view : m_all) view->Wrap();
    TakeRoom();
    CentreOnParent();
}

wxSizer* CFormDialog::ButtonRow()
{
    m_buttons = MakeViews(m_form.buttons, this, *this, m_all);
    auto* const row = new wxBoxSizer(wxHORIZONTAL);
    row->AddStretchSpacer();
    int widest = 0;
    for (const auto& button : m_buttons) widest = std::max(widest, button->Window()->GetBestSize().x);
    for (const auto& button : m_buttons) {
        button->Window()->SetMinSize(wxSize(widest, -1));
        row->Add(button->Window(), wxSizerFlags().Border(wxLEFT, button == m_buttons.front() ? 0 : Gap(this)));
    }
    return row;
}

wxSize CFormDialog::Least() const { return ClientToWindowSize(GetSizer()->GetMinSize()); }

// The least that is shown is what all controls need, as far as the screen has it.
void CFormDialog::TakeRoom()
{
    SetMinSize(wxDefaultSize);
    const wxSize screen = RoomOfScreen(GetParent() ? GetParent() : this);
    wxSize least = Least();
    for (int characters = kNarrow; least.x > screen.x && characters >= kNarrowest; characters /= 2) {
        for (CView* const view : m_all) view->Narrow(characters);
        least = Least();
    }
    least.DecTo(screen);
    SetMinSize(least);
    wxSize size = AnyGrows(m_form) ? GetSize() : least;
    size.IncTo(least);
    size.DecTo(screen);
    if (size != GetSize()) SetSize(size);
    Layout();
}

bool CFormDialog::Run()
{
    FocusFirst();
    (void)ShowModal();
    if (m_answer == FormAnswer::StayOpen) PassOnQuit();
    return m_answer == FormAnswer::Confirm;
}

void CFormDialog::FocusFirst()
{
    const FormControl* const first = m_form.focus.empty() ? nullptr : FindControl(m_form, m_form.focus);
    const auto found = std::ranges::find_if(m_all, [&](const CView* view) { return &view->Control() == first; });
    if (found != m_all.end() && (*found)->FocusWindow()) (*found)->FocusWindow()->SetFocus();
}

// What happens inside of an action, such as another dialog or the loading of fields, is no change by the user.
template <class Action>
void CFormDialog::Act(Action action)
{
    if (m_acting || m_answer != FormAnswer::StayOpen) return;
    m_acting = true;
    for (CView* const view : m_all) view->Store();
    const FormAnswer answer = action();
    ShowFields();
    if (UpdateStates()) TakeRoom();
    m_acting = false;
    End(m_form.broken && m_form.broken() ? FormAnswer::Cancel : answer);
}

void CFormDialog::End(FormAnswer answer)
{
    if (answer == FormAnswer::StayOpen) return;
    m_answer = answer;
    EndModal(answer == FormAnswer::Confirm ? wxID_OK : wxID_CANCEL);
}

void CFormDialog::ShowFields()
{
    for (CView* const view : m_all) view->Load();
}

bool CFormDialog::UpdateStates()
{
    bool moved = false;
    for (const auto* const views : {&m_controls, &m_buttons})
        for (const auto& view : *views) moved = view->Update(true, true) || moved;
    return moved || Least() != GetMinSize();
}

void CFormDialog::Changed(const FormControl& control)
{
    Act([&control] {
        if (control.changed) control.changed();
        return FormAnswer::StayOpen;
    });
}

void CFormDialog::Press(const Button& button)
{
    Act([&button] { return button.press ? button.press() : FormAnswer::StayOpen; });
}

void CFormDialog::Activate(const std::string& button)
{
    const FormControl* const control = FindControl(m_form, button);
    const Button* const what = control ? std::get_if<Button>(&control->what) : nullptr;
    if (what && ::IsShown(*control) && ::IsEnabled(*control)) Press(*what);
}

void CFormDialog::Cancel()
{
    Act([this] { return CancelForm(m_form); });
}
