#include "cli/BatchFileCommand.h"

#include "base/Text.h"
#include "cli/JobAnswer.h"
#include "cli/RunArguments.h"
#include "cli/Summary.h"
#include "protocol/Json.h"

namespace cli {

int BatchFileCommand(const CArguments& arguments, const Screen& screen)
{
    const FinalActionFacts& action = *FindFinalAction(arguments.Text("--final-action"));
    const std::string output = OptionalPath(arguments, "--output");
    Json job = {{"kind", "batch-file"},
                {"sequence", TextFromBytes(ExistingPath(arguments.Operands().front()))},
                {"finalAction", action.word},
                {"destination", TextFromBytes(ReadDestination(arguments, action))},
                {"form", arguments.Text("--form")},
                {"executeInSteps", arguments.Has("--in-steps")},
                {"noProgress", arguments.Has("--no-progress")},
                {"startHidden", arguments.Has("--hidden")},
                {"noSubfolders", arguments.Has("--no-subfolders")},
                {"overwrite", arguments.Has("--overwrite")},
                {"path", TextFromBytes(output == "-" ? "" : output)}};
    if (arguments.Has("--ext")) job["extensions"] = TextFromBytes(arguments.Text("--ext"));
    const auto answer = AnswerOfJob(arguments, job, screen);
    if (!answer) return kExitBroken;
    if (answer->contains("text"))
        *screen.data << BytesFromText(TextAt(*answer, "text"));
    else
        *screen.messages << "Written: " << Printable(output) << '\n';
    return kExitFine;
}

}  // namespace cli
