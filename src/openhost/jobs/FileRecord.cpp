#include "openhost/jobs/FileRecord.h"

#include <nlohmann/json.hpp>

#include "base/ByteText.h"

namespace openhost {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kOutcomeWords[] = {"saved", "copied-unchanged", "incomplete", "failed", "skipped", "stopped"};

const char* OutcomeWord(int outcome)
{
    const bool known = outcome >= 0 && outcome < static_cast<int>(std::size(kOutcomeWords));
    return kOutcomeWords[known ? outcome : kJobFileFailed];
}

Json OutputsOf(const FileRecord& record)
{
    Json outputs = Json::array();
    for (const auto& output : record.outputs)
        outputs.push_back({{"path", TextFromBytes(output.path)}, {"sha256", output.sha256}});
    return outputs;
}

}  // namespace

std::string RecordLine(const FileRecord& record)
{
    Json line = {{"number", record.number},
                 {"path", TextFromBytes(record.path)},
                 {"size", record.size},
                 {"sha256", record.sha256},
                 {"outcome", OutcomeWord(record.outcome)},
                 {"message", TextFromBytes(record.message)},
                 {"milliseconds", record.milliseconds},
                 {"outputs", OutputsOf(record)}};
    if (const auto& action = record.finalAction)
        line["finalAction"] = {{"act", action->act},
                               {"target", TextFromBytes(action->target)},
                               {"state", action->done ? "done" : "failed"}};
    if (record.signaturesBroken) line["signatures"] = "broken";
    return line.dump();
}

}  // namespace openhost
