// How a file and a run end, with the words for it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// How one input file of a run ended. The numbers are those of the jobs table.
enum class FileOutcome {
    Saved,            // all steps done and the result written, or nothing was to be written
    CopiedUnchanged,  // security forbade changes: the output is a copy of the input
    Incomplete,       // written, but a step was missing or failed, or the final action failed
    Failed,           // could not be opened, processed or saved; the input was left as it is
    Skipped,          // not processed at all, on purpose
    Stopped           // the run was stopped while the file was being processed
};
inline constexpr std::size_t kFileOutcomes = 6;

/// "saved", "copied-unchanged" ...
[[nodiscard]] std::string_view OutcomeWord(FileOutcome outcome);
[[nodiscard]] std::optional<FileOutcome> OutcomeFromWord(std::string_view word);
/// For people: "copied unchanged".
[[nodiscard]] std::string OutcomePhrase(FileOutcome outcome);

/// How a run as a whole ended. The numbers are those of the jobs table.
enum class RunEnd {
    Finished,    // every input file was dealt with; single files may have failed
    NotStarted,  // no sequence or no usable input source: nothing was processed
    Broken       // ended before every input file was dealt with
};

/// "finished", "not-started", "broken".
[[nodiscard]] std::string_view RunEndWord(RunEnd end);
[[nodiscard]] std::optional<RunEnd> RunEndFromWord(std::string_view word);
