#include "supervisor/plan/HostJob.h"

#include <utility>
#include <variant>

#include "platform/ThisProcess.h"
#include "protocol/Messages.h"

namespace {

constexpr int kWaitMilliseconds = 200;

class CHostJob {
public:
    CHostJob(CWorker& host, const std::string& job, CRunObserver& observer,
             const std::function<void(const Json&)>& onReport)
        : m_host(host), m_job(job), m_observer(observer), m_onReport(onReport)
    {
    }

    void Run(int interruptsSeen)
    {
        platform::CChildWatch watch;
        while (!m_host.gone) {
            const auto news = watch.Wait({&m_host.child}, kWaitMilliseconds);
            if (news) Handle(*news);
            m_observer.Tick({});
            if (platform::Interrupts() == interruptsSeen || m_stopped) continue;
            m_stopped = true;
            m_host.child.Kill();
        }
    }

    JobResult Result()
    {
        JobResult result{.message = m_host.endMessage, .reports = std::move(m_reports)};
        result.errorLines.assign(m_host.errorLines.begin(), m_host.errorLines.end());
        if (m_host.end == RunEnd::Finished) result.exit = ExitClass::Fine;
        result.diedEarly = !m_host.end;
        if (result.diedEarly) result.message = DeathMessage();
        if (m_stopped) result = {.exit = ExitClass::Stopped, .message = "Stopped."};
        return result;
    }

private:
    std::string DeathMessage() const
    {
        std::string message = "The host " + EndingText(m_host.child.Ending()) + " before the job was done.";
        for (const std::string& line : m_host.errorLines) message += "\n" + line;
        return message;
    }

    void Handle(const platform::ChildNews& news)
    {
        if (news.event == platform::ChildEvent::Ended) {
            m_host.gone = true;
        } else if (news.event == platform::ChildEvent::Error) {
            AddErrorLine(m_host.errorLines, news.text);
        } else if (const auto message = HostMessageFrom(news.text)) {
            std::visit([this](const auto& said) { this->Answer(said); }, *message);
        }
    }

    void Answer(const TellEnds& tell)
    {
        m_host.end = tell.end;
        m_host.endMessage = tell.message;
    }
    void Answer(const TellRemark& tell) { m_observer.Remark(tell.text); }
    void Answer(const TellReport& tell)
    {
        if (m_onReport) return m_onReport(tell.report);
        m_reports.push_back(LineOf(tell.report));
    }
    static void Answer(const TellStarts&) {}
    static void Answer(const TellFile&) {}
    void Answer(const AskJob&) { Send("{\"job\":" + m_job + "}"); }
    void Answer(const AskInput&) { Send(LineOf(InputAnswer(std::nullopt))); }
    // A new sequence file is somebody's document, too.
    void Answer(const AskAct&) { Send(LineOf(AnswerToAct(ActAnswer::Go))); }
    void Answer(const AskExists&) { Send(LineOf(ExistsAnswer(std::nullopt))); }
    void Answer(const AskNote& ask)
    {
        m_host.log.Note(ask.place);
        Send("{}");
    }

    /// A host that cannot be written to is going to end, which comes as news of its own.
    void Send(const std::string& line) { (void)m_host.child.Send(line); }

    CWorker& m_host;
    const std::string& m_job;
    CRunObserver& m_observer;
    const std::function<void(const Json&)>& m_onReport;
    std::vector<std::string> m_reports;
    bool m_stopped = false;
};

}  // namespace

HostJobResult RunHostJob(const CWorkerStarter& starter, const std::string& place, const std::string& job,
                         int interruptsSeen, CRunObserver& observer, const std::function<void(const Json&)>& onReport)
{
    HostJobResult result;
    const auto host = starter.Start(place, &result.job.message);
    if (!host) return result;
    CHostJob hostJob(*host, job, observer, onReport);
    hostJob.Run(interruptsSeen);
    result.job = hostJob.Result();
    host->log.Read();
    result.preamble = host->log.TakePreamble();
    result.log = host->log.Take().lines;
    return result;
}
