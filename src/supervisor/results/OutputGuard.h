// Files that a run writes under names that somebody typed: none of them may cost a file that is something else.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Files.h"
#include "protocol/RunDescription.h"
#include "supervisor/RunObserver.h"

/// Report and ReportPage are the same kind of file under other options.
enum class OutputKind { Record, Manifest, Journal, Log, Report, ReportPage };

/// What the page of a report begins with.
inline constexpr char kReportBegin[] = "<!DOCTYPE html><!-- Ferrule: report of a run -->";

class COutputGuard {
public:
    /// A file that is going to be written. Empty paths are left out.
    void AddOutput(OutputKind kind, const std::string& path);
    /// A file that is needed as it is. `what`: "the sequence".
    void AddNeeded(const std::string& what, const std::string& path);
    /// The files of the work.
    void AddNeeded(const WorkDescription& work);

    /// Looks at what stands under the names: an output may be missing, empty, or a file of its kind, and none may be
    /// one of the others. A record may also go to a device or a pipe, a log to a device, which keeps none.
    /// The sentence of a refusal; empty when all is well.
    [[nodiscard]] std::string Problem() const;
    /// The same for an input, which is known only when the run is planned.
    [[nodiscard]] std::string ProblemWithInput(const PlannedFile& input) const;
    /// Whether the path is one of the outputs.
    [[nodiscard]] bool IsOutput(const std::string& path) const;

private:
    struct Named {
        std::string what, option, path;
        OutputKind kind = OutputKind::Record;
        bool output = false;
        std::optional<std::uint64_t> size = {};  // of an output that is there already
    };
    static std::string ClashProblem(const Named& output, const Named& other);

    std::vector<Named> m_files;
};

/// Whether this names a device, in which a log is not kept.
[[nodiscard]] bool IsDevice(const std::string& path);
