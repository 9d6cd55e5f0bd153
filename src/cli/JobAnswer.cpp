#include "cli/JobAnswer.h"

#include <ostream>

#include "base/Text.h"
#include "cli/RunArguments.h"
#include "cli/Summary.h"
#include "supervisor/Supervisor.h"

namespace cli {

namespace {

/// Tells warnings and remarks of a host that does one small job.
class CJobPrinter final : public CRunObserver {
public:
    explicit CJobPrinter(const Screen& screen) : m_screen(screen) {}
    void Remark(const std::string& text) override { *m_screen.messages << "ferrule: " << Printable(text) << '\n'; }
    void Warning(const std::string& text) override { Remark("warning: " + text); }

private:
    const Screen& m_screen;
};

}  // namespace

std::optional<Json> AnswerOfJob(const CArguments& arguments, const Json& job, const Screen& screen)
{
    CJobPrinter printer(screen);
    const JobResult result = RunJob(ReadEngine(arguments), LineOf(job), printer);
    for (const std::string& report : result.reports) {
        const Json answer = Json::parse(report, nullptr, false);
        if (result.exit == ExitClass::Fine && answer.is_object() && answer.contains("answer"))
            return answer["answer"];
    }
    if (result.diedEarly)
        for (const std::string& line : result.errorLines) *screen.messages << Printable(line) << '\n';
    const std::string message = result.message.empty() ? "the host answered nothing" : result.message;
    *screen.messages << "ferrule: " << PrintableLines(message) << '\n';
    return std::nullopt;
}

}  // namespace cli
