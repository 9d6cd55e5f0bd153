#include "jobs/SequenceSource.h"

#include "engine/HandlerAlternatives.h"
#include "engine/WorkflowToCab.h"
#include "engine/WorkflowXml.h"
#include "engine/XmlGuard.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Atoms.h"
#include "hostcalls/CabFile.h"
#include "hostcalls/Commands.h"
#include "hostcalls/HostFrame.h"
#include "jobs/SequencePasswords.h"
#include "platform/Files.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace {

using Severity = SequenceFinding::Severity;

SequenceFinding Error(const char* code, std::string text) { return {Severity::Error, code, std::move(text), 0, {}}; }

bool LooksLikeXml(std::string_view bytes)
{
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    return first != bytes.npos && bytes[first] == '<';
}

std::string HandlerName(CCabView entry)
{
    if (const auto atom = entry.Atom("HandlerName")) return AtomText(*atom);
    return entry.StringOrText("HandlerName").value_or("");
}

/// The name under which the host has a handler; empty when it has none.
std::string AvailableName(const std::string& name)
{
    if (name.empty()) return {};
    if (FindCommandHandler(name)) return name;
    const auto alternative = AlternativeHandler(name);
    return alternative && FindCommandHandler(*alternative) ? *alternative : std::string();
}

SequenceStep StepOf(CCabView entry, int number)
{
    SequenceStep step;
    step.number = number;
    step.entry = entry;
    step.parameters = entry.Cab("Params");
    step.handler = HandlerName(entry);
    step.label = entry.StringOrText("Title").value_or(step.handler);
    step.runsAs = AvailableName(step.handler);
    return step;
}

void ForEachHostStep(CCabView commands, const std::function<bool(const SequenceStep&)>& visit)
{
    const int count = commands.Size();
    std::string label;
    int group = -1;
    for (int index = 0; index < count; ++index) {
        // Of a copy, because a host may keep in a smaller form what nobody has asked for.
        const CCab entry = commands.Cab(CabKey(index).c_str()).Copy();
        SequenceStep step = StepOf(entry.View(), index + 1);
        if (group < 0 || step.label != label) ++group;
        label = step.label;
        step.group = group;
        if (!visit(step)) return;
    }
}

void ForEachXmlStep(const SequenceSource& source, const std::function<bool(const SequenceStep&)>& visit)
{
    int number = 0, groupNumber = 0;
    for (const WorkflowGroup& group : source.workflow->groups) {
        for (const WorkflowCommand& command : group.commands) {
            const CCab entry = CabFromCommand(command);
            SequenceStep step = StepOf(entry.View(), ++number);
            step.group = groupNumber;
            step.prompts = command.promptUser == "true";
            step.pauses = command.pauseBefore == "true";
            const auto index = static_cast<std::size_t>(number - 1);
            if (index < source.audit.steps.size()) step.place = source.audit.steps[index];
            if (!visit(step)) return;
        }
        ++groupNumber;
    }
}

/// Why a workflow cannot become cabs; nothing when it can.
std::optional<HostError> ConversionError(const Workflow& workflow)
{
    return CatchHostError([&] {
        for (const WorkflowGroup& group : workflow.groups)
            for (const WorkflowCommand& command : group.commands) (void)CabFromCommand(command);
    });
}

}  // namespace

std::variant<SequenceSource, SequenceFinding> SequenceFromText(const std::string& path, const std::string& xml)
{
    if (!LooksLikeXml(xml))
        return Error("not-a-sequence", "It is neither a sequence in the form of this host nor XML.");
    WorkflowAudit audit = AuditWorkflow(xml);
    if (!audit.isWorkflow) return audit.remarks.front();
    auto workflow = ParseWorkflow(xml);
    if (!workflow) return Error("not-xml", workflow.Error());
    std::optional<CSequence> sequence;
    if (const auto error = ConversionError(*workflow)) return Error("not-convertible", error->text);
    if (const auto error = CatchHostError([&] { sequence.emplace(CabWithoutCommands(*workflow)); }))
        return Error("not-convertible", error->text);
    return SequenceSource{path, SequenceForm::Xml, std::move(*sequence), std::move(*workflow), std::move(audit)};
}

std::variant<SequenceSource, SequenceFinding> ReadSequenceSource(const std::string& path)
{
    if (platform::FolderExists(path)) return Error("not-found", "It is a folder; name the file.");
    if (!platform::FileExists(path)) return Error("not-found", "There is no such file; check the path.");
    // Asked first because the host would wait for ever on a pipe.
    platform::FileResult readable = platform::CheckReadable(path);
    if (!readable)
        return Error("not-readable", "It cannot be read: " + platform::ErrorText(readable.errorNumber) + ".");
    if (Expected<CCab> cab = ReadCabFile(path))
        return SequenceSource{path, SequenceForm::Host, CSequence(std::move(*cab)), std::nullopt, {}};
    const auto bytes = platform::ReadWholeFile(path, XmlLimits{}.bytes, &readable);
    if (!bytes) return Error("not-readable", "It cannot be read: " + platform::ErrorText(readable.errorNumber) + ".");
    return SequenceFromText(path, *bytes);
}

void ForEachStep(const SequenceSource& source, const std::function<bool(const SequenceStep&)>& visit)
{
    if (source.workflow) return ForEachXmlStep(source, visit);
    ForEachHostStep(source.sequence.Commands(), visit);
}

bool HoldsPasswords(const SequenceSource& source)
{
    bool holds = false;
    ForEachStep(source, [&](const SequenceStep& step) {
        holds = HoldsPassword(step.handler, step.parameters);
        return !holds;
    });
    return holds;
}

std::string HostTitle(const std::string& handler)
{
    std::string title;
    const auto error = CatchHostError([&] {
        const auto command = CHostCommand::Create(handler);
        if (!command) return;
        const CCab properties = command->Props({kAVCommandKeyGenericTitle, kAVCommandKeyTitle});
        for (const char* key : {kAVCommandKeyTitle, kAVCommandKeyGenericTitle})
            if (const auto text = properties.StringOrText(key)) title = *text;
    });
    return error ? std::string() : title;
}

std::string FindingSentence(const std::string& path, const SequenceFinding& finding)
{
    const std::string line = finding.place.line == 0 ? std::string()
                                                     : " (line " + std::to_string(finding.place.line) + ", column " +
                                                           std::to_string(finding.place.column) + ")";
    return "The sequence " + path + " cannot be used" + line + ": " + finding.text;
}
