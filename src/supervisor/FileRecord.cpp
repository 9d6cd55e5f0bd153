#include "supervisor/FileRecord.h"

#include "base/ByteText.h"

#include <array>

namespace {

constexpr std::array<std::string_view, kFileOutcomeClasses> kOutcomeWords = {
    "saved", "copied-unchanged", "incomplete", "failed", "skipped", "stopped"};

}  // namespace

std::string_view OutcomeWord(FileOutcomeClass outcome) { return kOutcomeWords[static_cast<std::size_t>(outcome)]; }

std::optional<FileOutcomeClass> OutcomeFromWord(std::string_view word)
{
    for (std::size_t place = 0; place < kOutcomeWords.size(); ++place)
        if (kOutcomeWords[place] == word) return static_cast<FileOutcomeClass>(place);
    return std::nullopt;
}

Json PlannedFileJson(const PlannedFile& file)
{
    return {{"number", file.number},
            {"path", TextFromBytes(file.path)},
            {"size", file.size},
            {"modified", file.modified},
            {"group", file.group}};
}

std::optional<PlannedFile> PlannedFileFrom(const Json& object)
{
    PlannedFile file{.number = CountAt(object, "number"),
                     .path = BytesAt(object, "path"),
                     .size = UnsignedAt(object, "size"),
                     .modified = TextAt(object, "modified"),
                     .group = UnsignedAt(object, "group")};
    if (file.number < 1 || file.path.empty()) return std::nullopt;
    return file;
}

Json FileRecordJson(const FileRecord& record)
{
    Json outputs = Json::array();
    for (const FileOutput& output : record.outputs)
        outputs.push_back({{"path", TextFromBytes(output.path)}, {"sha256", output.sha256}});
    Json object = {{"number", record.number},
                   {"path", TextFromBytes(record.path)},
                   {"size", record.size},
                   {"sha256", record.sha256},
                   {"outcome", OutcomeWord(record.outcome)},
                   {"message", record.message},
                   {"milliseconds", record.milliseconds},
                   {"outputs", std::move(outputs)}};
    if (!record.finalAct.empty() || !record.finalState.empty())
        object["finalAction"] = {
            {"act", record.finalAct}, {"target", TextFromBytes(record.finalTarget)}, {"state", record.finalState}};
    if (!record.signatures.empty()) object["signatures"] = record.signatures;
    return object;
}

std::optional<FileRecord> FileRecordFrom(const Json& object)
{
    const auto outcome = OutcomeFromWord(TextAt(object, "outcome"));
    if (!outcome) return std::nullopt;
    const Json& finalAction = ObjectAt(object, "finalAction");
    FileRecord record{.number = CountAt(object, "number"),
                      .path = BytesAt(object, "path"),
                      .size = UnsignedAt(object, "size"),
                      .sha256 = TextAt(object, "sha256"),
                      .outcome = *outcome,
                      .message = TextAt(object, "message"),
                      .milliseconds = IntegerAt(object, "milliseconds"),
                      .outputs = {},
                      .finalAct = TextAt(finalAction, "act"),
                      .finalTarget = BytesAt(finalAction, "target"),
                      .finalState = TextAt(finalAction, "state"),
                      .signatures = TextAt(object, "signatures")};
    if (const auto outputs = object.find("outputs"); outputs != object.end() && outputs->is_array())
        for (const Json& output : *outputs)
            if (output.is_object()) record.outputs.push_back({BytesAt(output, "path"), TextAt(output, "sha256")});
    return record;
}
