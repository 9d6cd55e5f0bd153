#include "openhost/pdf/OpenSettings.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFNameTreeObjectHelper.hh>

#include "openhost/pdf/PageTree.h"

namespace openhost {
namespace {

constexpr char kPreferences[] = "/ViewerPreferences";
constexpr char kOpenAction[] = "/OpenAction";

std::string NameIn(QPDFObjectHandle dictionary, const std::string& key)
{
    if (!dictionary.isDictionary()) return {};
    QPDFObjectHandle value = dictionary.getKey(key);
    return value.isName() ? value.getName().substr(1) : std::string();
}

bool SetName(QPDFObjectHandle dictionary, const char* key, const std::optional<std::string>& name)
{
    if (NameIn(dictionary, key) == name.value_or("")) return false;
    if (name)
        dictionary.replaceKey(key, QPDFObjectHandle::newName('/' + *name));
    else
        dictionary.removeKey(key);
    return true;
}

/// Puts a preference, or takes it away when `value` is null.
void PutPreference(QPDF& library, const std::string& key, QPDFObjectHandle value)
{
    QPDFObjectHandle root = library.getRoot();
    if (!root.getKey(kPreferences).isDictionary()) root.replaceKey(kPreferences, QPDFObjectHandle::newDictionary());
    QPDFObjectHandle preferences = root.getKey(kPreferences);
    preferences.replaceKey(key, value);  // null removes
    if (preferences.getKeys().empty()) root.removeKey(kPreferences);
}

/// What a named destination stands for; null when there is no such name.
QPDFObjectHandle NamedDestination(QPDF& library, QPDFObjectHandle name)
{
    QPDFObjectHandle found = QPDFObjectHandle::newNull(), root = library.getRoot();
    if (name.isName() && root.getKey("/Dests").isDictionary()) found = root.getKey("/Dests").getKey(name.getName());
    if (name.isString() && root.getKey("/Names").isDictionary() &&
        root.getKey("/Names").getKey("/Dests").isDictionary())
        QPDFNameTreeObjectHelper(root.getKey("/Names").getKey("/Dests"), library)
            .findObject(name.getUTF8Value(), found);
    return found.isDictionary() ? found.getKey("/D") : found;
}

bool IsGoTo(QPDFObjectHandle action) { return action.isDictionary() && NameIn(action, "/S") == "GoTo"; }

/// The array of the present open destination; null when there is none.
QPDFObjectHandle PresentDestination(QPDF& library)
{
    QPDFObjectHandle action = library.getRoot().getKey(kOpenAction);
    QPDFObjectHandle destination = IsGoTo(action) ? action.getKey("/D") : action;
    if (destination.isName() || destination.isString()) destination = NamedDestination(library, destination);
    return destination.isArray() && destination.getArrayNItems() > 1 ? destination : QPDFObjectHandle::newNull();
}

/// Behind the page: the name of the fit and its numbers.
std::vector<QPDFObjectHandle> FitOf(const OpenView& view)
{
    std::vector<QPDFObjectHandle> items{QPDFObjectHandle::newName('/' + view.fit)};
    const QPDFObjectHandle unchanged = QPDFObjectHandle::newNull();
    if (view.fit == "XYZ") {
        items.insert(items.end(), {unchanged, unchanged});
        items.push_back(view.zoom ? QPDFObjectHandle::newReal(*view.zoom, 4) : unchanged);
    } else if (view.fit != "Fit") {
        items.push_back(unchanged);  // from the page's edge
    }
    return items;
}

QPDFObjectHandle DestinationOf(QPDF& library, QPDFObjectHandle present, const std::optional<int>& page0,
                               const std::optional<OpenView>& view)
{
    const std::vector<QPDFObjectHandle> pages = PagesOf(library);
    QPDFObjectHandle page = present.isArray() ? present.getArrayItem(0) : QPDFObjectHandle::newNull();
    const bool numbered = page.isInteger() && page.getIntValue() >= 0 &&
                          page.getUIntValue() < static_cast<unsigned long long>(pages.size());
    if (numbered) page = pages[static_cast<std::size_t>(page.getIntValue())];
    if (page0 || !page.isDictionary()) page = pages.at(static_cast<std::size_t>(page0.value_or(0)));
    std::vector<QPDFObjectHandle> items{page};
    if (!view && present.isArray()) {
        const auto old = present.getArrayAsVector();
        items.insert(items.end(), old.begin() + 1, old.end());
    } else {
        const auto fit = FitOf(view.value_or(OpenView()));
        items.insert(items.end(), fit.begin(), fit.end());
    }
    return QPDFObjectHandle::newArray(items);
}

}  // namespace

bool SetPageLayout(CPdfDocument& document, const std::optional<std::string>& layout)
{
    return SetName(document.Library().getRoot(), "/PageLayout", layout);
}

std::string PageLayoutOf(CPdfDocument& document) { return NameIn(document.Library().getRoot(), "/PageLayout"); }

bool SetPageMode(CPdfDocument& document, const std::optional<std::string>& mode)
{
    const std::string present = PageModeOf(document);
    if (mode == "UseNone" && present.empty()) return false;
    return SetName(document.Library().getRoot(), "/PageMode", mode);
}

std::string PageModeOf(CPdfDocument& document) { return NameIn(document.Library().getRoot(), "/PageMode"); }

bool SetViewerFlag(CPdfDocument& document, const std::string& key, bool value)
{
    QPDFObjectHandle preferences = document.Library().getRoot().getKey(kPreferences);
    QPDFObjectHandle present = preferences.isDictionary() ? preferences.getKey('/' + key) : preferences;
    if ((present.isBool() && present.getBoolValue()) == value) return false;
    PutPreference(document.Library(), '/' + key,
                  value ? QPDFObjectHandle::newBool(true) : QPDFObjectHandle::newNull());
    return true;
}

bool SetViewerName(CPdfDocument& document, const std::string& key, const std::string& name)
{
    if (ViewerName(document, key) == name) return false;
    PutPreference(document.Library(), '/' + key,
                  name.empty() ? QPDFObjectHandle::newNull() : QPDFObjectHandle::newName('/' + name));
    return true;
}

std::string ViewerName(CPdfDocument& document, const std::string& key)
{
    return NameIn(document.Library().getRoot().getKey(kPreferences), '/' + key);
}

std::optional<OpenView> OpenViewOf(CPdfDocument& document)
{
    QPDFObjectHandle destination = PresentDestination(document.Library());
    if (!destination.isArray() || !destination.getArrayItem(1).isName()) return std::nullopt;
    OpenView view{.fit = destination.getArrayItem(1).getName().substr(1)};
    if (view.fit == "FitB" || view.fit == "FitBV") view.fit = "FitBH";
    if (view.fit != "XYZ" || destination.getArrayNItems() < 5) return view;
    QPDFObjectHandle zoom = destination.getArrayItem(4);
    if (zoom.isNumber() && zoom.getNumericValue() > 0) view.zoom = zoom.getNumericValue();
    return view;
}

bool SetOpenDestination(CPdfDocument& document, const std::optional<int>& page0, const std::optional<OpenView>& view)
{
    if (!page0 && !view) return false;
    QPDF& library = document.Library();
    QPDFObjectHandle root = library.getRoot(), action = root.getKey(kOpenAction);
    QPDFObjectHandle present = PresentDestination(library);
    QPDFObjectHandle wanted = DestinationOf(library, present, page0, view);
    if (present.isArray() && present.unparseResolved() == wanted.unparseResolved()) return false;
    const bool saysNothing = page0.value_or(0) == 0 && (!view || (view->fit == "XYZ" && !view->zoom));
    if (action.isNull() && saysNothing) return false;  // what readers do anyway
    const bool other = action.isDictionary() && !IsGoTo(action);
    if (!other && !action.isDictionary()) {
        root.replaceKey(kOpenAction, wanted);
        return true;
    }
    QPDFObjectHandle go = QPDFObjectHandle::parse("<</S/GoTo>>");
    go.replaceKey("/D", wanted);
    go.replaceKey("/Next", other ? action : action.getKey("/Next"));  // null removes
    root.replaceKey(kOpenAction, go);
    return true;
}

}  // namespace openhost
