#include "base/Text.h"
#include "cli/Printable.h"
#include "cli/SequenceCommands.h"
#include "protocol/Json.h"

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

}  // namespace cli
