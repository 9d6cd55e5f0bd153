#include "report/ReportPage.h"

#include <functional>

#include "base/Text.h"
#include "common/ReportHtml.h"
#include "report/ReportFigures.h"
#include "report/ReportPlots.h"
#include "supervisor/results/OutputGuard.h"

namespace {

constexpr char kHead[] = R"(
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="generator" content="Ferrule">
<title>Report of a run</title>
<style>
:root{color-scheme:light dark;--back:#fff;--card:#f6f7f9;--text:#1b1f24;--soft:#5b6570;--line:#d4d9df;--blue:#2f6fb3;
--green:#2e8b57;--teal:#3a9ea5;--amber:#c98a12;--red:#c23b3b;--grey:#98a2ad;--warn:#fff4dc}
@media (prefers-color-scheme:dark){:root{--back:#15181c;--card:#1e2328;--text:#e6e9ed;--soft:#9aa5b1;--line:#363d45;
--blue:#6aa5e3;--green:#4fb57c;--teal:#5bbfc5;--amber:#e0ab45;--red:#e36d6d;--grey:#6d7782;--warn:#3a3018}}
*{box-sizing:border-box}
body{margin:0 auto;padding:1.5rem;max-width:72rem;background:var(--back);color:var(--text);font:1rem/1.5 system-ui,"Segoe UI",
"DejaVu Sans",sans-serif}
h1{font-size:1.6rem;margin:0 0 .5rem}h2{font-size:1.2rem;margin:2rem 0 .6rem}h3{font-size:1rem;margin:1.4rem 0 .4rem}.group h3,figure h3{margin-top:0}
p{margin:.4rem 0}.soft{color:var(--soft)}.path{overflow-wrap:anywhere;unicode-bidi:isolate}
.warning{background:var(--warn);border-left:.3rem solid var(--amber);padding:.6rem 1rem;margin:1rem 0}
.cards{display:grid;grid-template-columns:repeat(auto-fit,minmax(8.5rem,1fr));gap:.6rem;margin:1rem 0}
.card{background:var(--card);border-top:.25rem solid var(--grey);border-radius:.3rem;padding:.6rem .8rem}
.card b{display:block;font-size:1.5rem;font-weight:600;font-variant-numeric:tabular-nums}
.plots{display:grid;grid-template-columns:repeat(auto-fit,minmax(min(100%,20rem),1fr));gap:1rem}
figure{margin:0;background:var(--card);border-radius:.3rem;padding:.8rem}figcaption{color:var(--soft);font-size:.9rem}
svg{display:block;width:100%;max-width:40rem;height:auto}svg.bar{max-width:none;height:1.6rem;border-radius:.3rem}
svg text{font-size:12px;fill:var(--soft)}.axis{stroke:var(--soft)}.grid{stroke:var(--line)}
.column{fill:var(--blue)}.neutral{fill:var(--grey)}.dot{fill:var(--blue);fill-opacity:.75}.dot.unfine{fill:var(--red)}
.o-saved{fill:var(--green);border-color:var(--green)}.o-copied-unchanged{fill:var(--teal);border-color:var(--teal)}
.o-incomplete{fill:var(--amber);border-color:var(--amber)}.o-failed{fill:var(--red);border-color:var(--red)}
.o-skipped,.o-stopped{fill:var(--grey);border-color:var(--grey)}
.scroll{overflow-x:auto}table{border-collapse:collapse;width:100%;font-size:.92rem}
th,td{text-align:left;padding:.3rem .7rem .3rem 0;border-bottom:1px solid var(--line);vertical-align:top}
.number{text-align:right;white-space:nowrap;font-variant-numeric:tabular-nums}
.group{border-left:.25rem solid var(--grey);padding:.1rem 0 .1rem .9rem;margin:.9rem 0}
.group ul{margin:.3rem 0;padding-left:1.1rem;font-size:.92rem}
@media print{:root{--back:#fff;--card:#fff;--text:#000;--soft:#444;--line:#bbb;--warn:#fff}body{padding:0;max-width:none;font-size:10pt}
figure,.card{border:1px solid #bbb}figure,.card,tr,.warning{break-inside:avoid}h2,h3{break-after:avoid}.scroll{overflow:visible}
*{print-color-adjust:exact;-webkit-print-color-adjust:exact}}
</style>
</head>
<body>
)";

using Cells = std::vector<std::string>;  // markup

/// Names may hold line ends and worse.
std::string Shown(const std::string& path)
{
    std::string text;
    for (const char letter : path)
        text += static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F
                    ? FormatText("\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(letter)))
                    : std::string(1, letter);
    return "<span class=\"path\" dir=\"auto\">" + HtmlText(text) + "</span>";
}

std::string Tag(const std::string& name, const std::string& content)
{
    return "<" + name + ">" + content + "</" + name + ">";
}

std::string Paragraph(const std::string& text) { return Tag("p", HtmlText(text)) + '\n'; }

/// Columns from `firstNumber` on are numbers.
std::string Row(const Cells& cells, std::size_t firstNumber, const char* element = "td")
{
    std::string row = "<tr>";
    for (std::size_t place = 0; place < cells.size(); ++place)
        row += std::string("<") + element + (place >= firstNumber ? " class=\"number\">" : ">") + cells[place] +
               "</" + element + ">";
    return row + "</tr>\n";
}

std::string Table(const Cells& headings, std::size_t firstNumber, const std::string& rows)
{
    Cells cells;
    for (const std::string& heading : headings) cells.push_back(HtmlText(heading));
    return "<div class=\"scroll\"><table>\n" + Tag("thead", Row(cells, firstNumber, "th")) + "<tbody>\n" + rows +
           "</tbody></table></div>\n";
}

std::string Section(const std::string& title, const std::string& content)
{
    return content.empty() ? content : "<section>\n" + Tag("h2", HtmlText(title)) + '\n' + content + "</section>\n";
}

std::string Warning(const CRunSums& sums)
{
    if (!sums.Incomplete()) return {};
    std::string items;
    for (const std::string& problem : sums.problems) items += "<li class=\"path\">" + HtmlText(problem) + "</li>\n";
    if (const std::uint64_t more = sums.problemCount - sums.problems.size(); more != 0)
        items += "<li>and " + Grouped(more) + " more</li>\n";
    return "<div class=\"warning\"><b>This report is incomplete.</b>\n<ul>" + items + "</ul></div>\n";
}

std::string Notes(const CRunSums& sums)
{
    std::string text;
    for (const std::string& note : sums.notes) text += "<p class=\"path\">" + HtmlText(note) + "</p>\n";
    return text;
}

std::string Card(const std::string& cssClass, const std::string& figure, const std::string& name)
{
    return "<div class=\"card " + cssClass + "\"><b>" + HtmlText(figure) + "</b>" + HtmlText(name) + "</div>\n";
}

std::string Outcomes(const CRunSums& sums)
{
    std::string cards;
    for (const FileOutcome outcome : {FileOutcome::Saved, FileOutcome::CopiedUnchanged, FileOutcome::Incomplete,
                                      FileOutcome::Failed, FileOutcome::Skipped, FileOutcome::Stopped}) {
        const std::uint64_t files = sums.Of(outcome).files;
        if (files == 0 && outcome != FileOutcome::Saved && outcome != FileOutcome::Failed) continue;
        cards += Card("o-" + std::string(OutcomeWord(outcome)), Grouped(files),
                      OutcomePhrase(outcome) + ", " + ShareText(files, sums.all.files));
    }
    return OutcomeBar(sums) + "<div class=\"cards\">\n" + cards + "</div>\n";
}

std::string FileItems(const FileList& files)
{
    std::string items;
    for (const ListedFile& file : files.first) items += Tag("li", Shown(file.path)) + '\n';
    if (files.More() != 0) items += "<li class=\"soft\">and " + Grouped(files.More()) + " more</li>\n";
    return Tag("ul", items) + '\n';
}

std::string Reasons(const CRunSums& sums)
{
    std::string text;
    for (const ReasonGroup& group : sums.reasons)
        text += "<div class=\"group o-" + std::string(OutcomeWord(group.outcome)) + "\"><h3>" +
                HtmlText(Counted(group.files.count, "file ", "files ") + GroupTitle(group)) +
                "</h3>\n<p class=\"path\">" + HtmlText(ReasonText(group)) + "</p>\n" + FileItems(group.files) +
                "</div>\n";
    if (sums.otherReasons.count != 0)
        text += "<div class=\"group\"><h3>" + HtmlText(Counted(sums.otherReasons.count, "file", "files")) +
                " for other reasons</h3>\n" + FileItems(sums.otherReasons) + "</div>\n";
    return text;
}

std::string Figure(const std::string& title, const std::string& picture, const std::string& caption)
{
    return "<figure>\n" + Tag("h3", HtmlText(title)) + '\n' + picture + Tag("figcaption", HtmlText(caption)) +
           "</figure>\n";
}

std::string MedianText(const CLogHistogram& histogram)
{
    return "Half of " + Counted(histogram.Count(), "file", "files") + " took up to about " +
           TimeText(histogram.Quantile(0.5)) + ", 95 % up to about " + TimeText(histogram.Quantile(0.95)) + ".";
}

using FileCells = std::function<Cells(const ListedFile& file)>;

std::string FileTable(const std::vector<ListedFile>& files, Cells headings, const FileCells& more)
{
    headings.insert(headings.begin(), "File");
    std::string rows;
    for (const ListedFile& file : files) {
        Cells cells = more(file);
        cells.insert(cells.begin(), Shown(file.path));
        rows += Row(cells, 1);
    }
    return Table(headings, 1, rows);
}

std::string Times(const CRunSums& sums)
{
    if (sums.timePerFile.Count() == 0) return {};
    std::string text =
        "<div class=\"plots\">\n" +
        Figure("Time by size", TimePlot(sums.timeBySize),
               "The larger a dot, the more files; red ones have files that were not saved.") +
        Figure("Time for a file", TimeHistogram(sums.timePerFile, "time for a file"), MedianText(sums.timePerFile));
    if (sums.timePerMegabyte.Count() != 0)
        text += Figure(
            "Time for a megabyte", TimeHistogram(sums.timePerMegabyte, "time for 1 MB of the file"),
            MedianText(sums.timePerMegabyte) + " Files below " + Bytes(CRunSums::kLeastForSpeed) + " do not count.");
    text += "</div>\n<h3>The slowest files</h3>\n" +
            FileTable(sums.slowest, {"Time", "Size"}, [](const ListedFile& file) {
                return Cells{TimeText(static_cast<double>(file.milliseconds)), Bytes(file.size)};
            });
    if (!sums.slowestPerMegabyte.empty())
        text += "<h3>The slowest for their size</h3>\n" +
                FileTable(sums.slowestPerMegabyte, {"Time for 1 MB", "Time", "Size"}, [](const ListedFile& file) {
                    return Cells{TimeText(MillisecondsPerMegabyte(file)),
                                 TimeText(static_cast<double>(file.milliseconds)), Bytes(file.size)};
                });
    return text;
}

std::string Sizes(const CRunSums& sums)
{
    const auto& sizes = sums.sizes;
    std::string text;
    if (sizes.files != 0)
        text += SizeBars(sizes.before, sizes.after) +
                Paragraph(Counted(sizes.results, "result", "results") + " of " +
                          Counted(sizes.files, "file", "files") + ", " + GrowthText(sizes.before, sizes.after) +
                          ": " + Counted(sizes.smaller, "file became", "files became") + " smaller, " +
                          Grouped(sizes.same) + " stayed as large, " + Grouped(sizes.larger) + " became larger.");
    if (sizes.unknown != 0)
        text += Paragraph("The size of the results of " + Counted(sizes.unknown, "file", "files") +
                          " is not known, because the records do not tell it.");
    if (!sums.grownMost.empty())
        text += "<h3>Those that grew most</h3>\n" +
                FileTable(sums.grownMost, {"Before", "After"}, [](const ListedFile& file) {
                    return Cells{Bytes(file.size), Bytes(file.sizeAfter.value_or(0))};
                });
    return text;
}

std::string ProtectionTable(const CRunSums& sums)
{
    if (sums.protection.empty()) return {};
    std::string rows;
    for (const auto& [pair, files] : sums.protection)
        rows += Row({HtmlText(ProtectionText(pair.first)),
                     pair.second ? HtmlText(ProtectionText(pair.second)) : "no result, or not known", Grouped(files)},
                    2);
    if (sums.protectionUnknown != 0)
        rows += Row({"not looked at, or not opened", "", Grouped(sums.protectionUnknown)}, 2);
    return Table({"Before", "After", "Files"}, 2, rows) +
           (sums.signaturesBroken.count == 0
                ? std::string()
                : Tag("h3", HtmlText("Signatures broken by saving: " +
                                     Counted(sums.signaturesBroken.count, "file", "files"))) +
                      FileItems(sums.signaturesBroken));
}

std::string FinalActions(const CRunSums& sums)
{
    std::string rows, lists;
    for (const auto& [kind, files] : sums.finalActions) {
        rows += Row({HtmlText(FinalActionText(kind)), Grouped(files.count)}, 1);
        if (kind.second != FinalActionRecord::State::Done)
            lists += Tag("h3", HtmlText("Final action: " + FinalActionText(kind))) + FileItems(files);
    }
    return rows.empty() ? rows : Table({"What became of the input", "Files"}, 1, rows) + lists;
}

std::string Sources(const CRunSums& sums)
{
    std::string rows;
    for (const RecordSource& source : sums.sources)
        rows += Row({Shown(source.path), HtmlText(source.run), Grouped(source.files)}, 2);
    return rows.empty() ? rows : Table({"Record", "Run", "Files"}, 2, rows);
}

}  // namespace

std::string ReportPage(const CRunSums& sums)
{
    return std::string(kReportBegin) + kHead + Tag("h1", "Report of a run") + '\n' + Paragraph(LeadText(sums)) +
           Warning(sums) + Notes(sums) + Outcomes(sums) + Section("Reasons", Reasons(sums)) +
           Section("Time", Times(sums)) + Section("Sizes before and after", Sizes(sums)) +
           Section("Protection before and after", ProtectionTable(sums)) +
           Section("Final actions", FinalActions(sums)) + Section("What this was made of", Sources(sums)) +
           "</body>\n</html>\n";
}
