#include "openhost/commands/Step.h"
#include "openhost/pdf/PageBoxes.h"

namespace openhost {

namespace {

enum Action { kLandscapePages, kPortraitPages, kEveryPage };

bool IsToBeTurned(const CPageBoxes& boxes, int page0, int action)
{
    if (action == kLandscapePages) return boxes.IsLandscape(page0);
    return action == kEveryPage || boxes.IsPortrait(page0);
}

/// Landscape or portrait is a page as it is shown before it is turned; a square one is neither.
StepResult RotatePages(CStepRun& run)
{
    const auto pages0 = run.Pages0();
    CPageBoxes boxes(run.Pdf());
    bool changed = false;
    for (const int page0 : pages0)
        if (IsToBeTurned(boxes, page0, run.Integer("Action"))) changed |= boxes.Rotate(page0, run.Integer("Degrees"));
    return changed ? StepResult::Changed : StepResult::Unchanged;
}

}  // namespace

const StepDescription& RotatePagesStep()
{
    static const StepDescription step{
        .names = {"RotatePages"},
        .group = "Page",
        .title = "Rotate Pages",
        .rights = {PdfRight::Assemble, PdfRight::Change},
        .pages = StepPages{},
        .parameters = {{{.key = "Degrees", .kind = ParameterKind::Integer, .fallback = 90, .oneOf = {90, 180, 270}},
                        {.key = "Action",
                         .kind = ParameterKind::Integer,
                         .fallback = static_cast<int>(kEveryPage),
                         .oneOf = {kLandscapePages, kPortraitPages, kEveryPage}}}},
        .work = &RotatePages};
    return step;
}

}  // namespace openhost
