// Opens windows one after the other, takes a picture of each and says what is cut off or has no name for screen
// readers. usage: dialog-shots [--long-texts] FOLDER [NAME...]     ends with 1 when something was found
#include <wx/app.h>
#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/dialog.h>
#include <wx/radiobut.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/timer.h>
#include <wx/toplevel.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

#include "Picture.h"
#include "Shots.h"
#include "ui/wx/System.h"
#include "ui/wx/Text.h"
#include "ui/wx/WxWindows.h"

namespace {

constexpr int kLook = 50;             // milliseconds from one look to the next
constexpr int kLooksUntilQuiet = 12;  // of them before a window that opened is complete

bool HasText(const wxWindow& window)
{
    return dynamic_cast<const wxStaticText*>(&window) || dynamic_cast<const wxButton*>(&window) ||
           dynamic_cast<const wxCheckBox*>(&window) || dynamic_cast<const wxRadioButton*>(&window) ||
           dynamic_cast<const wxChoice*>(&window);
}

bool Ellipsizes(const wxWindow& window) { return window.HasFlag(wxST_ELLIPSIZE_MIDDLE); }

class CPhotographer final : public wxTimer {
public:
    explicit CPhotographer(std::string folder) : m_folder(std::move(folder)) {}

    void Expect(const std::string& name)
    {
        m_name = name;
        m_looks = 0;
        m_taken = false;
        Start(kLook);
    }
    [[nodiscard]] bool Finish()
    {
        Stop();
        if (!m_taken) Complain("no picture was taken");
        return m_taken;
    }
    [[nodiscard]] int Problems() const { return m_problems; }

private:
    void Notify() override
    {
        auto* const window = Innermost();
        if (!window || ++m_looks < kLooksUntilQuiet) return;
        Stop();
        Check(*window, *window);
        Take(*window);
        window->Close();
    }

    static wxTopLevelWindow* Innermost()
    {
        for (auto place = wxTopLevelWindows.rbegin(); place != wxTopLevelWindows.rend(); ++place)
            if ((*place)->IsShown() && dynamic_cast<wxDialog*>(*place))
                return dynamic_cast<wxTopLevelWindow*>(*place);
        return nullptr;
    }

    void Complain(const std::string& text)
    {
        std::printf("%s: %s\n", m_name.c_str(), text.c_str());
        ++m_problems;
    }

    void Check(wxWindow& window, wxWindow& top)
    {
        for (wxWindow* const child : window.GetChildren()) {
            if (!child->IsShown() || child->IsTopLevel()) continue;
            const std::string what =
                Typed(child->GetClassInfo()->GetClassName()) + " \"" + Typed(child->GetLabel()).substr(0, 60) + "\"";
            const wxSize size = child->GetSize(), best = child->GetBestSize();
            if (HasText(*child) && !Ellipsizes(*child) && (size.x < best.x || size.y < best.y))
                Complain(what + " is cut off: " + std::to_string(size.x) + "x" + std::to_string(size.y) +
                         " instead of " + std::to_string(best.x) + "x" + std::to_string(best.y));
            const wxRect inside = wxRect(window.GetClientSize());
            if (HasText(*child) && !inside.Contains(child->GetRect()) && !dynamic_cast<const wxStaticBox*>(&window))
                Complain(what + " reaches out of what it is in");
            if (child->AcceptsFocusFromKeyboard() && ReadersName(*child).empty())
                Complain(what + " has no name for screen readers");
            if (HasText(*child) || dynamic_cast<const wxStaticBox*>(child)) Check(*child, top);
        }
    }

    void Take(const wxTopLevelWindow& window)
    {
        m_taken = TakePicture(window.GetScreenRect(), m_folder + "/" + m_name);
    }

    std::string m_folder;
    std::string m_name;
    int m_looks = 0;
    int m_problems = 0;
    bool m_taken = false;
};

int Photograph(CWindows& windows, const std::string& folder, const std::vector<std::string>& names)
{
    CPhotographer photographer(folder);
    int taken = 0;
    std::vector<Shot> shots = ControlShots();
    std::ranges::copy(DialogShots(), std::back_inserter(shots));
    for (const Shot& shot : shots) {
        if (!names.empty() && std::ranges::find(names, shot.name) == names.end()) continue;
        photographer.Expect(shot.name);
        shot.open(windows);
        taken += photographer.Finish();
    }
    std::printf("%d pictures in %s, %d problems\n", taken, folder.c_str(), photographer.Problems());
    return taken > 0 && photographer.Problems() == 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments)
{
    std::vector<std::string> words(arguments + 1, arguments + count);
    const bool longTexts = !words.empty() && words.front() == "--long-texts";
    if (longTexts) words.erase(words.begin());
    if (words.empty()) {
        std::fputs("usage: dialog-shots [--long-texts] FOLDER [NAME...]\n", stderr);
        return 2;
    }
    std::string problem;
    const auto windows = CWxWindows::Make({}, problem);
    if (!windows) {
        std::fprintf(stderr, "dialog-shots: %s\n", problem.c_str());
        return 1;
    }
    CLongTexts longer(*windows);
    CWindows& shown = longTexts ? static_cast<CWindows&>(longer) : *windows;
    return Photograph(shown, words.front(), std::vector<std::string>(words.begin() + 1, words.end()));
}
