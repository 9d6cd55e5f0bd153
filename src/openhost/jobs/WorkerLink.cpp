#include "openhost/jobs/WorkerLink.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "base/Text.h"
#include "platform/AtomicFile.h"

namespace openhost {

namespace {

constexpr std::size_t kWritePiece = 64 * 1024;

/// False when the reader is gone.
bool WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto piece = static_cast<unsigned>(std::min(bytes.size(), kWritePiece));
        const auto written = ::write(descriptor, bytes.data(), piece);
        if (written < 0 && errno != EINTR) return false;
        if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

CLineStream::~CLineStream()
{
    Flush();
    ::close(m_input);
    ::close(m_output);
}

void CLineStream::Put(std::string_view line)
{
    m_waiting += line;
    m_waiting += '\n';
    if (m_waiting.size() >= kWritePiece) Flush();
}

bool CLineStream::Flush()
{
    if (m_writable) m_writable = WriteAll(m_output, m_waiting);
    m_waiting.clear();
    return m_writable;
}

std::optional<std::string> CLineStream::NextLine()
{
    std::size_t end;
    for (std::size_t searched = m_next; (end = m_read.find('\n', searched)) == std::string::npos;) {
        searched = m_read.size();
        std::array<char, 4096> part;
        const auto length = ::read(m_input, part.data(), part.size());
        if (length < 0 && errno == EINTR) continue;
        if (length <= 0) return std::nullopt;
        m_read.append(part.data(), static_cast<std::size_t>(length));
    }
    std::string line = m_read.substr(m_next, end - m_next);
    m_next = end + 1;
    if (m_next == m_read.size()) {
        m_read.clear();
        m_next = 0;
    }
    return line;
}

/// One answer; an empty object once the supervisor is gone.
Json CWorkerLink::Ask(const HostMessage& question)
{
    if (!m_gone) {
        Tell(question);
        if (const auto line = m_lines.NextLine())
            if (auto answer = ParseObject(*line)) return std::move(*answer);
        m_gone = true;  // what does not speak the language is not the supervisor
    }
    return Json::object();
}

void CWorkerLink::Tell(const HostMessage& message)
{
    m_lines.Put(LineOf(message));
    if (!m_lines.Flush()) m_gone = true;
}

void CWorkerLink::FetchJob()
{
    if (m_jobKnown) return;
    m_jobKnown = true;
    const auto job = JobFrom(Ask(AskJob{}));
    if (!job) return;
    m_job = LineOf(*job);
    m_pretends = FlagAt(*job, "dryRun");
    if (const auto order = RunOrderFrom(*job)) {
        m_keeping = order->keeping;
        m_hashes = order->hashes || !order->dryRun;
    }
    std::string run = TextAt(*job, "run");
    std::erase_if(run, [](unsigned char letter) { return !std::isalnum(letter); });
    if (!run.empty()) platform::SetTemporaryTag(run);
}

const std::string* CWorkerLink::Job()
{
    FetchJob();
    return m_job.empty() ? nullptr : &m_job;
}

bool CWorkerLink::WantsHashes()
{
    FetchJob();
    return m_hashes;
}

bool CWorkerLink::Pretends()
{
    FetchJob();
    return m_pretends;
}

Keeping CWorkerLink::KeepsOriginals()
{
    FetchJob();
    return m_keeping;
}

std::optional<JobInputFile> CWorkerLink::NextInput() { return InputFrom(Ask(AskInput{})); }

CJobSource::Answer CWorkerLink::MayAct(const IntendedAct& intended)
{
    const Answer answer = ActAnswerFrom(Ask(AskAct{intended}));
    // A trial does nothing, whatever it is allowed to.
    return answer == Answer::Go && m_pretends ? Answer::Pretend : answer;
}

std::optional<bool> CWorkerLink::Exists(const std::string& path) { return ExistsFrom(Ask(AskExists{path})); }

void CWorkerLink::RunStarts(int inputs) { Tell(TellStarts{inputs}); }

void CWorkerLink::FileDone(const FileRecord& record) { Tell(TellFile{record}); }

void CWorkerLink::RunEnds(RunEnd end, std::string_view message) { Tell(TellEnds{end, TextFromBytes(message)}); }

void CWorkerLink::LogMark(LogPlace place) { (void)Ask(AskNote{place}); }

/// There may be very many: they wait for each other.
void CWorkerLink::Report(std::string_view json)
{
    const bool oneLine = json.find('\n') == std::string_view::npos && json.find('\r') == std::string_view::npos;
    if (oneLine && Json::accept(json)) return m_lines.Put(ReportLine(json));
    Json parsed = Json::parse(json, nullptr, false);
    if (parsed.is_discarded())
        Remark("a report is no JSON and is left out");
    else
        m_lines.Put(LineOf(HostMessage(TellReport{std::move(parsed)})));
}

bool CWorkerLink::Remark(std::string_view text)
{
    Tell(TellRemark{TextFromBytes(text)});
    return !m_gone;
}

}  // namespace openhost
