#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Clock.h"
#include "platform/HeldFiles.h"

/// Takes log entries; each becomes one whole line. False when the log is not open, and then nothing is written.
class CLogWriter {
public:
    virtual ~CLogWriter() = default;

    /// Writes one line as it stands, apart from line breaks, which implementations pass through OneLogLine.
    virtual bool Line(std::string_view text) = 0;

    /// Tabs, then "name : value"; line breaks inside become blanks, so a value cannot forge a line of its own.
    bool NameValue(std::string_view name, std::string_view value, int indentTabs);
    bool NameNumber(std::string_view name, long long number, int indentTabs);
    /// The current local time as the value, padded.
    bool NameTime(std::string_view name, int indentTabs);
    /// 76 hyphens.
    bool Separator();
};

/// The text with blanks in place of carriage returns, line feeds and NUL bytes.
std::string OneLogLine(std::string_view text);

// The log file of a run: the only record that an operator has of what nobody watched.

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
    Own,  ///< the log itself, when it is opened, cleared and closed
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

    /// Writes the stop line and, while the header switch is 1, the run details. `pluginName` may be missing.
    void Close(const std::optional<std::string>& pluginName);

    /// Empties the open log, numbers from 1 again and writes a new start line.
    bool Clear();

    bool Flush();

    /// Up to `maxBytes` from the current position; nothing at the end or when the log is not open. Entries continue
    /// at the position where reading or seeking left off: seek to the end first.
    std::optional<std::string> ReadText(std::size_t maxBytes);
    bool SeekBegin();
    bool SeekEnd();

    bool IsOpen() const { return m_file.IsOpen(); }
    const std::string& Path() const { return m_path; }
    void SetHeaderSwitch(int value) { m_headerSwitch = value; }
    void SetHostFacts(HostFacts facts) { m_facts = std::move(facts); }

    bool Line(std::string_view text) override;

    /// Writes the machine's memory figures in millions of bytes, when `write` says so. Always false.
    bool MemoryUsage(int indentTabs, bool write);

private:
    platform::LocalTime Now() const;
    bool WriteStart();
    void WriteEnd(const std::optional<std::string>& pluginName);
    void WriteRunDetails(const std::optional<std::string>& pluginName);
    bool ArchiveWhenLarge(const std::string& path);
    std::string ArchivePath(const std::string& path) const;

    Clock m_clock;
    platform::CLogFile m_file;
    std::string m_path;
    LogFrame m_frame = LogFrame::Own;
    std::uint32_t m_nextLine = 1;
    int m_headerSwitch = 1;
    HostFacts m_facts;
};
