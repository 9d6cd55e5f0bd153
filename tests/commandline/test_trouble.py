"""Documents and environment that go wrong under workers: each costs its own file and nothing else."""
import gzip
import json
import os
import resource
import signal
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
        self.record, self.manifest, self.journal = (self.place.root / name for name in ("record.jsonl", "manifest", "journal"))
        self.sequence = self.place.protect_sequence()
        self.folders = ["--input", self.place.input, "--output", self.place.output]
        self.shard = ["run", "--manifest", self.manifest, "--journal", self.journal]

    def words(self, *more, jobs=2, sequence=None):
        return ["run", sequence or self.sequence, *self.folders, "--jobs", jobs, "--record", self.record, *more]

    def turn(self, *more, jobs=2):
        """A run whose sequence has the step that ends processes."""
        turning = self.place.sequence("turning.sequ", [("T:TurnsOnPageCount", {}), (PROTECT, protect_items(0)), (SAVE, save_items())])
        return self.words("--plugin", PLUG_IN, "--plugin", FOREIGN_STEPS, *more, jobs=jobs, sequence=turning)

    def plan(self, *more):
        self.place.expect(0, "plan", self.sequence, *self.folders, "--manifest", self.manifest, *more)

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
        result = self.place.expect(3, *self.turn("--timeout", "6", "--memory", "300M"))
        outcomes = self.outcomes()
        self.assertEqual({outcomes[path.name] for path in good}, {"saved"}, result)
        for name, (_, reason) in bad.items():
            self.assertEqual(outcomes[name], "failed")
            self.assertRegex(self.message(name), reason)
            self.assertIn(name, result.errors, "the reason is not told")
        self.assertEqual(len(list(self.place.output.iterdir())), 12)
        self.assertTrue(all(map(is_protected, self.place.output.iterdir())))
        self.assertEqual(temporaries(self.place.root), [])

    def test_second_interrupt_ends_it_now(self):
        (self.place.input / "a.pdf").write_bytes(HANGS)
        process = self.place.start(*self.turn(jobs=1))
        workers, since = [], time.monotonic()
        while not workers or time.monotonic() < since + 1.5:  # until one worker has been with its file for a while
            found = self.place.workers_of(process)
            workers, since = found, since if found == workers else time.monotonic()
            time.sleep(0.1)
        process.send_signal(signal.SIGINT)
        time.sleep(0.5)
        self.assertIsNone(process.poll(), "the first one does not wait for the file")
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=10)
        self.assertEqual(process.returncode, 130)
        self.assertEqual(self.outcomes(), {"a.pdf": "stopped"})

    def test_an_output_folder_that_goes_away_sends_nothing_elsewhere(self):
        made = documents(self.place, ["a.pdf", "b.pdf"])
        self.plan("--final-action", "delete")
        self.place.output.rmdir()
        self.place.expect(3, *self.shard, "--record", self.record)
        self.assertEqual(set(self.outcomes().values()), {"failed"})
        self.assertEqual({path: path.read_bytes() for path in self.place.input.iterdir()}, made)

    def test_no_result_replaces_another_input(self):
        made = documents(self.place, ["a.PDF", "a.pdf", "sub/b.pdf", "b.pdf"])
        in_place = self.place.protect_sequence(DontOverwrite=("boolean", "false"))
        self.place.expect(3, "run", in_place, "--input", self.place.input, "--final-action", "copy", "--destination", self.place.input,
                    "--record", self.record)
        self.assertEqual((self.place.input / "a.PDF").read_bytes(), made[self.place.input / "a.PDF"])
        self.assertIn("is an input, too", self.message("a.PDF"))
        self.assertTrue(is_protected(self.place.input / "a.pdf"))
        outcomes = {line["path"]: line["outcome"] for line in records(self.record).values()}
        self.assertEqual(outcomes[str(self.place.input / "sub" / "b.pdf")], "incomplete")
        self.assertTrue(is_protected(self.place.input / "b.pdf"))

    def test_quiet_tells_what_went_wrong_and_nothing_else(self):
        documents(self.place, ["a.pdf"])
        result = self.place.ferrule(*self.words("--quiet"))
        self.assertEqual((result.code, result.output, result.errors), (0, "", ""))
        (self.place.input / "torn.pdf").write_bytes(b"torn")
        self.plan()
        for words in (self.words(), self.words("--dry-run"), self.shard, ["merge", "--manifest", self.manifest, self.journal]):
            lines = self.place.expect(3, *words, "--quiet").errors.splitlines()
            self.assertRegex(lines[0], r"^ferrule: .*torn\.pdf: failed: .")
            self.assertIn("1 of 2 files was not saved: 1 failed", lines[1])

    def kept(self):
        """The folder in which the run keeps its plan and journal."""
        return next(self.place.root.rglob("manifest.jsonl")).parent

    def test_only_the_run_that_was_planned_is_gone_on_with(self):
        made = documents(self.place, ["a.pdf", "b.pdf"])
        torn = self.place.input / "torn.pdf"
        torn.write_bytes(b"torn")
        planned = self.sequence.read_bytes()
        self.plan()
        given_once = ("--no-subfolders", "--skip-unavailable", "--allow-in-place", "--accept-damaged")
        words = self.words(*given_once)
        self.place.expect(3, *words)
        again = [*words, "--resume", "--retry-failed"]
        results = {path: path.read_bytes() for path in self.place.output.iterdir()}
        rows = [
            # words, sequence, what is named
            (again, planned + b" ", str(self.sequence)), (again, None, str(self.sequence)),
            ([*again, "--ext", "pdf,tif"], planned, "--ext"),
            *(([word for word in again if word != one], planned, one) for one in given_once),
            (self.shard, planned + b" ", str(self.sequence)),
        ]
        for given, content, named in rows:
            self.sequence.unlink() if content is None else self.sequence.write_bytes(content)
            result = self.place.expect(1, *given)
            self.assertIn(named, result.errors)
            if content is not None:
                self.assertRegex(result.errors, "To go on with the run, .* anew, ")
            self.sequence.write_bytes(planned)
        passwords = self.place.root / "passwords"
        passwords.write_text("secret", encoding="utf-8")
        for more in (["--jobs", 1], ["--timeout", 9, "--memory", "1G"], ["--password-file", passwords], ["--allow-no-output"]):
            self.place.expect(3, *again, *more)
        self.assertEqual({path: path.read_bytes() for path in self.place.output.iterdir()}, results)
        # Another output or final action is another run; while the first is unfinished that is taken for a mistake.
        kept = self.kept() / "journal.jsonl"
        kept.write_bytes(kept.read_bytes()[:kept.read_bytes().rindex(b'{"end"')])
        for more, named in ((["--output", self.place.done], "--output"), (["--final-action", "delete"], "--final-action")):
            self.assertIn(named, self.place.expect(1, *again, *more).errors)
        self.assertEqual({path: path.read_bytes() for path in made}, made)
        torn.write_bytes(minimal_pdf("mended"))
        self.place.expect(3, *self.shard, "--record", self.record)  # it is not what was planned

    def test_no_message_about_a_broken_run_sends_in_a_circle(self):
        documents(self.place, ["a.pdf"])
        for name in ("manifest.jsonl", "journal.jsonl"):
            for old, new in ((b'"version":', b'"version":9'), (b'"run":"', b'"run":"x'), (b"\n", b"\n{nonsense\n"),
                             (b"{", b"\0\0"), (b'{"number":1', b'{"number":7')):
                self.place.expect(0, *self.words())
                path = self.kept() / name
                broken = path.read_bytes().replace(old, new, 1)
                if broken == path.read_bytes():
                    continue
                path.write_bytes(broken)
                for _ in range(2):
                    result = self.place.expect(1, *self.words("--resume"))
                    self.assertIn("without --resume", result.errors, f"{name} {new}")
                    self.assertNotIn("with --resume", result.errors)
        self.plan()
        self.place.expect(0, *self.shard)
        self.journal.write_bytes(self.journal.read_bytes().replace(b"\n", b"\n{nonsense\n", 1))
        self.assertRegex(self.place.expect(1, *self.shard).errors, "move that file away .*--journal")
        self.journal.rename(self.place.root / "away")
        self.place.expect(0, *self.shard)

    def test_what_was_done_is_kept_packed(self):
        documents(self.place, ["a.pdf"])
        self.place.expect(0, *self.words())
        kept = self.kept()
        runs = kept.parent
        pack, = runs.glob("*.gz")
        self.assertRegex(pack.name, r"^\d{8}T\d{6}Z-[a-z0-9]{16}\.jsonl\.gz$")
        self.assertEqual(pack.stat().st_mode & 0o777, 0o600)
        plain = (kept / "manifest.jsonl").read_bytes() + (kept / "journal.jsonl").read_bytes()
        self.assertEqual(gzip.decompress(pack.read_bytes()), plain)
        self.assertEqual([path for path in runs.rglob("worker*")], [])
        young = time.strftime("%Y%m%d", time.gmtime(time.time() - 20 * 86400))
        names = [f"20200101T0000{number:02}Z-{'o' * 16}.jsonl.gz" for number in range(30)]
        for name in [*names, *(f"{young}T0000{number:02}Z-{'y' * 16}.jsonl.gz" for number in range(15))]:
            (runs / name).touch()
        # Another request: the plain plan of the first one is old, and nothing of it could be done again.
        os.utime(kept / "journal.jsonl", (0, 0))
        self.place.expect(0, *self.words("--resume"))  # it can still be gone on with
        os.utime(kept / "journal.jsonl", (0, 0))
        (self.place.input / "torn.pdf").write_bytes(b"torn")
        self.place.expect(3, *self.words("--final-action", "copy", "--destination", self.place.done))
        left = sorted(path.name for path in runs.glob("*.gz"))
        self.assertEqual(len([name for name in left if "-yyyy" in name]), 15)
        self.assertEqual([name for name in left if "-oooo" in name], names[-3:], "twenty stay in all")
        self.assertEqual(sorted(path.name for path in kept.iterdir()), ["lock"])
        unfinished = next(runs.glob("*/journal.jsonl"))
        os.utime(unfinished, (0, 0))
        self.place.expect(0, *self.words("--ext", "none"))
        self.assertTrue(unfinished.exists(), "its file can still be done again")

    def test_few_open_files_mean_few_workers(self):
        documents(self.place, [f"{number}.pdf" for number in range(30)])
        for soft, hard, code, told in ((60, 60, 0, "at most 4 workers"), (40, 400, 0, None), (20, 20, 1, "too few")):
            def limit(soft=soft, hard=hard):
                resource.setrlimit(resource.RLIMIT_NOFILE, (soft, hard))
            process = self.place.start(*self.words(jobs=16), preexec_fn=limit)
            errors = process.communicate(timeout=120)[1].decode()
            self.assertEqual(process.returncode, code, errors)
            self.assertIn(told or "", errors)
            self.assertEqual("open at a time" in errors, bool(told), errors)

    def test_names_that_are_no_text(self):
        documents(self.place, [os.fsdecode(b"caf\xe9 \xff.pdf")])
        self.place.expect(0, *self.words("--final-action", "move", "--destination", self.place.done))
        self.assertEqual(os.listdir(os.fsencode(self.place.done)), [b"caf\xe9 \xff.pdf"])
        self.assertEqual(os.listdir(os.fsencode(self.place.output)), [b"caf\xe9 \xff.pdf"])
        json.loads(self.record.read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
