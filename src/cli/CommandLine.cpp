#include "cli/CommandLine.h"

#include <algorithm>
#include <exception>
#include <optional>

#include "base/LikelyName.h"
#include "base/Text.h"
#include "cli/Arguments.h"
#include "cli/BatchFileCommand.h"
#include "cli/CacheCommand.h"
#include "cli/Generated.h"
#include "cli/Help.h"
#include "cli/IndexCommand.h"
#include "cli/LogCommand.h"
#include "cli/MetadataCommand.h"
#include "cli/ProtectCommand.h"
#include "cli/RenameCommand.h"
#include "cli/ReportCommand.h"
#include "cli/RunCommands.h"
#include "cli/SearchCommand.h"
#include "cli/SequenceCommands.h"
#include "cli/UndoCommand.h"
#include "cli/WatchCommand.h"

namespace cli {

namespace {

constexpr char kVersion[] = FERRULE_VERSION;
constexpr std::size_t kWidestHelp = 100;

std::size_t HelpWidth(const Screen& screen)
{
    const std::size_t width = screen.terminal && screen.width ? screen.width() : kWidestHelp;
    return std::clamp<std::size_t>(width, 60, kWidestHelp);
}

int GenerateCommand(const CArguments& arguments, const Screen& screen)
{
    const std::string& what = arguments.Operands().front();
    *screen.data << (what == "man"    ? ManPage(kVersion)
                     : what == "bash" ? BashCompletion()
                     : what == "zsh"  ? ZshCompletion()
                                      : FishCompletion());
    return kExitFine;
}

using CommandFunction = int (*)(const CArguments&, const Screen&);

CommandFunction FunctionOf(const std::string& name)
{
    static const std::pair<const char*, CommandFunction> functions[] = {
        {"run", RunCommand},
        {"plan", PlanCommand},
        {"merge", MergeCommand},
        {"watch", WatchCommand},
        {"report", ReportCommand},
        {"undo", UndoCommand},
        {"protect", ProtectCommand},
        {"rename", RenameCommand},
        {"metadata show", MetadataShowCommand},
        {"metadata export", MetadataExportCommand},
        {"metadata set", MetadataSetCommand},
        {"metadata import", MetadataImportCommand},
        {"search", SearchCommand},
        {"text", TextCommand},
        {"index create", IndexCreateCommand},
        {"index build", IndexBuildCommand},
        {"index purge", IndexPurgeCommand},
        {"index status", IndexStatusCommand},
        {"index search", IndexSearchCommand},
        {"sequence show", SequenceShowCommand},
        {"sequence check", SequenceCheckCommand},
        {"sequence new", SequenceNewCommand},
        {"sequence convert", SequenceConvertCommand},
        {"batchfile", BatchFileCommand},
        {"cache status", CacheStatusCommand},
        {"cache clear", CacheClearCommand},
        {"log", LogCommand},
        {"generate", GenerateCommand},
    };
    for (const auto& [known, function] : functions)
        if (name == known) return function;
    return nullptr;
}

/// The commands that begin with this word, as "show, check, new".
std::string WordsAfter(const std::string& first)
{
    std::string words;
    for (const CommandRow& row : Commands())
        if (row.name.starts_with(first + " "))
            words += (words.empty() ? "" : ", ") + row.name.substr(first.size() + 1);
    return words;
}

/// "; did you mean "run"?", when one of the names is likely.
std::string Meant(const std::string& typed, const std::vector<std::string>& names)
{
    const std::string likely = LikelyName(typed, names);
    return likely.empty() ? "" : "; did you mean \"" + likely + "\"?";
}

std::vector<std::string> FirstWords()
{
    std::vector<std::string> words;
    for (const CommandRow& row : Commands())
        if (!row.hidden) words.push_back(row.name.substr(0, row.name.find(' ')));
    return words;
}

/// The command that the first one or two words name; they are taken away. Null: said what is wrong.
const CommandRow* TakeCommand(std::vector<std::string>& words, std::string& problem)
{
    const std::string first = words.front();
    const std::string second = words.size() > 1 ? words[1] : "";
    const std::string family = WordsAfter(first);
    const CommandRow* const command = FindCommand(family.empty() ? first : first + " " + second);
    if (command) {
        words.erase(words.begin(), words.begin() + (family.empty() ? 1 : 2));
    } else if (!family.empty()) {
        problem = "\"" + first + "\" takes one of " + family + (second.empty() ? "" : ", not \"" + second + "\"") +
                  Meant(second, Split(family, ", "));
    } else {
        problem = first.starts_with("-") ? "begin with a command, not with \"" + first + "\""
                                         : "there is no command \"" + first + "\"" + Meant(first, FirstWords());
    }
    return command;
}

int Usage(const Screen& screen, const std::string& problem, const std::string& command)
{
    *screen.messages << "ferrule: " << problem << "\nTry \"ferrule " << (command.empty() ? "" : command + " ")
                     << "--help\".\n";
    return kExitUsage;
}

/// A summary of the family when help for "ferrule sequence" is wanted.
bool WantsHelp(const std::vector<std::string>& words)
{
    return words.empty() || words[0] == "--help" || words[0] == "-h" || words[0] == "help" ||
           (words.size() == 2 && !WordsAfter(words[0]).empty() && (words[1] == "--help" || words[1] == "-h"));
}

int Dispatch(std::vector<std::string> words, const Screen& screen)
{
    if (WantsHelp(words)) {
        *(words.empty() ? screen.messages : screen.data) << ProgramHelp(HelpWidth(screen));
        return words.empty() ? kExitUsage : kExitFine;
    }
    if (words[0] == "--version") {
        *screen.data << "ferrule " << kVersion << '\n';
        return kExitFine;
    }
    std::string problem;
    const CommandRow* const command = TakeCommand(words, problem);
    if (!command) return Usage(screen, problem, "");
    const ParsedArguments parsed = ParseArguments(*command, words);
    if (parsed.helpWanted) {
        *screen.data << CommandHelp(*command, HelpWidth(screen));
        return kExitFine;
    }
    if (!parsed.arguments) return Usage(screen, parsed.problem, command->name);
    try {
        return FunctionOf(command->name)(*parsed.arguments, screen);
    } catch (const CCommandError& error) {
        if (error.ExitCode() == kExitUsage) return Usage(screen, error.what(), command->name);
        *screen.messages << "ferrule: " << error.what() << '\n';
        return error.ExitCode();
    }
}

}  // namespace

int RunCommandLine(const std::vector<std::string>& words, const Screen& screen)
{
    int code = kExitBroken;
    try {
        code = Dispatch(words, screen);
    } catch (const std::exception& error) {
        *screen.messages << "ferrule: " << error.what() << '\n';
    }
    if (screen.data->flush()) return code;
    *screen.messages << "ferrule: standard output could not be written\n";
    return code == kExitFine ? static_cast<int>(kExitBroken) : code;
}

}  // namespace cli
