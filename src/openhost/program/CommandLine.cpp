#include "openhost/program/CommandLine.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include <CLI/CLI.hpp>

#include "base/LikelyName.h"
#include "openhost/app/AppState.h"
#include "openhost/catalog/DocumentTexts.h"
#include "openhost/jobs/RunRecord.h"
#include "openhost/jobs/WorkerLink.h"
#include "openhost/program/OpenHost.h"
#include "platform/NarrowText.h"
#include "platform/Paths.h"

namespace openhost {

std::vector<std::string> PasswordsFromText(std::string_view text)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
    std::vector<std::string> passwords;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (!line.empty()) passwords.emplace_back(line);
    }
    return passwords;
}

std::optional<std::vector<std::string>> ReadPasswordFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    try {
        return PasswordsFromText(
            std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>()));
    } catch (const std::ios_base::failure&) {  // reading fails half-way, or it is a folder
        return std::nullopt;
    }
}

namespace {

constexpr char kSummary[] = "runs plug-ins, as a rule without a window";
constexpr std::array kDescription = {
    "Runs plug-ins, as a rule without a window: loads them, lets them do what they have scheduled, and ends.",
    "What a plug-in is to do is told to the plug-in, not to this program."};
constexpr std::array<std::pair<int, const char*>, 4> kExitCodeRows = {
    {{kExitFine, "all files are fine"},
     {kExitBroken, "the run could not start or broke off"},
     {kExitUsage, "wrong arguments"},
     {kExitSomeFailed, "the run finished, but some files did not come out"}}};
constexpr std::array kExamples = {"ferrule-host --window",
                                  "FERRULESEQU=protect.sequ FERRULEALTPATH=in FERRULEALTOUTPUTPATH=out ferrule-host",
                                  "ferrule-host --plugin ./Ferrule.api --password-file passwords.txt --verbose"};
constexpr std::array kPasswordFile = {
    "The password file holds one password in each line, UTF-8. Only the line end is cut, so that",
    "blanks count. The passwords are tried in this order on documents that need one."};

template <typename Lines>
std::string Joined(const Lines& lines, const char* before, const char* after)
{
    std::string text;
    for (const char* line : lines) text += before + std::string(line) + after;
    return text;
}

/// Text as troff prints it letter for letter.
std::string Escaped(const std::string& text)
{
    std::string escaped = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (const char letter : text) {
        if (letter == '\\' || letter == '-') escaped += '\\';
        escaped += letter == '\\' ? 'e' : letter;
    }
    return escaped;
}

std::string Section(const char* name) { return ".SH " + std::string(name) + '\n'; }

std::string Entry(const std::string& term, const std::string& value, const std::string& help)
{
    return ".TP\n\\fB" + Escaped(term) + "\\fR" + (value.empty() ? "" : " \\fI" + Escaped(value) + "\\fR") + '\n' +
           Escaped(help) + '\n';
}

std::string OptionEntry(const CLI::Option& option)
{
    std::string names;
    for (const std::string& name : option.get_snames()) names += '-' + name + ", ";
    for (const std::string& name : option.get_lnames()) names += "--" + name;
    const std::string type = option.get_items_expected_max() == 0 ? "" : option.get_type_name();
    const std::string value = type.substr(0, type.find(':'));  // behind it stands what the parser checks
    const std::string fallback = option.get_default_str();
    return Entry(names, value, option.get_description() + (fallback.empty() ? "" : " [" + fallback + ']') + '.');
}

}  // namespace

std::string ProgramDescription() { return std::string(kDescription[0]) + '\n' + kDescription[1]; }

std::string HelpFooter()
{
    std::string text = "Exit codes:\n";
    for (const auto& [code, meaning] : kExitCodeRows) text += "  " + std::to_string(code) + "  " + meaning + '\n';
    return text + "\nExamples:\n" + Joined(kExamples, "  ", "\n") + '\n' + Joined(kPasswordFile, "", "\n");
}

std::string ManualPage(const CLI::App& app, const std::string& version)
{
    std::string text = ".TH FERRULE\\-HOST 1 \"\" \"Ferrule " + Escaped(version) + "\" \"User Commands\"\n";
    text += Section("NAME") + "ferrule\\-host \\- " + kSummary + '\n';
    text += Section("SYNOPSIS") + "\\fBferrule\\-host\\fR [OPTION]...\n" + Section("DESCRIPTION");
    for (const char* line : kDescription) text += Escaped(line) + '\n';
    text += Section("OPTIONS");
    for (const CLI::Option* option : app.get_options())
        if (!option->get_group().empty()) text += OptionEntry(*option);
    text += ".PP\n";
    for (const char* line : kPasswordFile) text += Escaped(line) + '\n';
    text += Section("EXIT STATUS");
    for (const auto& [code, meaning] : kExitCodeRows)
        text += Entry(std::to_string(code), "", std::string(meaning) + '.');
    text += Section("EXAMPLES");
    for (const char* line : kExamples) text += ".PP\n.RS\n.nf\n" + Escaped(line) + "\n.fi\n.RE\n";
    return text + Section("SEE ALSO") + "\\fBferrule\\fR(1)\n";
}

namespace {

struct Arguments {
    std::vector<std::string> plugIns;
    std::string passwordFile;
    std::string textCache;
    int hostVersion = 21;
    bool stay = false;
    bool window = false;
    std::vector<std::string> files;
    bool verbose = false;
    bool noQuitItem = false;
    bool worker = false;
    bool textReader = false;
    bool manual = false;
    std::string recordFile;
};

void Declare(CLI::App& app, Arguments& arguments)
{
    app.footer(HelpFooter());
    app.set_version_flag("--version", std::string("ferrule-host ") + FERRULE_VERSION);
    app.add_option("--plugin", arguments.plugIns,
                   "Plug-in to load, repeatable [every *.api in the folder plug_ins "
                   "beside this program]")
        ->type_name("FILE");
    app.add_option("--host-version", arguments.hostVersion, "Version that the host says it has, 5 to 99")
        ->type_name("N")
        ->check(CLI::Range(5, 99))
        ->capture_default_str();
    app.add_option("--password-file", arguments.passwordFile, "Passwords to try on encrypted documents")
        ->type_name("FILE");
    app.add_option("--text-cache", arguments.textCache,
                   "Keep words of unencrypted documents in this folder of your own, and take them from it "
                   "[nothing is kept]")
        ->type_name("FOLDER");
    app.add_flag("--stay", arguments.stay, "Go on until a plug-in asks the host to quit");
    auto* const window = app.add_flag(
        "--window", arguments.window,
        "Open a window with the menus of the plug-ins and a list of the open documents; the program ends "
        "when it is closed");
    app.add_option("files", arguments.files, "Documents to open in the window")->type_name("FILE");
    app.add_flag("--verbose", arguments.verbose, "Say what is loaded and how every file ends");
    auto* const worker = app.add_flag("--worker", arguments.worker,
                                      "Take job and input files from standard input and tell on standard output how "
                                      "it goes, line by line; ferrule run starts its hosts so")
                             ->excludes(window);
    app.add_flag("--text-reader", arguments.textReader,
                 "Load no plug-in; answer the texts of documents that are named on standard input, for an index")
        ->group("")
        ->excludes(worker);
    app.add_option("--record", arguments.recordFile,
                   "Write what became of each input file, one line of JSON each; an older record is replaced, no "
                   "other file is")
        ->type_name("FILE")
        ->excludes(worker);
    app.add_flag("--no-quit-item", arguments.noQuitItem, "Leave the Quit item out of the menus")->group("");
    app.add_flag("--manual-page", arguments.manual, "Write the manual page")->group("");
}

std::vector<std::string> ChoosePlugIns(const Arguments& arguments)
{
    if (!arguments.plugIns.empty()) return arguments.plugIns;
    return PlugInsOfFolder(
        platform::TextOf(platform::StandardPath(platform::ExecutablePath()).parent_path() / "plug_ins"));
}

int Fail(const std::string& message)
{
    std::fprintf(stderr, "ferrule-host: %s\n", message.c_str());
    return kExitBroken;
}

/// Help and version are no problem.
int TellProblem(const CLI::App& app, const CLI::ParseError& error)
{
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        (void)app.exit(error);
        return kExitFine;
    }
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
        if (!option->get_group().empty()) names.push_back(option->get_name());
    const std::string unknown = FirstOption(app.remaining());
    Fail(unknown.empty() ? error.what() : NoSuchOption(unknown, names));
    std::fputs("Try \"ferrule-host --help\".\n", stderr);
    return kExitUsage;
}

/// Where the job comes from, when it does not come from the environment alone; says why it cannot.
bool TakeJobs(const Arguments& arguments, OpenHostOptions& options)
{
    if (arguments.worker) {
        const auto streams = CLineStream::TakeStandardStreams();
        if (!streams) {
            Fail("the standard streams cannot be used");
            return false;
        }
        options.jobs = std::make_shared<CWorkerLink>(streams->first, streams->second);
        options.sayRun = false;
    }
    if (!arguments.recordFile.empty()) {
        std::string problem;
        options.jobs = CRecordFile::Create(arguments.recordFile, problem);
        if (!options.jobs) {
            Fail(arguments.recordFile + ": " + problem);
            return false;
        }
    }
    return true;
}

/// Documents are read for an index by this program, in a process of its own.
ReaderSettings ReadersFor(const Arguments& arguments, const std::vector<std::string>& passwords)
{
    ReaderSettings readers;
    readers.program = platform::ExecutablePath();
    readers.arguments = {"--text-reader"};
    readers.passwordsUtf8 = passwords;
    readers.hasPasswords = !passwords.empty();
    if (!arguments.passwordFile.empty())
        readers.arguments.insert(readers.arguments.end(), {"--password-file", arguments.passwordFile});
    if (!arguments.textCache.empty())
        readers.arguments.insert(readers.arguments.end(), {"--text-cache", arguments.textCache});
    return readers;
}

int RunHost(const Arguments& arguments)
{
    OpenHostOptions options;
    options.majorVersion = arguments.hostVersion;
    options.quitItem = !arguments.noQuitItem;
    options.stay = arguments.stay;
    options.verbose = arguments.verbose;
    options.textCacheFolder = arguments.textCache;
    if (!arguments.passwordFile.empty()) {
        auto passwords = ReadPasswordFile(arguments.passwordFile);
        if (!passwords) return Fail("the password file " + arguments.passwordFile + " cannot be read");
        options.passwordCandidates = std::move(*passwords);
    }
    if (arguments.textReader) return ServeTexts(options.passwordCandidates, arguments.textCache);
    if (!TakeJobs(arguments, options)) return kExitBroken;
    options.textReaders = ReadersFor(arguments, options.passwordCandidates);
    for (const std::string& path : ChoosePlugIns(arguments)) options.plugIns.push_back({path, nullptr});
    if (options.plugIns.empty()) return Fail("there is no plug-in to load");
    options.files = arguments.files;
    COpenHost host(std::move(options));
    if (std::string problem; arguments.window && !host.OpenWindow(problem)) return Fail(problem);
    if (!host.StartUp()) return Fail("no plug-in could be used");
    if (!arguments.plugIns.empty() && !host.AllPlugInsLive())
        return Fail("not every plug-in that was named could be used");
    const int code = host.Run();
    host.ShutDown();
    return code;
}

}  // namespace

std::vector<std::string> PlugInsOfFolder(const std::string& folder)
{
    std::vector<std::string> found;
    std::error_code failed;
    for (const auto& entry : std::filesystem::directory_iterator(platform::StandardPath(folder), failed))
        if (entry.path().extension() == ".api") found.push_back(platform::TextOf(entry.path()));
    std::sort(found.begin(), found.end());
    return found;
}

namespace {

/// The arguments in reverse order, as the parser takes them. Command files written for another host start it with
/// "/n" and "/h": a new instance, without its window.
std::vector<std::string> KnownWords(int argumentCount, char** words)
{
    std::vector<std::string> known;
    for (int index = argumentCount - 1; index > 0; --index)
        if (const std::string word = words[index]; word != "/n" && word != "/h") known.push_back(word);
    return known;
}

}  // namespace

int RunCommandLine(int argumentCount, char** words)
{
    CLI::App app(ProgramDescription(), "ferrule-host");
    Arguments arguments;
    Declare(app, arguments);
    try {
        app.parse(KnownWords(argumentCount, words));
    } catch (const CLI::ParseError& error) {
        return TellProblem(app, error);
    }
    if (!arguments.files.empty() && !arguments.window) {
        Fail(arguments.files.front() + ": documents are named for --window only");
        return kExitUsage;
    }
    if (arguments.manual) {
        std::fputs(ManualPage(app, FERRULE_VERSION).c_str(), stdout);
        return std::fflush(stdout) == 0 ? kExitFine : kExitBroken;
    }
    try {
        return RunHost(arguments);
    } catch (const std::exception& error) {
        return Fail(error.what());
    }
}

}  // namespace openhost
