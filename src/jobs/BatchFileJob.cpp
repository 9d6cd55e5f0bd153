#include "jobs/BatchFileJob.h"

#include "base/Text.h"
#include "batchrun/BatchFile.h"
#include "platform/NarrowText.h"
#include "platform/Paths.h"
#include "protocol/Json.h"

namespace {

Expected<BatchFileForm> FormOf(const std::string& word)
{
    if (word.empty()) return kSystemBatchFileForm;
    for (const BatchFileForm form : {BatchFileForm::Bat, BatchFileForm::Sh})
        if (word == ExtensionOf(form)) return form;
    return Failure("The form of a command file is \"bat\" or \"sh\", not \"" + word + "\".");
}

Expected<BatchFileSettings> SettingsOf(const Json& job)
{
    const std::string word = TextAt(job, "finalAction");
    const FinalActionFacts* const action = FindFinalAction(word.empty() ? "0" : word);
    if (!action) return Failure("There is no final action \"" + word + "\".");
    BatchFileSettings settings{.sequence = TextAt(job, "sequence"),
                               .finalAction = action->action,
                               .destination = TextAt(job, "destination"),
                               .executeInSteps = FlagAt(job, "executeInSteps"),
                               .showProgress = !FlagAt(job, "noProgress"),
                               .startHidden = FlagAt(job, "startHidden"),
                               .includeSubfolders = !FlagAt(job, "noSubfolders"),
                               .hostProgram = platform::Utf8FromNarrow(platform::ExecutablePath())};
    if (job.contains("extensions")) settings.extensions = TextAt(job, "extensions");
    if (std::string problem = DestinationProblem(settings.finalAction, settings.destination); !problem.empty())
        return Failure(std::move(problem));
    return settings;
}

}  // namespace

Expected<Json> NewBatchFile(const Json& job)
{
    const auto form = FormOf(TextAt(job, "form"));
    if (!form) return Failure(form.Error());
    const auto settings = SettingsOf(job);
    if (!settings) return Failure(settings.Error());
    if (const auto readable = SequenceRunsOptimizer(BytesAt(job, "sequence")); !readable)
        return Failure(readable.Error());
    const auto bytes = MakeBatchFile(*settings, *form);
    if (!bytes) return Failure(bytes.Error());
    Json answer = {{"form", ExtensionOf(*form)}, {"bytes", bytes->size()}};
    const std::string path = BytesAt(job, "path");
    if (path.empty()) {
        answer["text"] = TextFromBytes(*bytes);
        return answer;
    }
    if (std::string problem = WriteBatchFile(path, *bytes, *form, FlagAt(job, "overwrite")); !problem.empty())
        return Failure(std::move(problem));
    answer["path"] = TextFromBytes(path);
    return answer;
}
