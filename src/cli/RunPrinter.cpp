#include "cli/RunPrinter.h"

#include <algorithm>

#include "cli/Printable.h"
#include "cli/Summary.h"

namespace cli {

namespace {

constexpr std::size_t kKeptUnfine = 20;

WorkDone DoneOf(const RunProgress& progress)
{
    return {.files = static_cast<std::uint64_t>(progress.filesDone),
            .bytes = progress.bytesDone,
            .notFine = static_cast<std::uint64_t>(progress.notSaved)};
}

}  // namespace

CRunPrinter::CRunPrinter(const Screen& screen, const PrintOptions& options)
    : m_screen(screen), m_options(options), m_status(screen)
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
}

void CRunPrinter::Remark(const std::string& text)
{
    if (!m_options.quiet) m_status.Message("ferrule: " + Printable(text));
}

void CRunPrinter::Warning(const std::string& text) { m_status.Message("ferrule: warning: " + Printable(text)); }

void CRunPrinter::Tick(const RunProgress& progress) { ShowProgress(progress); }

void CRunPrinter::ShowProgress(const RunProgress& progress)
{
    if (m_options.quiet || progress.filesTotal <= 0) return;
    const std::uint64_t now = m_screen.milliseconds();
    if (!m_meter.Begun())
        m_meter.Begin(static_cast<std::uint64_t>(progress.filesTotal), progress.bytesTotal, DoneOf(progress), now);
    m_meter.Update(DoneOf(progress));
    m_status.Show([&](std::size_t width) { return m_meter.Bar(now, width, m_screen.colour); },
                  [&] { return m_meter.Sentence(now); });
}

}  // namespace cli
