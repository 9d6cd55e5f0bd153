#include "protocol/FileRecord.h"

#include <charconv>

#include "base/Text.h"
#include "protocol/Json.h"
#include "protocol/Words.h"

namespace {

constexpr WordTable<3> kStates = {"done", "failed", "unknown"};
constexpr char kBroken[] = "broken";

std::int64_t NumberFrom(const std::string& decimal)
{
    std::int64_t number = 0;
    (void)std::from_chars(decimal.data(), decimal.data() + decimal.size(), number);
    return number;
}

Json OutputsJson(const std::vector<FileOutput>& outputs)
{
    Json list = Json::array();
    for (const FileOutput& output : outputs)
        list.push_back({{"path", TextFromBytes(output.path)}, {"sha256", output.sha256}});
    return list;
}

std::vector<FileOutput> OutputsFrom(const Json& object)
{
    std::vector<FileOutput> outputs;
    const auto list = object.find("outputs");
    if (list == object.end() || !list->is_array()) return outputs;
    for (const Json& output : *list)
        if (output.is_object()) outputs.push_back({BytesAt(output, "path"), TextAt(output, "sha256")});
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

Json PlannedFileJson(const PlannedFile& file)
{
    return {{"number", file.number},
            {"path", TextFromBytes(file.path)},
            {"size", file.size},
            {"modified", std::to_string(file.modifiedNanoseconds)},
            {"group", file.group}};
}

std::optional<PlannedFile> PlannedFileFrom(const Json& object)
{
    PlannedFile file{.number = CountAt(object, "number"),
                     .path = BytesAt(object, "path"),
                     .size = UnsignedAt(object, "size"),
                     .modifiedNanoseconds = NumberFrom(TextAt(object, "modified")),
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
                      .signaturesBroken = TextAt(object, "signatures") == kBroken};
}
