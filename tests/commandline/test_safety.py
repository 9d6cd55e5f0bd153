"""What `ferrule run` refuses to start, and what it says about it."""
import os
import time
import unittest

from commandline import CommandPlace, documents, records
from unattended import PROTECT, SAVE, minimal_pdf, protect_items, save_items


class Safety(unittest.TestCase):
    def setUp(self):
        self.place = CommandPlace()
        self.addCleanup(self.place.close)
        self.originals = documents(self.place, ["a.pdf", "b.pdf"])
        self.protect = (PROTECT, protect_items())
        self.save = (SAVE, save_items())

    def run_it(self, steps, *more, sources=(), input_given=True):
        sequence = self.place.sequence("sequence.sequ", steps, sources)
        words = ["--input", self.place.input] if input_given else []
        return self.place.ferrule("run", sequence, *words, *more)

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
                result = self.run_it(steps, *options)
                self.assertEqual(result.code, 1, result)
                self.assertIn(switch, result.errors)
                self.assertIn(word, result.errors)
                self.assertEqual({path: path.read_bytes() for path in self.originals}, self.originals)
                self.assertEqual(list(self.place.done.iterdir()), [])
                self.assertEqual(list(self.place.output.iterdir()), [])
                allowed = self.run_it(steps, *options, switch, "--dry-run")
                self.assertIn(allowed.code, (0, 3), allowed)

    def test_what_check_calls_an_error_does_not_start(self):
        broken = [(PROTECT, {**protect_items(), "PasswordProtect": ("string", "true"), "Pasword": ("text", "Hunter2")}),
                  (SAVE, {**save_items(), "HandlerUniqueID": ("string", "no.such.converter")}), ("NoSuchStep", {})]
        output = ["--output", self.place.output]
        for words in ([], ["--skip-unavailable"]):
            result = self.run_it(broken, *output, *words)
            self.assertEqual(result.code, 1, result)
            for word, count in (("step 1: The parameter \"PasswordProtect\"", 1), ("Probably \"Password\" is meant", 1),
                                ("step 2: The result is to be written by the converter no.such.converter", 1),
                                ("--force", 1), ("NoSuchStep", 0 if words else 1), ("Hunter2", 0)):
                self.assertEqual(result.errors.count(word), count, (word, result.errors))
        plan = ["plan", self.place.root / "sequence.sequ", "--input", self.place.input, *output, "--manifest", self.place.root / "m"]
        self.assertEqual(self.place.ferrule(*plan).code, 1)
        self.assertEqual(self.place.ferrule(*plan, "--force").code, 0)
        self.assertEqual(list(self.place.output.iterdir()), [])
        forced = self.run_it(broken[:1] + [self.save], *output, "--force")
        self.assertEqual(forced.code, 0, forced)

    def test_folders_of_results_inside_the_input_are_left_out(self):
        out, done = self.place.input / "out", self.place.input / "sub" / "done"
        for folder in (out, done):
            folder.mkdir(parents=True)
            (folder / "old.pdf").write_bytes(minimal_pdf())
        link = self.place.input / "link"
        link.symlink_to(out)
        sequence = self.place.sequence("sequence.sequ", [self.save])
        result = self.place.ferrule("run", sequence, "--input", self.place.input, "--output", link, "--final-action", "copy",
                                    "--destination", done, "--record", self.place.root / "record")
        self.assertEqual(result.code, 0, result)
        self.assertEqual({record["path"] for record in records(self.place.root / "record").values()}, {str(path) for path in self.originals})
        self.assertEqual(result.errors.count("is left out of the input because results go there"), 2, result.errors)
        outcome = self.place.run_folder(sequence, final=1, FERRULEALTOUTPUTPATH=out, FERRULEDEST=done)
        self.assertEqual(outcome.code, 0, outcome)
        self.assertTrue(outcome.has("Number of input files : 2"), outcome)
        left_out = outcome.values("Folder is left out of the input because results go there")
        self.assertEqual({os.path.realpath(path) for path in left_out}, {str(out), str(done)})
        beside = self.place.ferrule("run", sequence, "--input", self.place.input, "--output", self.place.input, "--no-subfolders")
        self.assertEqual((beside.code, "left out" in beside.errors), (0, False), beside)

    def test_input_must_come_from_somewhere(self):
        result = self.run_it([self.protect, self.save], "--output", self.place.output, input_given=False)
        self.assertEqual(result.code, 1, result)
        self.assertIn("--input", result.errors)
        named = self.run_it([self.protect, self.save], "--output", self.place.output, input_given=False,
                            sources=[("Folder", str(self.place.input))])
        self.assertEqual(named.code, 0, named)
        self.assertEqual(len(list(self.place.output.iterdir())), 2)

    def test_folders_that_are_not_there(self):
        missing = self.place.root / "missing"
        for words in (["--output", missing], ["--output", self.place.output, "--final-action", "move", "--destination", missing]):
            with self.subTest(words=words):
                result = self.run_it([self.protect, self.save], *words)
                self.assertEqual(result.code, 1, result)
                self.assertIn(str(missing), result.errors)
                self.assertEqual({path: path.read_bytes() for path in self.originals}, self.originals)
        result = self.place.ferrule("run", self.place.protect_sequence(), "--input", missing, "--output", self.place.output)
        self.assertEqual(result.code, 1, result)
        self.assertIn(str(missing), result.errors)

    def test_usage_errors(self):
        sequence = self.place.protect_sequence()
        for words in (["run"], ["run", sequence, "--final-action", "burn"], ["run", sequence, "--jobs", "0"],
                      ["run", sequence, "--final-action", "move"], ["run", sequence, "--no-such-option"], ["fly"],
                      ["run", sequence, "--memory", "lots"], ["run", sequence, "--final-action", "9"],
                      ["run", "--manifest", "m", "--shard", "5/4", "--journal", "j"]):
            with self.subTest(words=words):
                result = self.place.ferrule(*words)
                self.assertEqual(result.code, 2, result)
                self.assertTrue(result.errors.strip())
                self.assertEqual(result.output, "")

    def test_files_still_being_copied_in_are_left_alone(self):
        old = time.time() - 3600
        os.utime(self.place.input / "a.pdf", (old, old))
        record = self.place.root / "record"
        result = self.run_it([self.protect, self.save], "--output", self.place.output, "--min-age", "60", "--record", record)
        self.assertEqual(result.code, 0, result)
        self.assertEqual([line["path"] for line in records(record).values()], [str(self.place.input / "a.pdf")])
        self.assertIn("1", result.errors)

    def test_extensions(self):
        (self.place.input / "c.PDF").write_bytes((self.place.input / "a.pdf").read_bytes())
        (self.place.input / "d.txt").write_text("text")
        result = self.run_it([self.protect, self.save], "--output", self.place.output)
        self.assertEqual(len(list(self.place.output.iterdir())), 3, result)
        self.assertIn("pdf", result.errors)

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
