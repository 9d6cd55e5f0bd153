// The steps that change pages: crop, rotate and delete them.

#include "openhost/commands/Step.h"
#include "openhost/pdf/PageBoxes.h"
#include "openhost/pdf/PageTree.h"

namespace openhost {

namespace {

enum CropType { kMargins, kContent, kNoBox };

constexpr char kBoxType[] = "BoxType";
/// The cab of each box, in the order of the numbers that name them.
constexpr struct {
    const char* cab;
    BoxKind kind;
} kBoxes[] = {{"Crop", BoxKind::Crop}, {"Bleed", BoxKind::Bleed}, {"Trim", BoxKind::Trim}, {"Art", BoxKind::Art}};

struct CropOrder {
    BoxKind kind = BoxKind::Crop;
    int type = kMargins;
    PageMargins points;
};

/// `prefix` leads to the cab of a box; it is empty in the older form, which knows the crop box alone.
CropOrder ReadOrder(const CStepRun& run, BoxKind kind, const std::string& prefix)
{
    return {kind,
            run.Integer(prefix + "CropType"),
            {run.Number(prefix + "Left"), run.Number(prefix + "Top"), run.Number(prefix + "Right"),
             run.Number(prefix + "Bottom")}};
}

CropOrder ReadOrder(const CStepRun& run)
{
    const CCabinet* const params = run.Params();
    const auto hasCab = [&](const char* name) { return params && params->GetCab(name); };
    if (!run.Has(kBoxType) && !hasCab(kBoxes[0].cab)) return ReadOrder(run, BoxKind::Crop, {});
    const auto& box = kBoxes[run.Has(kBoxType) ? run.Integer(kBoxType) : 0];
    if (!hasCab(box.cab))
        run.Fail("lacks the items \"" + std::string(box.cab) + "\" for the box that \"BoxType\" names");
    return ReadOrder(run, box.kind, box.cab + std::string(":"));
}

PageBox BoxByMargins(const CStepRun& run, const CPageBoxes& boxes, int page0, const CropOrder& order)
{
    const PageBox outer = boxes.Box(page0, order.kind == BoxKind::Crop ? BoxKind::Media : BoxKind::Crop);
    const double unit = boxes.UnitPoints(page0);
    const PageMargins margins{order.points.left / unit, order.points.top / unit, order.points.right / unit,
                              order.points.bottom / unit};
    const PageBox box = Inset(outer, margins, boxes.Rotation(page0)).Within(outer);
    if (box.IsEmpty()) run.Fail("leaves nothing of page " + std::to_string(page0 + 1) + ": its margins are too wide");
    return box;
}

struct PagePlan {
    int page0;
    std::optional<PageBox> box;
};

/// A page without content keeps its boxes.
std::vector<PagePlan> PlanByContent(const CStepRun& run, const CPageBoxes& boxes, const std::vector<int>& pages0)
{
    const auto margins = ContentMargins(run.Pdf(), pages0);
    std::vector<PagePlan> plans;
    for (std::size_t at = 0; at < pages0.size(); ++at)
        if (margins[at])
            plans.push_back(
                {pages0[at], Inset(boxes.Box(pages0[at], BoxKind::Crop), *margins[at], boxes.Rotation(pages0[at]))});
    return plans;
}

std::vector<PagePlan> Plan(const CStepRun& run, const CPageBoxes& boxes, const CropOrder& order)
{
    const auto pages0 = run.Pages0();
    if (order.type == kContent) return PlanByContent(run, boxes, pages0);
    std::vector<PagePlan> plans;
    for (const int page0 : pages0) {
        if (order.type == kNoBox)
            plans.push_back({page0, std::nullopt});
        else
            plans.push_back({page0, BoxByMargins(run, boxes, page0, order)});
    }
    return plans;
}

StepResult CropPages(CStepRun& run)
{
    const CropOrder order = ReadOrder(run);
    CPageBoxes boxes(run.Pdf());
    bool changed = false;
    for (const PagePlan& plan : Plan(run, boxes, order)) changed |= boxes.SetBox(plan.page0, order.kind, plan.box);
    return changed ? StepResult::Changed : StepResult::Unchanged;
}

/// Those of one form: at the top, or in the cab of a box.
void Declare(std::vector<StepParameter>& parameters, const char* type, const char* left, const char* top,
             const char* right, const char* bottom)
{
    parameters.push_back({.key = type,
                          .kind = ParameterKind::Integer,
                          .fallback = static_cast<int>(kMargins),
                          .oneOf = {kMargins, kContent, kNoBox}});
    for (const char* const edge : {left, top, right, bottom})
        parameters.push_back({.key = edge, .kind = ParameterKind::Number, .fallback = 0.0});
}

std::vector<StepParameter> CropParameters()
{
    std::vector<StepParameter> all{{.key = kBoxType, .kind = ParameterKind::Integer, .oneOf = {0, 1, 2, 3}}};
    Declare(all, "CropType", "Left", "Top", "Right", "Bottom");
    Declare(all, "Crop:CropType", "Crop:Left", "Crop:Top", "Crop:Right", "Crop:Bottom");
    Declare(all, "Bleed:CropType", "Bleed:Left", "Bleed:Top", "Bleed:Right", "Bleed:Bottom");
    Declare(all, "Trim:CropType", "Trim:Left", "Trim:Top", "Trim:Right", "Trim:Bottom");
    Declare(all, "Art:CropType", "Art:Left", "Art:Top", "Art:Right", "Art:Bottom");
    for (const char* const display :
         {"Crop:Filter", "Crop:version", "Crop:LeftText", "Crop:TopText", "Crop:RightText", "Crop:BottomText"})
        all.push_back({.key = display});
    return all;
}

}  // namespace

/// Margins are points on the page as it is shown: those of the crop box from the edges of the media box, those of the
/// other boxes from the edges of the crop box.
const StepDescription& CropPagesStep()
{
    static const StepDescription step{.names = {"CropPages"},
                                      .group = "Page",
                                      .title = "Crop Pages",
                                      .rights = {PdfRight::Change},
                                      .pages = StepPages{},
                                      .parameters = CropParameters(),
                                      .work = &CropPages};
    return step;
}

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

namespace {

StepResult DeletePages(CStepRun& run)
{
    const auto pages0 = run.Pages0();
    const int pages = run.Pdf().PageCount();
    if (static_cast<int>(pages0.size()) >= pages)
        run.Fail("would leave no page of " + std::to_string(pages) + "; a document keeps one", PdfProblem::LastPage);
    RemovePages(run.Pdf(), pages0);
    return pages0.empty() ? StepResult::Unchanged : StepResult::Changed;
}

}  // namespace

const StepDescription& DeletePagesStep()
{
    static const StepDescription step{.names = {"DeletePages"},
                                      .group = "Page",
                                      .title = "Delete Pages",
                                      .rights = {PdfRight::Assemble, PdfRight::Change},
                                      .pages = StepPages{.group = PageGroup::FromTo, .evenOdd = false},
                                      .parameters = std::vector<StepParameter>{},
                                      .work = &DeletePages};
    return step;
}

}  // namespace openhost
