#include "cli/RenameCommand.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "cli/RunArguments.h"
#include "cli/RunCommands.h"
#include "cli/RunPrinter.h"
#include "cli/Summary.h"
#include "common/ProductPaths.h"
#include "common/RenamePlan.h"
#include "common/RenameReport.h"
#include "platform/AtomicFile.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "protocol/Json.h"
#include "protocol/RenameOrder.h"
#include "supervisor/Supervisor.h"

namespace cli {

namespace {

/// Each worker reads the list, and a later start of the run does so again.
std::string ListPath(const CArguments& arguments)
{
    const std::string typed = arguments.Text("--apply");
    if (typed == "-") FailUsage("--apply takes a file, which is read more than once; - has no meaning");
    const std::string path = ExistingPath(typed);
    if (const auto readable = platform::CheckReadable(path); !readable)
        FailStart(path + ": " + platform::ErrorText(readable.errorNumber) + "; --apply takes a regular file");
    return path;
}

/// Where the report goes; empty: none is wanted.
std::string ReportPath(const CArguments& arguments)
{
    const std::string path = OptionalPath(arguments, "--report-text");
    if (!path.empty() && arguments.Has("--dry-run"))
        FailUsage("--report-text tells what was renamed, and --dry-run renames nothing");
    if (!path.empty() && platform::NameExists(path))
        FailStart(Printable(path) + ": is there already; --report-text takes the name of a new file");
    return path;
}

void AddToReport(CRenameReport& report, const std::string& json)
{
    const auto record = FileRecordFrom(ParseObject(json).value_or(Json::object()));
    if (!record) return;
    const bool renamed = record->outcome == FileOutcome::Saved || !record->outputs.empty();
    const std::string& target = record->outputs.empty() ? record->path : record->outputs.front().path;
    if (renamed)
        report.Renamed(record->path, target, record->outcome == FileOutcome::Saved ? "" : record->message);
    else if (record->outcome == FileOutcome::Skipped)
        report.Skipped(record->path, record->message);
    else
        report.Failed(record->path, record->message);
}

/// A file that must be new. `what` it is, for people.
void WriteNewFile(const std::string& path, const std::string& text, const char* what, const char* option)
{
    platform::CAtomicFile file(path, platform::Existing::Fail);
    file.Write(text.data(), text.size());
    if (const auto written = file.Commit(); !written.Ok())
        FailStart(Printable(path) + ": the " + what + " cannot be written (" +
                  platform::ErrorText(written.errorNumber) + "); " + option + " takes the name of a new file");
}

int Apply(const CArguments& arguments, const std::string& list, RenameOrder order, const Screen& screen, bool goesOn)
{
    const auto timeout = static_cast<int>(arguments.Number("--timeout"));
    order.scriptSeconds = static_cast<int>(arguments.Number("--script-timeout"));
    if (timeout > 0 && order.scriptSeconds >= timeout && arguments.Has("--settings"))
        FailUsage("--script-timeout has to be less than --timeout, which ends the worker with the script");
    WorkDescription work{.kind = kRenameWork, .files = {{kRenameList, list}}, .settings = {}};
    work.settings = LineOf(RenameOrderJson(order));
    if (arguments.Has("--settings"))
        work.files.push_back({kNamingSettings, ExistingPath(arguments.Text("--settings"))});
    const std::string reportPath = ReportPath(arguments);
    CRenameReport report;
    RecordTaker taker;
    if (!reportPath.empty()) taker = [&report](const std::string& json) { AddToReport(report, json); };
    const int code = RunAndReport(ReadRun(arguments, ReadResultPlaces(arguments, std::move(work), {})), arguments,
                                  screen, goesOn, taker);
    if (!reportPath.empty() && report.RenamedFiles() + report.OtherFiles() > 0)
        WriteNewFile(reportPath, report.Text(__DATE__, platform::LocalTimeText(platform::NanosecondsSince1970())),
                     "report", "--report-text");
    return code;
}

// Naming documents from what is in them.

constexpr const char* kCases[] = {"original", "lower", "upper"};  // in the order of their numbers

NamingOrder::Rule RuleOf(const char* option, const std::string& typed, bool isExpression)
{
    const auto mark = typed.find('=');
    if (mark == typed.npos || mark == 0)
        FailUsage(std::string(option) + " takes what is searched and what replaces it, such as draft=final");
    return {typed.substr(0, mark), typed.substr(mark + 1), isExpression};
}

NamingOrder NamesOf(const CArguments& arguments)
{
    NamingOrder order{.name = arguments.Text("--name")};
    if (order.name.empty()) FailUsage("--name takes a text, such as '<title>_<year>'");
    for (const std::string& typed : arguments.All("--replace"))
        order.rules.push_back(RuleOf("--replace", typed, false));
    for (const std::string& typed : arguments.All("--replace-regex"))
        order.rules.push_back(RuleOf("--replace-regex", typed, true));
    order.textCase =
        static_cast<std::int32_t>(std::ranges::find(kCases, arguments.Text("--case")) - std::begin(kCases));
    order.longest = static_cast<std::int32_t>(arguments.Number("--max-length"));
    return order;
}

WorkDescription NamingOf(const CArguments& arguments)
{
    WorkDescription work{.kind = kNamingWork, .files = {}, .settings = LineOf(NamingOrderJson({}))};
    if (!arguments.Has("--settings")) {
        work.settings = LineOf(NamingOrderJson(NamesOf(arguments)));
        return work;
    }
    for (const char* option : {"--name", "--replace", "--replace-regex", "--case", "--max-length"})
        if (arguments.Has(option))
            FailUsage(std::string(option) + " has no meaning with --settings, whose file says that");
    work.files.push_back({kNamingSettings, ExistingPath(arguments.Text("--settings"))});
    return work;
}

/// Makes the list of new names, in the order of the inputs.
class CNameLister final : public CRunObserver {
public:
    explicit CNameLister(const Screen& screen) : m_screen(screen), m_line(screen) {}

    void Tick(const RunProgress& progress) override
    {
        if (m_screen.terminal) m_line.Show(progress);
    }
    void RecordLine(const std::string& json) override
    {
        const auto record = FileRecordFrom(ParseObject(json).value_or(Json::object()));
        if (!record) return;
        const Json findings = Json::parse(record->findings, nullptr, false);
        const auto name = NewNameFrom(findings.is_array() ? findings : Json::array());
        if (!name) Message(ShownPath(record->path) + ": " + PrintableLines(record->message));
        m_text += RenamePlanLine(TextFromBytes(record->path), name ? name->name : std::string());
        m_overwrites = m_overwrites || (name && name->overwrite);
    }
    void Remark(const std::string& text) override { Message(Printable(text)); }
    void Warning(const std::string& text) override { Remark("warning: " + text); }
    void Finish() { m_line.Status().Clear(); }

    std::string List() const { return RenamePlanHeading() + m_text; }
    bool Overwrites() const { return m_overwrites; }

private:
    void Message(const std::string& text) { m_line.Status().Message("ferrule: " + text); }

    const Screen& m_screen;
    CRunProgressLine m_line;
    std::string m_text;
    bool m_overwrites = false;
};

RunResult FindNames(const CArguments& arguments, CNameLister& lister)
{
    RunOptions options;
    options.request.work = NamingOf(arguments);
    options.request.inputs = ReadInputs(arguments, "rename");
    options.request.noSubfolders = arguments.Has("--no-subfolders");
    options.request.extensions = "pdf";
    options.request.acceptDamaged = true;
    options.engine = ReadEngine(arguments);
    options.engine.textCacheFolder = ReadTextCache(arguments);
    options.dryRun = true;
    options.hashes = false;
    const RunResult result = RunPlanned(options, lister);
    lister.Finish();
    return result;
}

/// Of a run that comes to its end nobody needs the list any more.
std::string OwnListPath()
{
    const std::string folder = MakeProductPaths(platform::ApplicationDataFolder()).settingsFolder + "Renames";
    (void)platform::CreateFolders(folder);
    return folder + kSeparator + "names-" + std::to_string(platform::NanosecondsSince1970()) + ".csv";
}

int NameAndApply(const CArguments& arguments, const Screen& screen)
{
    if (arguments.Has("--resume") || arguments.Has("--retry-failed"))
        FailUsage("to go on with a renaming, name its list: --apply PLAN");
    (void)ReportPath(arguments);
    CNameLister lister(screen);
    const RunResult named = FindNames(arguments, lister);
    if (!named.message.empty()) *screen.messages << "ferrule: " << PrintableLines(named.message) << '\n';
    if (named.exit == ExitClass::Broken || named.exit == ExitClass::Stopped) return static_cast<int>(named.exit);
    const bool isOwn = !arguments.Has("--plan");
    if (arguments.Has("--dry-run") && isOwn) {
        *screen.data << lister.List();
        return static_cast<int>(named.exit);
    }
    const std::string list = isOwn ? OwnListPath() : FilePath(arguments, "--plan");
    WriteNewFile(list, lister.List(), kRenameList, "--plan");
    if (arguments.Has("--dry-run")) {
        *screen.messages << "Written: " << ShownPath(list)
                         << "; \"ferrule rename --apply\" gives the files these names\n";
        return static_cast<int>(named.exit);
    }
    const int code =
        Apply(arguments, list, {.overwrite = arguments.Has("--overwrite") || lister.Overwrites()}, screen, false);
    if (isOwn && code == kExitFine) (void)platform::DeleteFile(list);
    if (code != kExitFine)
        *screen.messages << "To go on, or to do files again: ferrule rename --apply " << ShownPath(list)
                         << (arguments.Has("--settings") ? " --settings " + arguments.Text("--settings") : "")
                         << " --resume --retry-failed\n";
    return code;
}

}  // namespace

int RenameCommand(const CArguments& arguments, const Screen& screen)
{
    if (!arguments.Has("--apply")) {
        if (!arguments.Has("--name") && !arguments.Has("--settings"))
            FailUsage("say what the new names are: --name TEXT, --settings FILE, or --apply PLAN");
        return NameAndApply(arguments, screen);
    }
    for (const char* option : {"--name", "--plan"})
        if (arguments.Has(option))
            FailUsage(std::string(option) + " has no meaning with --apply, whose list has the names");
    if (!arguments.Operands().empty())
        FailUsage("with --apply the list says which files are renamed; name none beside it");
    return Apply(arguments, ListPath(arguments), {.overwrite = arguments.Has("--overwrite")}, screen, true);
}

}  // namespace cli
