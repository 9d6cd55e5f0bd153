#include "protocol/Messages.h"

#include <utility>

#include "base/Text.h"
#include "protocol/Words.h"

namespace {

constexpr WordTable<2> kToDo = {"whole", "final-action"};
constexpr WordTable<3> kPlaces = {"sequence-preflight-begins", "sequence-preflight-ends", "inputs-counted"};

Json ActQuestion(const IntendedAct& intended)
{
    Json question = {{"ask", "act"}};
    question.update(IntendedActJson(intended));
    return question;
}

/// The JSON of each kind of message.
struct MessageJson {
    Json operator()(const AskJob&) const { return {{"ask", "job"}}; }
    Json operator()(const AskInput&) const { return {{"ask", "input"}}; }
    Json operator()(const AskAct& ask) const { return ActQuestion(ask.intended); }
    Json operator()(const AskExists& ask) const { return {{"ask", "exists"}, {"path", TextFromBytes(ask.path)}}; }
    Json operator()(const AskNote& ask) const { return {{"ask", "mark"}, {"mark", WordOf(kPlaces, ask.place)}}; }
    Json operator()(const TellStarts& tell) const { return {{"tell", "starts"}, {"inputs", tell.inputs}}; }
    Json operator()(const TellFile& tell) const
    {
        return {{"tell", "file"}, {"record", FileRecordJson(tell.record)}};
    }
    Json operator()(const TellEnds& tell) const
    {
        return {{"tell", "ends"}, {"end", RunEndWord(tell.end)}, {"message", tell.message}};
    }
    Json operator()(const TellRemark& tell) const { return {{"tell", "remark"}, {"text", tell.text}}; }
    Json operator()(const TellReport& tell) const { return {{"tell", "report"}, {"report", tell.report}}; }
};

std::optional<HostMessage> QuestionFrom(const std::string& ask, const Json& object)
{
    if (ask == "job") return AskJob{};
    if (ask == "input") return AskInput{};
    if (ask == "exists") return AskExists{BytesAt(object, "path")};
    if (ask == "act") {
        auto intended = IntendedActFrom(object);
        if (intended) return AskAct{std::move(*intended)};
    }
    if (ask == "mark")
        if (const auto place = FromWord<LogPlace>(kPlaces, TextAt(object, "mark"))) return AskNote{*place};
    return std::nullopt;
}

std::optional<HostMessage> NewsFrom(const std::string& tell, const Json& object)
{
    if (tell == "starts") return TellStarts{static_cast<int>(IntegerAt(object, "inputs"))};
    if (tell == "remark") return TellRemark{TextAt(object, "text")};
    if (tell == "report") return TellReport{ObjectAt(object, "report")};
    if (tell == "file") {
        auto record = FileRecordFrom(ObjectAt(object, "record"));
        if (record) return TellFile{std::move(*record)};
    }
    if (tell == "ends")
        if (const auto end = RunEndFromWord(TextAt(object, "end"))) return TellEnds{*end, TextAt(object, "message")};
    return std::nullopt;
}

}  // namespace

std::string_view ToDoWord(ToDo toDo) { return WordOf(kToDo, toDo); }

ToDo ToDoFromWord(std::string_view word) { return FromWord<ToDo>(kToDo, word).value_or(ToDo::Whole); }

std::string LineOf(const HostMessage& message) { return LineOf(std::visit(MessageJson{}, message)); }

std::string ReportLine(std::string_view report)
{
    return R"({"tell":"report","report":)" + std::string(report) + "}";
}

std::optional<HostMessage> HostMessageFrom(std::string_view line)
{
    const auto object = ParseObject(line);
    if (!object) return std::nullopt;
    const std::string ask = TextAt(*object, "ask");
    return ask.empty() ? NewsFrom(TextAt(*object, "tell"), *object) : QuestionFrom(ask, *object);
}

Json JobAnswer(const Json& job) { return {{"job", job}}; }

std::optional<Json> JobFrom(const Json& answer)
{
    const auto job = answer.find("job");
    if (job == answer.end() || !job->is_object()) return std::nullopt;
    return *job;
}

Json InputAnswer(const std::optional<JobInputFile>& input)
{
    if (!input) return {{"input", nullptr}};
    return {{"input",
             {{"number", input->number},
              {"total", input->total},
              {"path", TextFromBytes(input->path)},
              {"toDo", ToDoWord(input->toDo)}}}};
}

std::optional<JobInputFile> InputFrom(const Json& answer)
{
    const Json& input = ObjectAt(answer, "input");
    JobInputFile file{.number = CountAt(input, "number"),
                      .total = CountAt(input, "total"),
                      .toDo = ToDoFromWord(TextAt(input, "toDo")),
                      .path = BytesAt(input, "path")};
    if (file.path.empty()) return std::nullopt;
    return file;
}

Json AnswerToAct(ActAnswer answer) { return {{"answer", ActAnswerWord(answer)}}; }

ActAnswer ActAnswerFrom(const Json& answer) { return ActAnswerFromWord(TextAt(answer, "answer")); }

Json ExistsAnswer(std::optional<bool> exists)
{
    Json answer = {{"exists", nullptr}};
    if (exists) answer["exists"] = *exists;
    return answer;
}

std::optional<bool> ExistsFrom(const Json& answer)
{
    const auto exists = answer.find("exists");
    if (exists == answer.end() || !exists->is_boolean()) return std::nullopt;
    return exists->get<bool>();
}
