#include "jobs/SafetyRules.h"

#include "engine/InputKinds.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <functional>

namespace {

StepFacts Step(const char* handler, bool available = true)
{
    StepFacts step;
    step.handler = handler;
    step.available = available;
    return step;
}

StepFacts SaveStep(bool namesDestination = true, const char* after = "")
{
    StepFacts step = Step("WorkflowPlaybackSaveFiles");
    step.save = SaveStepFacts{namesDestination, std::nullopt, "", after, ""};
    return step;
}

struct PlannedRun {
    SequenceFacts facts;
    RunRequest request;
};

class SafetyRules : public testing::Test {
protected:
    /// A run that may start: saves by a step into a folder that is there.
    PlannedRun Harmless() const
    {
        PlannedRun run;
        run.facts.hostMajor = 21;
        run.facts.inputKind = kInputAskUser;
        run.facts.output.kind = kOutputNone;
        run.facts.steps = {Step("QLNX_FerrulePasswordProtectCommand"), SaveStep()};
        run.request.settings.alternativeInputPath = m_folder.Path();
        run.request.settings.alternativeOutputPath = m_folder.Path();
        return run;
    }
    std::string Missing() const { return m_folder / "missing"; }

    CTemporaryFolder m_folder;
};

TEST_F(SafetyRules, RefuseWhatWouldSurprise)
{
    using Change = std::function<void(PlannedRun&)>;
    const auto engineSaves = [](PlannedRun& run, int kind) {
        run.facts.steps.pop_back();
        run.facts.output.kind = kind;
    };
    const auto ends = [](PlannedRun& run, int code, const std::string& destination) {
        run.request.settings.finalAction = code;
        run.request.settings.destination = destination;
    };
    const struct {
        const char* what;
        Change change;
        const char* hint;  // part of the message; empty: the run may start
    } rows[] = {
        {"nothing changed", [](PlannedRun&) {}, ""},
        {"a step is missing", [](PlannedRun& r) { r.facts.steps.push_back(Step("Maker:Gone", false)); },
         "--skip-unavailable"},
        {"a step is missing, and that is fine",
         [](PlannedRun& r) {
             r.facts.steps.push_back(Step("Maker:Gone", false));
             r.request.switches.skipUnavailable = true;
         },
         ""},
        {"nobody names the input", [](PlannedRun& r) { r.request.settings.alternativeInputPath.clear(); }, "--input"},
        {"the input is missing", [&](PlannedRun& r) { r.request.settings.alternativeInputPath = Missing(); },
         "--input"},
        {"a further input is missing", [&](PlannedRun& r) { r.request.furtherInputPaths = {Missing()}; }, "missing"},
        {"further inputs are inputs",
         [&](PlannedRun& r) {
             r.request.settings.alternativeInputPath.clear();
             r.request.furtherInputPaths = {m_folder.Path()};
         },
         ""},
        {"the sequence names its input",
         [](PlannedRun& r) {
             r.request.settings.alternativeInputPath.clear();
             r.facts.inputKind = kInputFolder;
         },
         ""},
        {"the output folder is missing", [&](PlannedRun& r) { r.request.settings.alternativeOutputPath = Missing(); },
         "--output"},
        {"the sequence asks for its output folder",
         [&](PlannedRun& r) {
             engineSaves(r, kOutputAskUser);
             r.request.settings.alternativeOutputPath.clear();
         },
         "--output"},
        {"the sequence's own folder is missing",
         [&](PlannedRun& r) {
             engineSaves(r, kOutputFolder);
             r.facts.output.selectedFolder = Missing();
             r.request.settings.alternativeOutputPath.clear();
         },
         "--output"},
        {"another folder takes its place",
         [&](PlannedRun& r) {
             engineSaves(r, kOutputFolder);
             r.facts.output.selectedFolder = Missing();
         },
         ""},
        {"nothing is saved and the input is deleted",
         [&](PlannedRun& r) {
             r.facts.steps.pop_back();
             ends(r, 3, "");
         },
         "--allow-no-output"},
        {"nothing is saved and the input is copied",
         [&](PlannedRun& r) {
             r.facts.steps.pop_back();
             ends(r, 8, m_folder.Path());
         },
         ""},
        {"nothing is saved and the input is moved, as wanted",
         [&](PlannedRun& r) {
             r.facts.steps.pop_back();
             ends(r, 7, m_folder.Path());
             r.request.switches.allowNoOutput = true;
         },
         ""},
        {"the save step replaces the inputs", [](PlannedRun& r) { r.facts.steps.back() = SaveStep(false); },
         "--allow-in-place"},
        {"the save step replaces the inputs, and no folder is given",
         [](PlannedRun& r) {
             r.facts.steps.back() = SaveStep(false);
             r.request.settings.alternativeOutputPath.clear();
         },
         ""},
        {"the save step replaces the inputs, as wanted",
         [](PlannedRun& r) {
             r.facts.steps.back() = SaveStep(false);
             r.request.switches.allowInPlace = true;
         },
         ""},
        {"the save step adds an affix", [](PlannedRun& r) { r.facts.steps.back() = SaveStep(false, "_o"); }, ""},
        {"an old host saves in place whatever the step says", [](PlannedRun& r) { r.facts.hostMajor = 10; },
         "--allow-in-place"},
        {"the engine replaces the inputs",
         [&](PlannedRun& r) {
             engineSaves(r, kOutputInputFolder);
             r.facts.output.dontOverwrite = false;
         },
         "--allow-in-place"},
        {"the destination is missing", [&](PlannedRun& r) { ends(r, 1, Missing()); }, "--destination"},
        {"no destination is given", [&](PlannedRun& r) { ends(r, 6, ""); }, "--destination"},
        {"no new name is given", [&](PlannedRun& r) { ends(r, 4, ""); }, "--destination"},
        {"no program is given", [&](PlannedRun& r) { ends(r, 5, ""); }, "--destination"},
        {"the program is missing", [&](PlannedRun& r) { ends(r, 5, Missing()); }, "program"},
        {"deleting needs no destination", [&](PlannedRun& r) { ends(r, 3, ""); }, ""},
    };
    for (const auto& row : rows) {
        PlannedRun run = Harmless();
        row.change(run);
        const std::string problem = SafetyProblem(run.facts, run.request);
        EXPECT_EQ(problem.empty(), *row.hint == '\0') << row.what << ": " << problem;
        EXPECT_NE(problem.find(row.hint), std::string::npos) << row.what << ": " << problem;
    }
}

TEST_F(SafetyRules, OneWorkerWhenAStepLooksBeyondItsDocument)
{
    const auto script = [](const char* text) {
        StepFacts step = Step("JavaScript");
        step.script = text;
        return step;
    };
    StepFacts foreign = Step("Maker:Index");
    foreign.sequenceCallbacks = true;
    StepFacts host = Step("CALS:Preflight");
    host.sequenceCallbacks = true;
    const struct {
        StepFacts step;
        bool oneWorker;
    } rows[] = {{Step("QLNX_FerrulePasswordProtectCommand"), false},
                {Step("QLNX_FerruleRebuildIndexCommand"), true},
                {Step("QLNX_FerruleRebuildIndexCommand", false), false},
                {Step("QLNX_FerruleSearchAndCopyCommand"), true},
                {foreign, true},
                {Step("Maker:Stamp"), false},
                {host, false},
                {script("global.count = 1;"), true},
                {script("if(!global) {}"), true},
                {script("this.globalize(); my_global = 2; globals()"), false}};
    for (const auto& row : rows) {
        PlannedRun run = Harmless();
        run.facts.steps.push_back(row.step);
        const std::string reason = OneWorkerReason(run.facts);
        EXPECT_EQ(!reason.empty(), row.oneWorker) << row.step.handler << ' ' << row.step.script;
        EXPECT_EQ(reason.find(row.step.handler) != std::string::npos, row.oneWorker) << reason;
    }
}

}  // namespace
