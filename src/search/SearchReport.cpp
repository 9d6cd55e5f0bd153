#include "search/SearchReport.h"

#include <array>
#include <filesystem>
#include <memory>

#include "base/Names.h"
#include "base/Text.h"
#include "common/SeparatedText.h"
#include "common/TextFile.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "protocol/Json.h"

namespace {

constexpr char kTextFirstLine[] = "Ferrule Text Search Report";
constexpr char kCsvFirstLine[] = "File,Page,Text";
constexpr char kLineEnd[] = "\r\n";

/// Of the Gregorian calendar, 0 is Sunday.
int DayOfWeek(const platform::LocalTime& time)
{
    static constexpr std::array<int, 12> kShift = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
    const int year = time.month < 3 ? time.year - 1 : time.year;
    return (year + year / 4 - year / 100 + year / 400 + kShift[static_cast<std::size_t>(time.month - 1)] + time.day) %
           7;
}

/// In English, whatever the language of the machine.
std::string TimeText(const platform::LocalTime& time)
{
    static constexpr std::array<const char*, 7> kDays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                         "Thursday", "Friday", "Saturday"};
    static constexpr std::array<const char*, 12> kMonths = {"January",   "February", "March",    "April",
                                                            "May",       "June",     "July",     "August",
                                                            "September", "October",  "November", "December"};
    return FormatText("%s, %s %02d, %d %02d:%02d:%02d", kDays[static_cast<std::size_t>(DayOfWeek(time))],
                      kMonths[static_cast<std::size_t>(time.month - 1)], time.day, time.year, time.hour, time.minute,
                      time.second);
}

std::string CsvPathOf(const std::string& textPath)
{
    const PathParts parts = SplitPath(textPath);
    return parts.folder + parts.base + ".csv";
}

std::string CannotWrite(const std::string& path, const std::string& why)
{
    return path + ": the search report cannot be written: " + why;
}

/// Why the file is not one of ours to write into; empty when it is, or is not there, or has nothing in it.
std::string Objection(const std::string& path, const std::string& firstLine)
{
    if (!platform::NameExists(path)) return {};
    if (platform::FolderExists(path)) return CannotWrite(path, "there is a folder of that name.");
    const auto stamp = platform::StampOf(path);
    if (!stamp || !stamp->regular) return CannotWrite(path, "it is no regular file.");
    if (stamp->size == 0) return {};
    try {
        CTextFileRead file(path);
        if (!file.IsOpen()) return CannotWrite(path, platform::ErrorText(file.ErrorNumber()));
        const auto line = file.ReadLine();
        if (line && line->starts_with(firstLine)) return {};
    } catch (const CTextFileException& error) {
        return CannotWrite(path, error.what());
    }
    return CannotWrite(path, "it is no search report; name another file.");
}

/// One of the two files while an entry is written; without Keep what was written goes again.
class CReportFile {
public:
    CReportFile(std::string path, bool append) : m_path(std::move(path)), m_append(append) {}
    CReportFile(const CReportFile&) = delete;
    CReportFile& operator=(const CReportFile&) = delete;
    ~CReportFile()
    {
        if (m_kept || !m_touched) return;
        m_file.reset();
        std::error_code ignored;
        const auto path = platform::StandardPath(m_path);
        if (m_wasThere) {
            std::filesystem::resize_file(path, m_formerSize, ignored);
        } else {
            std::filesystem::remove(path, ignored);
        }
    }

    /// Answers why not; empty when it was written and is kept by Keep.
    std::string Write(const std::string& header, const std::string& lines)
    {
        const auto size = platform::FileSize(m_path);
        m_wasThere = size.has_value();
        m_formerSize = m_append ? size.value_or(0) : 0;
        m_file = std::make_unique<CTextFileWrite>();
        if (!m_file->Open(m_path, TextEncoding::Utf8, m_append))
            return CannotWrite(m_path, platform::ErrorText(m_file->ErrorNumber()));
        m_touched = true;
        try {
            if (m_formerSize == 0) m_file->Write(header);
            m_file->Write(lines);
            m_file->Close();
        } catch (const CTextFileException& error) {
            return CannotWrite(m_path, error.what());
        }
        return {};
    }
    void Keep() { m_kept = true; }

private:
    std::string m_path;
    bool m_append;
    std::unique_ptr<CTextFileWrite> m_file;
    std::uint64_t m_formerSize = 0;
    bool m_wasThere = false, m_touched = false, m_kept = false;
};

}  // namespace

ReportEntry MakeReportEntry(const std::string& documentUtf8, const std::vector<ReportedRule>& rules)
{
    ReportEntry entry;
    for (const ReportedRule& rule : rules) {
        entry.text += FormatText("Search text: %s, Number of matches: %d", OneLogLine(rule.expression).c_str(),
                                 static_cast<int>(rule.matches.size())) +
                      kLineEnd;
        for (const ReportedMatch& match : rule.matches) {
            const int page = match.page0 + 1;
            entry.text += FormatText("\tFile: %s, Page: %d, Text found: %s", OneLogLine(documentUtf8).c_str(), page,
                                     OneLogLine(match.text).c_str()) +
                          kLineEnd;
            entry.csv += FormatText("%s,%d,%s", SeparatedValue(documentUtf8).c_str(), page,
                                    SeparatedValue(match.text).c_str()) +
                         kLineEnd;
        }
    }
    return entry;
}

std::string ReportEventLine(const ReportEvent& event)
{
    if (!event.settings.createReport || event.settings.reportFile.empty()) return {};
    const Json object = {{"report", TextFromBytes(event.settings.reportFile)},
                         {"append", event.settings.appendReport},
                         {"overwrite", event.settings.overwriteReport},
                         {"text", TextFromBytes(event.entry.text)},
                         {"csv", TextFromBytes(event.entry.csv)},
                         {"built", event.facts.buildDate},
                         {"major", event.facts.majorVersion},
                         {"minor", event.facts.minorVersion}};
    return LineOf(Json::array({object}));
}

std::vector<ReportEvent> ReportEventsIn(const std::string& findings)
{
    std::vector<ReportEvent> events;
    const Json array = Json::parse(findings, nullptr, false);
    if (!array.is_array()) return events;
    for (const Json& object : array) {
        if (!object.is_object() || !object.contains("report")) continue;
        ReportEvent event;
        event.settings.reportFile = BytesAt(object, "report");
        event.settings.appendReport = FlagAt(object, "append");
        event.settings.overwriteReport = FlagAt(object, "overwrite");
        event.entry = {BytesAt(object, "text"), BytesAt(object, "csv")};
        event.facts.buildDate = TextAt(object, "built");
        event.facts.majorVersion = CountAt(object, "major");
        event.facts.minorVersion = CountAt(object, "minor");
        events.push_back(std::move(event));
    }
    return events;
}

CSearchReport::CSearchReport(HostFacts facts, Clock clock) : m_facts(std::move(facts)), m_clock(std::move(clock)) {}

std::string CSearchReport::Add(const SearchSettings& settings, const ReportEntry& entry)
{
    if (!settings.createReport || settings.reportFile.empty()) return {};
    const std::string& path = settings.reportFile;
    if (EqualsIgnoreCaseAscii(Extension(path), "csv"))
        return CannotWrite(path, "its CSV report has the same name; give it another extension, such as .txt.");
    if (!settings.appendReport && !settings.overwriteReport) return WriteBoth(NextFree(path, entry), entry, false);
    const Files files{path, CsvPathOf(path)};
    for (const std::string& problem : {Objection(files.text, kTextFirstLine), Objection(files.csv, kCsvFirstLine)}) {
        if (!problem.empty()) return problem;
    }
    const bool append = settings.appendReport || m_goesOn || m_begun.contains(path);
    std::string problem = WriteBoth(files, entry, append);
    if (problem.empty()) m_begun.insert(path);
    return problem;
}

bool CSearchReport::IsWritten(const std::string& path, const std::string& lines) const
{
    constexpr std::int64_t kCoarseTimes = 2'000'000'000;  // some file systems know even seconds only
    const auto stamp = m_since ? platform::StampOf(path) : std::nullopt;
    if (!stamp || stamp->modifiedNanoseconds < *m_since - kCoarseTimes || stamp->size < lines.size()) return false;
    const platform::Stream file = platform::OpenStream(path, "rb");
    std::string end(lines.size(), '\0');
    return file && std::fseek(file.get(), -static_cast<long>(end.size()), SEEK_END) == 0 &&
           std::fread(end.data(), 1, end.size(), file.get()) == end.size() && end == lines;
}

/// Numbers below the last one were taken when they were looked at.
CSearchReport::Files CSearchReport::NextFree(const std::string& reportFile, const ReportEntry& entry)
{
    const PathParts parts = SplitPath(reportFile);
    const auto [last, isFirst] = m_lastNumber.try_emplace(reportFile, 0);
    for (int number = last->second;; ++number) {
        Files files{reportFile, CsvPathOf(reportFile)};
        if (number > 0) {
            files.text = parts.folder + FormatText("%s (%d)", parts.base.c_str(), number) +
                         (parts.hasDot ? '.' + parts.extension : std::string());
            files.csv = CsvPathOf(files.text);
            if (!parts.hasDot) files.csv = files.text + ".csv";
        }
        const bool isTaken = platform::NameExists(files.text) || platform::NameExists(files.csv);
        if (isTaken && !(IsWritten(files.text, entry.text) && IsWritten(files.csv, entry.csv))) continue;
        last->second = number + 1;
        return files;
    }
}

std::string CSearchReport::WriteBoth(const Files& files, const ReportEntry& entry, bool append)
{
    CReportFile text(files.text, append), csv(files.csv, append);
    const bool hasText = IsWritten(files.text, entry.text), hasCsv = IsWritten(files.csv, entry.csv);
    if (std::string problem = hasText ? "" : text.Write(TextHeader(), entry.text); !problem.empty()) return problem;
    if (std::string problem = hasCsv ? "" : csv.Write(std::string(kCsvFirstLine) + kLineEnd, entry.csv);
        !problem.empty())
        return problem;
    text.Keep();
    csv.Keep();
    return {};
}

std::string CSearchReport::TextHeader() const
{
    const platform::LocalTime now = m_clock().value_or(platform::LocalTime{1, 1, 1970, 0, 0, 0});
    return std::string(kTextFirstLine) + kLineEnd +
           FormatText("Processing date and time: %s", TimeText(now).c_str()) + kLineEnd +
           FormatText("Software build date: %s, Adobe Acrobat version: %d.%d ", m_facts.buildDate.c_str(),
                      m_facts.majorVersion, m_facts.minorVersion) +
           kLineEnd;
}

std::string CReportBatch::Add(ReportEvent event)
{
    constexpr std::size_t kMostWaiting = 16 << 20;
    const SearchSettings& settings = event.settings;
    if (!settings.appendReport && !settings.overwriteReport) return Write(event);
    const auto [at, isFirst] = m_waiting.try_emplace(settings.reportFile);
    ReportEvent& waiting = at->second;
    std::string problem;
    const bool isFull = waiting.entry.text.size() + waiting.entry.csv.size() > kMostWaiting;
    const bool joins = !isFirst && !isFull && waiting.settings == settings;
    if (!isFirst && !joins) problem = Write(waiting);
    if (!joins) {
        waiting = std::move(event);
    } else {
        waiting.entry.text += event.entry.text;
        waiting.entry.csv += event.entry.csv;
    }
    return problem;
}

std::vector<std::string> CReportBatch::Finish()
{
    std::vector<std::string> problems;
    for (const auto& [path, event] : m_waiting)
        if (std::string problem = Write(event); !problem.empty()) problems.push_back(std::move(problem));
    m_waiting.clear();
    return problems;
}

std::string CReportBatch::Write(const ReportEvent& event)
{
    m_report.SetFacts(event.facts);
    return m_report.Add(event.settings, event.entry);
}
