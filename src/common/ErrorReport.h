#pragma once

#include <string>
#include <utility>
#include <vector>

struct ErrorReportEntry {
    std::string description;
    bool isError = true;  ///< false: a warning
    std::string fileName;
    int fileNumber = 0;  ///< position of the file in the run, from 1
};

/// What stands over the problems of a run.
inline constexpr char kErrorReportHeading[] =
    "The following errors and warnings have been encountered during the processing.";

/// The problems of one run, in the order in which they came up.
class CErrorReport {
public:
    virtual ~CErrorReport() = default;

    void Add(ErrorReportEntry entry) { m_entries.push_back(std::move(entry)); }
    const std::vector<ErrorReportEntry>& Entries() const { return m_entries; }
    bool Empty() const { return m_entries.empty(); }

    /// The report for a text file, one line per entry, with line feeds as line ends.
    std::string ReportText() const;
    /// Writes the report in UTF-8 with a mark and CR LF line ends, replacing the file. False when that fails.
    [[nodiscard]] bool Save(const std::string& path) const;

private:
    std::vector<ErrorReportEntry> m_entries;
};
