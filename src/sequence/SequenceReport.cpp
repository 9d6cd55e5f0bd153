#include "sequence/SequenceReport.h"

#include "base/Base64.h"
#include "base/ByteText.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Atoms.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"
#include "sequence/StepDescription.h"
#include "sequence/StepSecrets.h"
#include "sequence/XmlForm.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

namespace {

using nlohmann::json;

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
                   {"parameters", CabReport(CSecretEntries(DescribeMeantStep(step.handler)), step.parameters)}};
    if (step.IsAvailable() && step.runsAs != step.handler) report["runsAs"] = step.runsAs;
    if (source.form == SequenceForm::Xml) {
        report["prompts"] = step.prompts;
        report["pauses"] = step.pauses;
        report["line"] = step.place.line;
        report["column"] = step.place.column;
    }
    return report;
}

/// The steps as they are told, and what is told of all of them.
struct StepReports {
    json groups = json::array();
    std::string saveSteps;  // their numbers
};

StepReports ReportSteps(const SequenceSource& source)
{
    StepReports reports;
    int group = -1;
    ForEachStep(source, [&](const SequenceStep& step) {
        if (step.group != group)
            reports.groups.push_back({{"label", TextFromBytes(step.label)}, {"steps", json::array()}});
        group = step.group;
        reports.groups.back()["steps"].push_back(StepReport(source, step));
        if (DescribeStep(step.handler).saves)
            reports.saveSteps += (reports.saveSteps.empty() ? "" : ", ") + std::to_string(step.number);
        return true;
    });
    return reports;
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
    const CSequenceInput input = source.sequence.Input();
    if (input.Kind() == kInputFolder) {
        if (const auto folder = input.Folder()) AddSource(list, *folder, "folder");
        return list;
    }
    for (const std::string& file : input.Listed()) AddSource(list, file, "file");
    return list;
}

json InputReport(CSequenceInput input)
{
    switch (const int kind = input.Kind()) {
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

json OutputReport(CCabView output, const std::string& saveSteps)
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
            return {{"kind", "none"}, {"words", saveSteps.empty() ? "saves nothing" : "saves by step " + saveSteps}};
        default:
            return {{"kind", "unknown"}, {"words", "has the unknown output kind " + std::to_string(settings.kind)}};
    }
}

}  // namespace

nlohmann::json SequenceReport(const SequenceSource& source)
{
    StepReports steps = ReportSteps(source);
    const bool titled = source.workflow.has_value();
    return {{"path", TextFromBytes(source.path)},
            {"form", FormWord(source.form)},
            {"title", titled ? TextFromBytes(source.workflow->title) : ""},
            {"description", titled ? TextFromBytes(source.workflow->description) : ""},
            {"holdsPasswords", HoldsPasswords(source)},
            {"sources", SourcesReport(source)},
            {"input", InputReport(source.sequence.Input())},
            {"output", OutputReport(source.sequence.Output(), steps.saveSteps)},
            {"groups", std::move(steps.groups)}};
}
