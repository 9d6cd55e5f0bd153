#include "batchrun/RunSettings.h"

#include "base/Text.h"
#include "common/Log.h"

namespace {

FinalAction FinalActionOf(const std::string& value)
{
    const int code = ParseDecimal(value);
    const bool known = code >= 0 && code < static_cast<int>(FinalActions().size());
    return known ? static_cast<FinalAction>(code) : FinalAction::Nothing;
}

/// The pieces of the list without blanks, and without the dot that people like to put in front.
std::vector<std::string> ExtensionList(const std::string& value)
{
    std::vector<std::string> extensions;
    for (const std::string& piece : Split(value, ",;")) {
        std::string extension = Trim(piece);
        if (extension.starts_with('.')) extension = Trim(extension.substr(1));
        if (!extension.empty()) extensions.push_back(std::move(extension));
    }
    return extensions;
}

bool IsYes(const std::string& value) { return ToLowerAscii(value) == "yes"; }

}  // namespace

std::string CleanPath(const std::string& value) { return RemoveQuotes(value); }

RunSettings ReadRunSettings(const EnvironmentReader& environment, CLogWriter& log)
{
    const std::string sequence = environment("FERRULESEQU");
    const std::string finalAction = environment("FERRULEFINAL");
    const std::string destination = environment("FERRULEDEST");
    const std::string alternativeInput = environment("FERRULEALTPATH");
    const std::string inSteps = environment("EXECUTEINSTEPS");
    const std::string noProgress = environment("FERRULENOPROGRESS");
    const std::string alternativeOutput = Trim(environment("FERRULEALTOUTPUTPATH"));
    const std::string extensions = Trim(environment("FERRULEFILEEXT"));
    const std::string noSubfolders = environment("FERRULENOSUBFOLDERS");

    log.NameValue("Sequence file", sequence, 1);
    log.NameValue("Final action", finalAction, 1);
    log.NameValue("Destination", destination, 1);
    log.NameValue("Alternative path", alternativeInput, 1);
    log.NameValue("Execute in steps", inSteps, 1);
    log.NameValue("Progress dialog", noProgress, 1);
    log.NameValue("Alternative output path", alternativeOutput, 1);
    log.NameValue("Allowed file extentions", extensions, 0);  // sic
    log.NameValue("No subfolders", noSubfolders, 0);

    return {
        .sequencePath = CleanPath(sequence),
        .finalAction = FinalActionOf(finalAction),
        .destination = destination,
        .alternativeInputPath = CleanPath(alternativeInput),
        .alternativeOutputPath = CleanPath(alternativeOutput),
        .allowedExtensions = extensions.empty() ? std::nullopt : std::optional(ExtensionList(extensions)),
        .executeInSteps = IsYes(Trim(inSteps)),
        .showProgress = !IsYes(Trim(noProgress)),
        .noSubfolders = IsYes(noSubfolders),  // Kept: this one is not trimmed.
    };
}
