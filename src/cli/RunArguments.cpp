#include "cli/RunArguments.h"

#include <algorithm>
#include <charconv>
#include <iostream>
#include <iterator>
#include <thread>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "common/ProductPaths.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "protocol/FinalAction.h"

namespace cli {

namespace {

/// Stand in for "no limit"; small enough to be calculated with.
constexpr int kEndlessSeconds = 1'000'000'000;
constexpr std::uint64_t kEndlessBytes = std::uint64_t{1} << 60;

std::string BesideProgram(const std::string& name) { return FolderOf(platform::ExecutablePath()) + name; }

std::vector<std::string> PlugInsOfFolder(const std::string& folder)
{
    std::vector<std::string> plugIns;
    for (const auto& entry : platform::ListFolder(folder))
        if (!entry.isFolder && entry.name.ends_with(".api"))
            plugIns.push_back(WithTrailingSeparator(folder) + entry.name);
    return plugIns;
}

}  // namespace

// The run takes blanks and double quotes from both ends of paths. A separator keeps them from the end of a folder.
std::string KeptAsItIs(const std::string& path)
{
    if (path == RemoveQuotes(path)) return path;
    if (platform::FolderExists(path)) return path + kSeparator;
    FailStart(path + ": a name that ends with a blank or a double quote cannot be passed on; please rename the file");
}

std::string ExistingPath(const std::string& typed)
{
    const std::string path = platform::AbsolutePath(typed);
    if (!platform::FileExists(path) && !platform::FolderExists(path))
        FailStart(path + ": there is no such file or folder");
    return KeptAsItIs(path);
}

std::string ReadDestination(const CArguments& arguments, const FinalActionFacts& action)
{
    const std::string place = arguments.Text("--destination");
    const std::string word(action.word);
    if (action.destination == Destination::None) {
        if (arguments.Has("--destination"))
            FailUsage("--destination means nothing with the final action \"" + word + "\"; leave it out");
        return {};
    }
    if (place.empty())
        FailUsage("the final action \"" + word + "\" needs --destination with the " +
                  std::string(DestinationWord(action.destination)));
    const bool hasSeparator = !FolderOf(place).empty();
    if (action.destination == Destination::NewName && hasSeparator)
        FailUsage("--destination: the final action \"rename\" takes a file name without a folder");
    // A program without a separator is looked up like the shell does.
    return action.destination == Destination::Folder || (action.destination == Destination::Program && hasSeparator)
               ? platform::AbsolutePath(place)
               : place;
}

namespace {

void RequireReadable(const std::string& path)
{
    if (const auto readable = platform::CheckReadable(path); !readable)
        FailStart(path + ": " + platform::ErrorText(readable.errorNumber));
}

/// Need not be there yet. What is kept must not be an input of the next run.
std::string ReadKeptFolder(const CArguments& arguments, const RunDescription& request)
{
    if (!arguments.Has("--keep-originals")) return {};
    std::string typed = platform::AbsolutePath(arguments.Text("--keep-originals"));
    // What is not there yet has been left as it was typed, and may lead up on its way.
    if (!platform::FolderExists(typed) && !FileName(typed).empty())
        typed = WithTrailingSeparator(platform::AbsolutePath(FolderOf(typed))) + FileName(typed);
    const std::string folder = KeptAsItIs(typed);
    // An undo refuses such a place, because it cannot tell where that is.
    if (std::ranges::count(Split(folder, kSeparators), "..") != 0)
        FailStart(folder + ": nobody can tell where this leads; name the folder without \"..\"");
    if (platform::FileExists(folder)) FailStart(folder + ": this is a file; --keep-originals takes a folder");
    if (!platform::FolderExists(folder) && !platform::FolderExists(FolderOf(folder)))
        FailStart(folder + ": the folder around it does not exist; make it first");
    for (const std::string& input : request.inputs)
        if (platform::ResolvedPath(input) == platform::ResolvedPath(folder))
            FailUsage("--keep-originals names the input folder " + input +
                      "; what is kept needs a folder of its own");
    return folder;
}

/// "2/4" as 2 and 4.
std::pair<int, int> ParseShard(const std::string& text)
{
    int part = 0, parts = 0;
    const char* const end = text.data() + text.size();
    const auto first = std::from_chars(text.data(), end, part);
    if (first.ec == std::errc() && first.ptr != end && *first.ptr == '/') {
        const auto second = std::from_chars(first.ptr + 1, end, parts);
        if (second.ec == std::errc() && second.ptr == end && part >= 1 && part <= parts) return {part, parts};
    }
    FailUsage("--shard: \"" + text + "\": it takes I/N with I from 1 to N, such as 2/4");
}

/// Options that say nothing about one part of a plan, because the plan has said it.
void RefuseWithManifest(const CArguments& arguments)
{
    for (const char* const name : {"--input", "--output", "--ext", "--no-subfolders", "--min-age", "--final-action",
                                   "--destination", "--keep-originals", "--dry-run", "--log", "--skip-unavailable",
                                   "--allow-no-output", "--allow-in-place", "--accept-damaged", "--force"})
        if (arguments.Has(name)) FailUsage(std::string(name) + " has no place beside --manifest");
    if (!arguments.Operands().empty())
        FailUsage("\"" + arguments.Operands().front() +
                  "\": with --manifest the plan names the sequence; leave it out");
}

}  // namespace

std::string OptionalPath(const CArguments& arguments, const char* option)
{
    const std::string path = arguments.Text(option);
    return path.empty() || path == "-" ? path : platform::AbsolutePath(path);
}

std::string FilePath(const CArguments& arguments, const char* option)
{
    std::string path = OptionalPath(arguments, option);
    if (path == "-") FailUsage(std::string(option) + " takes a file; only --record may be - for standard output");
    return path;
}

std::string UserTextCache() { return MakeTextCacheFolder(platform::UserCacheFolder()); }

std::string ReadTextCache(const CArguments& arguments)
{
    return arguments.Has("--no-cache") ? std::string() : UserTextCache();
}

EngineOptions ReadEngine(const CArguments& arguments)
{
    EngineOptions engine;
    engine.hostProgram = OptionalPath(arguments, "--host");
    if (engine.hostProgram.empty())
        engine.hostProgram = BesideProgram(std::string("ferrule-host") + platform::kProgramSuffix);
    RequireReadable(engine.hostProgram);
    for (const std::string& plugIn : arguments.All("--plugin"))
        engine.plugIns.push_back(platform::AbsolutePath(plugIn));
    const std::string plugInFolder = BesideProgram("plug_ins");
    if (engine.plugIns.empty()) engine.plugIns = PlugInsOfFolder(plugInFolder);
    if (engine.plugIns.empty())
        FailStart(plugInFolder +
                  ": there is no plug-in; keep ferrule, ferrule-host and the folder plug_ins together");
    if (FindOption(arguments.Command(), "--password-file"))
        engine.passwordFile = OptionalPath(arguments, "--password-file");
    if (!engine.passwordFile.empty()) RequireReadable(engine.passwordFile);
    if (!FindOption(arguments.Command(), "--jobs")) return engine;
    engine.jobs = arguments.Has("--jobs") ? static_cast<int>(arguments.Number("--jobs"))
                                          : static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    const auto seconds = static_cast<int>(arguments.Number("--timeout"));
    const std::uint64_t bytes = arguments.Size("--memory");
    engine.timeoutSeconds = seconds > 0 ? seconds : kEndlessSeconds;
    engine.memoryBytes = bytes > 0 ? bytes : kEndlessBytes;
    return engine;
}

WorkDescription ReadSequenceWork(const CArguments& arguments)
{
    if (arguments.Operands().empty()) FailUsage("name the sequence to run, or a plan with --manifest");
    return SequenceWork(arguments.Operands().front());
}

RunDescription ReadRequest(const CArguments& arguments, WorkDescription work)
{
    const FinalActionFacts& action = *FindFinalAction(arguments.Text("--final-action"));
    const std::string destination = ReadDestination(arguments, action);
    std::vector<std::string> inputs;
    for (WorkFile& file : work.files) file.path = ExistingPath(file.path);
    for (const std::string& input : arguments.All("--input")) inputs.push_back(ExistingPath(input));
    RunDescription request = ReadPlaces(arguments, std::move(work), std::move(inputs));
    request.finalAction = action.action;
    request.destination = destination;
    const std::string extensions = Trim(arguments.Text("--ext"));
    if (!EqualsIgnoreCaseAscii(extensions, "all")) request.extensions = extensions;
    request.skipUnavailable = arguments.Has("--skip-unavailable");
    request.allowNoOutput = arguments.Has("--allow-no-output");
    request.allowInPlace = arguments.Has("--allow-in-place");
    request.force = arguments.Has("--force");
    return request;
}

namespace {

std::string ListText(const std::string& typed)
{
    if (typed == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
    constexpr std::uint64_t kLongestList = std::uint64_t{1} << 30;
    const std::string path = platform::AbsolutePath(typed);
    platform::FileResult read;
    auto text = platform::ReadWholeFile(path, kLongestList, &read);
    if (!text) FailStart(path + ": " + platform::ErrorText(read.errorNumber));
    return std::move(*text);
}

/// One path a line, or each ended by a zero byte. What is gone meanwhile is a file that fails.
void AddListed(const CArguments& arguments, std::vector<std::string>& inputs)
{
    if (!arguments.Has("--files-from")) return;
    const std::string text = ListText(arguments.Text("--files-from"));
    const bool zeros = text.find('\0') != std::string::npos;
    for (std::string& line : Split(text, zeros ? std::string_view("\0", 1) : std::string_view("\n"))) {
        if (!zeros && line.ends_with('\r')) line.pop_back();
        if (!line.empty()) inputs.push_back(KeptAsItIs(platform::AbsolutePath(line)));
    }
    if (inputs.empty()) FailStart(arguments.Text("--files-from") + ": the list names no file");
}

}  // namespace

std::vector<std::string> ReadInputs(const CArguments& arguments, const std::string& verb)
{
    std::vector<std::string> inputs;
    for (const std::string& path : arguments.Operands()) inputs.push_back(ExistingPath(path));
    AddListed(arguments, inputs);
    if (inputs.empty()) FailUsage("name files or folders to " + verb + "; a single \".\" is the current folder");
    return inputs;
}

void RequirePlace(const CArguments& arguments, const std::string& results)
{
    if (arguments.Has("--output") != arguments.Has("--in-place")) return;
    FailUsage(arguments.Has("--output") ? "--output and --in-place contradict each other; give one of them"
                                        : "say where the " + results +
                                              " go: --output FOLDER for a folder of their "
                                              "own, or --in-place to replace the inputs");
}

RunDescription ReadResultPlaces(const CArguments& arguments, WorkDescription work, std::vector<std::string> inputs)
{
    RunDescription request;
    request.work = std::move(work);
    request.inputs = std::move(inputs);
    if (arguments.Has("--output")) request.outputFolder = ExistingPath(arguments.Text("--output"));
    request.keepOriginals = ReadKeptFolder(arguments, request);
    return request;
}

RunDescription ReadPlaces(const CArguments& arguments, WorkDescription work, std::vector<std::string> inputs)
{
    RunDescription request = ReadResultPlaces(arguments, std::move(work), std::move(inputs));
    request.noSubfolders = arguments.Has("--no-subfolders");
    request.minAgeSeconds = static_cast<int>(arguments.Number("--min-age"));
    request.acceptDamaged = FindOption(arguments.Command(), "--accept-damaged") && arguments.Has("--accept-damaged");
    return request;
}

RunOptions ReadRun(const CArguments& arguments, RunDescription request)
{
    RunOptions options;
    options.request = std::move(request);
    options.engine = ReadEngine(arguments);
    options.retryFailed = arguments.Has("--retry-failed");
    options.resume = arguments.Has("--resume") || options.retryFailed;
    options.dryRun = arguments.Has("--dry-run");
    if (options.dryRun && options.resume) FailUsage("--dry-run tries out a whole run; leave --resume out");
    options.logPath = FilePath(arguments, "--log");
    return options;
}

ShardOptions ReadShard(const CArguments& arguments)
{
    RefuseWithManifest(arguments);
    ShardOptions options;
    std::tie(options.shard, options.shards) = ParseShard(arguments.Text("--shard"));
    options.manifestPath = FilePath(arguments, "--manifest");
    options.journalPath = FilePath(arguments, "--journal");
    if (options.journalPath.empty())
        FailUsage("--manifest needs --journal with the file that keeps what this part has done");
    RequireReadable(options.manifestPath);
    options.retryFailed = arguments.Has("--retry-failed");
    options.engine = ReadEngine(arguments);
    return options;
}

}  // namespace cli
