#include "report/ReportPlots.h"

#include <algorithm>
#include <cmath>

#include "base/Text.h"
#include "common/ReportHtml.h"
#include "report/ReportFigures.h"

namespace {

constexpr double kWidth = 460, kHeight = 280;
constexpr double kLeft = 58, kRight = 12, kTop = 12, kBottom = 44;
constexpr double kInnerWidth = kWidth - kLeft - kRight, kInnerHeight = kHeight - kTop - kBottom;

/// With a point whatever the user's language is.
std::string Number(double value)
{
    std::string text = FormatText("%.1f", value);
    std::ranges::replace(text, ',', '.');
    return text;
}

std::string Attribute(const char* name, double value)
{
    return std::string(" ") + name + "=\"" + Number(value) + '"';
}

std::string Picture(double width, double height, const std::string& title, const std::string& content)
{
    return "<svg viewBox=\"0 0 " + Number(width) + ' ' + Number(height) + "\" role=\"img\" aria-label=\"" +
           HtmlText(title) + "\">" + content + "</svg>\n";
}

std::string Line(double x1, double y1, double x2, double y2, const char* cssClass)
{
    return "<line class=\"" + std::string(cssClass) + '"' + Attribute("x1", x1) + Attribute("y1", y1) +
           Attribute("x2", x2) + Attribute("y2", y2) + "/>";
}

std::string Box(double x, double y, double width, double height, const std::string& cssClass,
                const std::string& title)
{
    return "<rect class=\"" + cssClass + '"' + Attribute("x", x) + Attribute("y", y) + Attribute("width", width) +
           Attribute("height", height) + "><title>" + HtmlText(title) + "</title></rect>";
}

std::string Label(double x, double y, const char* anchor, const std::string& text)
{
    return "<text" + Attribute("x", x) + Attribute("y", y) + " text-anchor=\"" + anchor + "\">" + HtmlText(text) +
           "</text>";
}

/// A power of ten beside an axis, where there is no room for minutes and hours.
std::string TickText(double milliseconds)
{
    if (milliseconds < 999) return Grouped(static_cast<std::uint64_t>(std::llround(milliseconds))) + " ms";
    return Grouped(static_cast<std::uint64_t>(std::llround(milliseconds / 1000))) + " s";
}

std::string Frame(const std::string& below)
{
    const double bottom = kTop + kInnerHeight;
    return Line(kLeft, bottom, kLeft + kInnerWidth, bottom, "axis") + Line(kLeft, kTop, kLeft, bottom, "axis") +
           Label(kLeft + kInnerWidth / 2, kHeight - 6, "middle", below);
}

/// 1, 2 or 5 times a power of ten, not below the value.
std::uint64_t RoundUp(std::uint64_t value)
{
    for (std::uint64_t power = 1;; power *= 10)
        for (const std::uint64_t factor : {1u, 2u, 5u})
            if (value <= factor * power) return factor * power;
}

struct Span {
    int first = 0, end = 1;
};

/// The decades that have files, and one more where that is little.
Span DecadesOf(const std::vector<std::uint64_t>& counts, int stepsOfDecade, int atLeast)
{
    int first = static_cast<int>(counts.size()), last = 0;
    for (int step = 0; step < static_cast<int>(counts.size()); ++step)
        if (counts[static_cast<std::size_t>(step)] != 0) first = std::min(first, step), last = std::max(last, step);
    const int all = static_cast<int>(counts.size()) / stepsOfDecade;
    Span span{std::min(first, last) / stepsOfDecade, last / stepsOfDecade + 1};
    while (span.end - span.first < atLeast && span.end < all) ++span.end;
    while (span.end - span.first < atLeast && span.first > 0) --span.first;
    return span;
}

constexpr FileOutcome kShownOutcomes[] = {FileOutcome::Saved,  FileOutcome::CopiedUnchanged, FileOutcome::Incomplete,
                                          FileOutcome::Failed, FileOutcome::Skipped,         FileOutcome::Stopped};

}  // namespace

std::string OutcomeBar(const CRunSums& sums)
{
    constexpr double width = 1000, height = 28, smallest = 4;
    double left = width, total = 0;
    std::vector<std::pair<FileOutcome, double>> parts;
    for (const FileOutcome outcome : kShownOutcomes) {
        const auto files = static_cast<double>(sums.Of(outcome).files);
        if (files == 0) continue;
        parts.emplace_back(outcome, files);
        total += files;
        left -= smallest;
    }
    std::string content;
    double x = 0;
    for (const auto& [outcome, files] : parts) {
        const double part = smallest + left * files / total;
        content += Box(x, 0, part, height, "o-" + std::string(OutcomeWord(outcome)),
                       OutcomePhrase(outcome) + ": " + Grouped(sums.Of(outcome).files));
        x += part;
    }
    return "<svg class=\"bar\" viewBox=\"0 0 1000 28\" preserveAspectRatio=\"none\" role=\"img\" aria-label=\"" +
           HtmlText("Outcomes of " + Counted(sums.all.files, "file", "files")) + "\">" + content + "</svg>\n";
}

std::string TimeHistogram(const CLogHistogram& histogram, const std::string& unit)
{
    const std::vector<std::uint64_t> counts(histogram.Steps().begin(), histogram.Steps().end());
    const Span decades = DecadesOf(counts, CLogHistogram::kStepsOfDecade, 3);
    const int first = decades.first * CLogHistogram::kStepsOfDecade,
              end = decades.end * CLogHistogram::kStepsOfDecade;
    const std::uint64_t most = RoundUp(std::max<std::uint64_t>(1, *std::ranges::max_element(counts)));
    const double step = kInnerWidth / (end - first), bottom = kTop + kInnerHeight;
    std::string content;
    for (const std::uint64_t value : {most / 2, most})
        if (value != 0) {
            const double y = bottom - kInnerHeight * static_cast<double>(value) / static_cast<double>(most);
            content +=
                Line(kLeft, y, kLeft + kInnerWidth, y, "grid") + Label(kLeft - 6, y + 4, "end", Grouped(value));
        }
    for (int place = first; place < end; ++place) {
        const auto at = static_cast<std::size_t>(place);
        if (counts[at] == 0) continue;
        const double height =
            std::max(1.0, kInnerHeight * static_cast<double>(counts[at]) / static_cast<double>(most));
        content += Box(kLeft + (place - first) * step + 1, bottom - height, step - 2, height, "column",
                       TimeText(CLogHistogram::Begin(at)) + " to " + TimeText(CLogHistogram::Begin(at + 1)) + ": " +
                           Counted(counts[at], "file", "files"));
    }
    for (int decade = decades.first; decade <= decades.end; ++decade) {
        const double x = kLeft + (decade - decades.first) * step * CLogHistogram::kStepsOfDecade;
        content += Line(x, bottom, x, bottom + 4, "axis") +
                   Label(x, bottom + 18, decade == decades.end ? "end" : "middle", TickText(std::pow(10, decade)));
    }
    return Picture(kWidth, kHeight, "Histogram: " + unit, content + Frame(unit));
}

std::string TimePlot(const TimeGrid& grid)
{
    constexpr int steps = TimeGrid::kStepsOfDecade;
    std::vector<std::uint64_t> columns(TimeGrid::kColumns), rows(TimeGrid::kRows);
    std::uint64_t most = 1;
    for (int row = 0; row < TimeGrid::kRows; ++row)
        for (int column = 0; column < TimeGrid::kColumns; ++column) {
            const std::uint64_t files = grid.At(column, row).files;
            columns[static_cast<std::size_t>(column)] += files;
            rows[static_cast<std::size_t>(row)] += files;
            most = std::max(most, files);
        }
    const Span across = DecadesOf(columns, steps, 3), up = DecadesOf(rows, steps, 3);
    const double width = kInnerWidth / ((across.end - across.first) * steps),
                 height = kInnerHeight / ((up.end - up.first) * steps), bottom = kTop + kInnerHeight;
    const double largest = std::min(8.0, std::max(width, height) * 0.75), smallest = std::min(2.2, largest);
    std::string content;
    for (int decade = across.first; decade <= across.end; ++decade) {
        const double x = kLeft + (decade - across.first) * steps * width;
        content += Line(x, kTop, x, bottom, "grid") +
                   Label(x, bottom + 18, decade == across.end ? "end" : "middle",
                         Bytes(static_cast<std::uint64_t>(TimeGrid::kSmallest * std::pow(10, decade))));
    }
    for (int decade = up.first; decade <= up.end; ++decade) {
        const double y = bottom - (decade - up.first) * steps * height;
        content += Line(kLeft, y, kLeft + kInnerWidth, y, "grid") +
                   Label(kLeft - 6, y + 4, "end", TickText(TimeGrid::kShortest * std::pow(10, decade)));
    }
    for (int row = 0; row < TimeGrid::kRows; ++row)
        for (int column = 0; column < TimeGrid::kColumns; ++column) {
            const TimeGrid::Cell& cell = grid.At(column, row);
            if (cell.files == 0) continue;
            const double share =
                most == 1 ? 0.5 : std::log(static_cast<double>(cell.files)) / std::log(static_cast<double>(most));
            std::string title = Counted(cell.files, "file", "files");
            if (cell.notSaved != 0) title += ", " + Grouped(cell.notSaved) + " of them not saved";
            content += "<circle class=\"" + std::string(cell.notSaved == 0 ? "dot" : "dot unfine") + '"' +
                       Attribute("cx", kLeft + (column - across.first * steps + 0.5) * width) +
                       Attribute("cy", bottom - (row - up.first * steps + 0.5) * height) +
                       Attribute("r", smallest + (largest - smallest) * share) + "><title>" + HtmlText(title) +
                       "</title></circle>";
        }
    return Picture(kWidth, kHeight, "Time of each file by its size", content + Frame("size of the file"));
}

std::string SizeBars(std::uint64_t before, std::uint64_t after)
{
    const double most = static_cast<double>(std::max<std::uint64_t>(1, std::max(before, after)));
    const auto bar = [&](double y, const char* name, std::uint64_t bytes, const char* cssClass) {
        const double width = std::max(1.0, 330 * static_cast<double>(bytes) / most);
        return Label(44, y + 16, "end", name) + Box(50, y, width, 22, cssClass, Bytes(bytes)) +
               Label(56 + width, y + 16, "start", Bytes(bytes));
    };
    return Picture(kWidth, 66, "Bytes of inputs and results",
                   bar(6, "before", before, "neutral") + bar(36, "after", after, "column"));
}
