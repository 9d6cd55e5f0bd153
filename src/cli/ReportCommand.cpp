#include "cli/ReportCommand.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "base/Text.h"
#include "cli/RunArguments.h"
#include "cli/Summary.h"
#include "platform/AtomicFile.h"
#include "platform/Paths.h"
#include "report/RecordReading.h"
#include "report/ReportFigures.h"
#include "report/ReportJson.h"
#include "report/ReportPage.h"
#include "supervisor/results/OutputGuard.h"

namespace cli {

namespace {

constexpr std::size_t kListedOnTerminal = 5;
constexpr std::size_t kTimeWidth = 14, kSizeWidth = 10;

std::string Padded(const std::string& text, std::size_t width)
{
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

std::string Heading(const std::string& text) { return "\n" + text + "\n"; }

std::string FileLines(const FileList& files)
{
    std::string text;
    const std::size_t shown = std::min(files.first.size(), kListedOnTerminal);
    for (std::size_t place = 0; place < shown; ++place) text += "    " + ShownPath(files.first[place].path) + "\n";
    if (files.count > shown) text += "    ... and " + Grouped(files.count - shown) + " more\n";
    return text;
}

std::string ReasonLines(const CRunSums& sums)
{
    std::string text;
    for (const ReasonGroup& group : sums.reasons)
        text += "  " + Counted(group.files.count, "file ", "files ") + GroupTitle(group) + ": " +
                Printable(ReasonText(group)) + "\n" + FileLines(group.files);
    if (sums.otherReasons.count != 0)
        text += "  " + Counted(sums.otherReasons.count, "file", "files") + " for other reasons\n" +
                FileLines(sums.otherReasons);
    return text.empty() ? text : Heading("Reasons") + text;
}

std::string MedianLine(const char* what, const CLogHistogram& histogram)
{
    return FormatText("  %-16s half up to about %s, 95 %% up to about %s\n", what,
                      TimeText(histogram.Quantile(0.5)).c_str(), TimeText(histogram.Quantile(0.95)).c_str());
}

std::string TimeLines(const CRunSums& sums)
{
    if (sums.timePerFile.Count() == 0) return {};
    std::string text = Heading("Time") + MedianLine("for a file", sums.timePerFile);
    if (sums.timePerMegabyte.Count() != 0) text += MedianLine("for a megabyte", sums.timePerMegabyte);
    text += "  the slowest:\n";
    const std::size_t shown = std::min(sums.slowest.size(), kListedOnTerminal);
    for (std::size_t place = 0; place < shown; ++place) {
        const ListedFile& file = sums.slowest[place];
        text += Padded(TimeText(static_cast<double>(file.milliseconds)), kTimeWidth) +
                Padded(Bytes(file.size), kSizeWidth) + "  " + ShownPath(file.path) + "\n";
    }
    return text;
}

std::string SizeLines(const CRunSums& sums)
{
    const auto& sizes = sums.sizes;
    std::string text;
    if (sizes.files != 0)
        text += "  " + Bytes(sizes.before) + " before, " + Bytes(sizes.after) + " after, " +
                GrowthText(sizes.before, sizes.after) + ": " + Grouped(sizes.smaller) + " smaller, " +
                Grouped(sizes.same) + " as large, " + Grouped(sizes.larger) + " larger\n";
    if (sizes.unknown != 0) text += "  not known of " + Counted(sizes.unknown, "file", "files") + "\n";
    return text.empty() ? text : Heading("Sizes of files with results") + text;
}

std::string ProtectionLines(const CRunSums& sums)
{
    if (sums.protection.empty()) return {};
    std::string text = Heading("Protection");
    for (const auto& [pair, files] : sums.protection)
        text += Padded(Grouped(files), kSizeWidth) + "  " + ProtectionText(pair.first) + " -> " +
                (pair.second ? ProtectionText(pair.second) : "no result, or not known") + "\n";
    if (sums.protectionUnknown != 0)
        text += Padded(Grouped(sums.protectionUnknown), kSizeWidth) + "  not looked at, or not opened\n";
    if (sums.signaturesBroken.count != 0)
        text += "  Signatures broken by saving: " + Counted(sums.signaturesBroken.count, "file", "files") + "\n" +
                FileLines(sums.signaturesBroken);
    return text;
}

std::string FinalActionLines(const CRunSums& sums)
{
    std::string text;
    for (const auto& [kind, files] : sums.finalActions) {
        text += Padded(Grouped(files.count), kSizeWidth) + "  " + FinalActionText(kind) + "\n";
        if (kind.second != FinalActionRecord::State::Done) text += FileLines(files);
    }
    return text.empty() ? text : Heading("Final actions") + text;
}

std::string ProblemLines(const CRunSums& sums)
{
    std::string text;
    for (const std::string& note : sums.notes) text += Printable(note) + "\n";
    if (!sums.Incomplete()) return text;
    text += "This report is incomplete:\n";
    for (const std::string& problem : sums.problems) text += "  " + Printable(problem) + "\n";
    if (const std::uint64_t more = sums.problemCount - sums.problems.size(); more != 0)
        text += "  ... and " + Grouped(more) + " more\n";
    return text;
}

/// A sentence when the page cannot be written.
std::string WritePage(const CRunSums& sums, const std::string& path)
{
    platform::CAtomicFile file(path, platform::Existing::Replace);
    const std::string page = ReportPage(sums);
    file.Write(page.data(), page.size());
    const platform::FileResult written = file.Commit();
    return written ? std::string()
                   : "The report " + path + " cannot be written (" + platform::ErrorText(written.errorNumber) + ").";
}

/// Before the work: it would be in vain otherwise.
void RequireWritable(const std::string& path)
{
    const platform::CAtomicFile file(path, platform::Existing::Replace);
    if (const platform::FileResult made = file.Result(); !made)
        FailStart("The report " + Printable(path) + " cannot be written (" + platform::ErrorText(made.errorNumber) +
                  "). Name another place.");
}

std::string PageOfRecords(const CArguments& arguments, const std::vector<std::string>& records)
{
    const std::string path = FilePath(arguments, "--html");
    if (path.empty()) return path;
    COutputGuard guard;
    guard.AddOutput(OutputKind::ReportPage, path);
    for (const std::string& record : records) guard.AddNeeded("a record", record);
    if (const std::string problem = guard.Problem(); !problem.empty()) FailStart(Printable(problem));
    RequireWritable(path);
    return path;
}

}  // namespace

std::string ReportText(const CRunSums& sums)
{
    return LeadText(sums) + "\n" + ProblemLines(sums) + ReasonLines(sums) + TimeLines(sums) + SizeLines(sums) +
           ProtectionLines(sums) + FinalActionLines(sums);
}

int ReportCommand(const CArguments& arguments, const Screen& screen)
{
    std::vector<std::string> records;
    for (const std::string& record : arguments.Operands()) records.push_back(platform::AbsolutePath(record));
    const std::string page = PageOfRecords(arguments, records);
    const auto sums = std::make_unique<CRunSums>();
    if (!SumUpRecords(records, *sums)) {
        for (const std::string& problem : sums->problems)
            *screen.messages << "ferrule: " << Printable(problem) << '\n';
        *screen.messages << "ferrule: No record tells anything; there is no report.\n";
        return kExitBroken;
    }
    const bool text = page.empty() && !arguments.Has("--json");
    if (!page.empty()) {
        if (const std::string problem = WritePage(*sums, page); !problem.empty()) FailStart(Printable(problem));
        *screen.messages << "Report: " << Printable(page) << '\n';
    }
    if (arguments.Has("--json")) *screen.data << ReportJson(*sums) << '\n';
    if (text) *screen.data << ReportText(*sums);
    if (!text) *screen.messages << ProblemLines(*sums);
    return sums->Incomplete() ? kExitNotAllFine : kExitFine;
}

std::string ReportPlace(const CArguments& arguments)
{
    const std::string path = FilePath(arguments, "--report");
    if (path.empty()) return path;
    if (FindOption(arguments.Command(), "--dry-run") && arguments.Has("--dry-run"))
        FailUsage("--report tells what was done, and --dry-run does nothing");
    RequireWritable(path);
    return path;
}

void WriteReportOfRun(CRunSums& sums, const RunResult& result, const std::string& path, const CArguments& arguments,
                      const Screen& screen)
{
    if (path.empty() || result.plan.total == 0) return;
    if (!result.message.empty()) sums.AddProblem(TextFromBytes(result.message));
    if (result.remaining > 0)
        sums.AddProblem(Counted(static_cast<std::uint64_t>(result.remaining), "file was", "files were") +
                        " not begun.");
    const std::string source = result.recordPath.empty() ? "the run itself" : result.recordPath;
    sums.sources.push_back({.path = source, .run = result.plan.run, .files = sums.all.files});
    sums.Complete();
    const std::string problem = WritePage(sums, path);
    if (!problem.empty())
        *screen.messages << "ferrule: " << Printable(problem)
                         << " \"ferrule report\" makes one of the run's record.\n";
    else if (!arguments.Has("--quiet"))
        *screen.messages << "Report: " << Printable(path) << '\n';
}

}  // namespace cli
