#include "cli/SearchCommand.h"

#include <charconv>
#include <set>
#include <utility>

#include "base/Text.h"
#include "cli/RunArguments.h"
#include "platform/Paths.h"
#include "protocol/Json.h"
#include "protocol/SearchOrder.h"
#include "supervisor/Supervisor.h"

namespace cli {

namespace {

enum SearchExit { kFound = 0, kNothingFound = 1, kTrouble = 2 };

constexpr std::string_view kRangeMark = "..";

/// The page expressions of "FIRST..LAST", or of one page.
std::pair<std::string, std::string> PagesOf(const std::string& typed)
{
    const auto mark = typed.find(kRangeMark);
    if (mark == std::string::npos) return {typed, typed};
    return {typed.substr(0, mark), typed.substr(mark + kRangeMark.size())};
}

SearchArea AreaOf(const std::string& typed)
{
    const auto pieces = Split(typed, ",");
    SearchArea area{};
    bool good = pieces.size() == area.size();
    for (std::size_t i = 0; good && i < area.size(); ++i) {
        const std::string piece = Trim(pieces[i]);
        const auto [end, error] = std::from_chars(piece.data(), piece.data() + piece.size(), area[i]);
        good = error == std::errc() && end == piece.data() + piece.size();
    }
    if (!good) FailUsage("--area takes left, bottom, right and top in points, such as 0,700,300,842");
    if (area[0] > area[2]) std::swap(area[0], area[2]);
    if (area[1] > area[3]) std::swap(area[1], area[3]);
    return area;
}

/// Patterns and paths as they were typed: without --pattern the first operand is the pattern.
struct SearchWords {
    std::vector<std::string> patterns, paths;
};

SearchWords TakeWords(const CArguments& arguments)
{
    SearchWords words{arguments.All("--pattern"), arguments.Operands()};
    if (words.patterns.empty() && !words.paths.empty()) {
        words.patterns.push_back(words.paths.front());
        words.paths.erase(words.paths.begin());
    }
    if (words.patterns.empty()) FailUsage("say what to look for");
    if (words.paths.empty()) FailUsage("name files or folders to search in; a single \".\" is the current folder");
    return words;
}

SearchOrder OrderOf(const CArguments& arguments, const std::vector<std::string>& patterns)
{
    SearchOrder order;
    for (const std::string& pattern : patterns) {
        if (pattern.empty()) FailUsage("an empty text is found nowhere");
        order.terms.push_back({.text = pattern,
                               .isExpression = arguments.Has("--regex"),
                               .wholeWords = arguments.Has("--whole-words"),
                               .matchCase = !arguments.Has("--ignore-case"),
                               .lineEnds = arguments.Has("--line-ends"),
                               .format = arguments.Text("--format")});
    }
    if (arguments.Has("--pages")) std::tie(order.firstPage, order.lastPage) = PagesOf(arguments.Text("--pages"));
    if (arguments.Has("--area")) order.area = AreaOf(arguments.Text("--area"));
    order.firstMatchOnly = arguments.Has("--files-with-matches");
    return order;
}

/// Without the folder that people are in.
std::string ShownPath(const std::string& path)
{
    static const std::string here = platform::AbsolutePath(".");
    const bool below = path.size() > here.size() + 1 && path.starts_with(here) &&
                       (path[here.size()] == '/' || path[here.size()] == '\\');
    return Printable(below ? path.substr(here.size() + 1) : path);
}

/// Prints what was found, file by file in the order of the inputs.
class CSearchPrinter final : public CRunObserver {
public:
    CSearchPrinter(const Screen& screen, const CArguments& arguments)
        : m_screen(screen),
          m_quiet(arguments.Has("--quiet")),
          m_json(arguments.Has("--json")),
          m_count(arguments.Has("--count")),
          m_names(arguments.Has("--files-with-matches"))
    {
    }

    void RecordLine(const std::string& json) override
    {
        const auto record = FileRecordFrom(ParseObject(json).value_or(Json::object()));
        if (!record) return;
        const Json array = Json::parse(record->findings, nullptr, false);
        const auto findings = FindingsFrom(array.is_array() ? array : Json::array());
        m_found += findings.size();
        Print(record->path, findings);
        if (record->outcome != FileOutcome::Saved)
            Say(record->path, record->message);
        else if (!m_quiet && !record->message.empty())
            Say(record->path, record->message);
    }
    void Remark(const std::string& text) override { *m_screen.messages << "ferrule: " << Printable(text) << '\n'; }
    void Warning(const std::string& text) override { Remark("warning: " + text); }

    std::uint64_t Found() const { return m_found; }

private:
    void Print(const std::string& path, const std::vector<Finding>& findings)
    {
        std::ostream& data = *m_screen.data;
        if (m_count) {
            data << ShownPath(path) << ':' << findings.size() << '\n';
        } else if (m_names) {
            if (!findings.empty()) data << ShownPath(path) << '\n';
        } else if (m_json) {
            for (const Finding& finding : findings)
                data << LineOf({{"path", TextFromBytes(path)},
                                {"page", finding.page},
                                {"term", finding.term},
                                {"text", finding.text}})
                     << '\n';
        } else {
            for (const Finding& finding : findings)
                data << ShownPath(path) << ':' << finding.page << ": " << Printable(finding.text) << '\n';
        }
    }
    void Say(const std::string& path, const std::string& message)
    {
        *m_screen.messages << "ferrule: " << ShownPath(path) << ": " << PrintableLines(message) << '\n';
    }

    const Screen& m_screen;
    bool m_quiet, m_json, m_count, m_names;
    std::uint64_t m_found = 0;
};

int ExitOf(const RunResult& result, std::uint64_t found)
{
    if (result.exit == ExitClass::Stopped) return kExitStopped;
    if (result.exit != ExitClass::Fine) return kTrouble;
    return found > 0 ? kFound : kNothingFound;
}

}  // namespace

int SearchCommand(const CArguments& arguments, const Screen& screen)
{
    const SearchWords words = TakeWords(arguments);
    RunOptions options;
    options.request.work = {.kind = kSearchWork,
                            .settings = LineOf(SearchOrderJson(OrderOf(arguments, words.patterns)))};
    for (const std::string& path : words.paths) options.request.inputs.push_back(ExistingPath(path));
    options.request.noSubfolders = arguments.Has("--no-subfolders");
    options.request.extensions = "pdf";
    options.request.acceptDamaged = true;
    options.engine = ReadEngine(arguments);
    // A search leaves nothing behind: no plan, no journal, no log.
    options.dryRun = true;
    if (const std::string record = OptionalPath(arguments, "--record"); record != "-") options.recordPath = record;
    CSearchPrinter printer(screen, arguments);
    const RunResult result = RunPlanned(options, printer);
    if (!result.message.empty()) *screen.messages << "ferrule: " << PrintableLines(result.message) << '\n';
    return ExitOf(result, printer.Found());
}

namespace {

/// Prints pages as they come, a form feed between them.
class CPagePrinter {
public:
    CPagePrinter(const Screen& screen, bool json) : m_screen(screen), m_json(json) {}

    void Report(const std::string& json)
    {
        const auto report = ParseObject(json);
        if (!report || !report->contains("page")) return;
        if (m_json)
            *m_screen.data << LineOf(*report) << '\n';
        else
            *m_screen.data << (m_any ? "\f" : "") << TextAt(*report, "text");
        m_any = true;
    }

private:
    const Screen& m_screen;
    bool m_json;
    bool m_any = false;
};

}  // namespace

int TextCommand(const CArguments& arguments, const Screen& screen)
{
    const auto [first, last] = PagesOf(arguments.Text("--pages"));
    Json job = {{"kind", "page-text"},
                {"path", TextFromBytes(ExistingPath(arguments.Operands().front()))},
                {"firstPage", first},
                {"lastPage", last}};
    if (arguments.Has("--area")) job["area"] = AreaOf(arguments.Text("--area"));
    CRunObserver nobody;
    CPagePrinter printer(screen, arguments.Has("--json"));
    const JobResult result = RunJob(ReadEngine(arguments), LineOf(job), nobody,
                                    [&](const std::string& report) { printer.Report(report); });
    if (result.exit == ExitClass::Fine) return kExitFine;
    if (result.diedEarly)
        for (const std::string& line : result.errorLines) *screen.messages << Printable(line) << '\n';
    const std::string message = result.message.empty() ? "the host answered nothing" : result.message;
    *screen.messages << "ferrule: " << PrintableLines(message) << '\n';
    return static_cast<int>(result.exit);
}

}  // namespace cli
