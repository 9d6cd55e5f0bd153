#include "sequence/SequenceJson.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "base/Text.h"
#include "hostcalls/Cab.h"
#include "protocol/Json.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"
#include "sequence/StepDescription.h"
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

namespace {

using Value = CSettingsRecord::Value;

/// The colon would lead into a nested cab.
bool IsParameterName(const std::string& name)
{
    const auto fits = [](char c) { return c >= ' ' && c <= '~' && c != ':'; };
    return !name.empty() && std::all_of(name.begin(), name.end(), fits);
}

Expected<CSettingsRecord> ItemsFromObject(const Json& object)
{
    CSettingsRecord items;
    for (const auto& [name, value] : object.items()) {
        if (!IsParameterName(name))
            return Failure('"' + name + "\" is no name for a parameter: use ASCII characters other than the colon.");
        auto made = ValueFromJson(value);
        if (!made) return Failure('"' + name + "\": " + made.Error());
        items.PutValue(name, std::move(*made));
    }
    return items;
}

Expected<Value> NestedFromObject(const Json& object)
{
    auto items = ItemsFromObject(object);
    if (!items) return Failure(items.Error());
    return Value(std::make_shared<const CSettingsRecord>(std::move(*items)));
}

bool IsTyped(const Json& object)
{
    const auto type = object.find("type");
    if (type == object.end() || !type->is_string()) return false;
    return object.size() == (object.contains("value") ? 2u : 1u);
}

/// {"type": word, "value": …}; the value as JSON knows it, or as the text that a file would hold.
Expected<Value> TypedFromJson(const Json& object)
{
    const std::string type = object.at("type");
    const Json value = object.value("value", Json());
    if (type == "null") return Value(NullValue{});
    if (type == "cab" && value.is_object()) return NestedFromObject(value);
    if (type == "boolean" && value.is_boolean()) return Value(value.get<bool>());
    if ((type == "integer" && value.is_number_integer()) || (type == "double" && value.is_number_float()))
        return ValueFromJson(value);
    if (type == "double" && value.is_number()) return Value(value.get<double>());
    if (value.is_string() && type != "boolean" && type != "integer" && type != "double")
        if (auto made = ItemValue(type, BytesAt(object, "value"))) return std::move(*made);
    return Failure("there is no type \"" + type + "\", or the value is not of it.");
}

Expected<WorkflowCommand> StepFromJson(const Json& step)
{
    WorkflowCommand command;
    command.handlerName = BytesAt(step, "handler");
    command.label = BytesAt(step, "label");
    if (command.handlerName.empty()) return Failure("it has no \"handler\".");
    const Json parameters = step.value("parameters", Json::object());
    if (!parameters.is_object()) return Failure("\"parameters\" is no object.");
    auto items = ItemsFromObject(parameters);
    if (!items) return Failure("\"parameters\", " + items.Error());
    command.parameters = std::move(*items);
    return command;
}

using Commands = std::vector<WorkflowCommand>;

Expected<Commands> ListedSteps(const Json& job)
{
    const Json steps = job.value("steps", Json());
    if (!steps.is_array() || steps.empty()) return Failure("Name a \"template\" or at least one of the \"steps\".");
    Commands commands;
    for (const Json& step : steps) {
        auto command = step.is_object() ? StepFromJson(step) : Failure("it is no object.");
        if (!command) return Failure("Step " + std::to_string(commands.size() + 1) + ": " + command.Error());
        commands.push_back(std::move(*command));
    }
    return commands;
}

/// The step that saves each document; one without any wishes when `output` is null.
Expected<WorkflowCommand> SaveStepFromWords(const Json& output, const char* converter = "")
{
    if (!output.is_object() && !output.is_null()) return Failure("\"output\" is no object.");
    return MakeSaveStep({.folder = BytesAt(output, "folder"),
                         .prefix = BytesAt(output, "prefix"),
                         .suffix = BytesAt(output, "suffix"),
                         .converter = output.contains("converter") ? BytesAt(output, "converter") : converter,
                         .overwrite = FlagAt(output, "overwrite"),
                         .optimize = FlagAt(output, "optimize", true)});
}

/// Templates that only save.
struct SavingTemplate {
    const char* name;
    const char* converter;
};
constexpr SavingTemplate kSavingTemplates[] = {{"save", ""}, {"text", "com.adobe.acrobat.plain-text"}};

std::string TemplateNames()
{
    std::vector<std::string> names;
    for (const StepDescription* step : OwnSteps())
        if (step->fromWords.name) names.emplace_back(step->fromWords.name);
    for (const SavingTemplate& saving : kSavingTemplates) names.emplace_back(saving.name);
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "\"" : name == names.back() ? " or \"" : ", \"") + name + '"';
    return text;
}

Expected<Commands> TemplateSteps(const Json& job, const std::string& name)
{
    Commands commands;
    const char* converter = nullptr;
    for (const SavingTemplate& saving : kSavingTemplates)
        if (name == saving.name) converter = saving.converter;
    for (const StepDescription* step : OwnSteps()) {
        if (!step->fromWords.name || name != step->fromWords.name) continue;
        auto made = step->fromWords.make(job.value(name, Json::object()));
        if (!made) return Failure(made.Error());
        commands.push_back(std::move(*made));
        converter = "";
    }
    if (!converter) return Failure("There is no template \"" + name + "\"; choose " + TemplateNames() + ".");
    auto save = SaveStepFromWords(job.value("output", Json::object()), converter);
    if (!save) return Failure(save.Error());
    commands.push_back(std::move(*save));
    return commands;
}

}  // namespace

Expected<CSettingsRecord::Value> ValueFromJson(const Json& value)
{
    if (value.is_null()) return Value(NullValue{});
    if (value.is_boolean()) return Value(value.get<bool>());
    if (value.is_number_float()) return Value(value.get<double>());
    if (value.is_number_integer()) {
        const auto number = value.get<double>();
        if (number < std::numeric_limits<std::int32_t>::min() || number > std::numeric_limits<std::int32_t>::max())
            return Failure("the number does not fit into 32 bits.");
        return Value(value.get<std::int32_t>());
    }
    if (value.is_string()) return Value(WideText{BytesAt(Json{{"text", value}}, "text")});
    if (!value.is_object()) return Failure("a list is no value.");
    return IsTyped(value) ? TypedFromJson(value) : NestedFromObject(value);
}

Expected<std::vector<WorkflowCommand>> StepsFromJob(const Json& job)
{
    if (const std::string name = BytesAt(job, "template"); !name.empty()) return TemplateSteps(job, name);
    auto commands = ListedSteps(job);
    if (!commands || !job.contains("output")) return commands;
    auto save = SaveStepFromWords(job.at("output"));
    if (!save) return Failure(save.Error());
    commands->push_back(std::move(*save));
    return commands;
}
