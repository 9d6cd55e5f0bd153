#include "openhost/program/WindowContent.h"

#include <exception>

#include "openhost/app/Alerts.h"
#include "openhost/app/AppState.h"
#include "openhost/app/Menus.h"
#include "openhost/app/Views.h"
#include "openhost/core/Host.h"
#include "openhost/core/Raise.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "openhost/files/Files.h"
#include "openhost/values/Text.h"
#include "platform/Libraries.h"
#include "platform/NarrowText.h"
#include "platform/Paths.h"

namespace openhost {

namespace {

std::string Utf8OfHost(const std::string& bytes)
{
    CHostText text;
    text.SetHostBytes(bytes);
    return text.Utf8();
}

CHostWindow* Window() { return Part<WindowPlace>().window; }

/// Nothing gets out of it: what fails is told to the user.
template <class Work>
void Told(Work work)
{
    std::string problem;
    try {
        work();
        return;
    } catch (const CHostRaise& raise) {
        problem = raise.Message();
    } catch (const std::exception& error) {
        problem = error.what();
    } catch (...) {
        problem = "unknown error";
    }
    SayAlert(problem);
    if (Window()) Window()->Alert(AlertKind::Note, problem);
}

template <class Ask>
bool Answer(Ask ask)
{
    try {
        return ask();
    } catch (...) {  // a plug-in that cannot say it
        return false;
    }
}

WindowMenuItem ShownItem(const CMenuItem& item);

std::vector<WindowMenuItem> ShownItems(const CMenu& menu)
{
    std::vector<WindowMenuItem> items;
    for (const CMenuItem* item : menu.items) items.push_back(ShownItem(*item));
    return items;
}

/// Items may be gone by the time at which one is chosen, so each is found anew by its name.
WindowMenuItem ShownItem(const CMenuItem& item)
{
    WindowMenuItem shown{.title = Utf8OfHost(item.title)};
    if (item.submenu) shown.items = ShownItems(*item.submenu);
    if (item.submenu || item.IsSeparator()) return shown;
    const auto found = [name = item.name] { return Part<CMenus>().FindItem(name); };
    shown.enabled = [found] { return Answer([&] { return found() && IsEnabled(*found()); }); };
    shown.marked = [found] { return Answer([&] { return found() && IsMarked(*found()); }); };
    shown.choose = [found] {
        Told([&] {
            if (const CMenuItem* chosen = found()) Execute(*chosen);
        });
    };
    return shown;
}

std::string SecurityText(const CPdfDocument& document)
{
    if (!document.IsEncrypted()) return "None";
    return document.OpenedBy() == OpenedWith::User ? "Password, restricted" : "Password";
}

void OpenChosen()
{
    if (!Window()) return;
    for (const std::string& path : Window()->ChooseFiles("Open", "*.pdf", true)) CHostContent::Open(path);
}

void CloseSelected()
{
    const auto place = Window() ? Window()->SelectedDocument() : std::nullopt;
    const auto& views = Part<CViews>();
    if (!place || *place >= views.All().size()) return;
    const AVDoc view = views.All()[*place];
    const bool changed = DocumentAt(views.At(view).document).pdf.IsModified();
    if (changed &&
        !Window()->Alert(AlertKind::OkCancel, "\"" + views.At(view).title +
                                                  "\" has changes that are not saved. Close it and give them up?"))
        return;
    Part<CViews>().Close(view, true);
}

}  // namespace

CHostContent::CHostContent() { AddFileItems({{"&Open...", "Open", OpenChosen}, {"&Close", "Close", CloseSelected}}); }

std::string CHostContent::Title() const { return kHostName; }

std::vector<WindowMenu> CHostContent::Menus() const
{
    std::vector<WindowMenu> menus;
    for (const CMenu* menu : Part<CMenus>().OnBar())
        if (!menu->hiddenOnBar) menus.push_back({Utf8OfHost(menu->title), ShownItems(*menu)});
    return menus;
}

std::vector<WindowDocument> CHostContent::Documents() const
{
    std::vector<WindowDocument> documents;
    for (const AVDoc view : Part<CViews>().All()) {
        WindowDocument shown{.name = Part<CViews>().At(view).title, .path = {}, .security = {}};
        (void)Answer([&] {
            CPdfDocument& pdf = DocumentAt(Part<CViews>().At(view).document).pdf;
            shown.path = platform::Utf8FromNarrow(pdf.Path());
            shown.security = SecurityText(pdf);
            shown.pages = pdf.PageCount();
            return true;
        });
        documents.push_back(std::move(shown));
    }
    return documents;
}

void CHostContent::Closed() { Part<AppWishes>().quit = true; }

void CHostContent::Open(const std::string& path)
{
    Told([&] {
        const ASPathName name = NewPath(platform::AbsolutePath(path));
        const std::unique_ptr<std::remove_pointer_t<ASPathName>, void (*)(ASPathName)> released(name, &ReleasePath);
        Part<CViews>().OpenFromFile(name, {});
    });
}

std::unique_ptr<CHostWindow> MakeHostWindow(CWindowContent& content, std::string& problem)
{
    const std::string file = platform::TextOf(platform::StandardPath(platform::ExecutablePath()).parent_path() /
                                              (std::string("FerruleHostWindow") + platform::kLibrarySuffix));
    std::string reason;
    const auto make =
        reinterpret_cast<MakeHostWindowProc>(platform::FunctionOfLibrary(file, kMakeHostWindow, reason));
    const std::string version = HostWindowVersion(FERRULE_VERSION);
    HostWindowRequest request{version.c_str(), &content, {}};
    std::unique_ptr<CHostWindow> window(make ? make(&request) : nullptr);
    if (!make) problem = "there is no window: " + file + " cannot be loaded: " + reason;
    if (make && !window) problem = std::string("there is no window: ") + request.problem;
    return window;
}

}  // namespace openhost
