#include "supervisor/workers/Worker.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

#include "base/Names.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "platform/Paths.h"

std::string LogEntry(std::string_view line)
{
    if (line.ends_with('\r')) line.remove_suffix(1);
    const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
    if (digits != 0 && line.substr(digits).starts_with(": ")) line.remove_prefix(digits + 2);
    return std::string(line);
}

void CWorkerLog::Read()
{
    if (!m_open) m_open = m_reader.Open(m_path);
    if (!m_open) return;
    m_reader.Seek(m_reader.NextOffset());
    std::vector<std::string>& lines = m_inPreamble ? m_preamble : m_block.lines;
    while (m_reader.Next(m_line)) lines.push_back(LogEntry(m_line));
}

void CWorkerLog::Note(LogPlace place)
{
    Read();
    switch (place) {
        case LogPlace::SequencePreflightBegins:
            m_block.preflightBegin = m_block.lines.size();
            break;
        case LogPlace::SequencePreflightEnds:
            m_block.preflightEnd = m_block.lines.size();
            break;
        case LogPlace::InputsCounted:
            m_inPreamble = false;
            break;
    }
}

LogBlock CWorkerLog::Take()
{
    LogBlock rest;
    if (m_end < m_block.lines.size()) {
        const auto from = m_block.lines.begin() + static_cast<std::ptrdiff_t>(m_end);
        rest.lines.assign(std::make_move_iterator(from), std::make_move_iterator(m_block.lines.end()));
        m_block.lines.erase(from, m_block.lines.end());
    }
    m_end = kNoEnd;
    LogBlock block = std::exchange(m_block, std::move(rest));
    // Marks that came in the wrong order, or only one of them, mark nothing.
    const bool marked = block.preflightBegin < block.preflightEnd && block.preflightEnd <= block.lines.size();
    if (!marked) block.preflightBegin = block.preflightEnd = 0;
    return block;
}

ProductPaths UserPaths() { return MakeProductPaths(platform::ApplicationDataFolder()); }

void RemoveFolder(const std::string& folder)
{
    std::error_code ignored;
    std::filesystem::remove_all(platform::StandardPath(folder), ignored);
}

platform::FileResult CWorkerFolder::Prepare() const
{
    RemoveFolder(m_folder);
    // What could not be removed is used once more.
    if (const auto made = platform::CreatePrivateFolder(m_folder); !made && !platform::IsOwnFolder(m_folder))
        return made;
    const ProductPaths users = UserPaths(), own = MakeProductPaths(m_folder);
    if (const platform::FileResult made = platform::CreateFolders(own.settingsFolder); !made) return made;
    // Without the user's settings the worker would do something else than the user's own host.
    for (const auto& [from, to] : {std::pair(users.settingsFile, own.settingsFile),
                                   std::pair(users.searchSettingsFile, own.searchSettingsFile)}) {
        // Nobody misses the copy after a power cut, so it is not flushed.
        std::error_code error;
        if (platform::FileExists(from))
            std::filesystem::copy_file(platform::StandardPath(from), platform::StandardPath(to), error);
        if (error) return {error.value()};
    }
    return {};
}

std::string CWorkerFolder::LogPath() const { return MakeProductPaths(m_folder).logFile; }

namespace {

constexpr std::size_t kErrorLinesKept = 100;
constexpr std::uint64_t kGibibyte = std::uint64_t{1} << 30;
constexpr std::uint32_t kFirstException = 0xC0000000;  // above all signals
constexpr const char* kRunVariables[] = {"FERRULESEQU",         "FERRULEFINAL",         "FERRULEDEST",
                                         "FERRULEALTPATH",      "FERRULEALTOUTPUTPATH", "FERRULEFILEEXT",
                                         "FERRULENOSUBFOLDERS", "FERRULENOPROGRESS",    "EXECUTEINSTEPS"};

platform::ChildOptions ChildOptionsFor(const EngineOptions& engine, const std::string& settingsFolder, long long lock)
{
    platform::ChildOptions options{.program = engine.hostProgram, .arguments = {"--worker"}};
    for (const std::string& plugIn : engine.plugIns)
        options.arguments.insert(options.arguments.end(), {"--plugin", plugIn});
    if (!engine.passwordFile.empty())
        options.arguments.insert(options.arguments.end(), {"--password-file", engine.passwordFile});
    if (!engine.textCacheFolder.empty())
        options.arguments.insert(options.arguments.end(), {"--text-cache", engine.textCacheFolder});
    options.environment = {std::string(platform::kApplicationDataVariable) + '=' + settingsFolder};
    for (const char* name : kRunVariables) options.environment.emplace_back(name);
    // The supervisor watches the memory in use; this only keeps one document from taking all of it in between.
    options.addressSpaceBytes = 2 * engine.memoryBytes + kGibibyte;
    options.openedProgramsGoOn = true;  // final actions and steps open some
    if (lock != -1) options.inheritedDescriptors = {lock};
    return options;
}

}  // namespace

std::unique_ptr<CWorker> CWorkerStarter::Start(const std::string& place, std::string* problem) const
{
    const CWorkerFolder folder(m_baseFolder + kSeparator + "worker-" + place);
    if (const auto prepared = folder.Prepare(); !prepared) {
        *problem = "The folder " + folder.Path() + " for a worker cannot be made (" +
                   platform::ErrorText(prepared.errorNumber) + ").";
        return nullptr;
    }
    platform::FileResult started;
    auto child = platform::CChildProcess::Start(ChildOptionsFor(m_engine, folder.Path(), m_lockDescriptor), &started);
    if (child) return std::make_unique<CWorker>(std::move(*child), folder, place);
    *problem =
        "The host " + m_engine.hostProgram + " cannot be started (" + platform::ErrorText(started.errorNumber) + ").";
    return nullptr;
}

void AddErrorLine(std::deque<std::string>& lines, std::string line)
{
    lines.push_back(std::move(line));
    if (lines.size() > kErrorLinesKept) lines.pop_front();
}

std::string EndingText(const platform::ChildEnding& ending)
{
    if (ending.signal >= kFirstException) {
        std::array<char, 32> text;
        std::snprintf(text.data(), text.size(), "crashed (0x%08X)", static_cast<unsigned>(ending.signal));
        return text.data();
    }
    if (ending.signal != 0) return "crashed (signal " + std::to_string(ending.signal) + ")";
    return "ended with exit code " + std::to_string(ending.exitCode);
}
