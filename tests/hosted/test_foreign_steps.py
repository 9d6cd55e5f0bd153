"""Steps of another maker that misbehave: each costs its file at most, and the log says what happened."""
import itertools
import os
import unittest

from test_output_rules import host_sequence
from unattended import FOREIGN, HOST, PROTECT, SAVE, Workplace, minimal_pdf, page_count, save_items, text_of

FINE, BROKEN, SOME_FAILED = 0, 1, 3
NAMES = ["a.pdf", "b.pdf"]

# step: exit code, whether the results are written (and the inputs then deleted), log lines that appear per file,
# callbacks of the step for one file that must appear in this order
STEPS = {
    "T:RaiseInInitialize": (SOME_FAILED, True, ["Skipping command because it is not available"], []),
    "T:ErrorInInitialize": (SOME_FAILED, True, ["\tCommand handler is not available"], []),
    "T:ThrowInInitialize": (SOME_FAILED, True, ["Skipping command because it is not available"], []),
    "T:RaiseInRegisterCommands": (FINE, True, [], ["Work"]),
    "T:RaiseInCreated": (SOME_FAILED, False, ["Error creating a batch command", "Error preparing commands"], []),
    "T:ThrowInCreated": (SOME_FAILED, False, ["Error creating a batch command"], []),
    "T:RaiseInSetParams": (SOME_FAILED, False, ["ERROR: Setting parameters failed"], []),
    "T:ErrorInSetParams": (SOME_FAILED, False, ["ERROR: Setting parameters failed"], []),
    "T:RaiseInGetParams": (FINE, True, [], ["Work"]),
    "T:RaiseInGetProps": (SOME_FAILED, False, ["Command does not support parameter descriptions",
                                               "Exeption occured in ExecuteCommand() function",
                                               "ERROR: Command execution failed"], []),
    "T:RaiseInWork": (SOME_FAILED, False, ["Exeption occured in ExecuteCommand() function",
                                           "ERROR: Command execution failed"], ["PreflightFile", "Work"]),
    "T:ThrowInWork": (SOME_FAILED, False, ["ERROR: Command execution failed"], ["Work"]),
    "T:ErrorInWork": (SOME_FAILED, True, ["Batch command is finished with an error.", "Last error"],
                      ["Work", "Cancel", "PostflightFile"]),
    "T:CancelInWork": (SOME_FAILED, True, ["Processing has been canceled",
                                           "Batch command is finished without kAVCommandDone."], ["Work"]),
    "T:RaiseInCancel": (SOME_FAILED, False, ["Exeption occured in ExecuteCommand() function"], ["Work", "Cancel"]),
    "T:ErrorInCancel": (SOME_FAILED, True, ["Batch command is finished with an error."], ["Work", "Cancel"]),
    "T:RaiseInReset": (SOME_FAILED, False, ["Command is not ready before execution and is going to be reset. "
                                            "Current state: 4",
                                            "ERROR: Cannot assign input file to a command handler",
                                            "Command is not ready. "], ["Reset", "Reset"]),
    "T:ErrorInReset": (SOME_FAILED, True, ["\tWARNING: Command is not ready.", "\tWARNING: Command is RESET.",
                                           "Batch command is finished with an error."], ["Reset", "Reset"]),
    "T:RaiseInPreflightSequence": (BROKEN, False, ["Preflighting the sequence returned an error"], []),
    "T:ErrorInPreflightSequence": (BROKEN, False, ["Preflighting the sequence returned an error"], []),
    "T:CancelInPreflightSequence": (BROKEN, False, ["Preflighting the sequence returned an error"], []),
    "T:ThrowInPreflightSequence": (BROKEN, False, ["Preflighting the sequence returned an error"], []),
    "T:RaiseInPreflightFile": (SOME_FAILED, True, ["Preflighting input file : T:RaiseInPreflightFile",
                                                   "Preflighting input file returned an error"], ["Work"]),
    "T:ErrorInPreflightFile": (SOME_FAILED, True, ["Preflighting input file returned an error"], ["Work"]),
    "T:ThrowInPreflightFile": (SOME_FAILED, True, ["Preflighting input file returned an error"], ["Work"]),
    "T:RaiseInPostflightFile": (SOME_FAILED, True, ["Exception occuring during file postflight"], ["Work"]),
    "T:ErrorInPostflightFile": (SOME_FAILED, True, ["Postflighting input file returned an error"], ["Work"]),
    "T:ThrowInPostflightFile": (SOME_FAILED, True, ["Exception occuring during file postflight"], ["Work"]),
    "T:RaiseInPostflightSequence": (FINE, True, ["Exception during command postflight"], ["Work"]),
    "T:ErrorInPostflightSequence": (FINE, True, ["Postflighting the sequence returned an error"], ["Work"]),
    "T:ThrowInPostflightSequence": (FINE, True, ["Exception during command postflight"], ["Work"]),
    "T:WithoutFlights": (FINE, True, ["No Sequence preflighting callback", "No Preflighting callback for input file",
                                      "No Postflighting callback for input file",
                                      "No sequence postflighting callback"], ["Work"]),
    "T:WithoutReserve": (FINE, True, ["Preflighting input file"], ["PreflightFile", "Work", "PostflightFile"]),
    "T:WorksThreeTimes": (FINE, True, [], ["Work", "Work", "Work", "PostflightFile"]),
    "T:LeavesThingsOpen": (SOME_FAILED, True, ["Exception occured during a document closing"], ["Work"]),
    "T:ClosesDoc": (SOME_FAILED, False, [], ["Work"]),
    "T:ClosesView": (SOME_FAILED, False, [], ["Work"]),
    "WatermarkCmd": (FINE, True, ["Batch command does not exists", "Trying to load alternative command"], ["Work"]),
    "COMP:AddHeadFoot": (SOME_FAILED, True, ["Skipping command because it is not available"], []),
}
ONCE = ("sequence", "Sequence", "command postflight")  # lines about the run, not about a file


class ForeignSteps(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        for name in NAMES:
            (self.place.input / name).write_bytes(minimal_pdf(name))
        self.trace = self.place.root / "trace.txt"

    def run_steps(self, *steps, final=3, arguments=(), **more):
        commands = [(step, {}) for step in steps] + [(SAVE, save_items())]
        more.setdefault("FOREIGN_STEPS_FILE", self.place.root / "step.tmp")
        return self.place.run_folder(self.place.sequence("x.sequ", commands), final,
                                     arguments=(*FOREIGN, *arguments), FOREIGN_STEPS_TRACE=self.trace, **more)

    def traced(self):
        return [line.split(" ") for line in self.trace.read_text().splitlines()]

    def check_step(self, step, code, written, lines, calls):
        outcome = self.run_steps(step)
        self.assertEqual(outcome.code, code, outcome)
        for line in lines:
            found = sum(entry.strip("\t").startswith(line.strip("\t")) for entry in outcome.lines)
            self.assertGreaterEqual(found, 1 if any(word in line for word in ONCE) else len(NAMES), f"{line}\n{outcome}")
        self.assertEqual(self.place.names(self.place.output), NAMES if written else [], outcome)
        self.assertEqual(self.place.names(self.place.input), [] if written else NAMES, outcome)
        for name in NAMES:
            result = (self.place.output if written else self.place.input) / name
            self.assertEqual(page_count(result), 1, outcome)
            self.assertTrue(written or result.read_bytes() == minimal_pdf(name), outcome)
        made = [stage for _, stage in self.traced()]
        for stage in calls * len(NAMES):
            self.assertIn(stage, made, outcome)
            del made[:made.index(stage) + 1]
        # Nothing that was made stays behind.
        made = [stage for _, stage in self.traced()]
        if not step.endswith("InCreated"):
            self.assertEqual(made.count("Created"), made.count("Destroy"), outcome)

    def test_each_flaw_costs_no_more_than_it_must(self):
        for step, row in STEPS.items():
            with self.subTest(step):
                self.doCleanups()
                self.setUp()
                self.check_step(step, *row)

    def test_the_order_of_the_callbacks(self):
        outcome = self.run_steps("T:Plain", "T:Other")
        self.assertEqual(outcome.code, FINE, outcome)
        stages = ("Created", "PreflightSequence", "PreflightFile", "Work", "PostflightFile", "PostflightSequence",
                  "Destroy")
        first, second = "T:Plain", "T:Other"
        per_file = [[step, stage] for stage in stages[2:5] for step in (first, second)]
        made = [[step, "Created"] for step in (first, second)]
        expected = (made + [[first, "PreflightSequence"], [second, "PreflightSequence"]] + per_file +
                    [[first, "Destroy"], [second, "Destroy"]] + made + per_file +
                    [[first, "PostflightSequence"], [second, "PostflightSequence"], [first, "Destroy"],
                     [second, "Destroy"]])
        self.assertEqual([call for call in self.traced() if call[0] in (first, second) and call[1] in stages], expected)

    def test_the_first_reason_of_an_outcome_stays(self):
        rows = [(("T:ErrorInWork", "T:CancelInWork"), "T:ErrorInWork", "T:CancelInWork"),
                (("T:CancelInWork", "NoSuchStep", "T:ErrorInWork"), "T:CancelInWork", "NoSuchStep"),
                (("T:ErrorInWork", "T:RaiseInWork"), "T:RaiseInWork", "T:ErrorInWork")]  # failed is worse
        for steps, told, kept_back in rows:
            with self.subTest(steps=steps):
                outcome = self.run_steps(*steps, final=0)
                reasons = [line for line in outcome.errors.splitlines() if ".pdf: " in line]
                self.assertTrue(reasons, outcome)
                for reason in reasons:
                    self.assertIn(told, reason)
                    self.assertNotIn(kept_back, reason)

    def test_a_new_version_of_the_input_is_not_taken_for_the_old_one(self):
        engine = {"FileVariation": ("integer", 0), "DontOverwrite": ("boolean", "false")}
        source = self.place.input / "a.pdf"
        os.remove(self.place.input / "b.pdf")
        for arrives, final, save in [(True, 8, "folder"), *itertools.product((True, False), (2, 3, 4, 6, 7), ("folder",)),
                                     *itertools.product((True, False), (0, 3), ("step in place", "engine in place"))]:
            with self.subTest(arrives=arrives, final=final, save=save):
                source.write_bytes(minimal_pdf("a.pdf"))
                steps = [("T:NewVersionArrives" if arrives else "T:Plain", {})]
                if save == "engine in place":
                    sequence = host_sequence(self.place, engine, commands=steps)
                else:
                    items = save_items() if save == "folder" else {}
                    sequence = self.place.sequence("x.sequ", [*steps, (SAVE, items)])
                outcome = self.place.run_folder(sequence, final, "renamed.pdf" if final == 4 else self.place.done,
                                                arguments=FOREIGN, output=save == "folder",
                                                FOREIGN_STEPS_TRACE=self.trace, FOREIGN_STEPS_ARRIVES=source)
                kept = arrives or final == 0
                self.assertEqual(source.exists(), kept, outcome)
                if arrives:
                    self.assertEqual(source.read_bytes(), b"a new version", outcome)
                if arrives and final != 8:
                    self.assertEqual((outcome.code, list(self.place.done.iterdir())), (SOME_FAILED, []), outcome)
                    self.assertIn("incomplete", outcome.errors)
                    self.assertIn("because the input changed while it was processed", outcome.errors)
                else:
                    self.assertEqual(outcome.code, FINE, outcome)
                self.assertEqual(page_count(self.place.output / "a.pdf"), 1 if save == "folder" else None, outcome)
                self.place.clear(self.place.done, self.place.output, self.place.input)

    def test_a_half_done_document_does_not_replace_its_input(self):
        """`ferrule run` after a failed step, by where the save step saves, whatever the output folder."""
        engine = {"FileVariation": ("integer", 0), "DontOverwrite": ("boolean", "false")}
        for step, save in itertools.product(("T:ErrorInWork", "T:Plain"), ("in place", "folder", "beside", "engine in place")):
            with self.subTest(step=step, save=save):
                self.doCleanups()
                self.setUp()
                sequence = (host_sequence(self.place, engine, commands=[(step, {})]) if save == "engine in place" else
                            self.place.sequence("x.sequ", [(step, {}), (SAVE, {} if save == "in place" else save_items())]))
                outcome = self.place.run({"FOREIGN_STEPS_TRACE": self.trace}, [
                    "run", sequence, "--input", self.place.input, "--allow-in-place",
                    *([] if save == "beside" else ["--output", self.place.output]), *FOREIGN], program=HOST.with_name("ferrule"))
                self.assertEqual(outcome.code, SOME_FAILED if step == "T:ErrorInWork" else FINE, outcome)
                self.assertEqual(self.place.names(self.place.output), NAMES if save == "folder" else [], outcome)
                beside = len(self.place.names(self.place.input)) - len(NAMES)
                self.assertEqual(beside, len(NAMES) if (step, save) == ("T:Plain", "beside") else 0, outcome)
                for name in NAMES:
                    same = (self.place.input / name).read_bytes() == minimal_pdf(name)
                    self.assertEqual(same, save in ("folder", "beside") or step == "T:ErrorInWork", outcome)

    def test_without_its_protection_no_document_is_saved(self):
        ways = {"T:Plain": None, "T:ErrorInWork": "failed", "T:CancelInWork": "not completed", "T:RaiseInWork": "failed",
                "T:ThrowInWork": "failed", "T:ErrorInInitialize": "not available", "T:ErrorInCancel": "failed"}
        saves = {"save step": None, "engine": {"FileVariation": ("integer", 0), "DontOverwrite": ("boolean", "false")}}
        for step, way, save in itertools.product((PROTECT, "DocSecurity"), ways, saves):
            with self.subTest(step=step, way=way, save=save):
                self.doCleanups()
                self.setUp()
                commands = [(step, {}), ("T:Other", {})]
                sequence = (self.place.sequence("x.sequ", [*commands, (SAVE, save_items())]) if save == "save step" else
                            host_sequence(self.place, saves[save], commands=commands))
                outcome = self.place.run_folder(sequence, 3, arguments=FOREIGN, FOREIGN_STEPS_TRACE=self.trace,
                                                FOREIGN_STEPS_REPLACED=step, FOREIGN_STEPS_BY=way)
                if way == "T:Plain":
                    self.assertEqual((outcome.code, len(list(self.place.input.iterdir()))), (FINE, 0), outcome)
                    continue
                self.assertEqual(outcome.code, SOME_FAILED, outcome)
                self.assertEqual(list(self.place.output.iterdir()), [], outcome)
                self.assertEqual(self.place.names(self.place.input), NAMES, outcome)
                for name in NAMES:
                    self.assertEqual((self.place.input / name).read_bytes(), minimal_pdf(name), outcome)
                self.assertIn("failed", outcome.errors)
                self.assertIn(ways[way], outcome.errors)

    def test_a_document_in_a_temporary_file_goes_on_under_the_inputs_name(self):
        outcome = self.run_steps("T:ContinuesInTmp", final=0)
        self.assertEqual(outcome.code, FINE, outcome)
        self.assertEqual(outcome.values("Saving temporary file as"), [str(self.place.input / name) for name in NAMES])
        for folder in (self.place.input, self.place.output):
            self.assertEqual(self.place.names(folder), NAMES, outcome)
            for name in NAMES:
                self.assertIn(name.encode(), text_of(folder / name), outcome)
        outcome = self.run_steps("T:ContinuesInTmp", final=0, FOREIGN_STEPS_FILE=self.place.root / "step.TMP")
        self.assertEqual(outcome.values("Saving temporary file as"), [], "only lower case means a temporary file")



if __name__ == "__main__":
    unittest.main()
