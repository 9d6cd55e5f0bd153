// The entry of the library with the host's window, and the window as the program uses it.
#include <wx/app.h>
#include <wx/dirdlg.h>
#include <wx/evtloop.h>
#include <wx/filedlg.h>
#include <wx/init.h>
#include <wx/log.h>
#include <wx/msgdlg.h>

#include <clocale>
#include <cstdio>
#include <memory>
#include <string>

#include "openhost/app/HostWindow.h"
#include "openhost/window/Frame.h"

#ifdef _WIN32
#include <wx/msw/private.h>
#define LIBRARY_EXPORT __declspec(dllexport)
#else
#define LIBRARY_EXPORT __attribute__((visibility("default")))
#endif

namespace openhost {

namespace {

/// The program has its own loop; windows of plug-ins may come and go without ending it.
class CHostApp final : public wxApp {
public:
    CHostApp() { SetExitOnFrameDelete(false); }
    bool OnInit() override { return true; }
};

bool StartToolkit()
{
#ifdef _WIN32
    // Window classes belong to a module, and plug-ins may bring a toolkit of their own.
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&StartToolkit), &module);
    wxSetInstance(module);
#endif
    wxDisableAsserts();
    wxLog::EnableLogging(false);  // it would open windows of its own
    const char* const locale = std::setlocale(LC_ALL, nullptr);
    const std::string before = locale ? locale : "C";
    wxApp::SetInstance(new CHostApp);
    static wxChar name[] = wxT("ferrule-host");
    static wxChar* arguments[] = {name, nullptr};
    int count = 1;
    const bool started = wxEntryStart(count, arguments);
    std::setlocale(LC_ALL, before.c_str());  // numbers in documents have a point everywhere
    return started;
}

wxString Shown(const std::string& utf8) { return wxString::FromUTF8(utf8.c_str()); }

std::string PathOf(const wxString& chosen)
{
#ifdef _WIN32
    return chosen.utf8_string();
#else
    return std::string(chosen.fn_str());
#endif
}

class CWxHostWindow final : public CHostWindow {
public:
    explicit CWxHostWindow(CWindowContent& content) : m_activator(&m_loop), m_frame(new CFrame(content))
    {
        wxTheApp->SetTopWindow(m_frame);  // windows of plug-ins in this process find their owner so
        m_frame->Show();
    }
    ~CWxHostWindow() override { delete m_frame; }

    void* Handle() const override { return m_frame->GetHandle(); }

    void Work(unsigned milliseconds) override
    {
        m_frame->Refresh();
        m_loop.ProcessIdle();
        if (!m_loop.Pending() && milliseconds > 0) m_loop.DispatchTimeout(milliseconds);
        while (m_loop.Pending()) m_loop.Dispatch();
        for (const auto& act : m_frame->TakeChosen()) act();
    }

    std::optional<std::size_t> SelectedDocument() const override { return m_frame->SelectedDocument(); }

    bool Alert(AlertKind kind, const std::string& text) override
    {
        const long buttons = kind == AlertKind::Note    ? wxOK | wxICON_INFORMATION
                             : kind == AlertKind::YesNo ? wxYES_NO | wxICON_QUESTION
                                                        : wxOK | wxCANCEL | wxICON_QUESTION;
        wxMessageDialog dialog(m_frame, Shown(text), m_frame->GetTitle(), buttons | wxCENTRE);
        const int answer = dialog.ShowModal();
        return answer == wxID_OK || answer == wxID_YES;
    }

    std::vector<std::string> ChooseFiles(const std::string& title, const std::string& patterns, bool several) override
    {
        const wxString filter = patterns.empty() ? wxString("*") : Shown(patterns + '|' + patterns);
        wxFileDialog dialog(m_frame, Shown(title), "", "", filter,
                            wxFD_OPEN | wxFD_FILE_MUST_EXIST | (several ? wxFD_MULTIPLE : 0));
        std::vector<std::string> files;
        if (dialog.ShowModal() != wxID_OK) return files;
        wxArrayString paths;
        if (several)
            dialog.GetPaths(paths);
        else
            paths.Add(dialog.GetPath());
        for (const wxString& path : paths) files.push_back(PathOf(path));
        return files;
    }

    std::string ChooseFolder(const std::string& title) override
    {
        wxDirDialog dialog(m_frame, Shown(title));
        return dialog.ShowModal() == wxID_OK ? PathOf(dialog.GetPath()) : std::string();
    }

private:
    wxGUIEventLoop m_loop;
    wxEventLoopActivator m_activator;
    CFrame* m_frame;  // owned
};

CHostWindow* Refuse(HostWindowRequest& request, const char* problem)
{
    std::snprintf(request.problem, sizeof request.problem, "%s", problem);
    return nullptr;
}

}  // namespace
}  // namespace openhost

extern "C" LIBRARY_EXPORT openhost::CHostWindow* FerruleMakeHostWindow(openhost::HostWindowRequest* request)
{
    using namespace openhost;
    try {
        if (HostWindowVersion(FERRULE_VERSION) != request->version)
            return Refuse(*request, "its library is of another version than the program; install both anew.");
        if (!StartToolkit()) return Refuse(*request, "there is no display that it could be shown on.");
        return std::make_unique<CWxHostWindow>(*request->content).release();
    } catch (...) {
        return Refuse(*request, "out of memory.");
    }
}
