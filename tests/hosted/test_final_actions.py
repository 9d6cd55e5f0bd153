"""What becomes of the input after its result was saved: all nine final actions, and what they must never lose."""
import os
import stat
import unittest
from pathlib import Path

from unattended import PROTECT, SAVE, Workplace, minimal_pdf, page_count, protect_items, save_items

INPUT = minimal_pdf("Input")
OTHER = minimal_pdf("Other")


class FinalActions(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        self.sequence = self.place.sequence("protect.sequ", [(PROTECT, protect_items()), (SAVE, save_items())])

    def run_one(self, final, destination, name="Übersicht März 1.pdf", existing=(), where=None):
        done = self.place.root / "done with blanks and ö"
        done.mkdir(exist_ok=True)
        for other in existing:
            (done / other).write_bytes(OTHER)
        source = self.place.input / "sub folder ü"
        source.mkdir(exist_ok=True)
        (source / name).write_bytes(INPUT)
        target = destination if where is None else where
        outcome = self.place.run_folder(self.sequence, final, str(done) if target is None else target)
        return outcome, source / name, done

    def test_each_action_does_what_its_code_says(self):
        name = "Übersicht März 1.pdf"
        rows = [
            # code, files in the destination before, log entry, input stays, new name in the destination (or None)
            (0, [], None, True, None),
            (1, [], "File is copied to", True, name),
            (1, [name], "File is copied to", True, name),
            (2, [], "File is moved to", False, name),
            (2, [name], "Can't move file to", True, None),
            (3, [], "File is deleted", False, None),
            (6, [], "File is moved to", False, name),
            (6, [name], "File is moved to", False, name),
            (7, [], "File is moved to", False, name),
            (7, [name], "File is moved to", False, "Übersicht März 1 (1).pdf"),
            (7, [name, "Übersicht März 1 (1).pdf"], "File is moved to", False, "Übersicht März 1 (2).pdf"),
            (8, [name], "File is copied to", True, "Übersicht März 1 (1).pdf"),
            (9, [], None, True, None),
            (-1, [], None, True, None),
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

    def test_code_4_renames_in_the_inputs_folder_and_never_replaces(self):
        outcome, source, _ = self.run_one(4, "renamed.pdf")
        self.assertFalse(source.exists())
        self.assertEqual((source.parent / "renamed.pdf").read_bytes(), INPUT)
        self.assertEqual(len(outcome.values("File is renamed to")), 1, outcome)
        (source.parent / "renamed.pdf").unlink()
        (source.parent / "taken.txt").write_bytes(OTHER)
        for text in ("taken.txt", ""):
            with self.subTest(text=text):
                outcome, source, _ = self.run_one(4, text)
                self.assertEqual(source.read_bytes(), INPUT, outcome)
                self.assertEqual((source.parent / "taken.txt").read_bytes(), OTHER)
                self.assertEqual(len(outcome.values("Can't rename file to")), 1, outcome)

    def test_code_5_starts_a_program_with_the_document_as_one_argument(self):
        record = self.place.root / "started.txt"
        program = self.place.root / "a program.sh"
        program.write_text(f'#!/bin/sh\nprintf "%s|" "$#" "$@" > "{record}.part" && mv "{record}.part" "{record}"\n')
        program.chmod(0o755)
        outcome, source, _ = self.run_one(5, str(program))
        self.assertEqual(outcome.values("File is executed"), [str(program)], outcome)
        for _ in range(100):
            if record.exists():
                break
            os.sched_yield()
            import time
            time.sleep(0.05)
        self.assertEqual(record.read_text(), f"1|{source}|")
        for missing in (str(self.place.root / "no such program"), str(self.sequence), ""):
            with self.subTest(program=missing):
                outcome, source, _ = self.run_one(5, missing)
                self.assertEqual(len(outcome.values("An error occured while trying to execute file")), 1, outcome)
                self.assertEqual(len(outcome.values("The program of the final action cannot be found")), 1, outcome)
                self.assertIn(".pdf: The program cannot be found: ", outcome.errors)
                self.assertEqual(outcome.code, 3)

    def test_a_missing_destination_leaves_the_input_and_says_why(self):
        for code, more in ((1, []), (2, []), (6, ["Missing output folder", "Error code"]),
                           (7, ["Missing output folder", "Input file location", "Error code"]), (8, [])):
            with self.subTest(code=code):
                missing = str(self.place.root / "not there")
                outcome, source, _ = self.run_one(code, missing)
                self.assertEqual(source.read_bytes(), INPUT, outcome)
                self.assertTrue(outcome.values("Can't copy file to" if code in (1, 8) else "Can't move file to"), outcome)
                for entry in more:
                    self.assertEqual(len(outcome.values(entry)), 1, outcome)
                self.assertIn(".pdf: The destination folder does not exist: ", outcome.errors)
                self.assertEqual(outcome.code, 3)

    def test_the_inputs_own_folder_as_destination_loses_nothing(self):
        for code in (1, 2, 6, 7, 8):
            with self.subTest(code=code):
                source = self.place.input / "sub folder ü"
                outcome, path, _ = self.run_one(code, str(source))
                copies = [p for p in source.iterdir() if p.read_bytes() == INPUT]
                self.assertGreaterEqual(len(copies), 1, outcome)
                self.assertEqual([p for p in source.iterdir() if p.read_bytes() != INPUT], [])
                for copy in copies:
                    copy.unlink()

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

    def test_results_are_complete_and_the_inputs_mode_is_kept(self):
        outcome, source, _ = self.run_one(2, None)
        result = self.place.output / source.name
        self.assertEqual(page_count(result, "open sesame"), 1, outcome)
        self.assertTrue(stat.S_IMODE(result.stat().st_mode) & stat.S_IRUSR)


if __name__ == "__main__":
    unittest.main()
