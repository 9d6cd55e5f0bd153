#include "supervisor/plan/Planning.h"

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <unordered_set>
#include <utility>

#include "platform/FileDigest.h"
#include "platform/Files.h"
#include "protocol/Json.h"
#include "protocol/RunDescription.h"
#include "supervisor/journal/JournalIndex.h"
#include "supervisor/journal/Manifest.h"
#include "supervisor/plan/HostJob.h"

namespace {

/// The manifest as it is, then what is new of another one.
class CManifestWithNewFiles {
public:
    CManifestWithNewFiles(const ManifestHeader& header, const CJournalIndex& journal)
        : m_header(header), m_journal(journal)
    {
    }

    /// False: nothing has changed on disk.
    bool Write(const std::string& manifestPath, const std::string& otherPath)
    {
        CManifestWriter writer(manifestPath);
        if (!CopyKnown(manifestPath, writer) || !AddNew(otherPath, writer)) return false;
        return writer.Finish(m_header).Ok();
    }

private:
    bool CopyKnown(const std::string& path, CManifestWriter& writer)
    {
        CManifestReader reader;
        if (!reader.Open(path)) return false;
        while (const auto file = reader.Next()) {
            m_known.insert(std::hash<std::string>{}(file->path));
            m_lastGroup = std::max(m_lastGroup, file->group);
            writer.Add(*file);
        }
        return reader.Problem().empty();
    }

    bool AddNew(const std::string& path, CManifestWriter& writer)
    {
        CManifestReader reader;
        const auto header = reader.Open(path);
        if (!header) return false;
        m_header.unreadableFolders = header->unreadableFolders;
        while (auto file = reader.Next()) {
            if (m_known.contains(std::hash<std::string>{}(file->path)) || m_journal.HasTarget(file->path)) continue;
            file->number = ++m_header.total;
            if (file->group != 0) file->group += m_lastGroup;
            m_header.bytes += file->size;
            writer.Add(*file);
        }
        return reader.Problem().empty();
    }

    ManifestHeader m_header;
    const CJournalIndex& m_journal;
    std::unordered_set<std::size_t> m_known;  // hashes of paths
    std::uint32_t m_lastGroup = 0;
};

/// Nothing of a plan that is only looked through.
class CSilence final : public CRunObserver {};

}  // namespace

void AddLeftOutFiles(const CWorkerStarter& starter, const RunDescription& request, const std::string& manifestPath,
                     const std::string& journalPath, int interruptsSeen, CRunObserver& observer)
{
    CManifestReader manifest;
    const auto header = manifest.Open(manifestPath);
    if (!header || header->unreadableFolders == 0) return;
    CDoneIndex done(header->total);
    CJournalIndex journal(done);
    if (!ReadJournal(journalPath, header->order.run, journal)) return;  // the run itself says why
    journal.Complete();
    const std::string otherPath = manifestPath + ".again";
    CSilence silence;
    CPlanning planning(starter, request, interruptsSeen, silence);
    const bool planned = planning.Run(otherPath, header->order.run, false);
    if (!planned || !CManifestWithNewFiles(*header, journal).Write(manifestPath, otherPath))
        observer.Warning("Folders that could not be read when the run was planned are left out still. " +
                         planning.Failure().message);
    (void)platform::DeleteFile(otherPath);
}

namespace {

constexpr std::size_t kRunIdLength = 16;

}  // namespace

std::string NewRunId()
{
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::uniform_int_distribution<std::size_t> place(0, kLetters.size() - 1);
    std::string id;
    while (id.size() < kRunIdLength) id += kLetters[place(random)];
    return id;
}

bool CPlanning::Run(const std::string& manifestPath, const std::string& run, bool dryRun, bool hashes)
{
    std::optional<CManifestWriter> manifest;
    if (!manifestPath.empty()) manifest.emplace(manifestPath);
    CManifestWriter* writer = manifest ? &*manifest : nullptr;
    // Before the host reads it, so that a change while it plans is noticed later.
    m_planned.header.workHashes.clear();
    for (const WorkFile& file : m_request.work.files)
        m_planned.header.workHashes.push_back(platform::Sha256OfFile(file.path));
    HostJobResult host = RunHostJob(
        m_starter, "plan", LineOf(RunOrderJson({.kind = RunOrder::Kind::Plan, .run = run, .description = m_request})),
        m_interruptsSeen, m_observer, [&](const Json& report) { OnReport(report, writer); });
    if (host.job.exit != ExitClass::Fine) {
        m_planned.log = std::move(host.preamble);
        m_planned.log.insert(m_planned.log.end(), host.log.begin(), host.log.end());
        return Fail(host.job.exit, std::move(host.job.message));
    }
    if (!m_refusal.empty()) return Fail(ExitClass::Broken, m_refusal);
    if (m_disordered || m_planned.summary.json.empty() || m_files != m_planned.summary.total)
        return Fail(ExitClass::Broken, "The host's plan is incomplete.");
    PlanSummary& summary = m_planned.summary;
    ManifestHeader& header = m_planned.header;
    summary.run = run;
    header.order = {.run = run, .dryRun = dryRun, .hashes = hashes, .description = m_request};
    header.reach.run = run;
    header.reach.kept = KeptFolderOf(m_request, run);
    header.total = summary.total;
    header.bytes = summary.bytes;
    header.oneWorker = summary.oneWorker;
    header.oneWorkerReason = summary.oneWorkerReason;
    header.preamble = std::move(host.preamble);
    header.epilogue = std::move(host.log);
    if (!writer) return true;
    const platform::FileResult written = writer->Finish(header);
    if (written) return true;
    return Fail(ExitClass::Broken, "The manifest " + manifestPath + " cannot be written (" +
                                       platform::ErrorText(written.errorNumber) + ").");
}

bool CPlanning::Fail(ExitClass exit, std::string message)
{
    m_failure = {exit, std::move(message)};
    return false;
}

void CPlanning::OnInput(const Json& input, CManifestWriter* manifest)
{
    const auto file = PlannedFileFrom(input);
    m_disordered = m_disordered || !file || file->number != m_files + 1;
    if (m_disordered) return;
    ++m_files;
    m_planned.summary.bytes += file->size;
    if (manifest) manifest->Add(*file);
    if (m_guard && m_refusal.empty()) m_refusal = m_guard->ProblemWithInput(*file);
    m_observer.FilePlanned(*file);
}

void CPlanning::OnReport(const Json& report, CManifestWriter* manifest)
{
    PlanSummary& summary = m_planned.summary;
    if (const Json* const inputs = ArrayAt(report, "inputs")) {
        for (const Json& input : *inputs) OnInput(input, manifest);
    } else if (report.contains("plan")) {
        PlanReport plan = PlanReportFrom(ObjectAt(report, "plan"));
        summary.json = LineOf(report);
        summary.total = plan.total;
        summary.oneWorker = !plan.oneWorkerReason.empty();
        summary.oneWorkerReason = std::move(plan.oneWorkerReason);
        summary.tooYoung = plan.tooYoung;
        summary.warnings = std::move(plan.warnings);
        m_planned.header.unreadableFolders = plan.unreadableFolders;
        m_planned.header.outputsPerFile = plan.outputsPerFile;
        m_planned.header.reports = plan.reports;
        m_planned.header.startsPrograms = plan.startsPrograms;
        m_planned.header.movesInputs = plan.movesInputs;
        m_planned.header.reach = std::move(plan.reach);
    }
}
