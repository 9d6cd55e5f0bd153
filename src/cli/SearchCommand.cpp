#include "cli/SearchCommand.h"

#include <set>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "cli/RunArguments.h"
#include "cli/RunPrinter.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "protocol/Json.h"
#include "protocol/SearchOrder.h"
#include "supervisor/Supervisor.h"

namespace cli {

namespace {

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
    const auto area = ParseSearchArea(typed);
    if (!area) FailUsage("--area takes left, bottom, right and top in points, such as 0,700,300,842");
    return *area;
}

/// Patterns and paths as they were typed: without --pattern the first operand is the pattern.
struct SearchWords {
    std::vector<std::string> patterns, paths;
};

SearchWords TakeWords(const CArguments& arguments)
{
    SearchWords words{arguments.All("--pattern"), arguments.Operands()};
    const bool byRules = arguments.Has("--rules");
    if (words.patterns.empty() && !words.paths.empty() && !byRules) {
        words.patterns.push_back(words.paths.front());
        words.paths.erase(words.paths.begin());
    }
    if (words.patterns.empty() && !byRules) FailUsage("say what to look for");
    if (words.paths.empty()) FailUsage("name files or folders to search in; a single \".\" is the current folder");
    return words;
}

/// What a file of rules says itself.
void RefuseWithRules(const CArguments& arguments)
{
    for (const char* option : {"--pattern", "--regex", "--ignore-case", "--whole-words", "--line-ends", "--format",
                               "--pages", "--area", "--files-with-matches"})
        if (arguments.Has("--rules") && arguments.Has(option))
            FailUsage(std::string(option) + " has no meaning with --rules, whose file says that for each rule");
}

SearchOrder OrderOf(const CArguments& arguments, const std::vector<std::string>& patterns)
{
    RefuseWithRules(arguments);
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
    order.firstMatchOnly = arguments.Has("--files-with-matches") && !arguments.Has("--report");
    const std::string folder = OptionalPath(arguments, "--copy-to");
    // A trial makes no folder, and there is nothing to try in one that is not there.
    if (!arguments.Has("--dry-run") || platform::FolderExists(folder)) order.copyFolder = folder;
    order.reportFile = FilePath(arguments, "--report");
    return order;
}

WorkDescription WorkOf(const CArguments& arguments, const SearchOrder& order)
{
    WorkDescription work{.kind = kSearchWork, .files = {}, .settings = LineOf(SearchOrderJson(order))};
    if (arguments.Has("--rules")) work.files.push_back({kSearchRules, ExistingPath(arguments.Text("--rules"))});
    return work;
}

/// Whether something is written: copies, reports, or whatever a file of rules may say.
bool Acts(const CArguments& arguments)
{
    return arguments.Has("--copy-to") || arguments.Has("--report") || arguments.Has("--rules");
}

/// Whether nothing is to be done for good, and nothing be left behind: no plan, no journal, no log.
bool IsTrial(const CArguments& arguments)
{
    if (!Acts(arguments) && arguments.Has("--resume"))
        FailUsage("--resume goes on with a search that copies or reports; any other is simply done again");
    if (arguments.Has("--resume") && arguments.Has("--dry-run"))
        FailUsage("--dry-run tries out a whole search; leave --resume out");
    return !Acts(arguments) || arguments.Has("--dry-run");
}

/// Before hours of searching end in nothing.
void PrepareTargets(const SearchOrder& order)
{
    if (const std::string folder = FolderOf(order.reportFile); !folder.empty() && !platform::FolderExists(folder))
        FailStart("there is no folder " + Printable(folder) + " for the report");
    if (order.copyFolder.empty()) return;
    if (const auto made = platform::CreateFolders(order.copyFolder); !made)
        FailStart("the folder " + Printable(order.copyFolder) + " cannot be made (" +
                  platform::ErrorText(made.errorNumber) + ")");
}

/// Prints what was found, file by file in the order of the inputs.
class CSearchPrinter final : public CRunObserver {
public:
    CSearchPrinter(const Screen& screen, const CArguments& arguments)
        : m_screen(screen),
          m_line(screen),
          m_quiet(arguments.Has("--quiet")),
          m_json(arguments.Has("--json")),
          m_count(arguments.Has("--count")),
          m_names(arguments.Has("--files-with-matches"))
    {
    }

    /// Only for somebody who watches.
    void FileDone(const FileRecord&, const RunProgress& progress) override { Tick(progress); }
    void Tick(const RunProgress& progress) override
    {
        if (m_screen.terminal && !m_quiet) m_line.Show(progress);
    }
    void Finish() { m_line.Status().Clear(); }
    void RecordLine(const std::string& json) override
    {
        const auto record = FileRecordFrom(ParseObject(json).value_or(Json::object()));
        if (!record) return;
        const Json array = Json::parse(record->findings, nullptr, false);
        const auto findings = FindingsFrom(array.is_array() ? array : Json::array());
        if (!findings.empty() || m_count) m_line.Status().Clear();  // they may go to the same terminal
        m_found += findings.size();
        Print(record->path, findings);
        if (record->outcome != FileOutcome::Saved)
            Say(record->path, record->message);
        else if (!m_quiet && !record->message.empty())
            Say(record->path, record->message);
    }
    void Remark(const std::string& text) override { m_line.Status().Message("ferrule: " + Printable(text)); }
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
        m_line.Status().Message("ferrule: " + ShownPath(path) + ": " + PrintableLines(message));
    }

    const Screen& m_screen;
    CRunProgressLine m_line;
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
    const SearchOrder order = OrderOf(arguments, words.patterns);
    RunOptions options;
    options.request.work = WorkOf(arguments, order);
    for (const std::string& path : words.paths) options.request.inputs.push_back(ExistingPath(path));
    options.request.noSubfolders = arguments.Has("--no-subfolders");
    options.request.extensions = "pdf";
    options.request.acceptDamaged = true;
    options.engine = ReadEngine(arguments);
    options.engine.textCacheFolder = ReadTextCache(arguments);
    options.dryRun = IsTrial(arguments);
    options.resume = arguments.Has("--resume");
    options.hashes = arguments.Has("--record");
    if (!options.dryRun) PrepareTargets(order);
    if (const std::string record = OptionalPath(arguments, "--record"); record != "-") options.recordPath = record;
    CSearchPrinter printer(screen, arguments);
    const RunResult result = RunPlanned(options, printer);
    printer.Finish();
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
    EngineOptions engine = ReadEngine(arguments);
    engine.textCacheFolder = ReadTextCache(arguments);
    const JobResult result =
        RunJob(engine, LineOf(job), nobody, [&](const std::string& report) { printer.Report(report); });
    if (result.exit == ExitClass::Fine) return kExitFine;
    if (result.diedEarly)
        for (const std::string& line : result.errorLines) *screen.messages << Printable(line) << '\n';
    const std::string message = result.message.empty() ? "the host answered nothing" : result.message;
    *screen.messages << "ferrule: " << PrintableLines(message) << '\n';
    return static_cast<int>(result.exit);
}

}  // namespace cli
