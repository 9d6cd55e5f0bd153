#include "jobs/SafetyRules.h"

#include "batchrun/FinalAction.h"
#include "sequence/SequenceChecks.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <variant>

namespace {

constexpr std::size_t kMostLines = 20;

/// What the safety rules ask about themselves, with options of their own.
bool IsSafetyRule(std::string_view code)
{
    constexpr std::string_view kCodes[] = {"step-not-available", "saves-nothing",    "no-source",
                                           "unknown-input",      "no-output-folder", "output-folder-missing"};
    return std::find(std::begin(kCodes), std::end(kCodes), code) != std::end(kCodes);
}

std::string ErrorLine(const SequenceFinding& finding)
{
    const std::string step = finding.step > 0 ? "step " + std::to_string(finding.step) + ": " : "";
    return "\n  " + step + finding.text;
}

RunContext PlannedContext(const PlanRequest& request)
{
    return {.hasInput = !request.settings.execution.alternativeInputPath.empty() ||
                        !request.settings.execution.furtherInputPaths.empty(),
            .hasOutputFolder = !request.settings.execution.alternativeOutputPath.empty(),
            .takesInputAway = TakesInputAway(request.settings.finalAction)};
}

std::vector<SequenceFinding> FindingsOf(const PlanRequest& request)
{
    const auto read = ReadSequenceSource(request.settings.sequencePath);
    if (const auto* problem = std::get_if<SequenceFinding>(&read)) return {*problem};
    return CheckSource(std::get<SequenceSource>(read), PlannedContext(request));
}

}  // namespace

std::string SequenceErrors(const PlanRequest& request)
{
    if (request.permitted.force) return {};
    std::string lines;
    std::size_t count = 0;
    for (const SequenceFinding& finding : FindingsOf(request)) {
        if (finding.severity != SequenceFinding::Severity::Error || IsSafetyRule(finding.code)) continue;
        if (++count <= kMostLines) lines += ErrorLine(finding);
    }
    if (count == 0) return {};
    if (count > kMostLines) lines += "\n  ... and " + std::to_string(count - kMostLines) + " more";
    return "The sequence has errors; correct them, or start the run nevertheless with --force:" + lines;
}
