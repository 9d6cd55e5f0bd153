"""What `ferrule run` refuses to start, and what it says about it."""
import os
import time
import unittest
from pathlib import Path

from commandline import CommandPlace, documents, records
from unattended import PROTECT, SAVE, minimal_pdf, protect_items, save_items


class Safety(unittest.TestCase):
    def setUp(self):
        self.place = CommandPlace()
        self.addCleanup(self.place.close)
        self.originals = documents(self.place, ["a.pdf", "b.pdf"])
        self.protect = (PROTECT, protect_items())
        self.save = (SAVE, save_items())

    def run_it(self, code, steps, *more):
        sequence = self.place.sequence("sequence.sequ", steps)
        return self.place.expect(code, "run", sequence, "--input", self.place.input, *more)

    def test_what_would_lose_or_surprise_does_not_start(self):
        out = ["--output", self.place.output]
        move = ["--final-action", "move", "--destination", self.place.done]
        unknown = ("NoSuchStep", {"x": ("integer", 1)})
        bare = (SAVE, {})
        rows = [
            # steps, options, switch that allows it, word of the message
            ([unknown, self.save], out, "--skip-unavailable", "NoSuchStep"),
            ([self.protect], move, "--allow-no-output", "save"),
            ([self.protect], ["--final-action", "delete"], "--allow-no-output", "save"),
            ([self.protect, bare], out, "--allow-in-place", "replaced"),
        ]
        for steps, options, switch, word in rows:
            with self.subTest(switch=switch):
                result = self.run_it(1, steps, *options)
                self.assertIn(switch, result.errors)
                self.assertIn(word, result.errors)
                self.assertEqual({path: path.read_bytes() for path in self.originals}, self.originals)
                self.assertEqual(list(self.place.done.iterdir()), [])
                self.assertEqual(list(self.place.output.iterdir()), [])
                self.run_it(3 if steps[0] is unknown else 0, steps, *options, switch, "--dry-run")  # a step is left out

    def test_what_check_calls_an_error_does_not_start(self):
        broken = [(PROTECT, {**protect_items(), "PasswordProtect": ("string", "true"), "Pasword": ("text", "Hunter2")}),
                  (SAVE, {**save_items(), "HandlerUniqueID": ("string", "no.such.converter")}), ("NoSuchStep", {})]
        output = ["--output", self.place.output]
        for words in ([], ["--skip-unavailable"]):
            result = self.run_it(1, broken, *output, *words)
            for word, count in (("step 1: The parameter \"PasswordProtect\"", 1), ("Probably \"Password\" is meant", 1),
                                ("step 2: The result is to be written by the converter no.such.converter", 1),
                                ("--force", 1), ("NoSuchStep", 0 if words else 1), ("Hunter2", 0)):
                self.assertEqual(result.errors.count(word), count, (word, result.errors))
        plan = ["plan", self.place.root / "sequence.sequ", "--input", self.place.input, *output, "--manifest", self.place.root / "m"]
        self.place.expect(1, *plan)
        self.place.expect(0, *plan, "--force")
        self.assertEqual(list(self.place.output.iterdir()), [])
        self.run_it(0, broken[:1] + [self.save], *output, "--force")

    def test_folders_of_results_inside_the_input_are_left_out(self):
        out, done = self.place.input / "out", self.place.input / "sub" / "done"
        for folder in (out, done):
            folder.mkdir(parents=True)
            (folder / "old.pdf").write_bytes(minimal_pdf())
        link = self.place.input / "link"
        link.symlink_to(out)
        sequence = self.place.sequence("sequence.sequ", [self.save])
        result = self.place.expect(0, "run", sequence, "--input", self.place.input, "--output", link, "--final-action", "copy",
                                    "--destination", done, "--record", self.place.root / "record")
        self.assertEqual({record["path"] for record in records(self.place.root / "record").values()}, {str(path) for path in self.originals})
        self.assertEqual(result.errors.count("is left out of the input because results go there"), 2, result.errors)
        outcome = self.place.run_folder(sequence, final=1, FERRULEALTOUTPUTPATH=out, FERRULEDEST=done)
        self.assertEqual(outcome.code, 0, outcome)
        self.assertTrue(outcome.has("Number of input files : 2"), outcome)
        left_out = outcome.values("Folder is left out of the input because results go there")
        self.assertEqual({os.path.realpath(path) for path in left_out}, {str(out), str(done)})
        beside = self.place.ferrule("run", sequence, "--input", self.place.input, "--output", self.place.input, "--no-subfolders")
        self.assertEqual((beside.code, "left out" in beside.errors), (0, False), beside)

    def test_outputs_cost_no_other_file(self):
        root, a = self.place.root, self.place.input / "a.pdf"
        sequence = self.place.sequence("sequence.sequ", [self.protect, self.save])
        manifest, journal, record = root / "manifest", root / "journal", root / "record"
        places = ["--input", self.place.input, "--output", self.place.output]
        run = ["run", sequence, *places]
        shard = ["run", "--manifest", manifest, "--journal"]
        plan = ["plan", sequence, *places, "--manifest"]
        merge = ["merge", "--manifest", manifest, journal]
        for words in ([*plan, manifest], [*shard, journal, "--record", record]):
            self.place.expect(0, *words)
        notes = root / "notes.txt"
        notes.write_text("1: call the printer", encoding="utf-8")
        os.symlink(notes, root / "link")
        # Inputs that look like what is written, under another name: only where they are tells that they are inputs.
        odd = self.place.input / "odd.pdf"
        os.link(record, odd)
        empty = self.place.input / "empty.pdf"
        empty.touch()
        rows = [
            # words, what the message must hold
            ([*run, "--record", a], "a PDF document"), ([*run, "--record", sequence], "the sequence"),
            ([*run, "--record", notes, "--dry-run"], "text"), ([*run, "--record", root / "link"], "text"),
            ([*run, "--record", journal], "a journal"), ([*run, "--record", root], "is a folder"),
            ([*run, "--record", record], "an input"), ([*run, "--log", empty], "an input"),
            ([*run, "--record", record, "--dry-run"], "an input"),
            ([*run, "--log", notes], "text"), ([*run, "--log", a], "a PDF document"),
            ([*run, "--log", root / "new", "--record", f"{root}/../{root.name}/new"], "the record"),
            ([*plan, a], "a PDF document"), ([*plan, notes], "text"), ([*plan, empty], "an input"),
            ([*plan, "/dev/null"], "regular file"),
            ([*shard, notes], "text"), ([*shard, manifest], "manifest"),
            ([*shard, journal, "--record", a], "a PDF document"), ([*shard, journal, "--record", journal], "journal"),
            ([*merge, "--record", a], "a PDF document"), ([*merge, "--record", journal], "a journal"),
            ([*merge, "--log", manifest], "the manifest"), ([*merge, "--record", notes], "text"),
        ]
        before = {path: path.read_bytes() for path in root.rglob("*") if path.is_file()}
        for words, reason in rows:
            result = self.place.expect(1, *words)
            self.assertIn(reason, result.errors, words)
            self.assertIn(str(words[-1]) if words[-1] != "--dry-run" else "", result.errors)
        self.assertEqual({path: path.read_bytes() for path in before}, before)
        for words in ([*plan, "-"], [*merge, "--log", "-"], [*shard, "-"]):
            self.place.expect(2, *words)
        for path in (odd, empty, self.place.output / "a.pdf"):
            path.unlink()
        self.place.sequence("sequence.sequ", [self.protect, (SAVE, save_items(DontOverwrite=("boolean", "false")))])
        self.place.expect(3, *run, "--record", self.place.output / "a.pdf", "--log", "/dev/null")
        self.assertEqual([line["outcome"] for line in records(self.place.output / "a.pdf").values()], ["failed", "saved"])
        for kind in (record, "/dev/null"):
            self.place.expect(0, *run, "--record", kind, "--log", root / "log")

    def test_converting_names_the_file_that_the_problem_is_with(self):
        root = self.place.root
        source = Path(os.environ.get("FERRULE_SAMPLES", "samples")).resolve() / "sequences" / "export-text.sequ"
        (root / "folder").mkdir()
        (root / "taken").write_bytes(b"taken")
        for given, target, code, named in ((source, root / "no" / "x", 1, root / "no" / "x"), (source, root / "folder", 1, root / "folder"),
                                           (source, root / "taken", 1, root / "taken"), (root / "none", root / "x", 1, root / "none"),
                                           (root / "folder", root / "x", 1, root / "folder"), (source, root / "new", 0, source)):
            first = self.place.expect(code, "sequence", "convert", given, target, "--to", "host").errors.splitlines()[0]
            self.assertIn(f"{named}:" if code == 0 else str(named), first)
            self.assertNotIn(str(given if named == target else target), first)

    def test_files_still_being_copied_in_are_left_alone(self):
        old = time.time() - 3600
        os.utime(self.place.input / "a.pdf", (old, old))
        record = self.place.root / "record"
        result = self.run_it(0, [self.protect, self.save], "--output", self.place.output, "--min-age", "60", "--record", record)
        self.assertEqual([line["path"] for line in records(record).values()], [str(self.place.input / "a.pdf")])
        self.assertIn("1", result.errors)

    def test_a_signed_document_is_told(self):
        corpus = os.environ.get("FERRULE_CORPUS", "")
        folder = os.path.join(corpus, "signed")
        if not os.path.isdir(folder):
            self.skipTest("the folder of real documents is not here")
        record = self.place.root / "record"
        sequence = self.place.protect_sequence()
        self.place.ferrule("run", sequence, "--input", folder, "--output", self.place.output, "--record", record)
        broken = [line for line in records(record).values() if line.get("signatures") == "broken"]
        self.assertGreater(len(broken), 3)


if __name__ == "__main__":
    unittest.main()
