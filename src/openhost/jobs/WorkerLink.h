#ifndef FERRULE_OPENHOST_JOBS_WORKER_LINK_H
#define FERRULE_OPENHOST_JOBS_WORKER_LINK_H

#include <memory>
#include <string>

#include "openhost/jobs/JobSource.h"
#include "openhost/jobs/LineStream.h"

namespace openhost {

/// The job of a worker: everything comes from, and goes to, the supervisor at the other end of two pipes; see
/// docs/runs.md. Once the supervisor is gone there is no further input and every act is refused.
class CWorkerLink final : public CJobSource {
public:
    /// Owns both descriptors.
    CWorkerLink(int input, int output) : m_lines(input, output) {}

    const std::string* Job() override;
    bool Pretends() override;
    std::optional<JobInputFile> NextInput() override;
    bool WantsRecords() const override { return true; }
    Answer MayAct(const IntendedAct& intended) override;
    std::optional<bool> Exists(const std::string& path) override;
    void RunStarts(int inputs) override;
    void FileDone(const FileRecord& record) override;
    void RunEnds(RunEnd end, std::string_view message) override;
    void LogMark(LogPlace place) override;
    void Report(std::string_view json) override;
    bool Remark(std::string_view text) override;
    bool Broken() const override { return m_gone; }

private:
    Json Ask(const HostMessage& question);
    void Tell(const HostMessage& message);
    void FetchJob();

    CLineStream m_lines;
    std::string m_job;  // empty: there is none
    bool m_jobKnown = false;
    bool m_pretends = false;
    bool m_gone = false;
};

}  // namespace openhost

#endif
