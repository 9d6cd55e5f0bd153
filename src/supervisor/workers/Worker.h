// One worker: an open host that pulls files.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/ProductPaths.h"
#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "supervisor/RunOptions.h"
#include "supervisor/journal/JournalIndex.h"
#include "supervisor/resume/ResumePoint.h"
#include "supervisor/workers/WorkerLog.h"

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
