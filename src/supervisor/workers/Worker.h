// One worker: an open host that pulls files, and its private log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/ProductPaths.h"
#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "protocol/Messages.h"
#include "supervisor/RunOptions.h"
#include "supervisor/journal/JournalIndex.h"
#include "supervisor/journal/LineReader.h"
#include "supervisor/resume/ResumePoint.h"

/// Cuts the private log of a worker into the parts of its files.
struct LogBlock {
    std::vector<std::string> lines = {};               ///< bytes, without number and line end
    std::size_t preflightBegin = 0, preflightEnd = 0;  ///< both 0: none
};

class CWorkerLog {
public:
    explicit CWorkerLog(std::string path) : m_path(std::move(path)) {}

    /// Takes in what has been logged by now.
    void Read();
    /// This is the place in what has been logged by now.
    void Note(LogPlace place);
    /// The present block ends here, although it is taken only later.
    void MarkEnd() { m_end = m_block.lines.size(); }
    /// What has been taken in since the last block, up to its mark when it has one.
    [[nodiscard]] LogBlock Take();
    /// What was logged before the inputs were counted; it belongs to no block.
    [[nodiscard]] std::vector<std::string> TakePreamble() { return std::move(m_preamble); }

private:
    std::string m_path;
    bool m_open = false;
    CLineReader m_reader;
    std::string m_line;
    bool m_inPreamble = true;
    std::vector<std::string> m_preamble;
    LogBlock m_block;
    static constexpr std::size_t kNoEnd = static_cast<std::size_t>(-1);
    std::size_t m_end = kNoEnd;
};

/// The entry in a line of a log file: without number and line end.
[[nodiscard]] std::string LogEntry(std::string_view line);

/// Where the user has settings and log.
[[nodiscard]] ProductPaths UserPaths();

/// Made fresh: a copy of the user's settings, and no log.
class CWorkerFolder {
public:
    explicit CWorkerFolder(std::string folder) : m_folder(std::move(folder)) {}

    /// Creates it, or takes away what an earlier worker has left there.
    platform::FileResult Prepare() const;
    /// What the worker takes for the user's folder for application data.
    const std::string& Path() const { return m_folder; }
    std::string LogPath() const;

private:
    std::string m_folder;
};

/// Removes a folder with all that is in it, as far as it can.
void RemoveFolder(const std::string& folder);

/// A file that is being processed.
struct FileInHand {
    PlannedFile file = {};
    ToDo toDo = ToDo::Whole;
    std::vector<Intent> intents = {};
    std::vector<Intent> earlierActs = {};  ///< of attempts that had an outcome
    /// What was known before when only the final action is left.
    std::optional<FileRecord> results = {};
    LogBlock log = {};         ///< of an earlier worker that died over it
    std::string reason = {};   ///< why that one died
    std::string refusal = {};  ///< why it was not allowed to act
};

struct CWorker {
    CWorker(platform::CChildProcess started, const CWorkerFolder& folder, std::string itsPlace)
        : child(std::move(started)), log(folder.LogPath()), place(std::move(itsPlace))
    {
    }

    platform::CChildProcess child;
    CWorkerLog log;
    std::string place;  ///< no two have the same at a time
    std::optional<FileInHand> hand;
    std::optional<FileRecord> told;  ///< of the file in hand, when the worker has told it
    std::uint64_t deadline = 0;      ///< for what it is doing, monotonic milliseconds; 0: none
    std::uint64_t handedOutAt = 0;
    int files = 0;         ///< handed out so far
    bool asked = false;    ///< for an input, ever
    bool waiting = false;  ///< for the answer
    bool gone = false;
    std::string killedFor;      ///< why it was killed; empty when it was not
    std::optional<RunEnd> end;  ///< what it told about its end
    std::string endMessage;
    std::deque<std::string> errorLines;  ///< the last of its standard error
};

/// How workers are started.
class CWorkerStarter {
public:
    /// `baseFolder`: where private folders are made. `lockDescriptor`: stays open in workers; -1: none.
    CWorkerStarter(const EngineOptions& engine, std::string baseFolder, long long lockDescriptor)
        : m_engine(engine), m_baseFolder(std::move(baseFolder)), m_lockDescriptor(lockDescriptor)
    {
    }
    /// Fails: null, with a sentence.
    std::unique_ptr<CWorker> Start(const std::string& place, std::string* problem) const;

private:
    const EngineOptions& m_engine;
    std::string m_baseFolder;
    long long m_lockDescriptor;
};

/// Keeps the last lines.
void AddErrorLine(std::deque<std::string>& lines, std::string line);
/// "crashed (signal 11)", "crashed (0xC0000005)", "ended with exit code 3".
[[nodiscard]] std::string EndingText(const platform::ChildEnding& ending);
