"""What `ferrule run` refuses to start, and what it says about it."""
import os
import time
import unittest

from commandline import CommandPlace, documents, records
from unattended import PROTECT, SAVE, protect_items, save_items


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
