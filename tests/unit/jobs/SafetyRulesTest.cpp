#include <functional>

#include <gtest/gtest.h>

#include "engine/SequencePlanning.h"
#include "jobs/PlanJob.h"
#include "sequence/Sequence.h"
#include "support/TemporaryFolder.h"

namespace {

StepFacts Step(const char* handler, bool available = true, StepMaker maker = StepMaker::Host)
{
    StepFacts step;
    step.handler = handler;
    step.available = available;
    step.maker = maker;
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
    PlanRequest request;
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

    CTemporaryFolder m_folder;
};

TEST_F(SafetyRules, RefuseWhatWouldSurprise)
{
    using Change = std::function<void(PlannedRun&)>;
    const std::string here = m_folder.Path(), missing = m_folder / "missing", none;
    const auto input = [](const std::string& path) {
        return [path](PlannedRun& r) { r.request.settings.alternativeInputPath = path; };
    };
    const auto further = [](const std::string& path) {
        return [path](PlannedRun& r) { r.request.settings.furtherInputPaths = {path}; };
    };
    const auto output = [](const std::string& path) {
        return [path](PlannedRun& r) { r.request.settings.alternativeOutputPath = path; };
    };
    const auto engineSaves = [](int kind, const std::string& folder = {}) {
        return [kind, folder](PlannedRun& r) {
            r.facts.steps.pop_back();
            r.facts.output.kind = kind;
            r.facts.output.selectedFolder = folder;
        };
    };
    const auto savesBy = [](const StepFacts& step) { return [step](PlannedRun& r) { r.facts.steps.back() = step; }; };
    const auto ends = [](int code, const std::string& destination) {
        return [code, destination](PlannedRun& r) {
            r.request.wanted.finalAction = static_cast<FinalAction>(code);
            r.request.wanted.destination = destination;
        };
    };
    const auto switchOn = [](auto name) { return [name](PlannedRun& r) { r.request.wanted.*name = true; }; };
    const Change stepMissing = [](PlannedRun& r) { r.facts.steps.push_back(Step("Maker:Gone", false)); };
    const Change namesInput = [](PlannedRun& r) { r.facts.inputKind = kInputFolder; };
    const Change overwrites = [](PlannedRun& r) { r.facts.output.dontOverwrite = false; };
    const Change oldHost = [](PlannedRun& r) { r.facts.hostMajor = 10; };
    const Change savesNothing = [](PlannedRun& r) { r.facts.steps.pop_back(); };
    const struct {
        const char* what;
        std::vector<Change> changes;
        const char* hint;  // part of the message; empty: the run may start
    } rows[] = {
        {"nothing changed", {}, ""},
        {"a step is missing", {stepMissing}, "--skip-unavailable"},
        {"a step is missing, and that is fine", {stepMissing, switchOn(&RunDescription::skipUnavailable)}, ""},
        {"nobody names the input", {input(none)}, "--input"},
        {"the input is missing", {input(missing)}, "--input"},
        {"a further input is missing", {further(missing)}, "missing"},
        {"further inputs are inputs", {input(none), further(here)}, ""},
        {"the sequence names its input", {input(none), namesInput}, ""},
        {"the output folder is missing", {output(missing)}, "--output"},
        {"the sequence asks for its output folder", {engineSaves(kOutputAskUser), output(none)}, "--output"},
        {"the sequence's own folder is missing", {engineSaves(kOutputFolder, missing), output(none)}, "--output"},
        {"another folder takes its place", {engineSaves(kOutputFolder, missing)}, ""},
        {"nothing is saved and the input is deleted", {savesNothing, ends(3, none)}, "--allow-no-output"},
        {"nothing is saved and the input is copied", {savesNothing, ends(8, here)}, ""},
        {"nothing is saved and the input is moved, as wanted",
         {savesNothing, ends(7, here), switchOn(&RunDescription::allowNoOutput)},
         ""},
        {"the save step replaces the inputs", {savesBy(SaveStep(false))}, "--allow-in-place"},
        {"the save step replaces the inputs, and no folder is given", {savesBy(SaveStep(false)), output(none)}, ""},
        {"the save step replaces the inputs, as wanted",
         {savesBy(SaveStep(false)), switchOn(&RunDescription::allowInPlace)},
         ""},
        {"the save step adds an affix", {savesBy(SaveStep(false, "_o"))}, ""},
        {"an old host saves in place whatever the step says", {oldHost}, "--allow-in-place"},
        {"the engine replaces the inputs", {engineSaves(kOutputInputFolder), overwrites}, "--allow-in-place"},
        {"the destination is missing", {ends(1, missing)}, "--destination"},
        {"no destination is given", {ends(6, none)}, "--destination"},
        {"no new name is given", {ends(4, none)}, "--destination"},
        {"no program is given", {ends(5, none)}, "--destination"},
        {"the program is missing", {ends(5, missing)}, "program"},
        {"deleting needs no destination", {ends(3, none)}, ""},
    };
    for (const auto& row : rows) {
        PlannedRun run = Harmless();
        for (const Change& change : row.changes) change(run);
        const std::string problem = SafetyProblem(FactsOfSequence(run.facts, run.request), run.request);
        EXPECT_EQ(problem.empty(), *row.hint == '\0') << row.what << ": " << problem;
        EXPECT_NE(problem.find(row.hint), std::string::npos) << row.what << ": " << problem;
    }
}

TEST_F(SafetyRules, OneWorkerWhenAStepLooksBeyondItsDocument)
{
    const auto with = [](StepFacts step, auto member, auto value) {
        step.*member = value;
        return step;
    };
    const auto script = [&](const char* text) { return with(Step("JavaScript"), &StepFacts::script, text); };
    const auto shared = [&](SharedWork work, bool available = true) {
        return with(Step("Shared", available), &StepFacts::shared, work);
    };
    const auto calledBack = [&](StepMaker maker) {
        return with(Step("Maker:Index", true, maker), &StepFacts::sequenceCallbacks, true);
    };
    const struct {
        StepFacts step;
        bool oneWorker;
    } rows[] = {{Step("QLNX_FerrulePasswordProtectCommand"), false},
                {shared(SharedWork::Index), true},
                {shared(SharedWork::Index, false), false},
                {shared(SharedWork::Report), false},
                {calledBack(StepMaker::Other), true},
                {Step("Maker:Stamp", true, StepMaker::Other), false},
                {calledBack(StepMaker::Host), false},
                {script("global.count = 1;"), true},
                {script("if(!global) {}"), true},
                {script("this.globalize(); my_global = 2; globals()"), false}};
    for (const auto& row : rows) {
        PlannedRun run = Harmless();
        run.facts.steps.push_back(row.step);
        const std::string reason = FactsOfSequence(run.facts, run.request).oneWorkerReason;
        EXPECT_EQ(!reason.empty(), row.oneWorker) << row.step.handler << ' ' << row.step.script;
        EXPECT_EQ(reason.find(row.step.handler) != std::string::npos, row.oneWorker) << reason;
    }
}

}  // namespace
