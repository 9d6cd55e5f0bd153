// What a run looks like to the person who started it, and how far it is, as one line of text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "cli/Console.h"
#include "report/ReportFigures.h"
#include "supervisor/RunObserver.h"

namespace cli {

/// How far a run is, as one line of text. Knows no terminal and no clock.
struct WorkDone {
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    std::uint64_t notFine = 0;
};

/// Files count by their bytes and a fixed amount for each, so that neither many small nor few large files mislead.
/// Times are milliseconds of a clock that never goes back.
class CProgressMeter {
public:
    /// What an earlier start of the run has done counts as done, but not for the speed.
    void Begin(std::uint64_t totalFiles, std::uint64_t totalBytes, const WorkDone& before, std::uint64_t nowMs);
    void Update(const WorkDone& done) { m_done = done; }
    bool Begun() const { return m_begun; }

    /// "[=====>      ]  42 %  4,200/10,000 files  3 not fine  1:23 left  118/s", at most `width` columns: what does
    /// not fit is left out, the least important first. `colour`: what is not fine is red.
    std::string Bar(std::uint64_t nowMs, std::size_t width, bool colour) const;
    /// "4,200 of 10,000 files (42 %), 3 not fine, 118 files/s, 1:23 left"
    std::string Sentence(std::uint64_t nowMs) const;

private:
    double Fraction() const;
    std::string Percent() const;
    std::string NotFine() const;
    /// Files each second; empty when there is nothing to judge by.
    std::string Speed(std::uint64_t nowMs, const char* unit) const;
    std::string TimeLeft(std::uint64_t nowMs) const;
    double Seconds(std::uint64_t nowMs) const;

    bool m_begun = false;
    std::uint64_t m_totalFiles = 0, m_totalBytes = 0;
    WorkDone m_before, m_done;
    std::uint64_t m_startMs = 0;
};

/// How far a run is, in the status line.
class CRunProgressLine {
public:
    explicit CRunProgressLine(const Screen& screen) : m_screen(screen), m_status(screen) {}

    void Show(const RunProgress& progress);
    CStatusLine& Status() { return m_status; }

private:
    const Screen& m_screen;
    CStatusLine m_status;
    CProgressMeter m_meter;
};

using ::Grouped;
/// "0:07", "1:02:03".
std::string Duration(std::uint64_t seconds);

struct PrintOptions {
    bool quiet = false;         ///< warnings and files that are not fine only
    bool dryRun = false;        ///< a table of what would be done goes to standard output
    bool recordToData = false;  ///< the record goes to standard output
    int jobs = 1;
    std::string part = {};  ///< "2/4" when only a part of the plan is done
};

/// A file that is not fine.
struct Unfine {
    std::string path;
    FileOutcome outcome;
    std::string message;
};

/// Prints while the run goes and keeps the first files that are not fine for the end.
class CRunPrinter final : public CRunObserver {
public:
    CRunPrinter(const Screen& screen, const PrintOptions& options);

    void FilePlanned(const PlannedFile& file) override;
    void Planned(const PlanSummary& plan) override;
    void FileDone(const FileRecord& record, const RunProgress& progress) override;
    void RecordLine(const std::string& json) override;
    void Remark(const std::string& text) override;
    void Warning(const std::string& text) override;
    void Tick(const RunProgress& progress) override;

    /// Somebody else who gets the lines of the record.
    void TellRecord(std::function<void(const std::string& json)> taker) { m_recordTaker = std::move(taker); }

    /// Takes the progress off the screen.
    void Finish() { m_status.Clear(); }
    const std::vector<Unfine>& FirstUnfine() const { return m_unfine; }
    /// How many there were in all, in this start of the run.
    std::uint64_t UnfineCount() const { return m_unfineCount; }
    std::uint64_t BrokenSignatures() const { return m_brokenSignatures; }

private:
    void ShowProgress(const RunProgress& progress)
    {
        if (!m_options.quiet) m_line.Show(progress);
    }
    void PrintPretended(const FileRecord& record);

    const Screen& m_screen;
    PrintOptions m_options;
    std::function<void(const std::string&)> m_recordTaker;
    CRunProgressLine m_line;
    CStatusLine& m_status;
    std::vector<Unfine> m_unfine;
    std::uint64_t m_unfineCount = 0;
    std::uint64_t m_brokenSignatures = 0;
};

}  // namespace cli
