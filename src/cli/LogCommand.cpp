#include "cli/LogCommand.h"

#include <chrono>
#include <thread>

#include "cli/CommandError.h"
#include "cli/LogTail.h"
#include "cli/RunArguments.h"
#include "common/ProductPaths.h"
#include "platform/Environment.h"
#include "platform/FileProblem.h"
#include "platform/LogFile.h"
#include "platform/Paths.h"

namespace cli {

namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(250);

std::string LogPath(const CArguments& arguments)
{
    if (arguments.Has("--log")) return platform::AbsolutePath(arguments.Text("--log"));
    const std::string applicationData = platform::ApplicationDataFolder();
    if (applicationData.empty()) FailStart("your folder for settings is neither there nor can it be made");
    return MakeProductPaths(applicationData).logFile;
}

/// False when standard output cannot be written any more.
bool PrintNews(CLogTail& tail, const Screen& screen)
{
    for (std::string bytes = tail.Poll(); !bytes.empty(); bytes = tail.Poll())
        screen.data->write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(screen.data->flush());
}

int Show(const std::string& path, const Screen& screen)
{
    if (!platform::FileExists(path)) FailStart(path + ": there is no log yet");
    CLogTail tail(path);
    PrintNews(tail, screen);
    if (!tail.Result()) FailStart(path + ": " + platform::ErrorText(tail.Result().errorNumber));
    return kExitFine;
}

int Follow(const std::string& path, const Screen& screen)
{
    CLogTail tail(path);
    while (PrintNews(tail, screen)) std::this_thread::sleep_for(kPollInterval);
    return kExitBroken;
}

int Clear(const std::string& path)
{
    if (!platform::FileExists(path)) return kExitFine;
    platform::CLogFile log;
    const auto opened = log.Open(path, false);
    if (platform::ProblemOf(opened) == platform::FileProblem::InUse)
        FailStart(path + ": a run is writing this log; clear it when the run is over");
    if (!opened) FailStart(path + ": " + platform::ErrorText(opened.errorNumber));
    return kExitFine;
}

}  // namespace

int LogCommand(const CArguments& arguments, const Screen& screen)
{
    const int actions = arguments.Has("--follow") + arguments.Has("--clear") + arguments.Has("--path");
    if (actions > 1) FailUsage("--follow, --clear and --path exclude each other");
    const std::string path = LogPath(arguments);
    if (arguments.Has("--path")) {
        *screen.data << path << '\n';
        return kExitFine;
    }
    if (arguments.Has("--clear")) return Clear(path);
    return arguments.Has("--follow") ? Follow(path, screen) : Show(path, screen);
}

}  // namespace cli
