#include "base/Text.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "jobs/JobSettings.h"
#include "jobs/SequenceChecks.h"
#include "jobs/SequenceSteps.h"

#include <algorithm>
#include <nlohmann/json.hpp>

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
    std::vector<std::string> all, given = JobBytesList(protect, "allow");
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
    const std::string user = JobBytes(protect, "userPassword"), owner = JobBytes(protect, "ownerPassword");
    if (Trim(user).empty() && Trim(owner).empty())
        return Failure("Give a password to open the documents, one for their permissions, or both.");
    const auto method = MethodCode(JobBytes(protect, "method"));
    if (!method) return Failure(method.Error());
    const auto rights = RightsToGive(protect);
    if (!rights) return Failure(rights.Error());
    WorkflowCommand command{kProtectStep, "Protect", {}, "", ""};
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
    const std::string folder = JobBytes(output, "folder"), converter = JobBytes(output, "converter"),
                      prefix = JobBytes(output, "prefix"), suffix = JobBytes(output, "suffix");
    WorkflowCommand command{"WorkflowPlaybackSaveFiles", "Save", {}, "", ""};
    WorkflowItems& items = command.parameters;
    Put(items, "AddToBaseName", !prefix.empty() || !suffix.empty());
    Put(items, "DocSaveDestType",
        WorkflowString{folder.empty() ? "WorkflowPlaybackSave" : "WorkflowPlaybackSaveInAFolder"});
    Put(items, "DontOverwrite", !JobFlag(output, "overwrite", false));
    Put(items, "EmbedIndex", false);
    Put(items, "FileVariation", 0);
    Put(items, "HandleOutput", true);
    if (!converter.empty()) Put(items, "HandlerUniqueID", WorkflowString{converter});
    PutText(items, "InsertAfterBaseName", suffix);
    PutText(items, "InsertBeforeBaseName", prefix);
    Put(items, "NumbericNaming", false);  // sic
    Put(items, "OptimizePDF", JobFlag(output, "optimize", true));
    Put(items, "RunPDFOptimizer", false);
    if (folder.empty()) return command;
    const auto path = DIFolder(folder);
    if (!path) return Failure(path.Error());
    PutText(items, "PreselectedFolderPath", *path);
    return command;
}
