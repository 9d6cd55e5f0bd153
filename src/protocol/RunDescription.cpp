#include "protocol/RunDescription.h"

#include <algorithm>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "protocol/Json.h"
#include "protocol/Words.h"

namespace {

/// 1 was a list of environment variables, 2 could describe sequences only.
constexpr int kVersion = 3;
constexpr WordTable<2> kKinds = {"run", "plan"};

struct FlagRow {
    const char* key;
    bool RunDescription::*flag;
};
constexpr FlagRow kFlags[] = {{"noSubfolders", &RunDescription::noSubfolders},
                              {"skipUnavailable", &RunDescription::skipUnavailable},
                              {"allowNoOutput", &RunDescription::allowNoOutput},
                              {"allowInPlace", &RunDescription::allowInPlace},
                              {"acceptDamaged", &RunDescription::acceptDamaged},
                              {"sparesRepaired", &RunDescription::sparesRepaired},
                              {"force", &RunDescription::force}};

struct TextRow {
    const char* key;
    std::string RunDescription::*text;
};
constexpr TextRow kTexts[] = {{"output", &RunDescription::outputFolder},
                              {"destination", &RunDescription::destination},
                              {"keepOriginals", &RunDescription::keepOriginals},
                              {"extensions", &RunDescription::extensions}};

Json WorkJson(const WorkDescription& work)
{
    Json object = {{"kind", work.kind}};
    for (const WorkFile& file : work.files) object["files"][file.name] = TextFromBytes(file.path);
    if (const auto settings = ParseObject(work.settings)) object["settings"] = *settings;
    return object;
}

WorkDescription WorkFrom(const Json& object)
{
    WorkDescription work{.kind = TextAt(object, "kind")};
    const Json& files = ObjectAt(object, "files");
    for (const auto& [name, path] : files.items()) work.files.push_back({name, BytesAt(files, name.c_str())});
    if (object.contains("settings")) work.settings = LineOf(ObjectAt(object, "settings"));
    return work;
}

}  // namespace

WorkDescription SequenceWork(std::string path)
{
    return {.kind = kSequenceWork, .files = {{kSequenceWork, std::move(path)}}};
}

std::string WorkFilePath(const WorkDescription& work, std::string_view name)
{
    for (const WorkFile& file : work.files)
        if (file.name == name) return file.path;
    return {};
}

// Folders of runs are named after it: those of sequences keep the name that they always had.
std::string WorkIdentity(const WorkDescription& work)
{
    if (work.kind == kSequenceWork && work.settings.empty()) return {};
    return work.kind + '\n' + work.settings;
}

Json RunDescriptionJson(const RunDescription& description)
{
    Json object = Json::object();
    if (!description.work.kind.empty()) object["work"] = WorkJson(description.work);
    for (const TextRow& row : kTexts)
        if (!(description.*row.text).empty()) object[row.key] = TextFromBytes(description.*row.text);
    if (!description.inputs.empty()) object["inputs"] = TextsOf(description.inputs);
    if (description.finalAction != FinalAction::Nothing)
        object["finalAction"] = FactsOf(description.finalAction).word;
    for (const FlagRow& row : kFlags)
        if (description.*row.flag) object[row.key] = true;
    if (description.minAgeSeconds != 0) object["minAge"] = description.minAgeSeconds;
    return object;
}

RunDescription RunDescriptionFrom(const Json& object)
{
    RunDescription description{.work = WorkFrom(ObjectAt(object, "work"))};
    for (const TextRow& row : kTexts) description.*row.text = BytesAt(object, row.key);
    description.inputs = BytesListAt(object, "inputs");
    if (const auto* action = FindFinalAction(TextAt(object, "finalAction"))) description.finalAction = action->action;
    for (const FlagRow& row : kFlags) description.*row.flag = FlagAt(object, row.key);
    description.minAgeSeconds = CountAt(object, "minAge");
    return description;
}

namespace {

constexpr char kKeptFolderPrefix[] = "ferrule-";

}  // namespace

std::string KeptFolderOf(const RunDescription& description, const std::string& run)
{
    if (description.keepOriginals.empty()) return {};
    return WithTrailingSeparator(description.keepOriginals) + kKeptFolderPrefix + run;
}

bool IsKeptFolderName(std::string_view name)
{
    constexpr std::size_t kRunIdLength = 16;
    if (!name.starts_with(kKeptFolderPrefix)) return false;
    name.remove_prefix(std::string_view(kKeptFolderPrefix).size());
    return name.size() == kRunIdLength && std::all_of(name.begin(), name.end(), [](char character) {
               return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9');
           });
}

Json RunOrderJson(const RunOrder& order)
{
    Json object = {{"kind", WordOf(kKinds, order.kind)},
                   {"version", kVersion},
                   {"run", order.run},
                   {"dryRun", order.dryRun},
                   {"description", RunDescriptionJson(order.description)}};
    if (!order.hashes) object["hashes"] = false;
    if (const Keeping& keeping = order.keeping; !keeping.folder.empty())
        object["keeping"] = {{"folder", TextFromBytes(keeping.folder)}, {"mayLink", keeping.mayLink}};
    return object;
}

bool IsRunOrder(const Json& object) { return FromWord<RunOrder::Kind>(kKinds, TextAt(object, "kind")).has_value(); }

Expected<RunOrder> RunOrderFrom(const Json& object)
{
    const auto kind = FromWord<RunOrder::Kind>(kKinds, TextAt(object, "kind"));
    if (!kind) return Failure("This is no job over files.");
    if (const int version = CountAt(object, "version"); version != kVersion)
        return Failure("The job is written in version " + std::to_string(version) +
                       " of its form, and only version " + std::to_string(kVersion) +
                       " is understood. Plan the run again with this version of Ferrule.");
    const Json& keeping = ObjectAt(object, "keeping");
    return RunOrder{.kind = *kind,
                    .run = TextAt(object, "run"),
                    .dryRun = FlagAt(object, "dryRun"),
                    .hashes = FlagAt(object, "hashes", true),
                    .description = RunDescriptionFrom(ObjectAt(object, "description")),
                    .keeping = {BytesAt(keeping, "folder"), FlagAt(keeping, "mayLink")}};
}

Json PlanReportJson(const PlanReport& plan)
{
    return {{"movesInputs", plan.movesInputs},
            {"oneWorker", !plan.oneWorkerReason.empty()},
            {"oneWorkerReason", plan.oneWorkerReason},
            {"outputsPerFile", plan.outputsPerFile},
            {"reports", plan.reports},
            {"startsPrograms", plan.startsPrograms},
            {"reach", RunReachJson(plan.reach)},
            {"tooYoung", plan.tooYoung},
            {"total", plan.total},
            {"unreadableFolders", plan.unreadableFolders},
            {"warnings", plan.warnings}};
}

PlanReport PlanReportFrom(const Json& object)
{
    return {.total = CountAt(object, "total"),
            .oneWorkerReason = TextAt(object, "oneWorkerReason"),
            .tooYoung = CountAt(object, "tooYoung"),
            .unreadableFolders = CountAt(object, "unreadableFolders"),
            .outputsPerFile = object.contains("outputsPerFile") ? CountAt(object, "outputsPerFile") : 1,
            .reports = FlagAt(object, "reports"),
            .startsPrograms = FlagAt(object, "startsPrograms", true),
            .movesInputs = FlagAt(object, "movesInputs"),
            .reach = RunReachFrom(ObjectAt(object, "reach")),
            .warnings = TextsAt(object, "warnings")};
}
