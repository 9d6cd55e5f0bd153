"""A watched folder: files that come in slowly, from several writers, are each done once, whatever is killed meanwhile."""
import json
import os
import random
import re
import shutil
import signal
import subprocess
import threading
import time
import unittest
from pathlib import Path

from commandline import PROGRAM, CommandPlace, documents, is_protected, minimal_pdf, temporaries

FILES = int(os.environ.get("FERRULE_WATCH_FILES", "20"))
WRITERS = int(os.environ.get("FERRULE_WATCH_WRITERS", "2"))
KILLS = int(os.environ.get("FERRULE_WATCH_KILLS", "1"))
ENDS = int(os.environ.get("FERRULE_WATCH_ENDS", "0"))
STARTS = int(os.environ.get("FERRULE_WATCH_STARTS", "6"))


def write_slowly(path, content, chance, give_up):
    """As copying programs do: in pieces under the final name, or under a name of its own; the time is set back at the end."""
    partial = path.with_name(path.name + ".part") if chance.random() < 0.3 else path
    with open(partial, "wb", buffering=0) as stream:
        pieces = chance.randint(1, 3)
        for piece in range(pieces):
            stream.write(content[len(content) * piece // pieces:len(content) * (piece + 1) // pieces])
            if piece + 1 < pieces:
                give_up.wait(chance.uniform(0, 0.5))
    os.utime(partial, (1_500_000_000, 1_500_000_000))
    if partial != path:
        partial.rename(path)


class Watching(unittest.TestCase):
    def setUp(self):
        self.place = CommandPlace()
        self.addCleanup(self.place.close)
        self.sequence = self.place.protect_sequence()
        self.records = self.place.root / "records"
        self.records.mkdir()
        self.quarantine = self.place.root / "quarantine.jsonl"

    def words(self, *more, min_age=1):
        return ["watch", self.sequence, "--input", self.place.input, "--output", self.place.output, "--min-age", min_age, "--jobs", 2,
                "--records", self.records, "--quarantine", self.quarantine, "--retry-pause", 0, "--tries", 2, *more]

    def once(self, code, *more):
        return self.place.expect(code, *self.words("--once", *more))

    def moving(self):
        return ["--final-action", "move", "--destination", self.place.done]

    def recorded(self):
        lines = [json.loads(line) for path in self.records.iterdir() for line in path.read_text().splitlines()]
        return sorted(os.path.basename(line["path"]) for line in lines if line["outcome"] == "saved")

    def quarantined(self):
        return {os.path.basename(line["path"]): line for line in map(json.loads, self.quarantine.read_text().splitlines())}

    def check_each_done_once(self, names):
        self.assertEqual(self.place.names(self.place.output), sorted(names))
        self.assertEqual(self.place.names(self.place.done), sorted(names))
        self.assertEqual(self.recorded(), sorted(names))
        self.assertEqual([path for path in self.place.output.iterdir() if not is_protected(path)], [])
        self.assertEqual(temporaries(self.place.root), [])

    def test_slow_writers_and_a_watch_that_is_ended_and_killed(self):
        seed = int(os.environ.get("FERRULE_SEED", "20"))
        names = [f"document {number}.pdf" for number in range(FILES)]
        give_up = threading.Event()

        def write(writer):
            chance = random.Random(seed + writer)
            for number in range(writer, FILES, WRITERS):
                write_slowly(self.place.input / names[number], minimal_pdf(f"Document {number}"), chance, give_up)
                give_up.wait(chance.uniform(0, 0.3))

        writers = [threading.Thread(target=write, args=(writer,)) for writer in range(WRITERS)]
        for writer in writers:
            writer.start()
        try:
            self.watch_hurt([signal.SIGKILL] * KILLS + [signal.SIGTERM] * ENDS, FILES)
        finally:
            give_up.set()
            for writer in writers:
                writer.join()
        self.check_each_done_once(names)
        self.assertEqual(self.place.names(self.place.input), [])

    def watch_hurt(self, signals, files):
        """Hurts one start after another when a share of the files is done, and ends the last when all are."""
        for number, sent in enumerate([*signals, signal.SIGTERM], 1):
            process = self.place.start(*self.words(*self.moving()))
            try:
                wanted = files * number // (len(signals) + 1)
                end = time.monotonic() + 120 + files
                while len(list(self.place.done.iterdir())) < wanted and process.poll() is None and time.monotonic() < end:
                    time.sleep(0.05)
                time.sleep(0.2 if number <= len(signals) else 1)
            finally:
                process.send_signal(sent)
                _, errors = process.communicate(timeout=60)
            self.assertEqual(process.returncode, 130 if sent == signal.SIGTERM else -sent, errors.decode())
            self.assertGreaterEqual(len(list(self.place.done.iterdir())), wanted, errors.decode())

    def test_starts_that_are_killed_at_any_moment(self):
        chance = random.Random(int(os.environ.get("FERRULE_SEED", "20")))
        for more, inputs_stay in ((self.moving(), False), ([], True)):
            names = []
            for _ in range(STARTS):
                names += documents(self.place, [f"{len(names) + number}.pdf" for number in range(chance.randint(1, 25))])
                process = self.place.start(*self.words(*more, min_age=0))
                time.sleep(chance.uniform(0.02, 2))
                process.send_signal(chance.choice([signal.SIGKILL, signal.SIGKILL, signal.SIGTERM]))
                process.communicate(timeout=60)
            self.once(0, *more)
            names = sorted(path.name for path in names)
            self.assertEqual(self.place.names(self.place.output), names)
            self.assertEqual(self.place.names(self.place.input), names if inputs_stay else [])
            self.assertEqual(self.place.names(self.place.done), [] if inputs_stay else names)
            self.assertEqual(temporaries(self.place.root / "config"), [])
            self.place.clear(self.place.input, self.place.output, self.place.done)

    def test_interrupted_batch_that_cannot_be_gone_on_with(self):
        """What it has done counts, the rest is begun anew as the folder is then."""
        names = [f"{number}.pdf" for number in range(100)]

        def change_sequence():
            self.place.protect_sequence(method=1)

        def lose_plan():  # as when the end came before the plan was written
            next((self.place.root / "config").rglob("batch/manifest*")).unlink()

        for change in (change_sequence, lose_plan):
            documents(self.place, names)
            process = self.place.start(*self.words(*self.moving()))
            while len(self.place.names(self.place.done)) < 20 and process.poll() is None:
                time.sleep(0.01)
            process.kill()
            process.communicate()
            done = self.place.names(self.place.done)
            left = self.place.names(self.place.input)
            self.assertGreater(len(left), 1, "the end came too late")
            (self.place.input / left[0]).unlink()
            change()
            self.once(0, *self.moving())
            self.assertEqual(self.place.names(self.place.done), sorted([*done, *left[1:]]), change.__name__)
            self.assertEqual((self.place.names(self.place.input), self.quarantined()), ([], {}), change.__name__)
            for path in [*self.place.output.iterdir(), *self.place.done.iterdir()]:
                path.unlink()

    def test_versions_results_in_the_folder_and_names_of_others(self):
        """Without a final action the journal alone knows what is done."""
        output = self.place.input / "out"
        self.place.output.rename(output)
        self.place.output = output
        originals = documents(self.place, ["a.pdf", "sub/b.pdf", ".hidden.pdf", "~$c.pdf", "d.pdf.part", "e.txt"])
        trial = self.place.expect(0, *self.words("--dry-run"))
        self.assertEqual(sorted(trial.output.split()), [str(self.place.input / name) for name in ("a.pdf", "sub/b.pdf")])
        self.assertEqual(self.place.names(output), [])
        self.once(0)
        self.assertEqual(self.place.names(output), ["a.pdf", "b.pdf"])
        # As when it was killed before it could pass on the record of a batch that had ended.
        [record] = self.records.iterdir()
        [home] = (self.place.root / "config").rglob("watch.jsonl")
        record.rename(home.parent / "batch/record.jsonl")
        os.utime(self.place.input / "a.pdf")
        self.once(0)
        self.assertEqual(self.recorded(), ["a.pdf", "b.pdf"], "a new time alone is no new version")
        (self.place.input / "a.pdf").write_bytes(minimal_pdf("A new version"))
        self.once(0)
        self.assertEqual(self.recorded(), ["a.pdf", "a.pdf", "b.pdf"])
        self.assertEqual((self.place.input / "sub/b.pdf").read_bytes(), originals[self.place.input / "sub/b.pdf"])
        # The last batch is taken back by its packed run; what is done stays done.
        pack = sorted((self.place.root / "config").rglob("*.jsonl.gz"))[-1]
        self.place.expect(0, "undo", pack)
        self.assertEqual(len(self.place.names(output)), 2)

    def test_results_in_the_place_of_inputs_are_no_inputs(self):
        documents(self.place, ["a.pdf"])
        sequence = self.place.protect_sequence("in place.sequ", DontOverwrite=("boolean", "false"))
        words = ["watch", sequence, "--input", self.place.input, "--min-age", 0, "--once", "--json"]
        self.assertEqual([json.loads(self.place.expect(0, *words).output)["done"] for _ in range(2)], [1, 0])
        self.assertTrue(is_protected(self.place.input / "a.pdf"))

    def test_what_fails_or_is_damaged_waits_in_quarantine(self):
        whole = documents(self.place, ["fine.pdf", "cut.pdf"])[self.place.input / "cut.pdf"]
        (self.place.input / "junk.pdf").write_bytes(b"no document")
        (self.place.input / "cut.pdf").write_bytes(whole[:len(whole) // 2])
        (self.place.input / "repaired.pdf").write_bytes(re.sub(rb"startxref\s+\d+", b"startxref\n7", whole))
        self.once(3, *self.moving())
        self.once(3, *self.moving())
        self.assertEqual(self.place.names(self.place.done), ["fine.pdf"])
        lines = self.quarantined()
        self.assertEqual({name: line["tries"] for name, line in lines.items() if name == "junk.pdf"}, {"junk.pdf": 2})
        self.assertEqual(sorted(lines), ["cut.pdf", "junk.pdf", "repaired.pdf"])
        self.assertTrue(all(line["reason"] and line["first"] <= line["last"] for line in lines.values()), lines)
        before = len(list(self.records.iterdir()))
        self.once(3, *self.moving())
        self.assertEqual(len(list(self.records.iterdir())), before, "what is in quarantine is left alone")
        # A changed file is new; the others are released by an option.
        (self.place.input / "cut.pdf").write_bytes(whole)
        self.once(3, *self.moving(), "--retry-quarantined")
        self.assertIn("cut.pdf", self.place.names(self.place.done))
        self.assertEqual(sorted(self.quarantined()), ["junk.pdf", "repaired.pdf"])

    def test_files_of_the_watch_itself_are_no_inputs(self):
        documents(self.place, ["a.pdf"])
        self.quarantine = self.place.input / "quarantine.jsonl"
        self.sequence = self.sequence.rename(self.place.input / self.sequence.name)
        (self.place.input / "junk.txt").write_bytes(b"no document")
        words = ["--ext", "all", "--log", self.place.input / "watch.log", "--json"]
        for saved in (1, 0):
            counts = json.loads(self.once(3, *words).output)
            self.assertEqual((counts["done"], counts["quarantined"]), (saved, 1), counts)
        self.assertEqual(sorted(self.quarantined()), ["junk.txt"])

    def test_what_was_there_lately_is_remembered_while_a_share_shows_an_empty_folder(self):
        """And --once reaches the files that wait behind a whole batch of those that were only touched."""
        names = [f"a{number}.pdf" for number in range(201)]
        documents(self.place, names)
        self.once(0)
        journal = next((self.place.root / "config").rglob("watch.jsonl"))
        old = str(int(time.time()) - 40 * 86_400)
        journal.write_text(re.sub(r'("seen": ?)\d+', lambda found: found.group(1) + old, journal.read_text()))
        away = self.place.input.rename(self.place.root / "away")
        self.place.input.mkdir()
        self.once(0)
        self.place.input.rmdir()
        away.rename(self.place.input)
        for path in self.place.input.iterdir():
            os.utime(path)
        documents(self.place, ["new.pdf"])
        self.once(0)
        self.assertEqual(self.recorded(), sorted([*names, "new.pdf"]))

    def test_second_watch_is_refused_and_a_folder_that_goes_away_is_waited_for(self):
        process = self.place.start(*self.words(*self.moving()))
        try:
            deadline = time.monotonic() + 30
            while not self.quarantine.exists() and time.monotonic() < deadline:
                time.sleep(0.05)
            self.assertIn("is being watched by another process already", self.once(1).errors)
            self.place.input.rmdir()
            time.sleep(2.5)
            self.place.input.mkdir()
            documents(self.place, ["a.pdf"])
            while not self.place.names(self.place.done) and time.monotonic() < deadline:
                time.sleep(0.05)
        finally:
            process.send_signal(signal.SIGINT)
            _, errors = process.communicate(timeout=60)
        text = errors.decode()
        self.assertEqual((process.returncode, self.place.names(self.place.done)), (130, ["a.pdf"]), text)
        self.assertEqual((text.count("cannot be read ("), text.count("can be read again")), (1, 2), text)

    def test_unit_for_systemd(self):
        unit = (Path(__file__).parents[2] / "samples/systemd/ferrule-watch.service").read_text(encoding="utf-8")
        unit = unit.replace("/usr/bin/ferrule", str(PROGRAM.resolve())).replace("/srv/ferrule", str(self.place.root))
        command = next(line for line in unit.splitlines() if line.startswith("ExecStart="))
        self.place.expect(0, *command.split()[1:], "--dry-run", "--min-age", 0)
        if not shutil.which("systemd-analyze"):
            self.skipTest("systemd-analyze is not there (Debian's package systemd)")
        path = self.place.root / "ferrule-watch.service"
        for text, fine in ((unit, True), (unit.replace("KillMode=mixed", "KillMode=twice"), False)):
            path.write_text(text, encoding="utf-8")
            done = subprocess.run(["systemd-analyze", "verify", "--man=no", path], capture_output=True, text=True, check=False)
            found = [line for line in done.stderr.splitlines() if "ferrule-watch" in line]
            self.assertEqual(not found, fine, done.stderr)


if __name__ == "__main__":
    unittest.main()
