#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "openhost/jobs/Jobs.h"

namespace openhost {

/// Lines to and from another program. Owns both descriptors.
class CLineStream {
public:
    CLineStream(int input, int output) : m_input(input), m_output(output) {}
    ~CLineStream();
    CLineStream(const CLineStream&) = delete;
    CLineStream& operator=(const CLineStream&) = delete;

    /// Takes standard input and output away from the rest of the process, so that nothing else can get between the
    /// lines: reading finds the end at once, and what is written to standard output goes to standard error. Programs
    /// started later do not inherit the lines. Null when the system refuses.
    static std::optional<std::pair<int, int>> TakeStandardStreams();

    /// Keeps the line until Flush, or until a good deal has come together.
    void Put(std::string_view line);
    /// False, now and from then on, when nobody reads any more.
    bool Flush();
    /// Waits. Nothing at the end of the input; a last line without its end does not count.
    std::optional<std::string> NextLine();

private:
    int m_input, m_output;
    std::string m_waiting;  // to be written
    std::string m_read;     // read, but not handed out; begins at m_next
    std::size_t m_next = 0;
    bool m_writable = true;
};

/// The job of a worker: everything comes from, and goes to, the supervisor at the other end of two pipes; see
/// docs/runs.md. Once the supervisor is gone there is no further input and every act is refused.
class CWorkerLink final : public CJobSource {
public:
    /// Owns both descriptors.
    CWorkerLink(int input, int output) : m_lines(input, output) {}

    const std::string* Job() override;
    bool Pretends() override;
    bool WantsHashes() override;
    std::optional<JobInputFile> NextInput() override;
    bool WantsRecords() const override { return true; }
    Keeping KeepsOriginals() override;
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
    Keeping m_keeping;
    bool m_jobKnown = false;
    bool m_pretends = false;
    bool m_hashes = true;
    bool m_gone = false;
};

}  // namespace openhost
