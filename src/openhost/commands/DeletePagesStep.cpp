#include "openhost/commands/Step.h"
#include "openhost/pdf/PageTree.h"

namespace openhost {

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
