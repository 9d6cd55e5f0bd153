#include "cli/RunPrinter.h"

#include <algorithm>
#include <cmath>

#include "base/Text.h"
#include "cli/Summary.h"

namespace cli {

namespace {

/// What opening and saving an empty document costs, in bytes.
constexpr double kWorkOfEachFile = 200'000;
/// Before this the speed says little.
constexpr double kFirstEstimateSeconds = 1;
constexpr std::size_t kSmallestBar = 8;
constexpr std::size_t kLargestBar = 40;
constexpr char kRed[] = "\x1b[31m";
constexpr char kPlain[] = "\x1b[0m";

double Work(std::uint64_t files, std::uint64_t bytes)
{
    return static_cast<double>(bytes) + static_cast<double>(files) * kWorkOfEachFile;
}

std::string DrawBar(double fraction, std::size_t cells)
{
    const auto filled = static_cast<std::size_t>(fraction * static_cast<double>(cells));
    std::string bar(filled, '=');
    if (filled < cells) bar += '>' + std::string(cells - filled - 1, ' ');
    return "[" + bar + "]";
}

}  // namespace

std::string Duration(std::uint64_t seconds)
{
    const auto hours = static_cast<unsigned long long>(seconds / 3600);
    const auto minutes = static_cast<unsigned>(seconds / 60 % 60), rest = static_cast<unsigned>(seconds % 60);
    return hours > 0 ? FormatText("%llu:%02u:%02u", hours, minutes, rest) : FormatText("%u:%02u", minutes, rest);
}

void CProgressMeter::Begin(std::uint64_t totalFiles, std::uint64_t totalBytes, const WorkDone& before,
                           std::uint64_t nowMs)
{
    m_begun = true;
    m_totalFiles = totalFiles;
    m_totalBytes = totalBytes;
    m_before = m_done = before;
    m_startMs = nowMs;
}

double CProgressMeter::Fraction() const
{
    const double total = Work(m_totalFiles, m_totalBytes);
    return total > 0 ? std::clamp(Work(m_done.files, m_done.bytes) / total, 0.0, 1.0) : 0.0;
}

std::string CProgressMeter::Percent() const
{
    // Never 100 before the last file is done.
    const int percent = m_done.files >= m_totalFiles ? 100 : std::min(99, static_cast<int>(Fraction() * 100));
    return FormatText("%3d %%", percent);
}

std::string CProgressMeter::NotFine() const { return m_done.notFine ? Grouped(m_done.notFine) + " not fine" : ""; }

double CProgressMeter::Seconds(std::uint64_t nowMs) const
{
    return nowMs > m_startMs ? static_cast<double>(nowMs - m_startMs) / 1000 : 0;
}

std::string CProgressMeter::Speed(std::uint64_t nowMs, const char* unit) const
{
    const double seconds = Seconds(nowMs);
    if (seconds < kFirstEstimateSeconds || m_done.files <= m_before.files) return {};
    const double speed = static_cast<double>(m_done.files - m_before.files) / seconds;
    const std::string number =
        speed < 10 ? FormatText("%.1f", speed) : Grouped(static_cast<std::uint64_t>(std::llround(speed)));
    return number + unit;
}

std::string CProgressMeter::TimeLeft(std::uint64_t nowMs) const
{
    const double seconds = Seconds(nowMs);
    const double done = Work(m_done.files, m_done.bytes);
    const double doneNow = done - Work(m_before.files, m_before.bytes);
    if (seconds < kFirstEstimateSeconds || doneNow <= 0 || m_done.files >= m_totalFiles) return {};
    const double left = std::max(0.0, Work(m_totalFiles, m_totalBytes) - done) * seconds / doneNow;
    return left < 1e9 ? Duration(static_cast<std::uint64_t>(std::ceil(left))) + " left" : std::string();
}

std::string CProgressMeter::Bar(std::uint64_t nowMs, std::size_t width, bool colour) const
{
    const std::string notFine = NotFine();
    // In the order of importance, which is that on the screen, too.
    const std::string pieces[] = {Percent(), Grouped(m_done.files) + "/" + Grouped(m_totalFiles) + " files", notFine,
                                  TimeLeft(nowMs), Speed(nowMs, "/s")};
    std::string text;
    std::size_t columns = 0;
    for (const std::string& piece : pieces) {
        if (piece.empty()) continue;
        const std::size_t gap = columns > 0 ? 2 : 0;
        if (columns + gap + piece.size() > width) break;
        columns += gap + piece.size();
        text += std::string(gap, ' ') + (colour && &piece == &pieces[2] ? kRed + piece + kPlain : piece);
    }
    const std::size_t frame = 3;  // brackets and a blank
    if (columns + frame + kSmallestBar > width) return text;
    return DrawBar(Fraction(), std::min(kLargestBar, width - columns - frame)) + " " + text;
}

std::string CProgressMeter::Sentence(std::uint64_t nowMs) const
{
    std::string text = Grouped(m_done.files) + " of " + Grouped(m_totalFiles) + " files (" + Trim(Percent()) + ")";
    for (const std::string& piece : {NotFine(), Speed(nowMs, " files/s"), TimeLeft(nowMs)})
        if (!piece.empty()) text += ", " + piece;
    return text;
}

namespace {

constexpr std::size_t kKeptUnfine = 20;

WorkDone DoneOf(const RunProgress& progress)
{
    return {.files = static_cast<std::uint64_t>(progress.filesDone),
            .bytes = progress.bytesDone,
            .notFine = static_cast<std::uint64_t>(progress.notSaved)};
}

}  // namespace

void CRunProgressLine::Show(const RunProgress& progress)
{
    if (progress.filesTotal <= 0) return;
    const std::uint64_t now = m_screen.milliseconds();
    if (!m_meter.Begun())
        m_meter.Begin(static_cast<std::uint64_t>(progress.filesTotal), progress.bytesTotal, DoneOf(progress), now);
    m_meter.Update(DoneOf(progress));
    m_status.Show([&](std::size_t width) { return m_meter.Bar(now, width, m_screen.colour); },
                  [&] { return m_meter.Sentence(now); });
}

CRunPrinter::CRunPrinter(const Screen& screen, const PrintOptions& options)
    : m_screen(screen), m_options(options), m_line(screen), m_status(m_line.Status())
{
}

void CRunPrinter::FilePlanned(const PlannedFile& file)
{
    if (m_options.quiet) return;
    const auto sentence = [&] {
        return Counted(static_cast<std::uint64_t>(file.number), "file", "files") + " found so far";
    };
    m_status.Show([&](std::size_t width) { return sentence().substr(0, width); }, sentence);
}

void CRunPrinter::Planned(const PlanSummary& plan)
{
    for (const std::string& warning : plan.warnings) Warning(warning);
    if (m_options.quiet) return;
    const int jobs = plan.oneWorker || m_options.dryRun ? 1 : std::min(m_options.jobs, std::max(1, plan.total));
    const std::string part = m_options.part.empty() ? "" : "Part " + m_options.part + " of ";
    m_status.Message(part + PlanSentence(plan) + ", " +
                     Counted(static_cast<std::uint64_t>(jobs), "worker", "workers"));
    if (plan.oneWorker && m_options.jobs > 1) m_status.Message("One worker only: " + plan.oneWorkerReason);
}

void CRunPrinter::FileDone(const FileRecord& record, const RunProgress& progress)
{
    if (record.signaturesBroken) ++m_brokenSignatures;
    if (record.outcome != FileOutcome::Saved) {
        ++m_unfineCount;
        if (m_unfine.size() < kKeptUnfine) m_unfine.push_back({record.path, record.outcome, record.message});
        // Without a summary they are told at once, and all of them.
        if (m_options.quiet) m_status.Message("ferrule: " + UnfineText(record.path, record.outcome, record.message));
    }
    if (m_options.dryRun && !m_options.recordToData) *m_screen.data << PretendedText(record);
    ShowProgress(progress);
}

void CRunPrinter::RecordLine(const std::string& json)
{
    if (m_options.recordToData) *m_screen.data << json << '\n';
    if (m_recordTaker) m_recordTaker(json);
}

void CRunPrinter::Remark(const std::string& text)
{
    if (!m_options.quiet) m_status.Message("ferrule: " + Printable(text));
}

void CRunPrinter::Warning(const std::string& text) { m_status.Message("ferrule: warning: " + Printable(text)); }

void CRunPrinter::Tick(const RunProgress& progress) { ShowProgress(progress); }

}  // namespace cli
