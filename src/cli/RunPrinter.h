// What a run looks like to the person who started it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cli/Console.h"
#include "cli/ProgressMeter.h"
#include "supervisor/RunObserver.h"

namespace cli {

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

    /// Takes the progress off the screen.
    void Finish() { m_status.Clear(); }
    const std::vector<Unfine>& FirstUnfine() const { return m_unfine; }
    /// How many there were in all, in this start of the run.
    std::uint64_t UnfineCount() const { return m_unfineCount; }
    std::uint64_t BrokenSignatures() const { return m_brokenSignatures; }

private:
    void ShowProgress(const RunProgress& progress);
    void PrintPretended(const FileRecord& record);

    const Screen& m_screen;
    PrintOptions m_options;
    CStatusLine m_status;
    CProgressMeter m_meter;
    std::vector<Unfine> m_unfine;
    std::uint64_t m_unfineCount = 0;
    std::uint64_t m_brokenSignatures = 0;
};

}  // namespace cli
