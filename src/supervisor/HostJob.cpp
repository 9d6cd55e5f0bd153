#include "supervisor/HostJob.h"

#include "platform/Interrupts.h"
#include "supervisor/Json.h"

#include <utility>

namespace {

constexpr int kWaitMilliseconds = 200;

class CHostJob {
public:
    CHostJob(CWorker& host, const std::string& job, CRunObserver& observer,
             const std::function<void(const std::string&)>& onReport)
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
        JobResult result{.end = m_host.end, .message = m_host.endMessage, .reports = std::move(m_reports)};
        result.errorLines.assign(m_host.errorLines.begin(), m_host.errorLines.end());
        if (m_host.end == "finished") result.exit = ExitClass::Fine;
        if (m_host.end.empty()) result.message = DeathMessage();
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
        } else if (const auto message = ParseObject(news.text)) {
            Answer(*message);
        }
    }

    void Answer(const Json& message)
    {
        const std::string ask = TextAt(message, "ask"), tell = TextAt(message, "tell");
        if (tell == "ends") {
            m_host.end = TextAt(message, "end");
            m_host.endMessage = TextAt(message, "message");
        } else if (tell == "remark") {
            m_observer.Remark(TextAt(message, "text"));
        } else if (tell == "report") {
            Report(LineOf(ObjectAt(message, "report")));
        } else if (ask == "job") {
            (void)m_host.child.Send("{\"job\":" + m_job + "}");
        } else if (ask == "input") {
            (void)m_host.child.Send(R"({"input":null})");
        } else if (ask == "act") {
            (void)m_host.child.Send(R"({"answer":"go"})");  // a new sequence file is somebody's document, too
        } else if (ask == "exists") {
            (void)m_host.child.Send(R"({"exists":null})");
        } else if (!ask.empty()) {
            (void)m_host.child.Send("{}");
        }
    }

    void Report(std::string json)
    {
        if (m_onReport) return m_onReport(json);
        m_reports.push_back(std::move(json));
    }

    CWorker& m_host;
    const std::string& m_job;
    CRunObserver& m_observer;
    const std::function<void(const std::string&)>& m_onReport;
    std::vector<std::string> m_reports;
    bool m_stopped = false;
};

}  // namespace

HostJobResult RunHostJob(const CWorkerStarter& starter, const std::string& place, const std::string& job,
                         int interruptsSeen, CRunObserver& observer,
                         const std::function<void(const std::string& json)>& onReport)
{
    HostJobResult result;
    const auto host = starter.Start(place, &result.job.message);
    if (!host) return result;
    CHostJob hostJob(*host, job, observer, onReport);
    hostJob.Run(interruptsSeen);
    result.job = hostJob.Result();
    host->log.Read();
    result.log = host->log.Take().lines;
    return result;
}
