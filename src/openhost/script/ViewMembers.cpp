// How the document shows itself. There is no window, so it is what the document says of it for the reader who opens
// it.

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"
#include "openhost/script/Scripts.h"

namespace openhost {

namespace {

constexpr const char* kLayouts[] = {"SinglePage",     "OneColumn",   "TwoColumnLeft",
                                    "TwoColumnRight", "TwoPageLeft", "TwoPageRight"};

constexpr char kZoomTypes[] = R"JS(Object.freeze({
    none: "NoVary", fitP: "FitPage", fitW: "FitWidth", fitH: "FitHeight", fitV: "FitVisibleWidth", pref: "Preferred",
    refW: "ReflowWidth"
}))JS";

/// The types of zoom that have a fit of their own; the first one of a fit is its name.
constexpr std::pair<const char*, const char*> kFits[] = {
    {"FitPage", "Fit"}, {"FitWidth", "FitH"}, {"FitHeight", "FitV"}, {"FitVisibleWidth", "FitBH"}};

duk_ret_t Layout(CScriptRun& run, duk_context* context)
{
    PushScriptUtf8(context, run.Changes().Layout());
    return 1;
}

duk_ret_t SetLayout(CScriptRun& run, duk_context* context)
{
    const std::string name = ScriptTextAt(context, 0);
    if (std::ranges::find(kLayouts, name) == std::end(kLayouts))
        throw std::runtime_error("there is no layout \"" + name + '"');
    run.Changes().SetLayout(name);
    return 0;
}

duk_ret_t ZoomType(CScriptRun& run, duk_context* context)
{
    const auto view = run.Changes().View();
    std::string type = view && view->zoom ? "NoVary" : "Preferred";
    for (const auto& [name, fit] : kFits)
        if (view && view->fit == fit) type = name;
    PushScriptUtf8(context, type);
    return 1;
}

duk_ret_t SetZoomType(CScriptRun& run, duk_context* context)
{
    const std::string type = ScriptTextAt(context, 0);
    const auto present = run.Changes().View();
    std::optional<OpenView> view;
    if (type == "NoVary") view = OpenView{.zoom = present && present->zoom ? present->zoom : 1.0};
    if (type == "Preferred") view = OpenView{};
    for (const auto& [name, fit] : kFits)
        if (type == name) view = OpenView{.fit = fit};
    if (!view) throw std::runtime_error("no document can open with the zoom type \"" + type + '"');
    run.Changes().SetView(*view);
    return 0;
}

constexpr double kPercent = 100;

duk_ret_t Zoom(CScriptRun& run, duk_context* context)
{
    const auto view = run.Changes().View();
    if (!view || !view->zoom) throw std::runtime_error("the reader chooses the zoom: the document says none");
    duk_push_number(context, *view->zoom * kPercent);
    return 1;
}

duk_ret_t SetZoom(CScriptRun& run, duk_context* context)
{
    constexpr double least = 8.33, most = 6400;
    const double percent = duk_to_number(context, 0);
    if (!(percent >= least && percent <= most)) throw std::runtime_error("zoom goes from 8.33 to 6400 percent");
    run.Changes().SetView({.zoom = percent / kPercent});
    return 0;
}

}  // namespace

void AddViewMembers(duk_context* context)
{
    duk_push_global_object(context);
    AddScriptProperties(context, {{"layout", &ScriptEntry<&Layout>, &ScriptEntry<&SetLayout>},
                                  {"zoomType", &ScriptEntry<&ZoomType>, &ScriptEntry<&SetZoomType>},
                                  {"zoom", &ScriptEntry<&Zoom>, &ScriptEntry<&SetZoom>}});
    duk_pop(context);
    RunOwnScript(context, kZoomTypes);
    FixScriptGlobal(context, "zoomtype");
}

}  // namespace openhost
