#include "jobs/SequenceSteps.h"

#include "base/Unicode.h"
#include "engine/ItemValues.h"
#include "jobs/JobSettings.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

/// The colon would lead into a nested cab.
bool IsParameterName(const std::string& name)
{
    const auto fits = [](char c) { return c >= ' ' && c <= '~' && c != ':'; };
    return !name.empty() && std::all_of(name.begin(), name.end(), fits);
}

Expected<WorkflowItems> ItemsFromObject(const json& object)
{
    WorkflowItems items;
    for (const auto& [name, value] : object.items()) {
        if (!IsParameterName(name))
            return Failure('"' + name + "\" is no name for a parameter: use ASCII characters other than the colon.");
        auto made = ValueFromJson(value);
        if (!made) return Failure('"' + name + "\": " + made.Error());
        items.entries.emplace_back(name, std::move(*made));
    }
    return items;
}

Expected<WorkflowValue> NestedFromObject(const json& object)
{
    auto items = ItemsFromObject(object);
    if (!items) return Failure(items.Error());
    return WorkflowValue(std::move(*items));
}

bool IsTyped(const json& object)
{
    const auto type = object.find("type");
    if (type == object.end() || !type->is_string()) return false;
    return object.size() == (object.contains("value") ? 2u : 1u);
}

/// {"type": word, "value": …}; the value as JSON knows it, or as the text that a file would hold.
Expected<WorkflowValue> TypedFromJson(const json& object)
{
    const std::string type = object.at("type");
    const json value = object.value("value", json());
    if (type == "null") return WorkflowValue(WorkflowNull{});
    if (type == "cab" && value.is_object()) return NestedFromObject(value);
    if (type == "boolean" && value.is_boolean()) return WorkflowValue(value.get<bool>());
    if ((type == "integer" && value.is_number_integer()) || (type == "double" && value.is_number_float()))
        return ValueFromJson(value);
    if (type == "double" && value.is_number()) return WorkflowValue(value.get<double>());
    if (value.is_string() && type != "boolean" && type != "integer" && type != "double")
        if (auto made = ItemValue(type, JobBytes(object, "value"))) return std::move(*made);
    return Failure("there is no type \"" + type + "\", or the value is not of it.");
}

Expected<WorkflowCommand> StepFromJson(const json& step)
{
    WorkflowCommand command;
    command.handlerName = JobBytes(step, "handler");
    command.label = JobBytes(step, "label");
    if (command.handlerName.empty()) return Failure("it has no \"handler\".");
    const json parameters = step.value("parameters", json::object());
    if (!parameters.is_object()) return Failure("\"parameters\" is no object.");
    auto items = ItemsFromObject(parameters);
    if (!items) return Failure("\"parameters\", " + items.Error());
    command.parameters = std::move(*items);
    return command;
}

using Commands = std::vector<WorkflowCommand>;

Expected<Commands> ListedSteps(const json& job)
{
    const json steps = job.value("steps", json());
    if (!steps.is_array() || steps.empty()) return Failure("Name a \"template\" or at least one of the \"steps\".");
    Commands commands;
    for (const json& step : steps) {
        auto command = step.is_object() ? StepFromJson(step) : Failure("it is no object.");
        if (!command) return Failure("Step " + std::to_string(commands.size() + 1) + ": " + command.Error());
        commands.push_back(std::move(*command));
    }
    return commands;
}

json Output(const json& job, bool asText)
{
    json output = job.value("output", json::object());
    if (asText && output.is_object() && !output.contains("converter"))
        output["converter"] = "com.adobe.acrobat.plain-text";
    return output;
}

Expected<Commands> TemplateSteps(const json& job, const std::string& name)
{
    Commands commands;
    if (name != "protect" && name != "save" && name != "text")
        return Failure("There is no template \"" + name + "\"; choose \"protect\", \"save\" or \"text\".");
    if (name == "protect") {
        auto protect = ProtectStepFromJson(job.value("protect", json::object()));
        if (!protect) return Failure(protect.Error());
        commands.push_back(std::move(*protect));
    }
    auto save = SaveStepFromJson(Output(job, name == "text"));
    if (!save) return Failure(save.Error());
    commands.push_back(std::move(*save));
    return commands;
}

}  // namespace

Expected<WorkflowValue> ValueFromJson(const json& value)
{
    if (value.is_null()) return WorkflowValue(WorkflowNull{});
    if (value.is_boolean()) return WorkflowValue(value.get<bool>());
    if (value.is_number_float()) return WorkflowValue(value.get<double>());
    if (value.is_number_integer()) {
        const auto number = value.get<double>();
        if (number < std::numeric_limits<std::int32_t>::min() || number > std::numeric_limits<std::int32_t>::max())
            return Failure("the number does not fit into 32 bits.");
        return WorkflowValue(value.get<std::int32_t>());
    }
    if (value.is_string()) return WorkflowValue(WorkflowText{JobBytes(json{{"text", value}}, "text")});
    if (!value.is_object()) return Failure("a list is no value.");
    return IsTyped(value) ? TypedFromJson(value) : NestedFromObject(value);
}

Expected<std::vector<WorkflowCommand>> StepsFromJob(const json& job)
{
    if (const std::string name = JobBytes(job, "template"); !name.empty()) return TemplateSteps(job, name);
    auto commands = ListedSteps(job);
    if (!commands || !job.contains("output")) return commands;
    auto save = SaveStepFromJson(job.at("output"));
    if (!save) return Failure(save.Error());
    commands->push_back(std::move(*save));
    return commands;
}
