"""Jobs that a supervisor hands to a worker: plans, runs with inputs from outside, trial runs."""
import os
import re
import unittest
from pathlib import Path

from unattended import PROTECT, SAVE, Workplace, minimal_pdf, protect_items, save_items
from worker import Job, job_of, to_text

FOREIGN = ("--plugin", os.environ.get("FERRULE_PLUG_IN", "build/release/bin/plug_ins/Ferrule.api"),
           "--plugin", os.environ.get("FERRULE_FOREIGN_STEPS", "build/release/tests/hosted/ForeignSteps.api"))
OPENING = "\tOpening input document : "


def timeless(lines):
    """Log lines without what differs from run to run."""
    text = [re.sub(r"\d+/\d+/\d+ , (TIME: )?[\d:]+", "<time>", line) for line in lines]
    return [line for line in text if line]


def blocks(lines):
    """The lines of each file, and those before and after all files."""
    starts = [number for number, line in enumerate(lines) if line.startswith(OPENING)]
    end = next(number for number, line in enumerate(lines)
               if "equence postflighting callback" in line or line.startswith("Adobe Acrobat has been closed."))
    cuts = starts + [end]
    return lines[:cuts[0]], [lines[a:b] for a, b in zip(cuts, cuts[1:])], lines[end:]


def tree(root):
    """Every file below a folder: path, bytes, time stamp."""
    return {path: (path.read_bytes(), path.stat().st_mtime_ns) for path in sorted(root.rglob("*"))
            if path.is_file() and "config" not in path.parts}


class Jobs(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        self.sequence = self.place.sequence("protect.sequ", [(PROTECT, protect_items()), (SAVE, save_items())])

    def write(self, *names):
        paths = [self.place.input / name for name in names]
        for path in paths:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(minimal_pdf(path.name))
        return [str(path) for path in paths]

    def plan(self, sequence=None, final=0, destination="", output=None, arguments=(), **more):
        output = self.place.output if output is None else output
        return Job(self.place, job_of("plan", sequence or self.sequence, final, destination, self.place.input, output, **more),
                   arguments=arguments)

    def run_job(self, inputs, sequence=None, final=0, destination="", output=None, arguments=(), answer=None, to_do=None,
                **more):
        output = self.place.output if output is None else output
        job = job_of("run", sequence or self.sequence, final, destination, self.place.input, output, **more)
        return Job(self.place, job, inputs, answer, arguments, to_do)

    def test_a_plan_tells_inputs_groups_and_the_lines_around_the_files(self):
        self.write("a.pdf", "sub/A (1).PDF", "b.pdf")
        fresh = self.write("fresh.pdf")[0]
        for path in self.place.input.rglob("*.[pP]*"):
            if str(path) != fresh:
                os.utime(path, ns=(10**18 + 7, 10**18 + 7))
        job = self.plan(settings={"minAge": 60})
        inputs, plan = job.planned()
        self.assertEqual((job.end, job.code), ("finished", 0), job)
        self.assertEqual([(Path(i["path"]).name, i["number"], i["group"]) for i in inputs],
                         [("a.pdf", 1, 1), ("b.pdf", 2, 0), ("A (1).PDF", 3, 1)])
        self.assertEqual({i["modified"] for i in inputs}, {str(10**18 + 7)})
        self.assertEqual(inputs[0]["size"], len(minimal_pdf("a.pdf")))
        self.assertEqual((plan["total"], plan["tooYoung"], plan["oneWorker"]), (3, 1, False))
        self.assertEqual(job.acts + job.records, [])

        os.unlink(fresh)
        environment = self.place.run_folder(self.sequence, FERRULEFILEEXT="pdf", FERRULENOPROGRESS="")
        before, _, after = blocks(timeless(environment.lines))
        planned = timeless(job.lines)
        self.assertEqual(planned[:len(before)], before)
        self.assertEqual(planned[len(before):], after[2:], "without the lines of the sequence's postflight")

    def test_several_places(self):
        self.write("a.pdf")
        other = self.place.root / "other"
        other.mkdir()
        (other / "b.pdf").write_bytes(b"x")
        (other / "c.txt").write_bytes(b"x")
        job = self.plan(settings={"inputs": [to_text(path) for path in (self.place.input, other, self.place.input / "a.pdf",
                                                                        other / "c.txt")]})
        self.assertEqual([Path(i["path"]).name for i in job.planned()[0]], ["a.pdf", "b.pdf", "c.txt"], job)

    def test_places_that_the_sequence_names(self):
        self.write("a.pdf", "b.pdf")
        steps = [(PROTECT, protect_items()), (SAVE, save_items())]
        for sources, found in (([("Folder", self.place.input)], ["a.pdf", "b.pdf"]),
                               ([("File", self.place.input / "b.pdf")], ["b.pdf"]),
                               ([("Folder", self.place.output), ("File", self.place.input / "b.pdf")], ["b.pdf"])):
            with self.subTest(sources=sources):
                sequence = self.place.sequence("named.sequ", steps, sources)
                job = self.plan(sequence, settings={"inputs": []})
                self.assertEqual([Path(i["path"]).name for i in job.planned()[0]], found, job)

    def test_no_inputs(self):
        job = self.plan()
        self.assertEqual(job.end, "finished", job)
        self.assertEqual(job.planned()[1]["total"], 0)
        self.assertIn("No input files have been found at specified location, processing is terminated", job.lines)
        job = self.run_job([])
        self.assertEqual((job.end, job.records, job.code), ("finished", [], 0), job)

    def test_what_is_no_job_ends_as_not_started(self):
        for job in ({"kind": "dance"}, {}, [], 7, {"kind": 5}, {"kind": "run"}, {"kind": "plan", "version": 1}):
            with self.subTest(job=job):
                done = Job(self.place, job) if isinstance(job, dict) else Job(self.place, {"kind": job})
                self.assertEqual((done.end, done.code), ("not-started", 1), done)
                self.assertNotEqual(done.end_message, "")

    def test_the_lines_of_a_file_do_not_depend_on_the_files_before(self):
        inputs = self.write("a.pdf", "b.pdf", "c.pdf")
        (self.place.input / "a.pdf").write_bytes(b"no document")  # so that the preflight stands among the lines of b
        together = self.run_job(inputs)
        _, wanted, _ = blocks(timeless(together.lines))
        preflight = [line for line in wanted[1] if "equence preflighting" in line]
        self.assertEqual(len(preflight), 2, together)
        for path in self.place.output.iterdir():
            path.unlink()
        for path, lines in zip(inputs, wanted):
            alone = self.run_job([path])
            _, found, _ = blocks(timeless(alone.lines))
            without = [[line for line in some if line not in preflight] for some in (found[0], lines)]
            self.assertEqual(*without)
            self.assertEqual(alone.marks, ["inputs-counted"] if path == inputs[0] else
                             ["inputs-counted", "sequence-preflight-begins", "sequence-preflight-ends"], alone)

    def test_only_the_final_action_is_left(self):
        inputs = self.write("a.pdf", "b.pdf")
        job = self.run_job(inputs, final=7, destination=self.place.done, to_do={inputs[0]: "final-action"})
        self.assertEqual([(ask["number"], ask["purpose"], ask["act"]) for ask in job.acts],
                         [(1, "final-action", "move"), (2, "output", "put"), (2, "final-action", "move")], job)
        self.assertEqual(sorted(path.name for path in self.place.output.iterdir()), ["b.pdf"])
        self.assertEqual(sorted(path.name for path in self.place.done.iterdir()), ["a.pdf", "b.pdf"])

    def test_an_incomplete_file_stays_where_it_is(self):
        sequence = self.place.sequence("some.sequ", [("Maker:Gone", {}), (SAVE, save_items())])
        for code in (1, 2, 3, 6, 7, 8):
            with self.subTest(code=code):
                inputs = self.write("a.pdf")
                job = self.run_job(inputs, sequence, code, self.place.done)
                self.assertEqual(job.records[0]["outcome"], "incomplete", job)
                self.assertTrue(os.path.exists(inputs[0]), job)
                self.assertEqual(list(self.place.done.iterdir()), [])
                self.assertIn("stays where it is", job.records[0]["message"], job)
                for path in self.place.output.iterdir():
                    path.unlink()

    def test_a_refused_act_fails_the_file_and_nothing_else(self):
        inputs = self.write("a.pdf", "b.pdf")
        for refused in ("output", "final-action"):
            with self.subTest(refused=refused):
                before = tree(self.place.input)
                job = self.run_job(inputs, final=6, destination=self.place.done,
                                   answer=lambda ask, refused=refused: "refuse" if ask["purpose"] == refused else "go")
                self.assertEqual({record["outcome"] for record in job.records},
                                 {"failed" if refused == "output" else "incomplete"}, job)
                self.assertEqual(tree(self.place.input), before)
                self.assertEqual(len(list(self.place.output.iterdir())), 0 if refused == "output" else 2)
                self.assertEqual(list(self.place.done.iterdir()), [])

    def test_a_trial_run_leaves_out_steps_of_other_makers(self):
        inputs = self.write("a.pdf")
        sequence = self.place.sequence("foreign.sequ", [("T:WithoutReserve", {}), (PROTECT, protect_items()),
                                                        (SAVE, save_items())])
        job = self.run_job(inputs, sequence, dryRun=True, arguments=FOREIGN)
        self.assertIn("T:WithoutReserve was left out of the trial run", job.records[0]["message"], job)
        self.assertNotIn("T:WithoutReserve", job.errors, "the step was not even made")
        self.assertEqual(list(self.place.output.iterdir()), [])


if __name__ == "__main__":
    unittest.main()
