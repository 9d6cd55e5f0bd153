// The user's log as a run over many files writes it.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/Log.h"
#include "platform/Files.h"
#include "protocol/RunReach.h"
#include "supervisor/RunObserver.h"
#include "supervisor/journal/Journal.h"

/// A file that can be read while it grows.
class CRecordWriter {
public:
    /// Creates the file, or empties it. Without one, lines only go to the observer, who is borrowed.
    explicit CRecordWriter(CRunObserver& observer) : m_observer(observer) {}
    platform::FileResult Open(const std::string& path);
    /// What the first line says of the run as a whole: what it may have touched, how many files it has in all parts,
    /// and whether it is a trial.
    void SetRun(RunReach reach, int total, bool trial)
    {
        m_reach = std::move(reach);
        m_total = total;
        m_trial = trial;
    }
    void Add(const FileRecord& record);
    /// The first failure of writing.
    platform::FileResult Result() const { return {m_error}; }
    platform::FileResult Close();

private:
    CRunObserver& m_observer;
    std::optional<RunReach> m_reach;  // until the first line is written
    int m_total = 0;
    bool m_trial = false;
    platform::Stream m_file;
    int m_error = 0;
};

/// One preamble, the blocks of the files in the order in which they are given, one end; lines numbered through.
class CRunLog {
public:
    /// Appends to the file; a large one is set aside first. False: closed, and everything else does nothing.
    bool Open(const std::string& path) { return m_log.Open(path, true, LogFrame::None); }
    bool IsOpen() const { return m_log.IsOpen(); }
    void Preamble(const std::vector<std::string>& lines) { Write(lines); }
    /// Without the lines of the sequence's preflight when an earlier file had them. `written`: the block is in the
    /// log already.
    void File(const DoneFile& done, bool written);
    void Epilogue(const std::vector<std::string>& lines) { Write(lines); }
    void Close() { m_log.Close(std::nullopt); }
    /// A line could not be written.
    bool Failed() const { return m_failed; }

private:
    void Write(const std::vector<std::string>& lines);

    CNumberedLog m_log;
    bool m_preflightSeen = false;
    bool m_failed = false;
};
