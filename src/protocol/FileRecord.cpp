#include "protocol/FileRecord.h"

#include "base/Text.h"
#include "protocol/Json.h"
#include "protocol/Words.h"

namespace {

constexpr WordTable<3> kStates = {"done", "failed", "unknown"};
constexpr char kBroken[] = "broken";
constexpr char kCopyPurpose[] = "copy";

Json ActsJson(const std::vector<IntendedAct>& acts)
{
    Json list = Json::array();
    for (const IntendedAct& act : acts) {
        Json object = IntendedActJson(act);
        object.erase("number");
        list.push_back(std::move(object));
    }
    return list;
}

std::vector<IntendedAct> ActsFrom(const Json& object)
{
    std::vector<IntendedAct> acts;
    const auto list = object.find("acts");
    if (list == object.end() || !list->is_array()) return acts;
    for (const Json& each : *list)
        if (auto act = each.is_object() ? IntendedActFrom(each) : std::nullopt) {
            act->number = CountAt(object, "number");
            acts.push_back(std::move(*act));
        }
    return acts;
}

Json OutputsJson(const std::vector<FileOutput>& outputs)
{
    Json list = Json::array();
    for (const FileOutput& output : outputs) {
        Json object = {{"path", TextFromBytes(output.path)}, {"sha256", output.sha256}};
        if (output.copy) object["purpose"] = kCopyPurpose;
        if (output.size) object["size"] = *output.size;
        list.push_back(std::move(object));
    }
    return list;
}

std::vector<FileOutput> OutputsFrom(const Json& object)
{
    std::vector<FileOutput> outputs;
    const auto list = object.find("outputs");
    if (list == object.end() || !list->is_array()) return outputs;
    for (const Json& output : *list)
        if (output.is_object())
            outputs.push_back({.path = BytesAt(output, "path"),
                               .sha256 = TextAt(output, "sha256"),
                               .copy = TextAt(output, "purpose") == kCopyPurpose,
                               .size = MaybeUnsignedAt(output, "size")});
    return outputs;
}

std::optional<FinalActionRecord> FinalActionFrom(const Json& object)
{
    if (object.empty()) return std::nullopt;
    const auto state = FromWord<FinalActionRecord::State>(kStates, TextAt(object, "state"));
    return FinalActionRecord{.act = ActFromWord(TextAt(object, "act")),
                             .target = BytesAt(object, "target"),
                             .state = state.value_or(FinalActionRecord::State::Unknown)};
}

}  // namespace

std::string_view FinalStateWord(FinalActionRecord::State state) { return WordOf(kStates, state); }

// Put together by hand, because a plan may have a million of them.
std::string PlannedFileLine(const PlannedFile& file)
{
    return "{\"number\":" + std::to_string(file.number) + ",\"path\":" + LineOf(Json(TextFromBytes(file.path))) +
           ",\"size\":" + std::to_string(file.size) + ",\"modified\":\"" + std::to_string(file.modifiedNanoseconds) +
           "\",\"group\":" + std::to_string(file.group) + '}';
}

std::optional<PlannedFile> PlannedFileFrom(const Json& object)
{
    PlannedFile file{.number = CountAt(object, "number"),
                     .path = BytesAt(object, "path"),
                     .size = UnsignedAt(object, "size"),
                     .modifiedNanoseconds = DecimalAt(object, "modified"),
                     .group = static_cast<std::uint32_t>(UnsignedAt(object, "group"))};
    if (file.number < 1 || file.path.empty()) return std::nullopt;
    return file;
}

Json FileRecordJson(const FileRecord& record)
{
    Json object = {{"number", record.number},
                   {"path", TextFromBytes(record.path)},
                   {"size", record.size},
                   {"sha256", record.sha256},
                   {"outcome", OutcomeWord(record.outcome)},
                   {"message", record.message},
                   {"milliseconds", record.milliseconds},
                   {"outputs", OutputsJson(record.outputs)}};
    if (const auto& action = record.finalAction)
        object["finalAction"] = {{"act", action->act ? ActWord(*action->act) : ""},
                                 {"target", TextFromBytes(action->target)},
                                 {"state", FinalStateWord(action->state)}};
    if (record.signaturesBroken) object["signatures"] = kBroken;
    if (record.protection.Known()) object["protection"] = ProtectionChangeJson(record.protection);
    if (!record.acts.empty()) object["acts"] = ActsJson(record.acts);
    if (const Json found = Json::parse(record.findings, nullptr, false); found.is_array()) object["findings"] = found;
    return object;
}

std::optional<FileRecord> FileRecordFrom(const Json& object)
{
    const auto outcome = OutcomeFromWord(TextAt(object, "outcome"));
    if (!outcome) return std::nullopt;
    return FileRecord{.number = CountAt(object, "number"),
                      .path = BytesAt(object, "path"),
                      .size = UnsignedAt(object, "size"),
                      .sha256 = TextAt(object, "sha256"),
                      .outcome = *outcome,
                      .message = TextAt(object, "message"),
                      .milliseconds = IntegerAt(object, "milliseconds"),
                      .outputs = OutputsFrom(object),
                      .finalAction = FinalActionFrom(ObjectAt(object, "finalAction")),
                      .signaturesBroken = TextAt(object, "signatures") == kBroken,
                      .protection = ProtectionChangeFrom(ObjectAt(object, "protection")),
                      .acts = ActsFrom(object),
                      .findings = object.contains("findings") ? LineOf(object["findings"]) : std::string()};
}
