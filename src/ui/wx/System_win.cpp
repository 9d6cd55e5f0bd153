#include <windows.h>
#include <wx/access.h>
#include <wx/app.h>
#include <wx/control.h>
#include <wx/evtloop.h>
#include <wx/msw/private.h>
#include <wx/toplevel.h>

#include "platform/HostWindow.h"
#include "platform/WideText_win.h"
#include "ui/wx/System.h"
#include "ui/wx/Text.h"

namespace {

constexpr int kManifestOfLibrary = 2;

HMODULE OwnModule()
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&OwnModule), &module);
    return module;
}

/// Says the name of a control and leaves everything else to the control itself.
class CNamed final : public wxAccessible {
public:
    CNamed(wxWindow* window, wxString name) : wxAccessible(window), m_name(std::move(name)) {}
    wxAccStatus GetName(int child, wxString* name) override
    {
        if (child != wxACC_SELF) return wxACC_NOT_IMPLEMENTED;
        *name = m_name;
        return wxACC_OK;
    }

private:
    wxString m_name;
};

/// A window that is not ours. Its procedure stays as it is: the toolkit only knows its handle, to disable it while a
/// dialog waits and to make dialogs its children.
class CForeignWindow final : public wxTopLevelWindow {
public:
    explicit CForeignWindow(HWND window)
    {
        SetHWND(window);
        AdoptAttributesFromHWND();
        wxTopLevelWindows.Append(this);
    }
    ~CForeignWindow() override { SetHWND(nullptr); }
    bool IsShown() const override { return IsWindowVisible(static_cast<HWND>(GetHWND())); }
    bool Destroy() override { return true; }
};

}  // namespace

std::string TypedPath(const wxString& path) { return platform::NarrowPath(path.ToStdWstring()); }

wxString ShownPath(const std::string& path) { return platform::WideText(path); }

// Window classes belong to a module; another one in the process may have registered the toolkit's, too.
void PrepareStart() { wxSetInstance(OwnModule()); }

void NameForReaders(wxWindow& control, const std::string& name, wxWindow*)
{
    if (!name.empty()) control.SetAccessible(new CNamed(&control, Shown(name)));
}

std::string ReadersName(wxWindow& control)
{
    wxString name;
    wxAccessible* const accessible = control.GetAccessible();
    if (accessible && accessible->GetName(wxACC_SELF, &name) == wxACC_OK) return Typed(name);
    return Typed(wxControl::RemoveMnemonics(control.GetLabel()));
}

// Through the toolkit's loop, which knows the keys of dialogs.
void TakeEvents(int atMost)
{
    wxGUIEventLoop own;
    wxEventLoopBase* loop = wxEventLoopBase::GetActive();
    const wxEventLoopActivator activator(loop ? loop : &own);
    if (!loop) loop = &own;
    for (int taken = 0; taken < atMost && loop->Pending(); ++taken) {
        if (loop->Dispatch()) continue;
        PassOnQuit();
        break;
    }
    if (wxTheApp) wxTheApp->ProcessPendingEvents();
}

void PassOnQuit() { PostQuitMessage(0); }

COwner::COwner(void* hostWindow)
{
    if (hostWindow && platform::IsWindow(hostWindow)) m_window = new CForeignWindow(static_cast<HWND>(hostWindow));
}

COwner::~COwner() { delete m_window; }

CLook::CLook()
{
    ACTCTXW context = {};
    context.cbSize = sizeof context;
    context.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
    context.hModule = OwnModule();
    context.lpResourceName = MAKEINTRESOURCEW(kManifestOfLibrary);
    static const HANDLE made = CreateActCtxW(&context);  // for as long as the library, which is for good
    ULONG_PTR cookie = 0;
    if (made != INVALID_HANDLE_VALUE && ActivateActCtx(made, &cookie)) m_cookie = reinterpret_cast<void*>(cookie);
}

CLook::~CLook()
{
    if (m_cookie) DeactivateActCtx(0, reinterpret_cast<ULONG_PTR>(m_cookie));
}
