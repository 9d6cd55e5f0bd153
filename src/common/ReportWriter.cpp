#include "common/ReportWriter.h"

#include <array>

#include <nlohmann/json.hpp>

#include "base/Names.h"
#include "base/Text.h"
#include "base/Xml.h"
#include "common/RegularExpression.h"
#include "common/ReportHtml.h"
#include "common/SeparatedText.h"

/// How a table looks in a file.
class CReportForm {
public:
    virtual ~CReportForm() = default;
    virtual std::string Head(const std::vector<ReportColumn>& columns) = 0;
    virtual std::string Row(const std::vector<std::string>& values) = 0;
    virtual std::string Tail() { return {}; }
};

namespace {

constexpr const char* kExtensions[] = {"xml", "csv", "txt", "json", "htm"};
constexpr char kReportMark[] = "\xEF\xBB\xBF";

std::vector<std::string> NamesOf(const std::vector<ReportColumn>& columns)
{
    std::vector<std::string> names;
    for (const ReportColumn& column : columns) names.push_back(column.name);
    return names;
}

/// Says which cells lead somewhere.
class CLinkFinder {
public:
    CLinkFinder()
    {
        m_compiled = m_path.Compile(R"(^[A-Z]\:(\\[^<>:"/\|?*]+)+\.\w{1,8})", LetterCase::Matters) &&
                     m_address.Compile(R"(^(http\:|www\.|https\:|ftp\:))", LetterCase::Ignored);
    }
    bool IsLink(const std::string& value) const
    {
        // Both begin with a letter and have a colon or a dot soon after it: most cells need no expression.
        if (!m_compiled || value.find_first_of(":.") > std::string_view("https").size()) return false;
        const auto text = CSearchedText::FromUtf8(value);
        return Matches(m_path, text) || Matches(m_address, text);
    }

private:
    static bool Matches(const CRegularExpression& pattern, const CSearchedText& text)
    {
        const auto found = pattern.Find(text);
        return found && *found;
    }

    CRegularExpression m_path, m_address;
    bool m_compiled = false;
};

class CSpreadsheetForm final : public CReportForm {
public:
    explicit CSpreadsheetForm(bool marksLinks) : m_marksLinks(marksLinks) {}

    std::string Head(const std::vector<ReportColumn>& columns) override
    {
        m_columns = columns;
        std::string head =
            "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
            "<?mso-application progid=\"Excel.Sheet\"?>\n"
            "<ss:Workbook xmlns=\"urn:schemas-microsoft-com:office:spreadsheet\" "
            "xmlns:ss=\"urn:schemas-microsoft-com:office:spreadsheet\" "
            "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
            "<Styles><Style ss:ID=\"s62\" ss:Name=\"Hyperlink\"><Font ss:Color=\"#0000FF\" "
            "ss:Underline=\"Single\"/></Style></Styles>\n"
            "<ss:Worksheet ss:Name=\"Sheet1\">\n<ss:Table>\r\n";
        for (const ReportColumn& column : columns)
            head += FormatText("<ss:Column ss:Width=\"%d\"/>", column.width) + '\n';
        return head + RowOf(NamesOf(columns), false);
    }
    std::string Row(const std::vector<std::string>& values) override { return RowOf(values, m_marksLinks); }
    std::string Tail() override { return "</ss:Table>\n</ss:Worksheet></ss:Workbook>"; }

private:
    std::string RowOf(const std::vector<std::string>& values, bool marksLinks) const
    {
        std::string row = "<ss:Row>";
        for (std::size_t at = 0; at < values.size(); ++at) {
            const bool isLink = marksLinks && m_links.IsLink(values[at]);
            row += isLink ? "<ss:Cell ss:StyleID=\"s62\" ss:HRef=\"" + XmlAttributeValue(values[at]) + "\">"
                          : std::string("<ss:Cell>");
            row += "<ss:Data ss:Type=\"" + XmlAttributeValue(m_columns[at].type) + "\">" + XmlEscaped(values[at]) +
                   "</ss:Data></ss:Cell>";
        }
        return row + "</ss:Row>\n";
    }

    bool m_marksLinks;
    CLinkFinder m_links;
    std::vector<ReportColumn> m_columns;
};

class CDelimitedForm final : public CReportForm {
public:
    explicit CDelimitedForm(char separator) : m_separator(separator) {}

    std::string Head(const std::vector<ReportColumn>& columns) override
    {
        return kReportMark + Row(NamesOf(columns));
    }
    std::string Row(const std::vector<std::string>& values) override
    {
        std::string line;
        for (const std::string& value : values) {
            if (&value != &values.front()) line += m_separator;
            line += SeparatedValue(value, m_separator);
        }
        return line + "\r\n";
    }

private:
    char m_separator;
};

class CJsonForm final : public CReportForm {
public:
    std::string Head(const std::vector<ReportColumn>& columns) override
    {
        for (const ReportColumn& column : columns)
            m_names.push_back(Quoted(column.name.empty() ? "Unknown" : column.name));
        return "{\"Data\":[";
    }
    std::string Row(const std::vector<std::string>& values) override
    {
        std::string row = m_isFirst ? "{" : ", {";
        m_isFirst = false;
        for (std::size_t at = 0; at < values.size(); ++at)
            row += (at == 0 ? "" : ",") + m_names[at] + ':' + Quoted(values[at]);
        return row + '}';
    }
    std::string Tail() override { return "]}"; }

private:
    static std::string Quoted(const std::string& text)
    {
        return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }

    std::vector<std::string> m_names;
    bool m_isFirst = true;
};

class CHtmlForm final : public CReportForm {
public:
    explicit CHtmlForm(ReportHeading heading) : m_heading(std::move(heading)) {}

    std::string Head(const std::vector<ReportColumn>& columns) override
    {
        return HtmlHead(m_heading.title, m_heading.facts) + HtmlTable("gridtable") + HtmlHeadings(NamesOf(columns));
    }
    std::string Row(const std::vector<std::string>& values) override { return HtmlRow(values); }
    std::string Tail() override { return HtmlTableEnd() + HtmlTail(); }

private:
    ReportHeading m_heading;
};

std::unique_ptr<CReportForm> MakeForm(ReportFormat format, bool marksLinks, const ReportHeading& heading)
{
    switch (format) {
        case ReportFormat::Csv:
            return std::make_unique<CDelimitedForm>(',');
        case ReportFormat::TabDelimited:
            return std::make_unique<CDelimitedForm>('\t');
        case ReportFormat::JsonText:
            return std::make_unique<CJsonForm>();
        case ReportFormat::Html:
            return std::make_unique<CHtmlForm>(heading);
        case ReportFormat::ExcelXml:
            break;
    }
    return std::make_unique<CSpreadsheetForm>(marksLinks);
}

}  // namespace

const char* ReportExtension(ReportFormat format) { return kExtensions[static_cast<std::size_t>(format)]; }

ReportFormat ReportFormatOf(std::string_view extension)
{
    for (std::size_t format = 0; format < std::size(kExtensions); ++format)
        if (EqualsIgnoreCaseAscii(extension, kExtensions[format])) return static_cast<ReportFormat>(format);
    return EqualsIgnoreCaseAscii(extension, "html") ? ReportFormat::Html : ReportFormat::ExcelXml;
}

CReportWriter::CReportWriter(ReportHeading heading) : m_heading(std::move(heading)) {}
CReportWriter::~CReportWriter() = default;

bool CReportWriter::Open(const std::string& path, std::vector<ReportColumn> columns, ReportFormat format)
{
    m_rows = 0;
    m_columns = columns.size();
    m_form = MakeForm(format, m_marksLinks, m_heading);
    m_file = std::make_unique<platform::CAtomicFile>(path, platform::Existing::Replace);
    if (!m_file->Result().Ok()) {
        m_file.reset();
        return false;
    }
    Write(m_form->Head(columns));
    return true;
}

void CReportWriter::AddRow(std::vector<std::string> values)
{
    if (!m_file) return;
    values.resize(m_columns);
    Write(m_form->Row(values));
    ++m_rows;
}

platform::FileResult CReportWriter::Close()
{
    if (!m_file) return {};
    Write(m_form->Tail());
    const platform::FileResult result = m_file->Commit();
    m_file.reset();
    return result;
}

void CReportWriter::Write(const std::string& text) { m_file->Write(text.data(), text.size()); }
