#include "jobs/SequenceJobs.h"

#include "base/ByteText.h"
#include "base/Text.h"
#include "protocol/Json.h"
#include "protocol/RunDescription.h"
#include "sequence/JsonFields.h"
#include "sequence/SequenceChecks.h"
#include "sequence/SequenceConvert.h"
#include "sequence/SequenceFile.h"
#include "sequence/SequenceReport.h"
#include "sequence/StepMaking.h"
#include "sequence/XmlForm.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;
using Severity = SequenceFinding::Severity;

json CheckReport(const std::string& path, const char* form, const std::vector<SequenceFinding>& findings)
{
    const long errors = CountOf(findings, Severity::Error);
    return {{"path", TextFromBytes(path)},
            {"form", form},
            {"ok", errors == 0},
            {"errors", errors},
            {"warnings", CountOf(findings, Severity::Warning)},
            {"notes", CountOf(findings, Severity::Note)},
            {"findings", FindingsReport(findings)}};
}

CheckedRun ContextOf(const RunDescription& run)
{
    return {.hasInput = !run.inputs.empty(),
            .hasOutputFolder = !run.outputFolder.empty(),
            .takesInputAway = TakesInputAway(run.finalAction)};
}

/// Neighbours of one label make a group.
Workflow MakeWorkflow(const json& job, std::vector<WorkflowCommand> commands)
{
    Workflow workflow;
    workflow.title = BytesIn(job, "title");
    if (workflow.title.empty()) workflow.title = TitleFromPath(BytesIn(job, "path"));
    workflow.description = BytesIn(job, "description");
    for (WorkflowCommand& command : commands) {
        if (command.label.empty()) command.label = workflow.title;
        if (workflow.groups.empty() || workflow.groups.back().label != command.label)
            workflow.groups.push_back({command.label, {}});
        workflow.groups.back().commands.push_back(std::move(command));
    }
    return workflow;
}

struct MadeSequence {
    std::string xml;
    std::vector<SequenceFinding> findings;
    bool holdsPasswords = false;
};

/// Makes the text and looks at it as at any other sequence.
Expected<MadeSequence> MakeSequence(const json& job)
{
    const std::string path = BytesIn(job, "path");
    auto commands = StepsFromJob(job);
    if (!commands) return Failure("The sequence " + path + " cannot be made: " + commands.Error());
    auto xml = WriteWorkflow(MakeWorkflow(job, std::move(*commands)));
    if (!xml) return Failure("The sequence " + path + " cannot be made: " + xml.Error());
    const auto read = SequenceFromText(path, *xml);
    if (const auto* problem = std::get_if<SequenceFinding>(&read))
        return Failure("The sequence " + path + " cannot be made: " + problem->text);
    const auto& source = std::get<SequenceSource>(read);
    return MadeSequence{std::move(*xml), CheckSource(source, {}), HoldsPasswords(source)};
}

}  // namespace

Expected<json> ShowSequence(const json& job)
{
    const std::string path = BytesIn(job, "path");
    const auto read = ReadSequenceSource(path);
    if (const auto* problem = std::get_if<SequenceFinding>(&read)) return Failure(FindingSentence(path, *problem));
    return SequenceReport(std::get<SequenceSource>(read));
}

Expected<json> CheckSequence(const json& job)
{
    const std::string path = BytesIn(job, "path");
    const auto read = ReadSequenceSource(path);
    if (const auto* problem = std::get_if<SequenceFinding>(&read)) return CheckReport(path, "", {*problem});
    const auto& source = std::get<SequenceSource>(read);
    const auto run = ContextOf(RunDescriptionFrom(ObjectAt(Json(job), "description")));
    return CheckReport(path, FormWord(source.form), CheckSource(source, run));
}

Expected<json> NewSequence(const json& job)
{
    const std::string path = BytesIn(job, "path");
    const auto made = MakeSequence(job);
    if (!made) return Failure(made.Error());
    if (const std::string errors = ErrorTexts(made->findings); !errors.empty() && !FlagIn(job, "force", false))
        return Failure("The sequence " + path + " was not written because it would not run: " + errors);
    const SequenceTarget target{path, FlagIn(job, "overwrite", false), made->holdsPasswords};
    if (std::string problem = PutSequenceFile(target, made->xml); !problem.empty())
        return Failure(std::move(problem));
    return json{{"path", TextFromBytes(path)},
                {"bytes", made->xml.size()},
                {"holdsPasswords", made->holdsPasswords},
                {"findings", FindingsReport(made->findings)}};
}

Expected<json> ConvertSequence(const json& job)
{
    const std::string path = BytesIn(job, "path"), target = BytesIn(job, "target"), word = BytesIn(job, "to");
    const std::string start = "The sequence " + path + " cannot be converted: ";
    if (word != "xml" && word != "host") return Failure(start + "the form must be \"xml\" or \"host\".");
    const auto read = ReadSequenceSource(path);
    if (const auto* problem = std::get_if<SequenceFinding>(&read)) return Failure(FindingSentence(path, *problem));
    const auto& source = std::get<SequenceSource>(read);
    const ConversionRequest request{.to = word == "xml" ? SequenceForm::Xml : SequenceForm::Host,
                                    .target = target,
                                    .title = BytesIn(job, "title"),
                                    .description = BytesIn(job, "description")};
    if (std::string problem = TargetProblem({.path = target, .overwrite = FlagIn(job, "overwrite", false)});
        source.form != request.to && !problem.empty())
        return Failure(std::move(problem));
    const auto converted = ConvertSequence(source, request);
    if (!converted) return Failure(start + converted.Error());
    if (const std::string errors = ErrorTexts(converted->losses); !errors.empty() && !FlagIn(job, "allowLoss", false))
        return Failure("The sequence " + path +
                       " was not converted; allow losses if this is to be accepted: " + errors);
    const bool secret = HoldsPasswords(source);
    if (std::string problem = PutSequenceFile({target, FlagIn(job, "overwrite", false), secret}, converted->bytes);
        !problem.empty())
        return Failure(std::move(problem));
    return json{{"path", TextFromBytes(path)},
                {"from", FormWord(source.form)},
                {"to", word},
                {"target", TextFromBytes(target)},
                {"bytes", converted->bytes.size()},
                {"holdsPasswords", secret},
                {"losses", FindingsReport(converted->losses)}};
}
