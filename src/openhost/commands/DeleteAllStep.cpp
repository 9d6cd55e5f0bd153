#include "openhost/commands/Step.h"
#include "openhost/pdf/Comments.h"

namespace openhost {

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
