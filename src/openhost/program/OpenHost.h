#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "openhost/catalog/TextReaders.h"
#include "openhost/core/Host.h"
#include "openhost/core/Tables.h"
#include "openhost/jobs/Jobs.h"
#include "openhost/program/PlugIns.h"
#include "openhost/program/WindowContent.h"

namespace openhost {

/// Exit codes of the program.
enum ExitCode : int {
    kExitFine = 0,        ///< all files are fine
    kExitBroken = 1,      ///< the run could not start, broke off, or nobody asked to quit
    kExitUsage = 2,       ///< the command line makes no sense
    kExitSomeFailed = 3,  ///< the run finished, but not every file came out
};

struct EventLoopOptions {
    bool stay = false;  ///< goes on until somebody asks to quit
    /// Waits; tests put their own.
    std::function<void(std::uint64_t milliseconds)> sleep;
    /// Does what the user of a window wants, waiting for so long; called each time round, with 0, too.
    std::function<void(std::uint64_t milliseconds)> work = {};
};

/// Calls the idle procedures until somebody asks to quit, or until all was done that plug-ins had scheduled: each
/// idle procedure was called and no run is under way. Answers the exit code.
int RunEventLoop(const EventLoopOptions& options);

struct OpenHostOptions {
    int majorVersion = 21;
    bool quitItem = true;
    bool stay = false;
    bool verbose = false;
    std::vector<std::string> passwordCandidates;  ///< UTF-8, tried in this order on encrypted documents
    std::string textCacheFolder;        ///< for words of documents that were read before; empty: none are kept
    ReaderSettings textReaders;         ///< how documents are read for an index
    std::vector<PlugInSource> plugIns;  ///< loaded in this order
    std::vector<std::string> files;     ///< shown in the window from the start
    std::shared_ptr<CJobSource> jobs;   ///< absent: a run without a job
    bool sayRun = true;                 ///< remarks tell how files and run ended
    /// Gets the host's remarks, one line each; absent: the source of the job, or standard error.
    std::function<void(std::string_view)> diagnostics;
    /// May exchange entries of the tables; called once, before the first plug-in is.
    std::function<void(CTables&)> afterOffering;
    std::function<std::uint64_t()> clockMilliseconds;  ///< absent: the system's
    std::function<void(std::uint64_t)> sleep;          ///< absent: really sleeps
};

/// A whole host, from start to end; one at a time in a process.
///
/// Order: OpenWindow for a host with a window, StartUp, Run, ShutDown, each once. The destructor shuts down what is
/// still up.
class COpenHost {
public:
    explicit COpenHost(OpenHostOptions options);
    ~COpenHost();
    COpenHost(const COpenHost&) = delete;
    COpenHost& operator=(const COpenHost&) = delete;

    /// Gives the host a window, which stays until it is shut down. False: `problem` says why there is none.
    bool OpenWindow(std::string& problem);
    /// Offers the tables, loads the plug-ins and takes them through their stages. False when none is left.
    bool StartUp();
    /// Whether every plug-in that was asked for passed its stages.
    bool AllPlugInsLive() const { return m_plugIns.Living() == m_options.plugIns.size(); }
    /// Announces that the host is up and runs the event loop; answers the exit code.
    int Run();
    /// Ends in order: quit is announced, views close unsaved, commands and handlers end, plug-ins unload.
    void ShutDown();

    CTables& Tables() { return m_host->Get<CTables>(); }

private:
    void Prepare();
    void TakeJobs();

    OpenHostOptions m_options;
    CPlugIns m_plugIns;  // outlives the host, which may still hold pointers into the libraries
    std::unique_ptr<CHost> m_host;
    std::unique_ptr<CHostContent> m_content;  // both null without a window
    std::unique_ptr<CHostWindow> m_window;
    bool m_up = false;
};

}  // namespace openhost
