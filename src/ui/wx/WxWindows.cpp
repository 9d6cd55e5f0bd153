#include "ui/wx/WxWindows.h"

#include <wx/app.h>
#include <wx/dirdlg.h>
#include <wx/filedlg.h>
#include <wx/init.h>
#include <wx/log.h>
#include <wx/msgdlg.h>

#include <clocale>

#include "ui/wx/FileQuestions.h"
#include "ui/wx/FormDialog.h"
#include "ui/wx/ProgressDialog.h"
#include "ui/wx/System.h"
#include "ui/wx/Text.h"

namespace {

constexpr char kTitle[] = "Ferrule";

/// The toolkit's own object for a program that is not made for it: its loop is the host's.
class CGuestApp final : public wxApp {
public:
    CGuestApp() { SetExitOnFrameDelete(false); }
    bool OnInit() override { return true; }
};

bool StartToolkit()
{
    PrepareStart();
    wxDisableAsserts();
    wxLog::EnableLogging(false);  // it would open windows of its own
    const char* const locale = std::setlocale(LC_ALL, nullptr);
    const std::string before = locale ? locale : "C";
    wxApp::SetInstance(new CGuestApp);
    static wxChar name[] = wxT("Ferrule");
    static wxChar* arguments[] = {name, nullptr};
    int count = 1;
    const bool started = wxEntryStart(count, arguments);
    std::setlocale(LC_ALL, before.c_str());
    return started;
}

long StyleOf(MessageKind kind)
{
    switch (kind) {
        case MessageKind::Note:
            return wxOK | wxICON_INFORMATION;
        case MessageKind::Warning:
            return wxOK | wxICON_WARNING;
        case MessageKind::Question:
            return wxYES_NO | wxICON_QUESTION;
        case MessageKind::Confirm:
            return wxOK | wxCANCEL | wxICON_WARNING;
    }
    return wxOK;
}

}  // namespace

std::unique_ptr<CWxWindows> CWxWindows::Make(std::function<void*()> owner, std::string& problem)
{
    const bool start = wxTheApp == nullptr;
    if (!start || StartToolkit()) return std::unique_ptr<CWxWindows>(new CWxWindows(std::move(owner), start));
    problem = "there is no display that windows could be shown on.";
    return nullptr;
}

CWxWindows::~CWxWindows()
{
    if (m_started) wxEntryCleanup();
}

template <class Answer, class Work>
Answer CWxWindows::WithParent(Answer otherwise, Work work)
{
    try {
        const CLook look;
        if (!m_open.empty()) return work(m_open.back());
        const COwner owner(m_owner ? m_owner() : nullptr);
        return work(owner.Window());
    } catch (...) {  // must not reach the other side, see WindowsFactory.h
        return otherwise;
    }
}

bool CWxWindows::Show(DialogForm& form)
{
    return WithParent(false, [&](wxWindow* parent) {
        CFormDialog dialog(parent, form);
        m_open.push_back(&dialog);
        const bool confirmed = dialog.Run();
        m_open.pop_back();
        return confirmed;
    });
}

bool CWxWindows::Message(MessageKind kind, const std::string& text)
{
    return WithParent(false, [&](wxWindow* parent) {
        wxMessageDialog dialog(parent, Shown(text), kTitle, StyleOf(kind) | wxCENTRE);
        const int answer = dialog.ShowModal();
        return answer == wxID_OK || answer == wxID_YES;
    });
}

std::vector<std::string> CWxWindows::OpenFiles(const FileChoice& choice)
{
    return WithParent(std::vector<std::string>(), [&](wxWindow* parent) { return AskFiles(parent, choice, true); });
}

std::optional<std::string> CWxWindows::OpenFile(const FileChoice& choice)
{
    return WithParent(std::optional<std::string>(), [&](wxWindow* parent) {
        const auto files = AskFiles(parent, choice, false);
        return files.empty() ? std::nullopt : std::optional(files.front());
    });
}

std::optional<std::string> CWxWindows::SaveFile(const FileChoice& choice)
{
    return WithParent(std::optional<std::string>(), [&](wxWindow* parent) { return AskTarget(parent, choice); });
}

std::optional<std::string> CWxWindows::ChooseFolder(const std::string& title, const std::string& initial)
{
    return WithParent(std::optional<std::string>(),
                      [&](wxWindow* parent) { return AskFolder(parent, title, initial); });
}

std::unique_ptr<CProgressWindow> CWxWindows::MakeProgress()
{
    return WithParent(std::unique_ptr<CProgressWindow>(),
                      [this](wxWindow*) { return MakeProgressDialog(OpenDialog(), m_owner ? m_owner() : nullptr); });
}

CFormDialog* CWxWindows::OpenDialog() const { return m_open.empty() ? nullptr : m_open.back(); }
