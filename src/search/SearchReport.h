// The two reports of a search: a text for people and a CSV file for programs.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/Log.h"
#include "search/SearchRules.h"

struct ReportedMatch {
    int page0 = 0;
    std::string text;  ///< UTF-8
};

struct ReportedRule {
    std::string expression;  ///< UTF-8
    std::vector<ReportedMatch> matches;
};

/// What the reports say about one document.
struct ReportEntry {
    std::string text, csv;  ///< UTF-8, lines with CR LF
};

/// All rules in their order, those without match too. A match is one line of the text, line ends in it being blanks;
/// the CSV keeps it as it is.
[[nodiscard]] ReportEntry MakeReportEntry(const std::string& documentUtf8, const std::vector<ReportedRule>& rules);

/// An entry on its way to whoever writes the reports of a run, with the report that it belongs into.
struct ReportEvent {
    SearchSettings settings;  ///< those of the report only
    ReportEntry entry;
    HostFacts facts;
};
/// One line of JSON, an array with one object; empty when no report is wanted.
[[nodiscard]] std::string ReportEventLine(const ReportEvent& event);
/// Those in an array of findings, which may hold others.
[[nodiscard]] std::vector<ReportEvent> ReportEventsIn(const std::string& findings);

/// Where the entries of a run go. Settings of the report are those of the search: when it is neither appended to nor
/// overwritten, each entry gets files of its own, whose names have the first number that is free.
///
/// Both files are UTF-8 with its mark, begin with their headers once, and have one first line that tells them from
/// other files: no other file is touched. What was written of an entry that cannot be written as a whole is taken
/// away again.
class CSearchReport {
public:
    using Clock = std::function<std::optional<platform::LocalTime>()>;

    explicit CSearchReport(HostFacts facts = {}, Clock clock = platform::LocalTimeNow);

    /// What "overwrite" replaces was replaced before, by an earlier start of the same run.
    void GoOn() { m_goesOn = true; }
    /// An earlier start of the same run was killed, perhaps when it had written already: an entry with which a report
    /// ends that has changed since this time (nanoseconds since 1970) is not written again.
    void MayHaveWritten(std::int64_t since) { m_since = since; }
    /// What the headers say from now on.
    void SetFacts(HostFacts facts) { m_facts = std::move(facts); }

    /// Answers why the entry is in no report, a sentence that names the file; empty when it is, or no report is
    /// wanted. What "overwrite" replaces is replaced by the first entry after the object was made, and later ones are
    /// appended.
    [[nodiscard]] std::string Add(const SearchSettings& settings, const ReportEntry& entry);

private:
    struct Files {
        std::string text, csv;
    };

    Files NextFree(const std::string& reportFile, const ReportEntry& entry);
    std::string WriteBoth(const Files& files, const ReportEntry& entry, bool append);
    bool IsWritten(const std::string& path, const std::string& lines) const;
    std::string TextHeader() const;

    HostFacts m_facts;
    Clock m_clock;
    bool m_goesOn = false;
    std::optional<std::int64_t> m_since;
    std::set<std::string> m_begun;            // reports that were overwritten already
    std::map<std::string, int> m_lastNumber;  // of reports that each document has its own of
};

/// Entries of a run that ends, put together so that each report is written in a few large pieces: a process that is
/// killed has as good as always written all of them or none, and is not asked for thousands of small writes.
class CReportBatch {
public:
    /// The report is borrowed.
    explicit CReportBatch(CSearchReport& report) : m_report(report) {}

    /// Answers what CSearchReport::Add does; for an entry that waits nothing yet.
    [[nodiscard]] std::string Add(ReportEvent event);
    /// Writes what waits. Answers a sentence for each report that could not be written.
    [[nodiscard]] std::vector<std::string> Finish();

private:
    std::string Write(const ReportEvent& event);

    CSearchReport& m_report;
    std::map<std::string, ReportEvent> m_waiting;  // by report
};
