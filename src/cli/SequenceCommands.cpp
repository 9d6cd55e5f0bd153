#include "cli/SequenceCommands.h"

#include <iostream>
#include <optional>

#include "base/Text.h"
#include "cli/JobAnswer.h"
#include "cli/RunArguments.h"
#include "cli/Summary.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "protocol/FinalAction.h"
#include "protocol/Json.h"
#include "supervisor/Supervisor.h"

namespace cli {

namespace {

/// A text of the answer as bytes that can be shown; empty when it is absent.
std::string Shown(const Json& object, const char* name)
{
    const auto found = object.find(name);
    if (found == object.end() || !found->is_string()) return {};
    return Printable(BytesFromText(found->get<std::string>()));
}

const Json& List(const Json& object, const char* name)
{
    static const Json none = Json::array();
    const auto found = object.find(name);
    return found != object.end() && found->is_array() ? *found : none;
}

bool Is(const Json& object, const char* name) { return object.value(name, Json()) == Json(true); }

std::string ValueText(const Json& value)
{
    if (value.is_string()) return "\"" + Printable(BytesFromText(value.get<std::string>())) + "\"";
    return value.is_null() ? "(none)" : value.dump();
}

std::string ParameterLines(const Json& parameters, int depth)
{
    std::string text;
    const std::string indent(static_cast<std::size_t>(4 + 2 * depth), ' ');
    for (const Json& parameter : parameters) {
        const std::string type = Shown(parameter, "type");
        text += indent + Shown(parameter, "name");
        if (type == "cab")
            text += ":\n" + ParameterLines(List(parameter, "value"), depth + 1);
        else
            text += " = " + ValueText(parameter.value("value", Json())) + "\n";
    }
    return text;
}

std::string StepText(const Json& step)
{
    const std::string title = Shown(step, "title"), runsAs = Shown(step, "runsAs");
    std::string text = FormatText("%3d. ", step.value("number", 0)) + Shown(step, "handler");
    if (!title.empty()) text += " (" + title + ")";
    if (!runsAs.empty()) text += ", runs as " + runsAs;
    if (!Is(step, "available")) text += ", NOT AVAILABLE";
    if (Is(step, "prompts")) text += ", wants to ask";
    if (Is(step, "pauses")) text += ", wants to pause";
    return text + "\n" + ParameterLines(List(step, "parameters"), 1);
}

std::string Line(const char* name, const std::string& value)
{
    return value.empty() ? std::string() : FormatText("%-13s", name) + value + "\n";
}

std::string WordsOf(const Json& sequence, const char* name)
{
    const auto found = sequence.find(name);
    return found != sequence.end() && found->is_object() ? Shown(*found, "words") : std::string();
}

}  // namespace

std::string SequenceText(const Json& sequence)
{
    std::string text = Line("Sequence:", Shown(sequence, "path")) + Line("Title:", Shown(sequence, "title")) +
                       Line("Description:", Shown(sequence, "description"));
    text += Line("Form:", Shown(sequence, "form") == "xml" ? "XML" : "the host's own");
    text += Line("Input:", WordsOf(sequence, "input"));
    for (const Json& source : List(sequence, "sources")) text += Line("", Shown(source, "path"));
    text += Line("Output:", WordsOf(sequence, "output"));
    if (Is(sequence, "holdsPasswords")) text += Line("Passwords:", "yes, in clear in the file");
    for (const Json& group : List(sequence, "groups")) {
        const std::string label = Shown(group, "label");
        text += "\n" + (label.empty() ? "" : label + "\n");
        for (const Json& step : List(group, "steps")) text += StepText(step);
    }
    return text;
}

std::string FindingText(const std::string& path, const Json& finding)
{
    std::string text = Printable(path);
    for (const char* const place : {"line", "column"})
        if (const int number = finding.value(place, 0); number > 0) text += ":" + std::to_string(number);
    text += ": " + Shown(finding, "severity") + ": ";
    if (const int step = finding.value("step", 0); step > 0) text += "step " + std::to_string(step) + ": ";
    const std::string code = Shown(finding, "code");
    return text + Shown(finding, "text") + (code.empty() ? "" : " [" + code + "]") + "\n";
}

namespace {

constexpr std::uint64_t kLongestPasswordFile = 64 * 1024;

void PrintFindings(const std::string& path, const Json& findings, std::ostream& stream)
{
    for (const Json& finding : findings) stream << FindingText(path, finding);
}

std::string SequencePath(const std::string& typed) { return TextFromBytes(platform::AbsolutePath(typed)); }

/// The first line without its end.
std::string ReadPassword(const std::string& path)
{
    std::string text;
    if (path == "-") {
        std::getline(std::cin, text);
    } else {
        platform::FileResult result;
        const auto bytes = platform::ReadWholeFile(path, kLongestPasswordFile, &result);
        if (platform::ProblemOf(result) == platform::FileProblem::NotARegularFile)
            FailStart(path + ": is not a regular file; what comes out of a pipe is read with \"-\"");
        if (!bytes) FailStart(path + ": " + platform::ErrorText(result.errorNumber));
        text = bytes->substr(0, bytes->find('\n'));
    }
    if (text.ends_with('\r')) text.pop_back();
    if (text.empty()) FailStart((path == "-" ? "standard input" : path) + ": its first line holds no password");
    return text;
}

void PutText(Json& object, const char* name, const CArguments& arguments, const char* option)
{
    if (arguments.Has(option)) object[name] = TextFromBytes(arguments.Text(option));
}

Json RightsList(const std::string& list)
{
    Json rights = Json::array();
    for (const std::string& piece : Split(list, ",")) rights.push_back(Trim(piece));
    return rights;
}

Json ProtectSettings(const CArguments& arguments)
{
    if (arguments.Text("--user-password-file") == "-" && arguments.Text("--owner-password-file") == "-")
        FailUsage("only one password can be read from standard input");
    Json protect = {{"method", arguments.Text("--method")}};
    const struct {
        const char *option, *key;
    } passwords[] = {{"--user-password-file", "userPassword"}, {"--owner-password-file", "ownerPassword"}};
    for (const auto& [option, key] : passwords)
        if (arguments.Has(option)) protect[key] = TextFromBytes(ReadPassword(OptionalPath(arguments, option)));
    const std::string allowed = Trim(arguments.Text("--allow"));
    if (allowed != "all") protect["allow"] = allowed == "none" ? Json::array() : RightsList(allowed);
    return protect;
}

Json OutputSettings(const CArguments& arguments)
{
    Json output = Json::object();
    if (arguments.Has("--in-folder"))
        output["folder"] = TextFromBytes(platform::AbsolutePath(arguments.Text("--in-folder")));
    PutText(output, "prefix", arguments, "--prefix");
    PutText(output, "suffix", arguments, "--suffix");
    output["overwrite"] = arguments.Has("--replace");
    output["optimize"] = !arguments.Has("--no-linearize");
    return output;
}

/// Says what was written and what to know about it; that a sequence wants inputs and outputs is no news here.
/// `about`: the file that the list of findings is about.
int ConcludeWriting(const CArguments& arguments, const Json& answer, const char* listName, const std::string& about,
                    const std::string& path, const Screen& screen)
{
    if (arguments.Has("--json")) *screen.data << SortedLineOf(answer) << '\n';
    for (const Json& finding : answer.value(listName, Json::array()))
        if (finding.value("severity", "") != "note") *screen.messages << FindingText(about, finding);
    *screen.messages << "Written: " << Printable(path) << '\n';
    if (answer.value("holdsPasswords", false))
        *screen.messages << "It holds passwords in clear and can be read by you alone.\n";
    return kExitFine;
}

}  // namespace

int SequenceShowCommand(const CArguments& arguments, const Screen& screen)
{
    const Json job = {{"kind", "sequence-show"}, {"path", SequencePath(arguments.Operands().front())}};
    const auto answer = AnswerOfJob(arguments, job, screen);
    if (!answer) return kExitBroken;
    *screen.data << (arguments.Has("--json") ? SortedLineOf(*answer) + "\n" : SequenceText(*answer));
    return kExitFine;
}

int SequenceCheckCommand(const CArguments& arguments, const Screen& screen)
{
    RunDescription run;
    if (arguments.Has("--input")) run.inputs = {platform::AbsolutePath(arguments.Text("--input"))};
    if (arguments.Has("--output")) run.outputFolder = platform::AbsolutePath(arguments.Text("--output"));
    if (arguments.Has("--final-action")) run.finalAction = FindFinalAction(arguments.Text("--final-action"))->action;
    bool allOk = true;
    for (const std::string& file : arguments.Operands()) {
        Json job = {{"kind", "sequence-check"}, {"path", SequencePath(file)}};
        job["description"] = RunDescriptionJson(run);
        const auto answer = AnswerOfJob(arguments, job, screen);
        if (!answer) return kExitBroken;
        const bool ok = answer->value("ok", false);
        allOk = allOk && ok;
        if (arguments.Has("--json")) {
            *screen.data << SortedLineOf(*answer) << '\n';
            continue;
        }
        PrintFindings(file, answer->value("findings", Json::array()), *screen.data);
        if (ok) *screen.data << Printable(file) << ": no errors\n";
    }
    return allOk ? kExitFine : kExitNotAllFine;
}

Json NewSequenceJob(const CArguments& arguments)
{
    const std::string name = arguments.Text("--template");
    Json job = {{"kind", "sequence-new"},
                {"path", SequencePath(arguments.Operands().front())},
                {"template", name},
                {"overwrite", arguments.Has("--overwrite")},
                {"force", arguments.Has("--force")},
                {"output", OutputSettings(arguments)}};
    PutText(job, "title", arguments, "--title");
    PutText(job, "description", arguments, "--description");
    if (name == "protect") {
        job["protect"] = ProtectSettings(arguments);
        return job;
    }
    for (const char* const option : {"--user-password-file", "--owner-password-file", "--method", "--allow"})
        if (arguments.Has(option)) FailUsage(std::string(option) + " belongs to --template protect");
    return job;
}

int SequenceNewCommand(const CArguments& arguments, const Screen& screen)
{
    const auto answer = AnswerOfJob(arguments, NewSequenceJob(arguments), screen);
    if (!answer) return kExitBroken;
    return ConcludeWriting(arguments, *answer, "findings", arguments.Operands().front(), arguments.Operands().front(),
                           screen);
}

int SequenceConvertCommand(const CArguments& arguments, const Screen& screen)
{
    Json job = {{"kind", "sequence-convert"},
                {"path", SequencePath(arguments.Operands()[0])},
                {"target", SequencePath(arguments.Operands()[1])},
                {"to", arguments.Text("--to")},
                {"overwrite", arguments.Has("--overwrite")},
                {"allowLoss", arguments.Has("--allow-loss")}};
    PutText(job, "title", arguments, "--title");
    PutText(job, "description", arguments, "--description");
    const auto answer = AnswerOfJob(arguments, job, screen);
    if (!answer) return kExitBroken;
    return ConcludeWriting(arguments, *answer, "losses", arguments.Operands()[0], arguments.Operands()[1], screen);
}

}  // namespace cli
