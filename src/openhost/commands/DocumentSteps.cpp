// The steps that change what a document says of itself, how it opens, and its comments.

#include <algorithm>

#include "base/Unicode.h"
#include "openhost/commands/LocalNames.h"
#include "openhost/commands/Step.h"
#include "openhost/pdf/OpenSettings.h"
#include "openhost/pdf/PageTree.h"
#include "openhost/values/Text.h"

namespace openhost {

namespace {

constexpr const char* kEntries[] = {"Title", "Subject", "Author", "Keywords"};

bool IsWanted(const CStepRun& run, const std::string& key) { return run.Has(key) && !run.Flag("LeaveAsIs:" + key); }

/// Of the entry itself; the metadata packet follows with the next save.
bool Says(CPdfDocument& document, const std::string& key, const std::string& wantedUtf8)
{
    const auto present = document.Info(key);
    if (!present) return wantedUtf8.empty();
    return Utf16FromPdText(*present) == Utf8ToUtf16(wantedUtf8) && document.MetadataHold(wantedUtf8);
}

StepResult SetGeneralInfo(CStepRun& run)
{
    StepResult result = StepResult::Unchanged;
    for (const char* const key : kEntries) {
        if (!IsWanted(run, key) || Says(run.Pdf(), key, run.Text(key))) continue;
        run.Pdf().SetInfo(key, PdTextFromUtf16(Utf8ToUtf16(run.Text(key))));
        result = StepResult::Changed;
    }
    return result;
}

}  // namespace

const StepDescription& GeneralInfoStep()
{
    static const StepDescription step{
        .names = {"GeneralInfo"},
        .group = "Document",
        .title = "Description",
        .rights = {PdfRight::Change},
        .parameters = {{{.key = "Title", .kind = ParameterKind::Text},
                        {.key = "Subject", .kind = ParameterKind::Text},
                        {.key = "Author", .kind = ParameterKind::Text},
                        {.key = "Keywords", .kind = ParameterKind::Text},
                        {.key = "Binding"},
                        {.key = "LeaveAsIs:Title", .kind = ParameterKind::Boolean, .fallback = false},
                        {.key = "LeaveAsIs:Subject", .kind = ParameterKind::Boolean, .fallback = false},
                        {.key = "LeaveAsIs:Author", .kind = ParameterKind::Boolean, .fallback = false},
                        {.key = "LeaveAsIs:Keywords", .kind = ParameterKind::Boolean, .fallback = false},
                        {.key = "LeaveAsIs:Binding"}}},
        .work = &SetGeneralInfo};
    return step;
}

namespace {

constexpr const char* kLayouts[] = {nullptr,          "SinglePage",  "OneColumn",   "TwoColumnLeft",
                                    "TwoColumnRight", "TwoPageLeft", "TwoPageRight"};
constexpr int kKeepMode = 0, kFullScreenMode = 4, kInternalMode = 5;
constexpr const char* kModes[] = {nullptr,      "UseNone", "UseThumbs", "UseOutlines",
                                  "FullScreen", nullptr,   "UseOC",     "UseAttachments"};
/// What may be shown behind a full screen.
constexpr const char* kModesBehind[] = {"UseOutlines", "UseThumbs", "UseOC"};
constexpr const char* kFlags[] = {"HideToolbar", "HideMenubar",  "HideWindowUI",
                                  "FitWindow",   "CenterWindow", "DisplayDocTitle"};
constexpr char kBehind[] = "NonFullScreenPageMode";

/// The sequence has a value for it, and does not say to leave it as it is.
bool Applies(const CStepRun& run, const std::string& key) { return run.Has(key) && !run.Flag("LeaveAsIs:" + key); }

struct Destination {
    std::optional<int> page0;
    std::optional<OpenView> view;
};

Destination ReadDestination(const CStepRun& run)
{
    const bool reset = !run.Has("ResetDest") || run.Flag("ResetDest");
    if (!reset || run.Flag("LeaveAsIs:OpenAction")) return {};
    Destination wanted;
    if (Applies(run, "PageNum") && !run.Text("PageNum").empty()) wanted.page0 = run.PageNumber("PageNum") - 1;
    if (!Applies(run, "Magnification") || run.Text("Magnification").empty()) return wanted;
    wanted.view = ViewNamed(run.Text("Magnification"));
    if (!wanted.view)
        run.Remark("does not know the magnification \"" + run.Text("Magnification") +
                   "\" and leaves the present one; a percentage or an English name is known everywhere");
    return wanted;
}

/// The page mode of a document, and whether a full screen covers it.
struct ShownMode {
    bool full;
    std::string mode;
};

ShownMode WantedMode(const CStepRun& run, const ShownMode& present)
{
    ShownMode wanted = present;
    const int mode = Applies(run, "PageMode") ? run.Integer("PageMode") : kKeepMode;
    if (mode == kInternalMode) run.Remark("leaves the page mode: the number 5 has no counterpart in documents");
    const bool given = mode != kKeepMode && mode != kInternalMode;
    if (given && mode != kFullScreenMode) wanted = {false, kModes[mode]};
    if (Applies(run, "FullScreen")) wanted.full = run.Flag("FullScreen");
    if (run.Has("FullScreen") && run.Flag("LeaveAsIs:FullScreen")) wanted.full = present.full;
    if (mode == kFullScreenMode) wanted.full = true;
    return wanted;
}

bool SetMode(CPdfDocument& document, const ShownMode& present, const ShownMode& wanted)
{
    if (wanted.full == present.full && wanted.mode == present.mode) return false;
    if (!wanted.full) {
        const bool cleared = present.full && SetViewerName(document, kBehind, {});
        const auto mode = wanted.mode.empty() ? std::nullopt : std::optional(wanted.mode);
        return SetPageMode(document, mode) || cleared;
    }
    const bool mayBeBehind = std::ranges::find(kModesBehind, wanted.mode) != std::end(kModesBehind);
    const bool behind = SetViewerName(document, kBehind, mayBeBehind ? wanted.mode : std::string());
    return SetPageMode(document, "FullScreen") || behind;
}

bool SetMode(CStepRun& run)
{
    CPdfDocument& document = run.Pdf();
    const std::string mode = PageModeOf(document);
    const bool full = mode == kModes[kFullScreenMode];
    const ShownMode present{full, full ? ViewerName(document, kBehind) : mode};
    return SetMode(document, present, WantedMode(run, present));
}

StepResult SetOpenInfo(CStepRun& run)
{
    CPdfDocument& document = run.Pdf();
    const Destination destination = ReadDestination(run);
    bool changed = SetOpenDestination(document, destination.page0, destination.view);
    if (Applies(run, "PageLayout")) {
        const char* const layout = kLayouts[run.Integer("PageLayout")];
        changed |= SetPageLayout(document, layout ? std::optional<std::string>(layout) : std::nullopt);
    }
    changed |= SetMode(run);
    for (const char* const key : kFlags)
        if (Applies(run, key)) changed |= SetViewerFlag(document, key, run.Flag(key));
    return changed ? StepResult::Changed : StepResult::Unchanged;
}

std::vector<StepParameter> OpenInfoParameters()
{
    std::vector<StepParameter> all{
        {.key = "PageNum", .kind = ParameterKind::Text},
        {.key = "Magnification", .kind = ParameterKind::Text},
        {.key = "PageLayout", .kind = ParameterKind::Integer, .least = 0, .most = std::size(kLayouts) - 1},
        {.key = "PageMode", .kind = ParameterKind::Integer, .least = 0, .most = std::size(kModes) - 1},
        {.key = "FullScreen", .kind = ParameterKind::Boolean},
        {.key = "ResetDest", .kind = ParameterKind::Boolean}};
    for (const char* const key : kFlags) all.push_back({.key = key, .kind = ParameterKind::Boolean});
    for (const char* const key :
         {"LeaveAsIs:PageNum", "LeaveAsIs:Magnification", "LeaveAsIs:PageLayout", "LeaveAsIs:PageMode",
          "LeaveAsIs:FullScreen", "LeaveAsIs:OpenAction", "LeaveAsIs:HideToolbar", "LeaveAsIs:HideMenubar",
          "LeaveAsIs:HideWindowUI", "LeaveAsIs:FitWindow", "LeaveAsIs:CenterWindow", "LeaveAsIs:DisplayDocTitle"})
        all.push_back({.key = key, .kind = ParameterKind::Boolean, .fallback = false});
    all.push_back({.key = "LeaveAsIs:ResetDest"});
    return all;
}

}  // namespace

/// What is absent or to be left stays as it is. "ResetDest" tells whether the open destination is made anew.
const StepDescription& OpenInfoStep()
{
    static const StepDescription step{.names = {"OpenInfo"},
                                      .group = "Document",
                                      .title = "Set Open Options",
                                      .rights = {PdfRight::Change},
                                      .parameters = OpenInfoParameters(),
                                      .work = &SetOpenInfo};
    return step;
}

namespace {

StepResult DeleteAll(CStepRun& run)
{
    return RemoveComments(run.Pdf()) > 0 ? StepResult::Changed : StepResult::Unchanged;
}

}  // namespace

const StepDescription& DeleteAllStep()
{
    static const StepDescription step{.names = {"DeleteAll", "Annots:DeleteAll"},
                                      .group = "Comments",
                                      .title = "Delete All Comments",
                                      .rights = {PdfRight::Annotate, PdfRight::Change},
                                      .parameters = std::vector<StepParameter>{},
                                      .work = &DeleteAll};
    return step;
}

}  // namespace openhost
