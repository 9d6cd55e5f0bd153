#include "sequence/StepMaking.h"

#include "base/Text.h"
#include "base/Unicode.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "sequence/JsonFields.h"

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
        if (auto made = ItemValue(type, BytesIn(object, "value"))) return std::move(*made);
    return Failure("there is no type \"" + type + "\", or the value is not of it.");
}

Expected<WorkflowCommand> StepFromJson(const json& step)
{
    WorkflowCommand command;
    command.handlerName = BytesIn(step, "handler");
    command.label = BytesIn(step, "label");
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
    if (value.is_string()) return WorkflowValue(WorkflowText{BytesIn(json{{"text", value}}, "text")});
    if (!value.is_object()) return Failure("a list is no value.");
    return IsTyped(value) ? TypedFromJson(value) : NestedFromObject(value);
}

Expected<std::vector<WorkflowCommand>> StepsFromJob(const json& job)
{
    if (const std::string name = BytesIn(job, "template"); !name.empty()) return TemplateSteps(job, name);
    auto commands = ListedSteps(job);
    if (!commands || !job.contains("output")) return commands;
    auto save = SaveStepFromJson(job.at("output"));
    if (!save) return Failure(save.Error());
    commands->push_back(std::move(*save));
    return commands;
}

namespace {

using nlohmann::json;

struct Word {
    const char* word;
    const char* parameter;
};
constexpr Word kRights[] = {
    {"print", "CanPrint"},       {"print-high", "HiResPrinting"},     {"copy", "CanCopy"},
    {"edit", "CanEdit"},         {"annotate", "CanEditNotes"},        {"fill-forms", "CanFillForms"},
    {"assemble", "CanAssemble"}, {"templates", "CanCreateTemplates"}, {"extract", "CanExtractPages"}};

struct Method {
    const char* word;
    int code;
};
constexpr Method kMethods[] = {{"rc4", 1}, {"aes128", 2}, {"aes256", 3}, {"", 3}};

Expected<int> MethodCode(const std::string& word)
{
    for (const Method& method : kMethods)
        if (word == method.word) return method.code;
    return Failure("There is no encryption method \"" + word + "\"; choose \"aes256\", \"aes128\" or \"rc4\".");
}

/// The rights to give; all of them when none are named.
Expected<std::vector<std::string>> RightsToGive(const json& protect)
{
    std::vector<std::string> all, given = BytesListIn(protect, "allow");
    for (const Word& right : kRights) all.emplace_back(right.word);
    if (!protect.contains("allow")) return all;
    for (const std::string& right : given)
        if (std::find(all.begin(), all.end(), right) == all.end())
            return Failure("There is no right \"" + right +
                           "\" to allow; the rights are print, print-high, copy, edit, " +
                           "annotate, fill-forms, assemble, templates and extract.");
    return given;
}

void Put(WorkflowItems& items, const char* name, WorkflowValue value)
{
    items.entries.emplace_back(name, std::move(value));
}

void PutText(WorkflowItems& items, const char* name, const std::string& utf8)
{
    Put(items, name, WorkflowText{utf8});
}

Expected<std::string> DIFolder(const std::string& folder)
{
    std::string path;
    if (const auto error = CatchHostError([&] { path = CHostPath::FromNative(folder).ToDIPath(); }))
        return Failure("The folder " + folder + " cannot be named in a sequence: " + error->text);
    return path.ends_with('/') ? path : path + '/';
}

}  // namespace

Expected<WorkflowCommand> ProtectStepFromJson(const json& protect)
{
    const std::string user = BytesIn(protect, "userPassword"), owner = BytesIn(protect, "ownerPassword");
    if (Trim(user).empty() && Trim(owner).empty())
        return Failure("Give a password to open the documents, one for their permissions, or both.");
    const auto method = MethodCode(BytesIn(protect, "method"));
    if (!method) return Failure(method.Error());
    const auto rights = RightsToGive(protect);
    if (!rights) return Failure(rights.Error());
    WorkflowCommand command{"QLNX_FerrulePasswordProtectCommand", "Protect", {}, "", ""};
    WorkflowItems& items = command.parameters;
    Put(items, "AllowAll", false);
    for (const Word& right : kRights)
        Put(items, right.parameter, std::find(rights->begin(), rights->end(), right.word) != rights->end());
    Put(items, "EncryptionMethod", *method);
    Put(items, "PasswordProtect", true);
    if (!user.empty()) PutText(items, "Password", user);
    if (!owner.empty()) PutText(items, "PermPassword", owner);
    return command;
}

Expected<WorkflowCommand> SaveStepFromJson(const json& output)
{
    if (!output.is_object() && !output.is_null()) return Failure("\"output\" is no object.");
    const std::string folder = BytesIn(output, "folder"), converter = BytesIn(output, "converter"),
                      prefix = BytesIn(output, "prefix"), suffix = BytesIn(output, "suffix");
    WorkflowCommand command{"WorkflowPlaybackSaveFiles", "Save", {}, "", ""};
    WorkflowItems& items = command.parameters;
    Put(items, "AddToBaseName", !prefix.empty() || !suffix.empty());
    Put(items, "DocSaveDestType",
        WorkflowString{folder.empty() ? "WorkflowPlaybackSave" : "WorkflowPlaybackSaveInAFolder"});
    Put(items, "DontOverwrite", !FlagIn(output, "overwrite", false));
    Put(items, "EmbedIndex", false);
    Put(items, "FileVariation", 0);
    Put(items, "HandleOutput", true);
    if (!converter.empty()) Put(items, "HandlerUniqueID", WorkflowString{converter});
    PutText(items, "InsertAfterBaseName", suffix);
    PutText(items, "InsertBeforeBaseName", prefix);
    Put(items, "NumbericNaming", false);  // sic
    Put(items, "OptimizePDF", FlagIn(output, "optimize", true));
    Put(items, "RunPDFOptimizer", false);
    if (folder.empty()) return command;
    const auto path = DIFolder(folder);
    if (!path) return Failure(path.Error());
    PutText(items, "PreselectedFolderPath", *path);
    return command;
}
