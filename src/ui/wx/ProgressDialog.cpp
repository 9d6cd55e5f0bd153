#include "ui/wx/ProgressDialog.h"

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/gauge.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>

#include "ui/wx/System.h"
#include "ui/wx/Text.h"
#include "ui/wx/View.h"

namespace {

constexpr int kLineWidth = 60;  // characters
constexpr long kProgressStyle = wxCAPTION | wxSYSTEM_MENU | wxCLOSE_BOX;

class CWxProgress final : public CProgressWindow {
public:
    CWxProgress(wxWindow* parent, void* hostWindow)
        : m_owner(hostWindow),
          m_dialog(parent ? parent : m_owner.Window(), wxID_ANY, "Ferrule", wxDefaultPosition, wxDefaultSize,
                   kProgressStyle)
    {
        m_text = MakeLine("Processing...");
        m_status = MakeLine("");
        m_gauge = new wxGauge(&m_dialog, wxID_ANY, 100);
        m_gauge->SetValue(1);
        NameForReaders(*m_gauge, "Progress", nullptr);
        auto* const cancel = new wxButton(&m_dialog, wxID_CANCEL, "Cancel");
        NameForReaders(*cancel, "Cancel", nullptr);
        auto* const column = new wxBoxSizer(wxVERTICAL);
        const int gap = Gap(&m_dialog);
        for (wxWindow* const part :
             {static_cast<wxWindow*>(m_text), static_cast<wxWindow*>(m_status), static_cast<wxWindow*>(m_gauge)})
            column->Add(part, wxSizerFlags().Expand().Border(wxBOTTOM, gap));
        column->Add(cancel, wxSizerFlags().Right().Border(wxTOP, gap));
        auto* const whole = new wxBoxSizer(wxVERTICAL);
        whole->Add(column, wxSizerFlags(1).Expand().Border(wxALL, 2 * gap));
        m_dialog.SetSizerAndFit(whole);
        m_dialog.CentreOnParent();
        m_dialog.Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent&) { Hide(); });
        cancel->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Hide(); });
    }

    void Show() override
    {
        m_dialog.Show();
        m_dialog.Raise();
    }
    void Hide() override { m_dialog.Hide(); }
    bool IsVisible() const override { return m_dialog.IsShown(); }
    void SetText(const std::string& text) override { m_text->SetLabelText(Shown(text)); }
    void SetStatus(const std::string& text) override { m_status->SetLabelText(Shown(text)); }
    void SetRange(int last) override { m_gauge->SetRange(std::max(last, 1)); }
    void SetPosition(int position) override { m_gauge->SetValue(std::clamp(position, 0, m_gauge->GetRange())); }
    void PumpMessages(int atMost) override { TakeEvents(atMost); }

private:
    /// Long names lose their middle, and the window keeps its size.
    wxStaticText* MakeLine(const char* text)
    {
        auto* const line = new wxStaticText(&m_dialog, wxID_ANY, text, wxDefaultPosition, wxDefaultSize,
                                            wxST_ELLIPSIZE_MIDDLE | wxST_NO_AUTORESIZE);
        line->SetMinSize(wxSize(TextWidth(*line, kLineWidth), line->GetCharHeight() + m_dialog.FromDIP(4)));
        return line;
    }

    COwner m_owner;  // for as long as the dialog
    wxDialog m_dialog;
    wxStaticText* m_text = nullptr;
    wxStaticText* m_status = nullptr;
    wxGauge* m_gauge = nullptr;
};

}  // namespace

std::unique_ptr<CProgressWindow> MakeProgressDialog(wxWindow* parent, void* hostWindow)
{
    return std::make_unique<CWxProgress>(parent, hostWindow);
}
