#include "cli/MetadataCommand.h"

#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "cli/RunArguments.h"
#include "cli/RunPrinter.h"
#include "cli/Summary.h"
#include "common/ReportWriter.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "protocol/Json.h"
#include "protocol/Metadata.h"
#include "supervisor/Supervisor.h"

namespace cli {

namespace {

/// The keys of --fields, separated by commas, that have no column of their own.
MetadataOrder ReadingOrder(const CArguments& arguments)
{
    MetadataOrder order;
    for (const std::string& part : Split(arguments.Text("--fields"), ",")) {
        const std::string key(Trim(part));
        if (key.empty()) continue;
        if (const std::string problem = KeyProblem(key); !problem.empty()) FailUsage("--fields: " + problem);
        const bool isColumn = std::ranges::find(kPropertyColumns, key) != kPropertyColumns.end();
        if (!isColumn && std::ranges::find(order.keys, key) == order.keys.end()) order.keys.push_back(key);
    }
    return order;
}

std::vector<std::string> ColumnsOf(const MetadataOrder& order)
{
    std::vector<std::string> names(kPropertyColumns.begin(), kPropertyColumns.end());
    names.insert(names.end(), order.keys.begin(), order.keys.end());
    return names;
}

/// Hands over the properties of each document in the order of the inputs, and says what could not be read.
class CPropertiesObserver : public CRunObserver {
public:
    explicit CPropertiesObserver(const Screen& screen) : m_line(screen) {}

    void RecordLine(const std::string& json) override
    {
        const auto record = FileRecordFrom(ParseObject(json).value_or(Json::object()));
        if (!record) return;
        auto texts = PropertiesFrom(Json::parse(record->findings, nullptr, false));
        if (!texts) Message(ShownPath(record->path) + ": " + PrintableLines(record->message));
        Properties(record->path, std::move(texts));
    }
    void Remark(const std::string& text) override { Message(Printable(text)); }
    void Warning(const std::string& text) override { Remark("warning: " + text); }
    void Finish() { m_line.Status().Clear(); }

protected:
    /// Nothing: the document could not be opened.
    virtual void Properties(const std::string& path, std::optional<std::vector<std::string>> texts) = 0;
    CRunProgressLine& Line() { return m_line; }

private:
    void Message(const std::string& text) { m_line.Status().Message("ferrule: " + text); }

    CRunProgressLine m_line;
};

class CPropertiesPrinter final : public CPropertiesObserver {
public:
    CPropertiesPrinter(const Screen& screen, std::vector<std::string> columns, bool json)
        : CPropertiesObserver(screen), m_data(*screen.data), m_columns(std::move(columns)), m_json(json)
    {
        for (const std::string& name : m_columns) m_width = std::max(m_width, name.size());
    }

private:
    void Properties(const std::string& path, std::optional<std::vector<std::string>> texts) override
    {
        if (!texts) return;
        if (m_json) return PrintObject(*texts);
        m_data << (m_any ? "\n" : "") << ShownPath(path) << '\n';
        m_any = true;
        for (std::size_t column = 1; column < m_columns.size() && column < texts->size(); ++column)
            if (!(*texts)[column].empty())
                m_data << "  " << m_columns[column] << std::string(m_width - m_columns[column].size() + 2, ' ')
                       << Printable((*texts)[column]) << '\n';
    }
    void PrintObject(const std::vector<std::string>& texts)
    {
        Json object = Json::object();
        for (std::size_t column = 0; column < m_columns.size() && column < texts.size(); ++column)
            object[m_columns[column]] = texts[column];
        m_data << LineOf(object) << '\n';
    }

    std::ostream& m_data;
    std::vector<std::string> m_columns;
    std::size_t m_width = 0;
    bool m_json, m_any = false;
};

class CPropertiesTable final : public CPropertiesObserver {
public:
    CPropertiesTable(const Screen& screen, CReportWriter& table)
        : CPropertiesObserver(screen), m_screen(screen), m_table(table)
    {
    }
    void Tick(const RunProgress& progress) override
    {
        if (m_screen.terminal) Line().Show(progress);
    }

private:
    void Properties(const std::string& path, std::optional<std::vector<std::string>> texts) override
    {
        m_table.AddRow(texts ? std::move(*texts)
                             : std::vector{TextFromBytes(path), std::string(kCannotOpenDocument)});
    }

    const Screen& m_screen;
    CReportWriter& m_table;
};

/// Reads the properties of all inputs. Nothing is left behind: no plan, no journal, no log.
RunResult ReadAll(const CArguments& arguments, const MetadataOrder& order, CPropertiesObserver& observer)
{
    RunOptions options;
    options.request.work = {.kind = kMetadataWork, .files = {}, .settings = LineOf(MetadataOrderJson(order))};
    options.request.inputs = ReadInputs(arguments, "read");
    options.request.noSubfolders = arguments.Has("--no-subfolders");
    options.request.extensions = "pdf";
    options.request.acceptDamaged = true;
    options.engine = ReadEngine(arguments);
    options.dryRun = true;
    options.hashes = false;  // nobody sees them
    const RunResult result = RunPlanned(options, observer);
    observer.Finish();
    return result;
}

int ExitOf(const RunResult& result, const Screen& screen)
{
    if (!result.message.empty()) *screen.messages << "ferrule: " << PrintableLines(result.message) << '\n';
    return static_cast<int>(result.exit);
}

struct FormatWord {
    const char* word;
    ReportFormat format;
};
constexpr FormatWord kFormats[] = {{"xml", ReportFormat::ExcelXml},
                                   {"csv", ReportFormat::Csv},
                                   {"txt", ReportFormat::TabDelimited},
                                   {"json", ReportFormat::JsonText},
                                   {"html", ReportFormat::Html}};

/// By --format, or else by the name of the file, which must then say it.
ReportFormat FormatOf(const CArguments& arguments, const std::string& path)
{
    const std::string extension = Extension(path);
    const std::string word = arguments.Has("--format") ? arguments.Text("--format") : extension;
    for (const FormatWord& known : kFormats)
        if (EqualsIgnoreCaseAscii(word, known.word) || EqualsIgnoreCaseAscii(word, ReportExtension(known.format)))
            return known.format;
    FailUsage(Printable(path) +
              ": the name does not say the form of the table; end it with .xml, .csv, .txt, .json or "
              ".html, or give --format");
}

std::string TablePath(const CArguments& arguments)
{
    const std::string path = FilePath(arguments, "--output");
    if (platform::NameExists(path) && !arguments.Has("--overwrite"))
        FailStart(Printable(path) + ": this file is there already; --overwrite replaces it");
    return path;
}

}  // namespace

int MetadataShowCommand(const CArguments& arguments, const Screen& screen)
{
    const MetadataOrder order = ReadingOrder(arguments);
    CPropertiesPrinter printer(screen, ColumnsOf(order), arguments.Has("--json"));
    return ExitOf(ReadAll(arguments, order, printer), screen);
}

int MetadataExportCommand(const CArguments& arguments, const Screen& screen)
{
    const MetadataOrder order = ReadingOrder(arguments);
    const std::string path = TablePath(arguments);
    const ReportFormat format = FormatOf(arguments, path);
    std::vector<ReportColumn> columns;
    for (const std::string& name : ColumnsOf(order)) columns.push_back({.name = name});
    const std::string now = platform::Utf8FromNarrow(platform::LocalTimeText(platform::NanosecondsSince1970()));
    CReportWriter table({.title = "Metadata", .facts = {{"Processing Date", now}}});
    if (!table.Open(path, columns, format))
        FailStart(Printable(path) + ": the table cannot be created here; give another folder or name");
    CPropertiesTable observer(screen, table);
    const RunResult result = ReadAll(arguments, order, observer);
    if (result.exit == ExitClass::Broken || result.exit == ExitClass::Stopped) return ExitOf(result, screen);
    if (const auto closed = table.Close(); !closed.Ok())
        FailStart(Printable(path) + ": the table cannot be written (" + platform::ErrorText(closed.errorNumber) +
                  ")");
    if (!arguments.Has("--quiet"))
        *screen.messages << "Written: " << ShownPath(path) << " ("
                         << Grouped(static_cast<std::uint64_t>(table.RowCount())) << " documents)\n";
    return ExitOf(result, screen);
}

}  // namespace cli
