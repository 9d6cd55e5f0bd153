#include "cli/WatchCommand.h"

#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "cli/RunArguments.h"
#include "cli/RunCommands.h"
#include "cli/RunPrinter.h"
#include "cli/Summary.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "protocol/Json.h"
#include "protocol/JsonType.h"
#include "supervisor/Watch.h"

namespace cli {

namespace {

/// One line for each file, as a service's log wants them.
class CWatchPrinter final : public CWatchObserver {
public:
    CWatchPrinter(const Screen& screen, bool quiet) : m_screen(screen), m_quiet(quiet) {}

    void Notice(const std::string& text) override { Say(text); }
    void Warning(const std::string& text) override { Say("warning: " + text); }
    void Remark(const std::string& text) override
    {
        if (!m_quiet) Say(text);
    }
    void WouldTake(const std::string& path) override { *m_screen.data << Printable(path) << '\n'; }
    void FileDone(const FileRecord& record, const RunProgress&) override
    {
        // What is not fine is told as trouble, with what follows from it.
        if (!m_quiet && record.outcome == FileOutcome::Saved) Say(record.path + ": saved");
    }
    void Trouble(const WatchedFile& file) override
    {
        const std::string& reason = file.trouble.reason;
        const char* const then = file.state == WatchState::Quarantined ? " In quarantine." : " It is tried again.";
        Say(file.path + ": " + reason + (reason.ends_with('.') ? "" : ".") + then);
    }

private:
    void Say(const std::string& text) { *m_screen.messages << "ferrule: " << Printable(text) << std::endl; }

    const Screen& m_screen;
    bool m_quiet;
};

/// Replacing a document that was named by mistake would lose it.
void RefuseOtherFile(const std::string& path)
{
    if (platform::FolderExists(path)) FailUsage("--quarantine takes a file, and " + path + " is a folder");
    if (!platform::FileExists(path) || platform::FileSize(path) == 0u) return;
    bool ours = false;
    (void)platform::ReadPieces(path, [&](std::string_view bytes) {
        ours = bytes.starts_with("{\"path\":");
        return false;
    });
    if (!ours) FailUsage("--quarantine: " + path + " is there already and is no quarantine list");
}

WatchOptions ReadWatch(const CArguments& arguments, const Screen& screen)
{
    WatchOptions options;
    options.request = ReadRequest(arguments, ReadSequenceWork(arguments));
    const RunDescription& request = options.request;
    if (request.inputs.size() != 1 || !platform::FolderExists(request.inputs.front()))
        FailUsage("--input names the folder to watch, one for each watch");
    if (WantsFolder(request.finalAction) &&
        platform::ResolvedPath(request.destination) == platform::ResolvedPath(request.inputs.front()))
        FailUsage("--destination is the watched folder itself; what is done would come in again");
    options.engine = ReadEngine(arguments);
    FitWorkers(options.engine, arguments, screen);
    options.rules.minAgeMs = static_cast<std::uint64_t>(arguments.Number("--min-age")) * 1000;
    options.rules.tries = static_cast<int>(arguments.Number("--tries"));
    options.rules.firstPauseMs = static_cast<std::uint64_t>(arguments.Number("--retry-pause")) * 1000;
    options.logPath = FilePath(arguments, "--log");
    if (arguments.Has("--records")) options.recordsFolder = ExistingPath(arguments.Text("--records"));
    options.quarantinePath = FilePath(arguments, "--quarantine");
    if (!options.quarantinePath.empty()) RefuseOtherFile(options.quarantinePath);
    options.once = arguments.Has("--once");
    options.dryRun = arguments.Has("--dry-run");
    options.retryQuarantined = arguments.Has("--retry-quarantined");
    return options;
}

std::string Summary(const WatchOptions& options, const WatchResult& result)
{
    if (options.dryRun)
        return Counted(result.done, "file", "files") + " would be taken. This was a dry run: nothing was touched.";
    std::string text = Counted(result.done, "file", "files") + " saved, " +
                       Counted(result.quarantined, "file", "files") + " in quarantine";
    if (result.waiting > 0) text += ", " + Grouped(result.waiting) + " not taken yet";
    text += '.';
    if (result.leftOpen > 0)
        text += " Stopped in a batch of " + Counted(result.leftOpen, "file", "files") +
                "; the next start of the same command goes on with it.";
    if (result.quarantined > 0) text += " Quarantine: " + Printable(result.quarantinePath);
    return text;
}

std::string ResultJson(const WatchResult& result)
{
    return LineOf({{"done", result.done},
                   {"failed", result.failed},
                   {"quarantined", result.quarantined},
                   {"waiting", result.waiting},
                   {"leftOpen", result.leftOpen},
                   {"quarantine", TextFromBytes(result.quarantinePath)}});
}

}  // namespace

int WatchCommand(const CArguments& arguments, const Screen& screen)
{
    const WatchOptions options = ReadWatch(arguments, screen);
    const bool quiet = arguments.Has("--quiet");
    CWatchPrinter printer(screen, quiet);
    if (!quiet && !options.dryRun)
        printer.Notice("watching " + options.request.inputs.front() + "; what a watch keeps is in " +
                       WatchFolder(options.request.inputs.front()));
    const WatchResult result = Watch(options, printer);
    if (!result.message.empty()) *screen.messages << "ferrule: " << PrintableLines(result.message) << '\n';
    const bool began = result.exit != ExitClass::Broken;
    if (began && !quiet) printer.Notice(Summary(options, result));
    if (arguments.Has("--json")) *screen.data << ResultJson(result) << '\n';
    return static_cast<int>(result.exit);
}

}  // namespace cli
