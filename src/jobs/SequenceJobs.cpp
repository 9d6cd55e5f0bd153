#include "jobs/SequenceJobs.h"

#include <algorithm>

#include "base/Text.h"
#include "protocol/Json.h"
#include "protocol/RunDescription.h"
#include "sequence/SequenceChecks.h"
#include "sequence/SequenceConvert.h"
#include "sequence/SequenceFile.h"
#include "sequence/SequenceJson.h"
#include "sequence/XmlForm.h"

namespace {

using Severity = SequenceFinding::Severity;

Json CheckReport(const std::string& path, const char* form, const std::vector<SequenceFinding>& findings)
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
Workflow MakeWorkflow(const Json& job, std::vector<WorkflowCommand> commands)
{
    Workflow workflow;
    workflow.title = BytesAt(job, "title");
    if (workflow.title.empty()) workflow.title = TitleFromPath(BytesAt(job, "path"));
    workflow.description = BytesAt(job, "description");
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
Expected<MadeSequence> MakeSequence(const Json& job)
{
    const std::string path = BytesAt(job, "path");
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

Expected<Json> ShowSequence(const Json& job)
{
    const std::string path = BytesAt(job, "path");
    const auto read = ReadSequenceSource(path);
    if (const auto* problem = std::get_if<SequenceFinding>(&read)) return Failure(FindingSentence(path, *problem));
    return SequenceReport(std::get<SequenceSource>(read));
}

Expected<Json> CheckSequence(const Json& job)
{
    const std::string path = BytesAt(job, "path");
    const auto read = ReadSequenceSource(path);
    if (const auto* problem = std::get_if<SequenceFinding>(&read)) return CheckReport(path, "", {*problem});
    const auto& source = std::get<SequenceSource>(read);
    const auto run = ContextOf(RunDescriptionFrom(ObjectAt(job, "description")));
    return CheckReport(path, FormWord(source.form), CheckSource(source, run));
}

Expected<Json> NewSequence(const Json& job)
{
    const std::string path = BytesAt(job, "path");
    const auto made = MakeSequence(job);
    if (!made) return Failure(made.Error());
    if (const std::string errors = ErrorTexts(made->findings); !errors.empty() && !FlagAt(job, "force"))
        return Failure("The sequence " + path + " was not written because it would not run: " + errors);
    const SequenceTarget target{path, FlagAt(job, "overwrite"), made->holdsPasswords};
    if (std::string problem = PutSequenceFile(target, made->xml); !problem.empty())
        return Failure(std::move(problem));
    return Json{{"path", TextFromBytes(path)},
                {"bytes", made->xml.size()},
                {"holdsPasswords", made->holdsPasswords},
                {"findings", FindingsReport(made->findings)}};
}

Expected<Json> ConvertSequence(const Json& job)
{
    const std::string path = BytesAt(job, "path"), target = BytesAt(job, "target"), word = BytesAt(job, "to");
    const std::string start = "The sequence " + path + " cannot be converted: ";
    if (word != "xml" && word != "host") return Failure(start + "the form must be \"xml\" or \"host\".");
    const auto read = ReadSequenceSource(path);
    if (const auto* problem = std::get_if<SequenceFinding>(&read)) return Failure(FindingSentence(path, *problem));
    const auto& source = std::get<SequenceSource>(read);
    const ConversionRequest request{.to = word == "xml" ? SequenceForm::Xml : SequenceForm::Host,
                                    .target = target,
                                    .title = BytesAt(job, "title"),
                                    .description = BytesAt(job, "description")};
    if (std::string problem = TargetProblem({.path = target, .overwrite = FlagAt(job, "overwrite")});
        source.form != request.to && !problem.empty())
        return Failure(std::move(problem));
    const auto converted = ConvertSequence(source, request);
    if (!converted) return Failure(start + converted.Error());
    if (const std::string errors = ErrorTexts(converted->losses); !errors.empty() && !FlagAt(job, "allowLoss"))
        return Failure("The sequence " + path +
                       " was not converted; allow losses if this is to be accepted: " + errors);
    const bool secret = HoldsPasswords(source);
    if (std::string problem = PutSequenceFile({target, FlagAt(job, "overwrite"), secret}, converted->bytes);
        !problem.empty())
        return Failure(std::move(problem));
    return Json{{"path", TextFromBytes(path)},
                {"from", FormWord(source.form)},
                {"to", word},
                {"target", TextFromBytes(target)},
                {"bytes", converted->bytes.size()},
                {"holdsPasswords", secret},
                {"losses", FindingsReport(converted->losses)}};
}
