// Tables as files for other programs and for people.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/AtomicFile.h"

/// The numbers are part of settings.
enum class ReportFormat { ExcelXml = 0, Csv = 1, TabDelimited = 2, JsonText = 3, Html = 4 };

/// "xml", "csv", "txt", "json", "htm".
[[nodiscard]] const char* ReportExtension(ReportFormat format);
/// The form that files with this extension, without dot and in any letter case, have; the first one for any other.
[[nodiscard]] ReportFormat ReportFormatOf(std::string_view extension);

struct ReportColumn {
    std::string name = {};        ///< UTF-8
    int width = 100;              ///< points
    std::string type = "String";  ///< as spreadsheets call it
};

/// What stands above the table of a report for people.
struct ReportHeading {
    std::string title = {};
    std::vector<std::pair<std::string, std::string>> facts = {};
};

class CReportForm;

/// Writes one table, row by row, into a file that appears complete or not at all, in place of one that stood there.
///
/// Every form is valid whatever the cells hold: characters that it has no way to write are left out. Spreadsheets are
/// XML, as spreadsheet programs import it. Files with separators are UTF-8 with its mark, with CR LF behind each line
/// and quotes where RFC 4180 wants them; with tabs, too.
class CReportWriter {
public:
    explicit CReportWriter(ReportHeading heading = {});
    ~CReportWriter();

    /// Whether cells that are the path of a local file or a web address become links, where the form has such.
    void MarkLinks(bool marks) { m_marksLinks = marks; }

    /// Creates the file and writes what stands above the rows. False when it cannot be created.
    [[nodiscard]] bool Open(const std::string& path, std::vector<ReportColumn> columns, ReportFormat format);
    /// Values in the order of the columns, UTF-8; those that are missing are empty. Without Open nothing happens.
    void AddRow(std::vector<std::string> values);
    int RowCount() const { return m_rows; }
    /// Writes what stands below the rows and puts the file in place. Fails: nothing was replaced. Calling it again,
    /// or without Open, does nothing and succeeds.
    [[nodiscard]] platform::FileResult Close();

private:
    void Write(const std::string& text);

    ReportHeading m_heading;
    bool m_marksLinks = true;
    int m_rows = 0;
    std::size_t m_columns = 0;
    std::unique_ptr<CReportForm> m_form;
    std::unique_ptr<platform::CAtomicFile> m_file;
};
