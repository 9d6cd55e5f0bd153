#include "supervisor/resume/ResumePoint.h"

#include <algorithm>
#include <utility>

#include "platform/FileDigest.h"
#include "platform/Files.h"
#include "protocol/RenameOrder.h"

RunFacts ReadRunFacts(const ManifestHeader& manifest)
{
    const RunDescription& description = manifest.order.description;
    return {.rules = {.hasFinalAction = description.finalAction != FinalAction::Nothing,
                      .outputsPerFile = manifest.outputsPerFile,
                      .movesInputs = manifest.movesInputs},
            .reports = manifest.reports,
            .inputLeaves = VacatesInput(description.finalAction),
            .folders = manifest.reach.folders};
}

namespace {

bool Holds(const std::string& path, const std::string& sha256)
{
    return !sha256.empty() && platform::FileExists(path) && platform::Sha256OfFile(path) == sha256;
}

bool IsSamePath(const std::string& one, const std::string& other)
{
    if (one == other) return true;
    const std::string canonical = platform::CanonicalPath(one);
    return !canonical.empty() && canonical == platform::CanonicalPath(other);
}

class CLookAtDisk {
    using State = FinalActionRecord::State;

public:
    CLookAtDisk(const PlannedFile& file, const std::vector<Intent>& intents, const ResumeRules& rules)
        : m_file(file), m_intents(intents), m_rules(rules)
    {
        m_point.record.number = file.number;
        m_point.record.path = file.path;
        m_point.record.size = file.size;
        m_point.record.outcome = FileOutcome::Saved;
    }

    ResumePoint Decide(const std::optional<FileRecord>& results)
    {
        if (results) {
            m_point.record.outputs = results->outputs;
            m_point.record.sha256 = results->sha256;
            m_point.record.signaturesBroken = results->signaturesBroken;
            m_point.record.protection = results->protection;
        }
        if (m_intents.empty()) {
            m_point.left = results ? Left::FinalAction : Left::Everything;
            return std::move(m_point);
        }
        CollectOutputs();
        if (m_rules.movesInputs) {
            DecideNewName(m_intents.back());
        } else if (m_intents.back().finalAction) {
            DecideFinalAction(m_intents.back());
        } else {
            DecideOutput(m_intents.back());
        }
        return std::move(m_point);
    }

private:
    bool InFinalAction() const { return m_intents.back().finalAction; }

    /// The results that stand where they were to be written. An attempt that found its name taken left nothing.
    void CollectOutputs()
    {
        std::vector<FileOutput>& outputs = m_point.record.outputs;
        for (const Intent& intent : m_intents) {
            if (intent.finalAction || intent.act != Act::Put) continue;
            const bool inPlace = IsSamePath(intent.target, m_file.path);
            // What was saved in place may have been moved or deleted by the final action since.
            if (!Holds(intent.target, intent.sha256) && !(inPlace && InFinalAction())) continue;
            m_inPlace = m_inPlace || inPlace;
            std::erase_if(outputs, [&](const FileOutput& output) { return output.path == intent.target; });
            outputs.push_back({intent.target, intent.sha256, intent.copy, intent.size});
            if (!intent.copy && intent.protection.Known()) m_point.record.protection = intent.protection;
        }
    }

    bool HasStartedProgram() const
    {
        return std::any_of(m_intents.begin(), m_intents.end(),
                           [](const Intent& intent) { return !intent.finalAction && intent.act == Act::Start; });
    }

    // ---- the results

    void DecideOutput(const Intent& last)
    {
        const std::size_t wanted = static_cast<std::size_t>(std::max(m_rules.outputsPerFile, 1));
        const bool redo = m_rules.redoResults && !m_inPlace && !HasStartedProgram();
        const auto written = std::ranges::count(m_point.record.outputs, false, &FileOutput::copy);
        if (!redo && !last.copy && IsWritten(last) && static_cast<std::size_t>(written) >= wanted) {
            ResultsAreComplete();
            m_point.left = m_rules.hasFinalAction ? Left::FinalAction : Left::Nothing;
            return;
        }
        if (HasStartedProgram())
            return Unknowable(last.act == Act::Start ? "It is not known whether " + last.target + " was started."
                                                     : "The processing was interrupted after " + StartedProgram() +
                                                           " had been started; it is not started twice.");
        if (m_inPlace)
            return Unknowable(
                "The processing was interrupted between two results; the file has been saved in place.");
        if (last.act == Act::Move || last.act == Act::Delete) {
            if (!platform::FileExists(m_file.path))
                return Unknowable("The processing was interrupted after the file had been moved or deleted.");
        }
        TakeBackOutputs();
    }

    /// Others are moved out of the way before the file itself is, so that the file is as it was until that is begun.
    void DecideNewName(const Intent& last)
    {
        if (last.act == Act::Start) return DecideScript();
        m_point.left = Left::Everything;
        const bool isOwn = last.file == m_file.path || last.file == WaitingPlaceOf(m_file.path);
        if (!isOwn || last.act != Act::Move || !Holds(last.target, last.sha256)) return;
        const bool sourceThere = platform::NameExists(last.file) && !IsSamePath(last.file, last.target);
        if (sourceThere && (last.replaces || !Holds(last.file, last.sha256))) return;
        if (sourceThere && !platform::DeleteFile(last.file)) return;
        m_point.left = Left::Nothing;
        m_point.record.sha256 = last.sha256;
        m_point.record.outputs.push_back({last.target, last.sha256, false, last.size});
    }

    /// A script is started once the file has its new name, and never twice.
    void DecideScript()
    {
        for (const Intent& intent : m_intents) {
            if (intent.act != Act::Move || !Holds(intent.target, intent.sha256)) continue;
            if (intent.file != m_file.path && intent.file != WaitingPlaceOf(m_file.path)) continue;
            m_point.record.sha256 = intent.sha256;
            m_point.record.outputs = {{intent.target, intent.sha256, false}};
        }
        Unknowable("It has its new name. The script has been started for it, and is not started a second time.");
    }

    bool IsWritten(const Intent& intent) const
    {
        const std::vector<FileOutput>& outputs = m_point.record.outputs;
        return intent.act == Act::Put && std::any_of(outputs.begin(), outputs.end(), [&](const FileOutput& output) {
                   return output.path == intent.target && output.sha256 == intent.sha256;
               });
    }

    std::string StartedProgram() const
    {
        for (const Intent& intent : m_intents)
            if (intent.act == Act::Start) return intent.target;
        return {};
    }

    /// Names that were free are freed, so that the next attempt takes them again; what replaced something will be
    /// replaced.
    void TakeBackOutputs()
    {
        m_point.left = Left::Everything;
        for (const Intent& intent : m_intents)
            if (intent.act == Act::Put && !intent.replaces && Holds(intent.target, intent.sha256))
                m_point.takeBack.push_back(intent.target);
    }

    void ResultsAreComplete()
    {
        FileRecord& record = m_point.record;
        if (m_inPlace || record.outputs.empty()) return;
        if (record.sha256.empty()) record.sha256 = InputHash();
        if (record.sha256.empty()) return;
        const bool copied = std::any_of(record.outputs.begin(), record.outputs.end(), [&](const FileOutput& output) {
            return !output.copy && output.sha256 == record.sha256;
        });
        if (copied) record.outcome = FileOutcome::CopiedUnchanged;
    }

    std::string InputHash() const
    {
        const Intent& last = m_intents.back();
        if (last.finalAction && last.act != Act::Put && !last.sha256.empty()) return last.sha256;
        return platform::FileExists(m_file.path) ? platform::Sha256OfFile(m_file.path) : std::string();
    }

    // ---- the final action

    void DecideFinalAction(const Intent& last)
    {
        ResultsAreComplete();
        m_point.record.finalAction = {last.act, last.target, State::Unknown};
        switch (last.act) {
            case Act::Put:
                return FinalActionIs(Holds(last.target, last.sha256));
            case Act::Delete:
                return FinalActionIs(!platform::NameExists(last.file));
            case Act::Move:
                return DecideMove(last);
            case Act::Start:
                return Unknowable("It is not known whether " + last.target + " was started.");
        }
    }

    void DecideMove(const Intent& last)
    {
        const bool sourceThere = platform::NameExists(last.file);
        const bool targetComplete = Holds(last.target, last.sha256);
        if (!sourceThere && !targetComplete) {
            m_point.record.finalAction->state = State::Failed;
            return Unknowable("The file is neither where it was nor complete at " + last.target + ".");
        }
        if (!targetComplete) return FinalActionIs(false);
        // One name of one file is not both source and rest.
        if (!sourceThere || IsSamePath(last.file, last.target)) return FinalActionIs(true);
        // Who may replace something equal must ask again whether it may.
        if (last.replaces) return FinalActionIs(false);
        RemoveSource(last);
    }

    /// The move wrote or linked the target and did not get to the source.
    void RemoveSource(const Intent& last)
    {
        if (!Holds(last.file, last.sha256)) {
            m_point.record.finalAction->state = State::Failed;
            return Unknowable("The file was moved to " + last.target + ", but another one stands in its place.");
        }
        FinalActionIs(platform::DeleteFile(last.file).Ok());
    }

    void FinalActionIs(bool done)
    {
        m_point.left = done ? Left::Nothing : Left::FinalAction;
        if (done)
            m_point.record.finalAction->state = State::Done;
        else
            m_point.record.finalAction.reset();
    }

    void Unknowable(const std::string& message)
    {
        m_point.left = Left::Unknowable;
        m_point.record.outcome = FileOutcome::Incomplete;
        m_point.record.message = message;
    }

    const PlannedFile& m_file;
    const std::vector<Intent>& m_intents;
    const ResumeRules& m_rules;
    ResumePoint m_point;
    bool m_inPlace = false;
};

}  // namespace

ResumePoint FindResumePoint(const PlannedFile& file, const std::vector<Intent>& intents,
                            const std::optional<FileRecord>& results, const ResumeRules& rules)
{
    return CLookAtDisk(file, intents, rules).Decide(results);
}
