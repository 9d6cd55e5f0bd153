"""Documents and surroundings that go wrong under workers: each costs its own file and nothing else."""
import json
import os
import signal
import subprocess
import time
import unittest
from pathlib import Path

from commandline import CommandPlace, documents, is_protected, minimal_pdf, records, temporaries
from unattended import PROTECT, SAVE, protect_items, save_items

FOREIGN_STEPS = Path(os.environ.get("FERRULE_FOREIGN_STEPS", ""))
PLUG_IN = Path(os.environ.get("FERRULE_PLUG_IN", ""))
# The test plug-in's step ends the process in a way that depends on the number of pages.
HANGS, CRASHES, GROWS = minimal_pdf("hangs", 7), minimal_pdf("crashes", 8), minimal_pdf("grows", 9)


class Trouble(unittest.TestCase):
    def setUp(self):
        self.place = CommandPlace()
        self.addCleanup(self.place.close)
        self.record = self.place.root / "record.jsonl"
        self.sequence = self.place.protect_sequence()
        self.turning = self.place.sequence("turning.sequ", [("T:TurnsOnPageCount", {}), (PROTECT, protect_items(0)),
                                                            (SAVE, save_items())])

    def turn(self, *more, jobs=2):
        """A run whose sequence has the step that ends processes."""
        return ["run", self.turning, "--input", self.place.input, "--output", self.place.output, "--jobs", jobs,
                "--record", self.record, "--plugin", PLUG_IN, "--plugin", FOREIGN_STEPS, *more]

    def words(self, *more, jobs=2):
        return ["run", self.sequence, "--input", self.place.input, "--output", self.place.output, "--jobs", jobs,
                "--record", self.record, *more]

    def outcomes(self):
        return {Path(line["path"]).name: line["outcome"] for line in records(self.record).values()}

    def message(self, name):
        return next(line["message"] for line in records(self.record).values() if Path(line["path"]).name == name)

    def test_documents_that_end_processes_cost_only_themselves(self):
        good = documents(self.place, [f"good {number}.pdf" for number in range(12)])
        # The sanitizers turn a crash into an exit code, and take their time for that.
        bad = {"good 1 hangs.pdf": (HANGS, "6 s"), "good 2 crashes.pdf": (CRASHES, "signal|exit code"),
               "good 3 grows.pdf": (GROWS, "300")}
        for name, (content, _) in bad.items():
            (self.place.input / name).write_bytes(content)
        result = self.place.ferrule(*self.turn("--timeout", "6", "--memory", "300M"))
        self.assertEqual(result.code, 3, result)
        outcomes = self.outcomes()
        self.assertEqual({outcomes[path.name] for path in good}, {"saved"}, result)
        for name, (_, reason) in bad.items():
            self.assertEqual(outcomes[name], "failed")
            self.assertRegex(self.message(name), reason)
            self.assertIn(name, result.errors, "the reason is not told")
        self.assertEqual(len(list(self.place.output.iterdir())), 12)
        self.assertTrue(all(map(is_protected, self.place.output.iterdir())))
        self.assertEqual(temporaries(self.place.root), [])

    def test_a_worker_killed_by_hand_costs_its_file(self):
        documents(self.place, ["b.pdf", "c.pdf"])
        (self.place.input / "a.pdf").write_bytes(HANGS)
        process = self.place.start(*self.turn("--timeout", "100", jobs=1))
        os.kill(self.busy_worker(process), signal.SIGKILL)
        process.communicate(timeout=60)
        self.assertEqual(self.outcomes(), {"a.pdf": "failed", "b.pdf": "saved", "c.pdf": "saved"})

    def busy_worker(self, process):
        """The process of the worker, once it has been with its file for a while."""
        workers, since = [], time.monotonic()
        while time.monotonic() < since + 20:
            found = subprocess.run(["pgrep", "-P", str(process.pid)], capture_output=True, text=True, check=False).stdout.split()
            if found != workers:
                workers, since = found, time.monotonic()
            elif workers and time.monotonic() > since + 1.5:
                return int(workers[0])
            time.sleep(0.1)
        raise AssertionError("there is no worker")

    def test_first_interrupt_ends_the_run_after_the_file_and_resume_goes_on(self):
        documents(self.place, [f"{number}.pdf" for number in range(400)])
        process = self.place.start(*self.words(jobs=1))
        while not list(self.place.output.glob("*.pdf")):
            time.sleep(0.01)
        process.send_signal(signal.SIGINT)
        _, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 130, errors)
        done = list(self.place.output.glob("*.pdf"))
        self.assertLess(len(done), 400)
        times = {path: path.stat().st_mtime_ns for path in done}
        result = self.place.ferrule(*self.words("--resume"))
        self.assertEqual(result.code, 0, result)
        self.assertEqual(len(list(self.place.output.glob("*.pdf"))), 400)
        self.assertEqual({path: path.stat().st_mtime_ns for path in done}, times, "files were processed twice")
        self.assertEqual(set(self.outcomes().values()), {"saved"})

    def test_second_interrupt_ends_it_now(self):
        (self.place.input / "a.pdf").write_bytes(HANGS)
        process = self.place.start(*self.turn(jobs=1))
        self.busy_worker(process)
        process.send_signal(signal.SIGINT)
        time.sleep(0.5)
        self.assertIsNone(process.poll(), "the first one does not wait for the file")
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=10)
        self.assertEqual(process.returncode, 130)
        self.assertEqual(self.outcomes(), {"a.pdf": "stopped"})

    def test_files_that_changed_since_the_plan(self):
        made = documents(self.place, ["same.pdf", "changed.pdf", "gone.pdf"])
        manifest, journal = self.place.root / "manifest", self.place.root / "journal"
        planned = self.place.ferrule("plan", self.sequence, "--input", self.place.input, "--output", self.place.output,
                                     "--manifest", manifest)
        self.assertEqual(planned.code, 0, planned)
        for path in made:
            if path.name == "changed.pdf":
                path.write_bytes(minimal_pdf("another", 2))
            elif path.name == "gone.pdf":
                path.unlink()
        result = self.place.ferrule("run", "--manifest", manifest, "--journal", journal, "--shard", "1/1", "--record", self.record)
        self.assertEqual(result.code, 3, result)
        self.assertEqual(self.outcomes(), {"changed.pdf": "skipped", "gone.pdf": "skipped", "same.pdf": "saved"})
        self.assertIn("changed since plan", self.message("changed.pdf"))

    def test_an_output_folder_that_goes_away_sends_nothing_elsewhere(self):
        made = documents(self.place, ["a.pdf", "b.pdf"])
        manifest, journal = self.place.root / "manifest", self.place.root / "journal"
        self.place.ferrule("plan", self.sequence, "--input", self.place.input, "--output", self.place.output, "--final-action",
                           "delete", "--manifest", manifest)
        self.place.output.rmdir()
        result = self.place.ferrule("run", "--manifest", manifest, "--journal", journal, "--record", self.record)
        self.assertEqual(result.code, 3, result)
        self.assertEqual(set(self.outcomes().values()), {"failed"})
        self.assertEqual({path: path.read_bytes() for path in self.place.input.iterdir()}, made)

    def test_no_result_replaces_another_input(self):
        made = documents(self.place, ["a.PDF", "a.pdf", "sub/b.pdf", "b.pdf"])
        in_place = self.place.protect_sequence(DontOverwrite=("boolean", "false"))
        result = self.place.ferrule("run", in_place, "--input", self.place.input, "--final-action", "copy", "--destination",
                                    self.place.input, "--record", self.record)
        self.assertEqual(result.code, 3, result)
        self.assertEqual((self.place.input / "a.PDF").read_bytes(), made[self.place.input / "a.PDF"])
        self.assertIn("is an input, too", self.message("a.PDF"))
        self.assertTrue(is_protected(self.place.input / "a.pdf"))
        outcomes = {line["path"]: line["outcome"] for line in records(self.record).values()}
        self.assertEqual(outcomes[str(self.place.input / "sub" / "b.pdf")], "incomplete")
        self.assertTrue(is_protected(self.place.input / "b.pdf"))

    def test_two_runs_of_the_same_request_exclude_each_other(self):
        documents(self.place, ["a.pdf", "b.pdf"])
        (self.place.input / "c.pdf").write_bytes(HANGS)
        first = self.place.start(*self.turn(jobs=1))
        self.busy_worker(first)
        second = self.place.ferrule(*self.turn(jobs=1))
        self.assertEqual(second.code, 1, second)
        self.assertIn("another", second.errors)
        self.assertIsNone(first.poll())
        first.send_signal(signal.SIGINT)
        time.sleep(0.5)
        first.send_signal(signal.SIGINT)
        first.communicate(timeout=30)
        self.assertEqual(self.outcomes(), {"a.pdf": "saved", "b.pdf": "saved", "c.pdf": "stopped"})
        self.assertEqual(len(list(self.place.output.iterdir())), 2)

    def test_a_log_in_use_costs_the_log_and_not_the_run(self):
        import fcntl
        documents(self.place, ["a.pdf"])
        log = self.place.root / "log.txt"
        with open(log, "wb") as held:
            fcntl.flock(held, fcntl.LOCK_EX)
            result = self.place.ferrule(*self.words("--log", log))
        self.assertEqual(result.code, 0, result)
        self.assertIn(str(log), result.errors)
        self.assertEqual(log.read_bytes(), b"")

    def test_hard_links_and_inputs_named_twice(self):
        made = documents(self.place, ["a.pdf", "sub/x.pdf"])
        os.link(self.place.input / "a.pdf", self.place.input / "b.pdf")
        result = self.place.ferrule(*self.words("--input", self.place.input, "--input", self.place.input / "a.pdf"))
        self.assertEqual(result.code, 0, result)
        self.assertEqual(len(records(self.record)), 3, "an input named twice counts once")
        self.assertEqual({path.name for path in self.place.output.iterdir()}, {"a.pdf", "b.pdf", "x.pdf"})
        for path, content in made.items():
            self.assertEqual(path.read_bytes(), content)

    def test_journals_that_are_cut_or_belong_elsewhere(self):
        documents(self.place, ["a.pdf", "b.pdf", "c.pdf"])
        manifest, journal = self.place.root / "manifest", self.place.root / "journal"
        self.place.ferrule("plan", self.sequence, "--input", self.place.input, "--output", self.place.output, "--manifest", manifest)
        shard = ["run", "--manifest", manifest, "--journal", journal, "--shard", "1/1"]
        self.assertEqual(self.place.ferrule(*shard).code, 0)
        whole = journal.read_bytes()
        # Only what was written after the last intent can be lost: an intent is on the disk before anything happens.
        last_intent = whole.index(b"\n", whole.rindex(b'{"intent"')) + 1
        for cut in sorted({last_intent, last_intent + 1, (last_intent + len(whole)) // 2, len(whole) - 40, len(whole) - 1}):
            journal.write_bytes(whole[:cut])
            result = self.place.ferrule(*shard)
            self.assertEqual(result.code, 0, f"cut at {cut} of {len(whole)}\n{result}")
            self.assertEqual(sorted(path.name for path in self.place.output.iterdir()), ["a.pdf", "b.pdf", "c.pdf"], cut)
            merged = self.place.ferrule("merge", "--manifest", manifest, journal, "--record", self.record)
            self.assertEqual(merged.code, 0, f"cut at {cut}\n{merged}")
        other = self.place.root / "other manifest"
        self.place.ferrule("plan", self.sequence, "--input", self.place.input, "--output", self.place.output, "--manifest", other)
        for words in (["run", "--manifest", other, "--journal", journal, "--shard", "1/1"],
                      ["merge", "--manifest", other, journal, "--record", self.record]):
            result = self.place.ferrule(*words)
            self.assertEqual(result.code, 1, result)
            self.assertIn(str(journal), result.errors)
        lines = whole.splitlines(keepends=True)
        journal.write_bytes(lines[0] + b"{nonsense\n" + b"".join(lines[1:]))
        result = self.place.ferrule("merge", "--manifest", manifest, journal, "--record", self.record)
        self.assertEqual(result.code, 1, result)
        self.assertIn("2", result.errors)

    def test_merging_needs_each_file_exactly_once(self):
        documents(self.place, [f"{number}.pdf" for number in range(8)])
        manifest = self.place.root / "manifest"
        self.place.ferrule("plan", self.sequence, "--input", self.place.input, "--output", self.place.output, "--manifest", manifest)
        journals = []
        for shard in (1, 2):
            journals.append(self.place.root / f"journal {shard}")
            self.place.ferrule("run", "--manifest", manifest, "--journal", journals[-1], "--shard", f"{shard}/2")
        for given in ([journals[0]], [journals[0], journals[0], journals[1]]):
            result = self.place.ferrule("merge", "--manifest", manifest, *given, "--record", self.record)
            self.assertEqual(result.code, 1, result)
        self.assertEqual(self.place.ferrule("merge", "--manifest", manifest, *journals, "--record", self.record).code, 0)
        self.assertEqual(len(records(self.record)), 8)

    def test_names_that_are_no_text(self):
        path = os.fsencode(self.place.input) + b"/caf\xe9 \xff.pdf"
        with open(path, "wb") as stream:
            stream.write(minimal_pdf("bytes"))
        result = self.place.ferrule(*self.words("--final-action", "move", "--destination", self.place.done))
        self.assertEqual(result.code, 0, result)
        self.assertEqual(os.listdir(os.fsencode(self.place.done)), [b"caf\xe9 \xff.pdf"])
        self.assertEqual(os.listdir(os.fsencode(self.place.output)), [b"caf\xe9 \xff.pdf"])
        json.loads(self.record.read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
