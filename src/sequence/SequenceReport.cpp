#include "sequence/SequenceReport.h"

#include <cmath>
#include <utility>

#include "base/Text.h"
#include "hostcalls/Cab.h"
#include "protocol/Json.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"
#include "sequence/StepDescription.h"
#include "sequence/StepSecrets.h"
#include "sequence/Values.h"

namespace {

Json CabReport(const CSecretEntries& secrets, CCabView cab);

struct ValueAsReport {
    Json operator()(NullValue) const { return nullptr; }
    Json operator()(bool value) const { return value; }
    Json operator()(std::int32_t value) const { return value; }
    Json operator()(double value) const { return std::isfinite(value) ? Json(value) : Json(nullptr); }
    Json operator()(const std::string& value) const { return TextFromBytes(value); }
    Json operator()(const WideText& value) const { return TextFromBytes(value.utf8); }
    Json operator()(const AtomValue& value) const { return TextFromBytes(value.name); }
    Json operator()(const BinaryValue& value) const { return EncodeBase64(value.bytes); }
    Json operator()(const CSettingsRecord::Nested&) const { return nullptr; }
};

Json EntryReport(const CSecretEntries& secrets, CCabView cab, const std::string& key)
{
    Json report = {{"name", key}, {"type", "other"}, {"value", nullptr}};
    if (const CCabView nested = cab.Cab(key.c_str())) {
        report["type"] = TypeWord(CSettingsRecord::Nested());
        report["value"] = CabReport(secrets.Under(key, nested), nested);
    } else if (const auto value = ValueFromCab(cab, key.c_str())) {
        report["type"] = TypeWord(*value);
        report["value"] = secrets.Hides(key, *value) ? Json(kMaskedPassword) : std::visit(ValueAsReport{}, *value);
    }
    return report;
}

Json CabReport(const CSecretEntries& secrets, CCabView cab)
{
    Json list = Json::array();
    for (const std::string& key : cab.Keys()) list.push_back(EntryReport(secrets, cab, key));
    return list;
}

Json StepReport(const SequenceSource& source, const SequenceStep& step)
{
    Json report = {{"number", step.number},
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
    Json groups = Json::array();
    std::string saveSteps;  // their numbers
};

StepReports ReportSteps(const SequenceSource& source)
{
    StepReports reports;
    int group = -1;
    ForEachStep(source, [&](const SequenceStep& step) {
        if (step.group != group)
            reports.groups.push_back({{"label", TextFromBytes(step.label)}, {"steps", Json::array()}});
        group = step.group;
        reports.groups.back()["steps"].push_back(StepReport(source, step));
        if (DescribeStep(step.handler).saves)
            reports.saveSteps += (reports.saveSteps.empty() ? "" : ", ") + std::to_string(step.number);
        return true;
    });
    return reports;
}

void AddSource(Json& list, const std::string& path, const char* kind)
{
    list.push_back({{"path", TextFromBytes(path)}, {"kind", kind}});
}

Json SourcesReport(const SequenceSource& source)
{
    Json list = Json::array();
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

Json InputReport(CSequenceInput input)
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

Json OutputReport(CCabView output, const std::string& saveSteps)
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

Json SequenceReport(const SequenceSource& source)
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
