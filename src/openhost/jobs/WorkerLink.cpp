#include "openhost/jobs/WorkerLink.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/ByteText.h"
#include "platform/TemporaryNames.h"

namespace openhost {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kActWords[] = {"put", "move", "delete", "start"};
constexpr const char* kEndWords[] = {"finished", "not-started", "broken"};
constexpr const char* kMarkWords[] = {"sequence-preflight-begins", "sequence-preflight-ends"};

template <std::size_t count>
const char* WordOf(const char* const (&words)[count], int index, int fallback)
{
    return words[index >= 0 && index < static_cast<int>(count) ? index : fallback];
}

/// The member, or `fallback` when it is missing or of another type.
template <class T>
T Member(const Json& object, const char* name, T fallback)
{
    const auto found = object.find(name);
    if (found == object.end()) return fallback;
    if constexpr (std::is_same_v<T, bool>)
        return found->is_boolean() ? found->template get<bool>() : fallback;
    else if constexpr (std::is_same_v<T, int>)
        return found->is_number_integer() ? found->template get<int>() : fallback;
    else
        return found->is_string() ? found->template get<T>() : fallback;
}

bool IsOneLineOfJson(std::string_view text)
{
    return text.find_first_of("\r\n") == std::string_view::npos && Json::accept(text);
}

}  // namespace

/// One answer; an empty object once the supervisor is gone.
class CWorkerLink::CAnswer {
public:
    explicit CAnswer(Json answer) : object(std::move(answer)) {}
    Json object;
};

CWorkerLink::CAnswer CWorkerLink::Ask(const std::string& question)
{
    if (!m_gone) {
        Tell(question);
        if (const auto line = m_lines.NextLine()) {
            Json object = Json::parse(*line, nullptr, false);
            if (object.is_object()) return CAnswer(std::move(object));
        }
        m_gone = true;  // what does not speak the language is not the supervisor
    }
    return CAnswer(Json::object());
}

void CWorkerLink::Tell(const std::string& line)
{
    m_lines.Put(line);
    if (!m_lines.Flush()) m_gone = true;
}

void CWorkerLink::FetchJob()
{
    if (m_jobKnown) return;
    m_jobKnown = true;
    const CAnswer answer = Ask(R"({"ask":"job"})");
    const auto job = answer.object.find("job");
    if (job == answer.object.end() || !job->is_object()) return;
    m_job = job->dump();
    m_pretends = Member(*job, "dryRun", false);
    std::string run = Member(*job, "run", std::string());
    std::erase_if(run, [](unsigned char letter) { return !std::isalnum(letter); });
    if (!run.empty()) platform::SetTemporaryTag(run);
}

const std::string* CWorkerLink::Job()
{
    FetchJob();
    return m_job.empty() ? nullptr : &m_job;
}

bool CWorkerLink::Pretends()
{
    FetchJob();
    return m_pretends;
}

std::optional<JobInputFile> CWorkerLink::NextInput()
{
    const CAnswer answer = Ask(R"({"ask":"input"})");
    const auto input = answer.object.find("input");
    if (input == answer.object.end() || !input->is_object()) return std::nullopt;
    JobInputFile file;
    file.number = Member(*input, "number", 0);
    file.total = Member(*input, "total", 0);
    file.onlyFinalAction = Member(*input, "toDo", std::string()) == "final-action";
    file.path = BytesFromText(Member(*input, "path", std::string()));
    if (file.path.empty()) return std::nullopt;
    return file;
}

CJobSource::Answer CWorkerLink::MayAct(const IntendedAct& intended)
{
    const Json question = {{"ask", "act"},
                           {"number", intended.number},
                           {"purpose", intended.finalAction ? "final-action" : "output"},
                           {"act", WordOf(kActWords, static_cast<int>(intended.act), 0)},
                           {"file", TextFromBytes(intended.file)},
                           {"target", TextFromBytes(intended.target)},
                           {"sha256", intended.sha256}};
    const std::string said = Member(Ask(question.dump()).object, "answer", std::string());
    if (said == "pretend") return Answer::Pretend;
    // A trial does nothing, whatever it is allowed to.
    if (said == "go") return m_pretends ? Answer::Pretend : Answer::Go;
    return Answer::Refuse;
}

std::optional<bool> CWorkerLink::Exists(const std::string& path)
{
    const CAnswer answer = Ask(Json{{"ask", "exists"}, {"path", TextFromBytes(path)}}.dump());
    const auto exists = answer.object.find("exists");
    if (exists == answer.object.end() || !exists->is_boolean()) return std::nullopt;
    return exists->get<bool>();
}

void CWorkerLink::RunStarts(int inputs) { Tell(Json{{"tell", "starts"}, {"inputs", inputs}}.dump()); }

void CWorkerLink::FileDone(const FileRecord& record)
{
    Tell(R"({"tell":"file","record":)" + RecordLine(record) + "}");
}

void CWorkerLink::RunEnds(int end, std::string_view message)
{
    Tell(Json{{"tell", "ends"}, {"end", WordOf(kEndWords, end, 2)}, {"message", TextFromBytes(message)}}.dump());
}

void CWorkerLink::LogMark(int mark)
{
    if (mark < 0 || mark >= static_cast<int>(std::size(kMarkWords))) return;
    Ask(Json{{"ask", "mark"}, {"mark", kMarkWords[mark]}}.dump());
}

/// There may be very many: they wait for each other.
void CWorkerLink::Report(std::string_view json)
{
    std::string text(json);
    if (!IsOneLineOfJson(text)) {
        const Json parsed = Json::parse(text, nullptr, false);
        if (parsed.is_discarded()) {
            Remark("a report is no JSON and is left out");
            return;
        }
        text = parsed.dump();
    }
    m_lines.Put(R"({"tell":"report","report":)" + text + "}");
}

bool CWorkerLink::Remark(std::string_view text)
{
    Tell(Json{{"tell", "remark"}, {"text", TextFromBytes(text)}}.dump());
    return !m_gone;
}

}  // namespace openhost
