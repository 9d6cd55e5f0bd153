// The log file of a run: the only record that an operator has of what nobody watched.
#pragma once

#include "common/Log.h"
#include "platform/Clock.h"
#include "platform/HeldFiles.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// Who the host is and when the plug-in was built; told at the end of the log.
struct HostFacts {
    std::string applicationName;
    std::string language;
    int majorVersion = 0;
    int minorVersion = 0;
    std::string buildDate;
};

/// Who writes the lines that begin and end a log.
enum class LogFrame {
    Own,  ///< the log itself, when it is opened and closed
    None  ///< nobody, or its user: they come with the lines
};

/// Every line is numbered and written with one write call. While the log is not open, entries are dropped and answer
/// false. A second log on the same file, in this process or another, cannot be opened.
class CNumberedLog final : public CLogWriter {
public:
    using Clock = std::function<std::optional<platform::LocalTime>()>;

    explicit CNumberedLog(Clock clock = platform::LocalTimeNow);
    CNumberedLog(const CNumberedLog&) = delete;
    CNumberedLog& operator=(const CNumberedLog&) = delete;
    ~CNumberedLog() override;

    /// Closes a log that is open (without plug-in name), archives a large one when appending, and writes the start
    /// line. False: the log is closed, the file as it was.
    bool Open(const std::string& path, bool append, LogFrame frame = LogFrame::Own);

    /// Writes the stop line and the run details. `pluginName` may be missing.
    void Close(const std::optional<std::string>& pluginName);

    bool IsOpen() const { return m_file.IsOpen(); }
    const std::string& Path() const { return m_path; }
    void SetHostFacts(HostFacts facts) { m_facts = std::move(facts); }

    bool Line(std::string_view text) override;

private:
    platform::LocalTime Now() const;
    bool WriteStart();
    void WriteEnd(const std::optional<std::string>& pluginName);
    bool ArchiveWhenLarge(const std::string& path);
    std::string ArchivePath(const std::string& path) const;

    Clock m_clock;
    platform::CLogFile m_file;
    std::string m_path;
    LogFrame m_frame = LogFrame::Own;
    std::uint32_t m_nextLine = 1;
    HostFacts m_facts;
};
