#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/radiobut.h>
#include <wx/settings.h>
#include <wx/textctrl.h>
#include <wx/tglbtn.h>

#include <algorithm>

#include "base/Text.h"
#include "ui/FormControls.h"
#include "ui/wx/System.h"
#include "ui/wx/Text.h"
#include "ui/wx/View.h"

namespace {

constexpr int kLongField = 20;  // characters; what is shorter keeps its width in a larger dialog
constexpr int kRoomAroundLine = 10;
constexpr int kTextWidth = 64;  // characters in a line of a text, unless the dialog is wider

/// Without a height it is the one of a line, for which some systems have too little room when letters are large.
void SetLeast(wxTextCtrl& text, int characters, int height)
{
    wxSize size = text.GetSizeFromTextSize(TextWidth(text, characters), height);
    size.IncTo(wxSize(-1, text.GetCharHeight() + text.FromDIP(kRoomAroundLine)));
    text.SetMinSize(size);
}

class CTextView final : public CView {
public:
    CTextView(const FormControl& control, wxWindow* parent) : CView(control)
    {
        const auto& text = std::get<StaticText>(control.what);
        m_text = new wxStaticText(parent, wxID_ANY, "");
        if (text.bold) m_text->SetFont(m_text->GetFont().Bold());
        m_window = m_text;
        m_widens = true;
        Load();
    }
    void Load() override
    {
        const std::string said = LabelOf(m_control);
        if (said == m_said) return;
        m_said = said;
        Set(std::max(m_width, TextWidth(*m_text, m_least)));
    }
    // The room that the others give it; a text alone makes no dialog wider.
    void Narrow(int characters) override
    {
        m_least = std::min(m_least, 2 * characters);
        m_width = 0;
        Set(TextWidth(*m_text, m_least));
    }
    void Wrap() override
    {
        m_width = m_text->GetSize().x;
        Set(std::max(m_width, TextWidth(*m_text, m_least)));
    }

private:
    void Set(int width)
    {
        m_text->SetMinSize(wxDefaultSize);
        m_text->SetLabelText(Shown(m_said));
        m_text->Wrap(width);
        m_text->InvalidateBestSize();
        m_text->SetMinSize(m_text->GetBestSize());
    }

    wxStaticText* m_text;
    std::string m_said;
    int m_width = 0;
    int m_least = kTextWidth;  // characters
};

class CFieldView final : public CView {
public:
    CFieldView(const FormControl& control, wxWindow* parent, CFormEvents& events)
        : CView(control), m_field(std::get<TextField>(control.what))
    {
        m_label = MakeLabel(parent, m_field.label);
        const bool many = m_field.lines > 1;
        const long style = (many ? wxTE_MULTILINE : 0) | (m_field.readOnly ? wxTE_READONLY : 0);
        m_text = new wxTextCtrl(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, style);
        Narrow(m_field.width);
        m_window = m_text;
        m_widens = many || m_field.width >= kLongField;
        m_tall = many;
        NameForReaders(*m_text, LabelOf(control), m_label);
        m_text->Bind(wxEVT_TEXT, [this, &events](wxCommandEvent&) { events.Changed(m_control); });
    }
    void Narrow(int characters) override
    {
        const int height = m_field.lines > 1 ? m_text->GetCharHeight() * m_field.lines : -1;
        SetLeast(*m_text, std::min(characters, m_field.width), height);
    }
    void Load() override
    {
        if (Typed(m_text->GetValue()) != SanitizeUtf8(*m_field.value)) m_text->ChangeValue(Shown(*m_field.value));
    }
    // What nobody changed stays as it is: not all bytes can be shown.
    void Store() override
    {
        std::string typed = Typed(m_text->GetValue());
        if (m_field.lines > 1) typed = ReplaceAll(typed, "\r\n", "\n");
        if (!m_field.readOnly && typed != SanitizeUtf8(*m_field.value)) *m_field.value = typed;
    }

private:
    const TextField& m_field;
    wxTextCtrl* m_text;
};

/// Two fields at the same place, of which one shows what is in it: not every system lets a field change that.
class CSecretView final : public CView {
public:
    CSecretView(const FormControl& control, wxWindow* parent, CFormEvents& events)
        : CView(control), m_field(std::get<TextField>(control.what))
    {
        m_label = MakeLabel(parent, m_field.label);
        m_masked = MakeText(parent, wxTE_PASSWORD, events);
        m_open = MakeText(parent, 0, events);
        m_open->Hide();
        m_look = new wxToggleButton(parent, wxID_ANY, "Show", wxDefaultPosition, wxDefaultSize, wxBU_EXACTFIT);
        m_look->SetToolTip("Shows what is in the field");
        NameForReaders(*m_look, "Show " + LabelOf(control), nullptr);
        m_look->Bind(wxEVT_TOGGLEBUTTON, [this](wxCommandEvent&) { Look(); });
        m_sizer = new wxBoxSizer(wxHORIZONTAL);
        m_sizer->Add(m_masked, wxSizerFlags(1).CentreVertical());
        m_sizer->Add(m_open, wxSizerFlags(1).CentreVertical());
        m_sizer->Add(m_look, wxSizerFlags().CentreVertical().Border(wxLEFT, Gap(m_look)));
        m_focus = m_masked;
        m_widens = m_field.width >= kLongField;
    }
    void Narrow(int characters) override
    {
        for (wxTextCtrl* const text : {m_masked, m_open}) SetLeast(*text, std::min(characters, m_field.width), -1);
    }
    void Load() override
    {
        for (wxTextCtrl* const text : {m_masked, m_open})
            if (Typed(text->GetValue()) != SanitizeUtf8(*m_field.value)) text->ChangeValue(Shown(*m_field.value));
    }
    void Store() override
    {
        const std::string typed = Typed(InUse()->GetValue());
        if (typed != SanitizeUtf8(*m_field.value)) *m_field.value = typed;
    }

protected:
    void Apply(bool enabled, bool shown) override
    {
        CView::Apply(enabled, shown);
        for (wxWindow* const window :
             {static_cast<wxWindow*>(m_masked), static_cast<wxWindow*>(m_open), static_cast<wxWindow*>(m_look)}) {
            window->Enable(enabled);
            window->Show(shown && window != (m_look->GetValue() ? m_masked : m_open));
        }
    }

private:
    wxTextCtrl* InUse() const { return m_look->GetValue() ? m_open : m_masked; }

    wxTextCtrl* MakeText(wxWindow* parent, long style, CFormEvents& events)
    {
        auto* const text = new wxTextCtrl(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, style);
        SetLeast(*text, m_field.width, -1);
        NameForReaders(*text, LabelOf(m_control), m_label);
        text->Bind(wxEVT_TEXT, [this, &events](wxCommandEvent&) { events.Changed(m_control); });
        return text;
    }

    void Look()
    {
        wxTextCtrl* const shown = InUse();
        wxTextCtrl* const hidden = shown == m_open ? m_masked : m_open;
        shown->ChangeValue(hidden->GetValue());
        hidden->Hide();
        shown->Show();
        NameForReaders(*shown, LabelOf(m_control), m_label);
        m_focus = shown;
        shown->GetParent()->Layout();
        if (wxWindow* const top = wxGetTopLevelParent(shown)) top->Layout();
    }

    const TextField& m_field;
    wxTextCtrl* m_masked;
    wxTextCtrl* m_open;
    wxToggleButton* m_look;
};

class CCheckView final : public CView {
public:
    CCheckView(const FormControl& control, wxWindow* parent, CFormEvents& events)
        : CView(control), m_value(*std::get<CheckBox>(control.what).value)
    {
        m_box = new wxCheckBox(parent, wxID_ANY, Shown(std::get<CheckBox>(control.what).label));
        m_window = m_box;
        NameForReaders(*m_box, LabelOf(control), nullptr);
        m_box->Bind(wxEVT_CHECKBOX, [this, &events](wxCommandEvent&) { events.Changed(m_control); });
    }
    void Load() override { m_box->SetValue(m_value); }
    void Store() override { m_value = m_box->GetValue(); }

private:
    bool& m_value;
    wxCheckBox* m_box;
};

class CChoiceView final : public CView {
public:
    CChoiceView(const FormControl& control, wxWindow* parent, CFormEvents& events)
        : CView(control), m_row(*std::get<Choice>(control.what).row)
    {
        const auto& choice = std::get<Choice>(control.what);
        m_label = MakeLabel(parent, choice.label);
        m_choice = new wxChoice(parent, wxID_ANY);
        for (const std::string& row : choice.rows) m_choice->Append(Shown(row));
        m_window = m_choice;
        NameForReaders(*m_choice, LabelOf(control), m_label);
        m_choice->Bind(wxEVT_CHOICE, [this, &events](wxCommandEvent&) { events.Changed(m_control); });
    }
    void Load() override
    {
        if (m_choice->GetSelection() != m_row) m_choice->SetSelection(m_row);
    }
    void Store() override { m_row = m_choice->GetSelection(); }

private:
    int& m_row;
    wxChoice* m_choice;
};

class CRadioView final : public CView {
public:
    CRadioView(const FormControl& control, wxWindow* parent, CFormEvents& events)
        : CView(control), m_row(*std::get<Choice>(control.what).row)
    {
        const auto& choice = std::get<Choice>(control.what);
        m_label = MakeLabel(parent, choice.label);
        m_sizer = new wxBoxSizer(wxVERTICAL);
        for (const std::string& row : choice.rows) AddButton(parent, Shown(row), events);
        if (!m_buttons.empty()) m_focus = m_buttons.front();
        m_tall = m_buttons.size() > 1;
    }
    void Load() override
    {
        for (std::size_t place = 0; place < m_buttons.size(); ++place)
            if (static_cast<int>(place) == m_row) m_buttons[place]->SetValue(true);
    }
    void Store() override
    {
        const auto pressed =
            std::ranges::find_if(m_buttons, [](const wxRadioButton* one) { return one->GetValue(); });
        if (pressed != m_buttons.end()) m_row = static_cast<int>(pressed - m_buttons.begin());
    }

protected:
    void Apply(bool enabled, bool shown) override
    {
        CView::Apply(enabled, shown);
        for (wxRadioButton* const button : m_buttons) {
            button->Enable(enabled);
            button->Show(shown);
        }
    }

private:
    void AddButton(wxWindow* parent, const wxString& text, CFormEvents& events)
    {
        const bool first = m_buttons.empty();
        auto* const button =
            new wxRadioButton(parent, wxID_ANY, text, wxDefaultPosition, wxDefaultSize, first ? wxRB_GROUP : 0);
        button->Bind(wxEVT_RADIOBUTTON, [this, &events](wxCommandEvent&) { events.Changed(m_control); });
        NameForReaders(*button, Typed(button->GetLabelText()), nullptr);
        m_sizer->Add(button, wxSizerFlags().Border(wxTOP, first ? 0 : Gap(button) / 2));
        m_buttons.push_back(button);
    }

    int& m_row;
    std::vector<wxRadioButton*> m_buttons;
};

class CButtonView final : public CView {
public:
    CButtonView(const FormControl& control, wxWindow* parent, CFormEvents& events) : CView(control)
    {
        const auto& button = std::get<Button>(control.what);
        m_button = new wxButton(parent, wxID_ANY, Shown(button.label));
        m_window = m_button;
        NameForReaders(*m_button, LabelOf(control), nullptr);
        if (button.role == ButtonRole::Default) m_button->SetDefault();
        m_button->Bind(wxEVT_BUTTON, [&button, &events](wxCommandEvent&) { events.Press(button); });
    }

private:
    wxButton* m_button;
};

}  // namespace

std::unique_ptr<CView> MakeTextView(const FormControl& control, wxWindow* parent)
{
    return std::make_unique<CTextView>(control, parent);
}

std::unique_ptr<CView> MakeFieldView(const FormControl& control, wxWindow* parent, CFormEvents& events)
{
    return std::make_unique<CFieldView>(control, parent, events);
}

std::unique_ptr<CView> MakeSecretView(const FormControl& control, wxWindow* parent, CFormEvents& events)
{
    return std::make_unique<CSecretView>(control, parent, events);
}

std::unique_ptr<CView> MakeCheckView(const FormControl& control, wxWindow* parent, CFormEvents& events)
{
    return std::make_unique<CCheckView>(control, parent, events);
}

std::unique_ptr<CView> MakeChoiceView(const FormControl& control, wxWindow* parent, CFormEvents& events)
{
    return std::make_unique<CChoiceView>(control, parent, events);
}

std::unique_ptr<CView> MakeRadioView(const FormControl& control, wxWindow* parent, CFormEvents& events)
{
    return std::make_unique<CRadioView>(control, parent, events);
}

std::unique_ptr<CView> MakeButtonView(const FormControl& control, wxWindow* parent, CFormEvents& events)
{
    return std::make_unique<CButtonView>(control, parent, events);
}
