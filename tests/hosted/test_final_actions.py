"""What becomes of the input after its result was saved: all nine final actions, and what they must never lose."""
import os
import unittest
from pathlib import Path

from unattended import PROTECT, SAVE, Workplace, minimal_pdf, protect_items, save_items

INPUT = minimal_pdf("Input")
OTHER = minimal_pdf("Other")


class FinalActions(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        self.sequence = self.place.sequence("protect.sequ", [(PROTECT, protect_items()), (SAVE, save_items())])

    def run_one(self, final, destination, name="Übersicht März 1.pdf", existing=()):
        done = self.place.root / "done with blanks and ö"
        done.mkdir(exist_ok=True)
        for other in existing:
            (done / other).write_bytes(OTHER)
        source = self.place.input / "sub folder ü"
        source.mkdir(exist_ok=True)
        (source / name).write_bytes(INPUT)
        outcome = self.place.run_folder(self.sequence, final, str(done) if destination is None else destination)
        return outcome, source / name, done

    def test_each_action_does_what_its_code_says(self):
        name = "Übersicht März 1.pdf"
        rows = [
            # code, files in the destination before, log entry, input stays, new name in the destination (or None)
            (0, [], None, True, None),
            (1, [], "File is copied to", True, name),
            (2, [], "File is moved to", False, name),
            (2, [name], "Can't move file to", True, None),
            (3, [], "File is deleted", False, None),
            (6, [name], "File is moved to", False, name),
            (7, [name, "Übersicht März 1 (1).pdf"], "File is moved to", False, "Übersicht März 1 (2).pdf"),
            (8, [name], "File is copied to", True, "Übersicht März 1 (1).pdf"),
            (9, [], None, True, None),
        ]
        for code, existing, entry, stays, arrived in rows:
            with self.subTest(code=code, existing=existing):
                outcome, source, done = self.run_one(code, None, existing=existing)
                self.assertEqual(source.exists(), stays, outcome)
                if stays:
                    self.assertEqual(source.read_bytes(), INPUT)
                if entry:
                    self.assertEqual(len(outcome.values(entry)), 1, outcome)
                if arrived:
                    self.assertEqual((done / arrived).read_bytes(), INPUT, outcome)
                for other in existing:
                    if other != arrived:
                        self.assertEqual((done / other).read_bytes(), OTHER, "an older file was touched")
                self.assertEqual(outcome.code, 3 if entry and entry.startswith("Can't") else 0, outcome)
                if entry and entry.startswith("Can't"):
                    self.assertIn(".pdf: The name is taken: ", outcome.errors)
                for path in list(done.iterdir()) + list(self.place.output.iterdir()):
                    path.unlink()
                source.unlink(missing_ok=True)

    def test_a_program_that_cannot_be_found_is_named(self):
        for missing in (str(self.place.root / "no such program"), str(self.sequence), ""):
            with self.subTest(program=missing):
                outcome, _, _ = self.run_one(5, missing)
                self.assertEqual(len(outcome.values("An error occured while trying to execute file")), 1, outcome)
                self.assertEqual(len(outcome.values("The program of the final action cannot be found")), 1, outcome)
                self.assertIn(".pdf: The program cannot be found: ", outcome.errors)
                self.assertEqual(outcome.code, 3)

    def test_a_missing_destination_leaves_the_input_and_says_why(self):
        for code in (1, 7):
            with self.subTest(code=code):
                outcome, source, _ = self.run_one(code, str(self.place.root / "not there"))
                self.assertEqual(source.read_bytes(), INPUT, outcome)
                self.assertTrue(outcome.values("Can't copy file to" if code == 1 else "Can't move file to"), outcome)
                self.assertIn(".pdf: The destination folder does not exist: ", outcome.errors)
                self.assertEqual(outcome.code, 3)

    def test_a_failed_document_keeps_its_input_whatever_the_action(self):
        for code in (1, 2, 3, 4, 6, 7, 8):
            with self.subTest(code=code):
                (self.place.input / "broken.pdf").write_bytes(b"this is no document")
                outcome = self.place.run_folder(self.sequence, code, "x.pdf" if code == 4 else str(self.place.done))
                self.assertEqual((self.place.input / "broken.pdf").read_bytes(), b"this is no document")
                self.assertEqual(list(self.place.done.iterdir()), [])
                self.assertTrue(outcome.has("Can't open input document"), outcome)
                self.assertEqual(outcome.code, 3)

    def test_a_full_or_locked_output_folder_keeps_the_input(self):
        if os.geteuid() == 0 and not Path("/dev/full").exists():
            self.skipTest("nothing here can refuse a write")
        self.place.output.rmdir()
        self.place.output.symlink_to("/proc")  # a folder in which nobody can create a file
        outcome, source, _ = self.run_one(3, "")
        self.assertEqual(source.read_bytes(), INPUT, outcome)
        self.assertEqual(outcome.values("File is deleted"), [], outcome)
        self.assertEqual(outcome.code, 3, outcome)


if __name__ == "__main__":
    unittest.main()
