#include "cli/RenameCommand.h"

#include <string>
#include <utility>

#include "cli/RunArguments.h"
#include "cli/RunCommands.h"
#include "platform/Files.h"
#include "protocol/Json.h"
#include "protocol/RenameOrder.h"

namespace cli {

namespace {

/// Each worker reads the list, and a later start of the run does so again.
std::string ListPath(const CArguments& arguments)
{
    if (!arguments.Has("--apply")) FailUsage("give the list of new names: --apply PLAN");
    const std::string typed = arguments.Text("--apply");
    if (typed == "-") FailUsage("--apply takes a file, which is read more than once; - has no meaning");
    const std::string path = ExistingPath(typed);
    if (const auto readable = platform::CheckReadable(path); !readable)
        FailStart(path + ": " + platform::ErrorText(readable.errorNumber) + "; --apply takes a regular file");
    return path;
}

}  // namespace

int RenameCommand(const CArguments& arguments, const Screen& screen)
{
    const RenameOrder order{.overwrite = arguments.Has("--overwrite")};
    WorkDescription work{.kind = kRenameWork,
                         .files = {{kRenameList, ListPath(arguments)}},
                         .settings = LineOf(RenameOrderJson(order))};
    return RunAndReport(ReadRun(arguments, ReadResultPlaces(arguments, std::move(work), {})), arguments, screen);
}

}  // namespace cli
