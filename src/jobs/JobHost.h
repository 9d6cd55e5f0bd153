// What ties a job to the host that it is done for: who asks it before each act, and who tells it the events of a run.
#pragma once

#include "batchrun/RunEvents.h"
#include "protocol/Acts.h"

/// Asks the host before anything is done for good.
/// Installed as long as it lives, when the host has the jobs table; the one before comes back then.
class CJobOverseer final : public COverseer {
public:
    /// `pretends`: the job is a trial run.
    explicit CJobOverseer(bool pretends);
    CJobOverseer(const CJobOverseer&) = delete;
    CJobOverseer& operator=(const CJobOverseer&) = delete;
    ~CJobOverseer() override;

    Answer Ask(Act act, const std::string& file, const std::string& target) override;
    bool Pretends() const override { return m_pretends; }
    std::optional<bool> Exists(const std::string& path) const override;

private:
    bool m_pretends;
    bool m_installed;
    COverseer* m_before = nullptr;
};

/// Hands the events of a run to the host's jobs table, when the host has one.
class CJobReporter final : public CRunEvents {
public:
    void RunStarts(int inputs) override;
    void InputsCounted() override;
    void SequencePreflight(bool begins) override;
    void FinalActionBegins() override;
    void FileDone(const ProcessedFile& file) override;
    void RunEnds(RunEnd end, const std::string& message) override;
};
