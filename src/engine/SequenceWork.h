#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/CommandList.h"
#include "engine/FileRun.h"
#include "engine/Work.h"
#include "sequence/Sequence.h"

class CSequenceWork final : public CWork {
public:
    /// `path`: of the sequence file, without quotes.
    explicit CSequenceWork(std::string path) : m_path(std::move(path)) {}
    /// One that is loaded already.
    explicit CSequenceWork(CSequence sequence) : m_sequence(std::move(sequence)) {}

    [[nodiscard]] std::string Load(CLogWriter& log) override;
    [[nodiscard]] std::string Refusal(CLogWriter& log) override;
    [[nodiscard]] std::vector<std::string> Extensions(CLogWriter& log) const override;
    [[nodiscard]] std::string InputPlaces(const ExecutorSettings& settings,
                                          const std::vector<std::string>& extensions, Asking asking, CLogWriter& log,
                                          const TakePlace& take) const override;
    /// Those of a sequence that says it takes a folder but lists places as for files, as the XML form does with the
    /// folders it names.
    [[nodiscard]] std::vector<std::string> FurtherInputPlaces() const override;
    [[nodiscard]] std::vector<std::string> OwnOutputFolders() const override;
    [[nodiscard]] WorkFacts Facts(const PlanRequest& request) const override;
    /// The commands live until the next file or until this object goes.
    void Begin(const WorkServices& services) override;
    [[nodiscard]] ProcessedFile Process(const std::string& path, int number) override;
    [[nodiscard]] std::string StopReason() const override { return m_stopReason; }
    void Finish() override;

private:
    std::string m_path;
    std::optional<CSequence> m_sequence;
    CommandList m_commands;
    std::optional<RunContext> m_run;
    std::string m_stopReason;
};
