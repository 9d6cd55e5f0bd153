#include "common/Log.h"

#include <algorithm>
#include <utility>

#include "base/Names.h"
#include "base/Overseer.h"
#include "base/Text.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/ThisProcess.h"

namespace {

std::string Indented(int tabs, std::string_view name)
{
    return std::string(static_cast<std::size_t>(std::max(tabs, 0)), '\t').append(name).append(" : ");
}

}  // namespace

std::string OneLogLine(std::string_view text)
{
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
    return line;
}

bool CLogWriter::NameValue(std::string_view name, std::string_view value, int indentTabs)
{
    return Line(OneLogLine(Indented(indentTabs, name).append(value)));
}

bool CLogWriter::NameNumber(std::string_view name, long long number, int indentTabs)
{
    return NameValue(name, std::to_string(number), indentTabs);
}

bool CLogWriter::NameTime(std::string_view name, int indentTabs)
{
    constexpr platform::LocalTime kUnknown{0, 0, 0, -1, -1, -1};
    const auto now = platform::LocalTimeNow().value_or(kUnknown);
    return NameValue(
        name,
        FormatText("%02d/%02d/%d , %02d:%02d:%02d", now.day, now.month, now.year, now.hour, now.minute, now.second),
        indentTabs);
}

namespace {

constexpr std::uint64_t kLargestLog = 2'000'000;  // bytes; a larger one is archived
constexpr std::uint64_t kMegabyte = 1'000'000;
constexpr platform::LocalTime kNoTime = {.day = 0, .month = 0, .year = 0, .hour = -1, .minute = -1, .second = -1};

}  // namespace

CNumberedLog::CNumberedLog(Clock clock) : m_clock(std::move(clock)) {}

CNumberedLog::~CNumberedLog() { Close(std::nullopt); }

bool CNumberedLog::Open(const std::string& path, bool append, LogFrame frame)
{
    Close(std::nullopt);
    m_frame = frame;
    if (append && !ArchiveWhenLarge(path)) return false;
    m_path = path;
    if (!m_file.Open(path, append)) return false;
    if (append) m_file.SeekEnd();
    return WriteStart();
}

void CNumberedLog::Close(const std::optional<std::string>& pluginName)
{
    if (!IsOpen()) return;
    if (m_frame == LogFrame::Own) WriteEnd(pluginName);
    m_file.Close();
}

bool CNumberedLog::Clear()
{
    if (!IsOpen()) return false;
    if (!m_file.Flush() || !m_file.Truncate() || !m_file.SeekBegin()) return false;
    m_nextLine = 1;
    return WriteStart();
}

bool CNumberedLog::Flush() { return IsOpen() && m_file.Flush(); }

std::optional<std::string> CNumberedLog::ReadText(std::size_t maxBytes)
{
    if (!IsOpen()) return std::nullopt;
    std::string text = m_file.Read(maxBytes);
    if (text.empty()) return std::nullopt;
    return text;
}

bool CNumberedLog::SeekBegin() { return IsOpen() && m_file.SeekBegin(); }

bool CNumberedLog::SeekEnd() { return IsOpen() && m_file.SeekEnd(); }

bool CNumberedLog::Line(std::string_view text)
{
    if (!IsOpen()) return false;
    if (!m_file.Write(FormatText("%d: %s\r\n", static_cast<int>(m_nextLine), OneLogLine(text).c_str()))) return false;
    ++m_nextLine;
    return true;
}

bool CNumberedLog::MemoryUsage(int indentTabs, bool write)
{
    const auto memory = platform::GlobalMemoryStatus();
    if (!write || !memory) return false;
    NameValue("Global memory usage", "", indentTabs);
    const struct {
        const char* name;
        std::uint64_t value;
    } rows[] = {{"Total physical memory (MB) ", memory->totalPhysical / kMegabyte},
                {"Total virtual memory (MB) ", memory->totalVirtual / kMegabyte},
                {"Total page file (MB) ", memory->totalPageFile / kMegabyte},
                {"Memory load (percents) ", memory->loadPercent},
                {"Available physical memory (MB) ", memory->availablePhysical / kMegabyte},
                {"Available virtual memory (MB) ", memory->availableVirtual / kMegabyte},
                {"Available page file memory (MB) ", memory->availablePageFile / kMegabyte}};
    for (const auto& row : rows) NameNumber(row.name, static_cast<long long>(row.value), indentTabs + 1);
    return false;  // Kept: nobody uses the answer.
}

platform::LocalTime CNumberedLog::Now() const { return m_clock().value_or(kNoTime); }

bool CNumberedLog::WriteStart()
{
    if (m_frame == LogFrame::None) return true;
    const platform::LocalTime now = Now();
    Line(FormatText("LOG STARTED: %d/%d/%d , TIME: %d:%d:%d", now.day, now.month, now.year, now.hour, now.minute,
                    now.second));
    m_file.Flush();
    return true;
}

void CNumberedLog::WriteEnd(const std::optional<std::string>& pluginName)
{
    const platform::LocalTime now = Now();
    Line(FormatText("LOG STOPPED: %d/%d/%d , TIME: %d:%d:%d", now.day, now.month, now.year, now.hour, now.minute,
                    now.second));
    if (m_headerSwitch == 1) WriteRunDetails(pluginName);
}

void CNumberedLog::WriteRunDetails(const std::optional<std::string>& pluginName)
{
    if (pluginName) NameValue("Plugin", *pluginName, 0);
    NameValue("Acrobat viewer host application", m_facts.applicationName, 0);
    NameValue("Language", m_facts.language, 0);
    Line(FormatText("Software build date: %s, Adobe Acrobat version: %d.%d ", m_facts.buildDate.c_str(),
                    m_facts.majorVersion, m_facts.minorVersion));
}

bool CNumberedLog::ArchiveWhenLarge(const std::string& path)
{
    if (!platform::FileExists(path)) return true;
    const auto size = platform::FileSize(path);
    if (!size) return false;
    if (*size <= kLargestLog) return true;
    // Another process may be writing to it: then it must not be renamed under its hands.
    platform::CLogFile claim;
    if (!claim.Open(path, true)) return false;
    claim.Close();
    const CUnwatched noDocument;
    return platform::MoveFile(path, ArchivePath(path), platform::Existing::Fail).Ok();
}

std::string CNumberedLog::ArchivePath(const std::string& path) const
{
    const platform::LocalTime now = Now();
    const PathParts parts = SplitPath(path);
    return FormatText("%s-%d-%d-%d-%d-%d-%d.log", (parts.folder + parts.base).c_str(), now.day, now.month, now.year,
                      now.hour, now.minute, now.second);
}

bool CLogWriter::Separator() { return Line(std::string(76, '-')); }
