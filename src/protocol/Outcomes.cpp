#include "protocol/Outcomes.h"

#include "base/Text.h"
#include "protocol/Words.h"

namespace {

constexpr WordTable<kFileOutcomes> kOutcomes = {"saved",  "copied-unchanged", "incomplete",
                                                "failed", "skipped",          "stopped"};
constexpr WordTable<3> kEnds = {"finished", "not-started", "broken"};

}  // namespace

std::string_view OutcomeWord(FileOutcome outcome) { return WordOf(kOutcomes, outcome); }

std::optional<FileOutcome> OutcomeFromWord(std::string_view word) { return FromWord<FileOutcome>(kOutcomes, word); }

std::string OutcomePhrase(FileOutcome outcome) { return ReplaceAll(OutcomeWord(outcome), "-", " "); }

std::string_view RunEndWord(RunEnd end) { return WordOf(kEnds, end); }

std::optional<RunEnd> RunEndFromWord(std::string_view word) { return FromWord<RunEnd>(kEnds, word); }
