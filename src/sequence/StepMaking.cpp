#include "sequence/StepMaking.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "protocol/Json.h"
#include "sequence/OutputSettings.h"
#include "sequence/StepDescription.h"

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
