"""What becomes of the input after its result was saved, and what is told of it: all final actions, by their codes."""
import unittest

from unattended import PROTECT, SAVE, Workplace, minimal_pdf, protect_items, save_items

NAME, FIRST, SECOND = "Übersicht März 1.pdf", "Übersicht März 1 (1).pdf", "Übersicht März 1 (2).pdf"
INPUT, OTHER = minimal_pdf("Input"), minimal_pdf("Other")
COPIED, MOVED, NOT_MOVED = "File is copied to", "File is moved to", "Can't move file to"
NO_FOLDER, NO_PROGRAM = "The destination folder does not exist: ", "The program cannot be found: "


class FinalActions(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        self.sequence = self.place.sequence("protect.sequ", [(PROTECT, protect_items()), (SAVE, save_items())])

    def test_each_action_does_and_tells_what_its_code_says(self):
        folder, done, missing = self.place.input / "sub folder ü", self.place.root / "done with blanks and ö", "/not/there"
        for path in (folder, done):
            path.mkdir()
        source = folder / NAME
        rows = [
            # code, destination, names that are taken there, log entry, whether the input stays, what arrives, why it failed
            (0, done, [], None, True, None, None),
            (1, done, [NAME], COPIED, True, done / NAME, None),
            (2, done, [], MOVED, False, done / NAME, None),
            (2, done, [NAME], NOT_MOVED, True, None, "The name is taken: "),
            (2, missing, [], NOT_MOVED, True, None, NO_FOLDER),
            (3, "", [], "File is deleted", False, None, None),
            (4, "renamed.pdf", [], "File is renamed to", False, folder / "renamed.pdf", None),
            (4, "", [], "Can't rename file to", True, None, ""),
            (5, missing, [], "The program of the final action cannot be found", True, None, NO_PROGRAM),
            (5, self.sequence, [], "An error occured while trying to execute file", True, None, NO_PROGRAM),
            (6, done, [NAME], MOVED, False, done / NAME, None),
            (7, done, [NAME, FIRST], MOVED, False, done / SECOND, None),
            (7, missing, [], "Missing output folder", True, None, NO_FOLDER),
            (8, done, [NAME], COPIED, True, done / FIRST, None),
            (8, missing, [], "Can't copy file to", True, None, NO_FOLDER),
            (-1, done, [], None, True, None, None),
        ]
        for code, destination, taken, entry, stays, arrives, reason in rows:
            with self.subTest(code=code, destination=destination, taken=taken):
                source.write_bytes(INPUT)
                for name in taken:
                    (done / name).write_bytes(OTHER)
                outcome = self.place.run_folder(self.sequence, code, destination)
                self.assertEqual(outcome.code, 0 if reason is None else 3, outcome)
                self.assertEqual(source.read_bytes() if stays else source.exists(), INPUT if stays else False, outcome)
                self.assertEqual(len(outcome.values(entry)) if entry else 0, 1 if entry else 0, outcome)
                self.assertTrue(not reason or f"{NAME}: {reason}" in outcome.errors, outcome)
                if arrives:
                    self.assertEqual(arrives.read_bytes(), INPUT, outcome)
                for path in (done / name for name in taken):
                    self.assertTrue(path == arrives or path.read_bytes() == OTHER, "an older file was touched")
                self.place.clear(done, folder, self.place.output)

    def test_a_failed_document_keeps_its_input_whatever_the_action(self):
        broken = self.place.input / "broken.pdf"
        broken.write_bytes(b"this is no document")
        for code in (1, 2, 3, 4, 6, 7, 8):
            with self.subTest(code=code):
                outcome = self.place.run_folder(self.sequence, code, "x.pdf" if code == 4 else self.place.done)
                self.assertEqual((broken.read_bytes(), self.place.names(self.place.done)), (b"this is no document", []))
                self.assertTrue(outcome.has("Can't open input document"), outcome)
                self.assertEqual(outcome.code, 3)


if __name__ == "__main__":
    unittest.main()
