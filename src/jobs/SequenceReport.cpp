#include "jobs/SequenceReport.h"

#include "engine/InputKinds.h"
#include "engine/OutputSettings.h"
#include "engine/PathEntry.h"
#include "engine/SaveStepRedirection.h"
#include "engine/WorkflowWriter.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Atoms.h"
#include "jobs/SequencePasswords.h"
#include "platform/ByteText.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

namespace {

using nlohmann::json;
using platform::TextFromBytes;

json CabReport(const CSecretEntries& secrets, CCabView cab);

struct TypedValue {
    const char* type;
    json value;
    bool isText = false;
};

TypedValue ValueReport(const CSecretEntries& secrets, CCabView cab, const char* key)
{
    switch (cab.Type(key)) {
        case kASValueBool:
            return {"boolean", cab.Bool(key, false)};
        case kASValueInteger:
            return {"integer", cab.Int(key, 0)};
        case kASValueDouble:
            if (const double number = cab.Double(key, 0); std::isfinite(number)) return {"double", number};
            return {"double", nullptr};
        case kASValueAtom:
            return {"atom", TextFromBytes(AtomText(cab.Atom(key).value_or(kNullAtom))), true};
        case kASValueString:
            return {"string", TextFromBytes(cab.String(key).value_or("")), true};
        case kASValueText:
            return {"text", TextFromBytes(cab.TextUtf8(key).value_or("")), true};
        case kASValueBinary:
            return {"binary", EncodeBase64(cab.Binary(key).value_or("")), true};
        case kASValueNull:
            return {"null", nullptr};
        case kASValueCabinet:
            return {"cab", CabReport(secrets.Under(key, cab.Cab(key)), cab.Cab(key))};
        default:
            return {"other", nullptr};
    }
}

/// An empty text hides nothing.
bool IsHidden(const TypedValue& entry, const CSecretEntries& secrets, const std::string& key)
{
    if (entry.value.is_number()) return secrets.HidesNumber(key);
    return entry.isText && entry.value != "" && secrets.HidesText(key);
}

json CabReport(const CSecretEntries& secrets, CCabView cab)
{
    json list = json::array();
    for (const std::string& key : cab.Keys()) {
        TypedValue entry = ValueReport(secrets, cab, key.c_str());
        if (IsHidden(entry, secrets, key)) entry.value = kMaskedPassword;
        list.push_back({{"name", key}, {"type", entry.type}, {"value", std::move(entry.value)}});
    }
    return list;
}

json StepReport(const SequenceSource& source, const SequenceStep& step)
{
    json report = {{"number", step.number},
                   {"handler", TextFromBytes(step.handler)},
                   {"title", step.IsAvailable() ? TextFromBytes(HostTitle(step.runsAs)) : ""},
                   {"available", step.IsAvailable()},
                   {"parameters", ParametersReport(step.handler, step.parameters)}};
    if (step.IsAvailable() && step.runsAs != step.handler) report["runsAs"] = step.runsAs;
    if (source.form == SequenceForm::Xml) {
        report["prompts"] = step.prompts;
        report["pauses"] = step.pauses;
        report["line"] = step.place.line;
        report["column"] = step.place.column;
    }
    return report;
}

/// How many steps each group of the source has. The host's own form knows no groups: neighbours of one title count
/// as one.
std::vector<std::size_t> GroupSizes(const SequenceSource& source, const std::vector<SequenceStep>& steps)
{
    std::vector<std::size_t> sizes;
    if (source.workflow) {
        for (const WorkflowGroup& group : source.workflow->groups) sizes.push_back(group.commands.size());
        return sizes;
    }
    for (std::size_t at = 0; at < steps.size(); ++at) {
        const bool sameGroup = at > 0 && steps[at].label == steps[at - 1].label;
        sameGroup ? void(++sizes.back()) : sizes.push_back(1);
    }
    return sizes;
}

json GroupsReport(const SequenceSource& source, const std::vector<SequenceStep>& steps)
{
    json groups = json::array();
    auto step = steps.begin();
    for (const std::size_t size : GroupSizes(source, steps)) {
        json list = json::array();
        const std::string label = step->label;
        for (std::size_t i = 0; i < size; ++i, ++step) list.push_back(StepReport(source, *step));
        groups.push_back({{"label", TextFromBytes(label)}, {"steps", std::move(list)}});
    }
    return groups;
}

void AddSource(json& list, const std::string& path, const char* kind)
{
    list.push_back({{"path", TextFromBytes(path)}, {"kind", kind}});
}

json SourcesReport(const SequenceSource& source)
{
    json list = json::array();
    if (source.workflow) {
        for (const WorkflowSource& one : source.workflow->sources)
            AddSource(list, one.path, one.isFolder ? "folder" : "file");
        return list;
    }
    const CCabView input = source.sequence.Input();
    if (input.Int("FileVariation", -1) == kInputFolder) {
        if (const auto folder = PathEntry(input, "PreselectedFolderPath")) AddSource(list, *folder, "folder");
        return list;
    }
    const CCabView files = input.Cab("PreselectedFilesPaths");
    for (const std::string& key : files.Keys())
        if (const auto file = PathEntry(files, key.c_str())) AddSource(list, *file, "file");
    return list;
}

json InputReport(CCabView input)
{
    switch (const int kind = input.Int("FileVariation", -1)) {
        case kInputFiles:
            return {{"kind", "files"}, {"words", "takes the files that it names"}};
        case kInputFolder:
            return {{"kind", "folder"}, {"words", "takes the files of the folder that it names"}};
        case kInputAskUser:
            return {{"kind", "ask-user"}, {"words", "asks for its input files"}};
        default:
            return {{"kind", "unknown"}, {"words", "has the unknown input kind " + std::to_string(kind)}};
    }
}

std::string WordsOfSaveSteps(const std::vector<SequenceStep>& steps)
{
    std::string numbers;
    for (const SequenceStep& step : steps)
        if (IsSaveStep(step.handler)) numbers += (numbers.empty() ? "" : ", ") + std::to_string(step.number);
    return numbers.empty() ? "saves nothing" : "saves by step " + numbers;
}

json OutputReport(CCabView output, const std::vector<SequenceStep>& steps)
{
    const OutputSettings settings = OutputSettings::Read(output);
    switch (settings.kind) {
        case kOutputInputFolder:
            return {{"kind", "input-folder"}, {"words", "saves beside the input"}};
        case kOutputAskUser:
            return {{"kind", "ask-user"}, {"words", "asks where to save"}};
        case kOutputFolder:
            return {
                {"kind", "folder"},
                {"words", "saves in the folder " + TextFromBytes(settings.selectedFolder.value_or("of the run"))}};
        case kOutputNone:
            return {{"kind", "none"}, {"words", WordsOfSaveSteps(steps)}};
        default:
            return {{"kind", "unknown"}, {"words", "has the unknown output kind " + std::to_string(settings.kind)}};
    }
}

}  // namespace

nlohmann::json ParametersReport(const std::string& handler, CCabView parameters)
{
    return CabReport(CSecretEntries(handler), parameters);
}

nlohmann::json SequenceReport(const SequenceSource& source)
{
    const auto steps = StepsOf(source);
    const bool titled = source.workflow.has_value();
    return {{"path", TextFromBytes(source.path)},
            {"form", FormWord(source.form)},
            {"title", titled ? TextFromBytes(source.workflow->title) : ""},
            {"description", titled ? TextFromBytes(source.workflow->description) : ""},
            {"holdsPasswords", HoldsPasswords(steps)},
            {"sources", SourcesReport(source)},
            {"input", InputReport(source.sequence.Input())},
            {"output", OutputReport(source.sequence.Output(), steps)},
            {"groups", GroupsReport(source, steps)}};
}

nlohmann::json FindingsReport(const std::vector<SequenceFinding>& findings)
{
    json list = json::array();
    for (const SequenceFinding& finding : findings) {
        json one = {{"severity", SeverityWord(finding.severity)},
                    {"code", finding.code},
                    {"text", TextFromBytes(finding.text)}};
        if (finding.step > 0) one["step"] = finding.step;
        if (finding.place.line > 0) {
            one["line"] = finding.place.line;
            one["column"] = finding.place.column;
        }
        list.push_back(std::move(one));
    }
    return list;
}

const char* SeverityWord(SequenceFinding::Severity severity)
{
    switch (severity) {
        case SequenceFinding::Severity::Error:
            return "error";
        case SequenceFinding::Severity::Warning:
            return "warning";
        case SequenceFinding::Severity::Note:
            return "note";
    }
    return "error";
}

const char* FormWord(SequenceForm form) { return form == SequenceForm::Xml ? "xml" : "host"; }

bool HoldsPasswords(const std::vector<SequenceStep>& steps)
{
    return std::any_of(steps.begin(), steps.end(),
                       [](const SequenceStep& step) { return HoldsPassword(step.handler, step.parameters); });
}
