"""Bad sequences and bad documents: each ends in a clear line that names the file, the run goes on, nothing is lost."""
import os
import unittest

from unattended import PROTECT, SAVE, Workplace, minimal_pdf, page_count, protect_items, save_items, tool


def workflow(inside, root="Workflow"):
    return f'<?xml version="1.0" encoding="UTF-8"?><{root}>{inside}</{root}>'.encode()


STEP = '<Group label="a"><Command name="X"><Items><Item name="a" type="text" value="b"/></Items></Command></Group>'


def bookmarked_pdf(count, next_one):
    """Bookmarks that hang on each other: each one is the next, or the first below, of the one before."""
    entry = b"/Next %d 0 R" if next_one else b"/First %d 0 R/Last %d 0 R"
    bookmarks = [b"<</Title(x)" + (entry % ((n + 1,) * entry.count(b"%d")) if n < count + 6 else b"") + b">>"
                 for n in range(7, count + 7)]
    objects = [b"<</Type/Catalog/Pages 2 0 R/Outlines 6 0 R>>", b"<</Type/Pages/Kids[3 0 R]/Count 1>>",
               b"<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]>>", b"null", b"null",
               b"<</Type/Outlines/First 7 0 R/Last 7 0 R>>", *bookmarks]
    body, offsets = bytearray(b"%PDF-1.4\n"), []
    for number, content in enumerate(objects, 1):
        offsets.append(len(body))
        body += b"%d 0 obj%s endobj\n" % (number, content)
    table = b"".join(b"%010d 00000 n \n" % offset for offset in offsets)
    return b"%sxref\n0 %d\n0000000000 65535 f \n%strailer<</Root 1 0 R/Size %d>>\nstartxref\n%d\n%%%%EOF" % (
        body, len(objects) + 1, table, len(objects) + 1, len(body))


class BadSequences(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        (self.place.input / "a.pdf").write_bytes(minimal_pdf())

    def test_unusable_sequence_files_are_named_and_nothing_is_processed(self):
        nested = "<Items name='a'>" * 150 + "</Items>" * 150
        parts = ["Commands", "Input", "Output"]
        good = self.place.host_sequence("good.sequ", [("cab", part, "") for part in parts]).read_bytes()
        rows = {"garbage": os.urandom(5000), "truncated": workflow(STEP)[:-20], "empty group": workflow('<Group label="a"></Group>'),
                "deep": workflow(f'<Group><Command name="X">{nested}</Command></Group>'),
                "name that no cab takes": workflow(STEP.replace('name="a"', 'name="größe"')), "damaged host form": good[:-3]}
        for missing in parts:
            path = self.place.host_sequence("x.sequ", [("cab", part, "") for part in parts if part != missing])
            rows["no " + missing] = path.read_bytes()
        for name, content in rows.items():
            with self.subTest(name):
                path = self.place.root / (name + ".sequ")
                path.write_bytes(content)
                outcome = self.place.run_folder(path, final=3)
                self.assertEqual(outcome.code, 1, outcome)
                self.assertEqual(outcome.values("Error reading sequence file"), [] if name[:3] == "no " else [str(path)], outcome)
                self.assertTrue((self.place.input / "a.pdf").exists())
                self.assertTrue(outcome.lines[-1].startswith("Software "), outcome)

    def test_nothing_scheduled_ends_at_once_and_says_so(self):
        outcome = self.place.run({})
        self.assertEqual(outcome.code, 1, outcome)
        self.assertIn("nothing", outcome.errors.lower(), outcome)
        self.assertTrue(outcome.has("No sequence file specified"), outcome)



class BadDocuments(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        self.sequence = self.place.sequence("protect.sequ", [(PROTECT, protect_items()), (SAVE, save_items())])

    def test_each_bad_document_costs_only_itself(self):
        good = minimal_pdf("Good", 3)
        bad = {
            "empty.pdf": b"", "text.pdf": b"just text\n", "cut.pdf": good[:120], "jpeg in name.jpg": b"no picture",
            "zeros.pdf": bytes(5000), "half header.pdf": b"%PDF-1.4\n%%EOF",
        }
        names = ["a good one.pdf", "zz \"quoted\" 'name'.pdf", "naïve 文書 Файл.pdf", os.fsdecode(b"bad \xff\xfe bytes.pdf"),
                 "n" * 251 + ".pdf"]
        for name in names:
            (self.place.input / name).write_bytes(good)
        for name, content in bad.items():
            (self.place.input / name).write_bytes(content)
        locked = self.place.input / "locked.pdf"
        locked.write_bytes(good)
        tool("qpdf", "--encrypt", "secret", "owner", "256", "--", "--replace-input", locked)
        bad["locked.pdf"] = locked.read_bytes()
        os.mkfifo(self.place.input / "pipe.pdf")
        (self.place.input / "gone.pdf").symlink_to(self.place.root / "not there")
        (self.place.input / "folder.pdf").mkdir()
        outcome = self.place.run_folder(self.sequence, final=3, arguments=["--verbose"])
        self.assertEqual(outcome.code, 3, outcome)
        for name in names:
            self.assertEqual(page_count(self.place.output / name, "open sesame"), 3, name)
            self.assertFalse((self.place.input / name).exists(), name)
        for name, content in bad.items():
            self.assertEqual((self.place.input / name).read_bytes(), content, name)
            self.assertFalse((self.place.output / name).exists(), name)
            self.assertTrue(any(name in line for line in outcome.errors.splitlines()), f"{name} is not reported\n{outcome}")
        self.assertEqual(len(outcome.values("File is deleted")), len(names), outcome)
        self.assertEqual(self.place.names(self.place.output), sorted(names))
        settings = self.place.log.with_name("Ferrule.cfs")
        self.assertEqual(settings.stat().st_mode & 0o777, 0o600)
        for secret in (b"open sesame", b"owner secret"):
            self.assertNotIn(secret, outcome.raw_log + outcome.errors.encode() + settings.read_bytes())

    def test_bookmarks_that_nest_very_deep_do_not_end_the_host(self):
        for name, next_one in (("below.pdf", False), ("beside.pdf", True)):
            (self.place.input / name).write_bytes(bookmarked_pdf(100000, next_one))
        outcome = self.place.run_folder(self.sequence)
        self.assertEqual(outcome.code, 0, outcome)
        for path in self.place.input.iterdir():
            self.assertEqual(page_count(self.place.output / path.name, "open sesame"), 1, path)

    def test_a_long_path_hides_no_reason(self):
        deep = self.place.input
        for length in range(70, 82):  # so that cuts fall at every place of a character
            deep = deep / ("\u65e5" * length)
        deep.mkdir(parents=True)
        (deep / "damaged.pdf").write_bytes(b"%PDF-1.7\n\x01\x02\x03")
        (deep / "locked.pdf").write_bytes(minimal_pdf())
        self.assertEqual(tool("qpdf", "--encrypt", "u", "o", "256", "--", "--replace-input", deep / "locked.pdf")[0], 0)
        outcome = self.place.run_folder(self.sequence, output=True)
        self.assertEqual(outcome.code, 3, outcome)
        log = outcome.raw_log.decode("utf-8")
        for text in (log, outcome.errors):
            self.assertNotIn("\ufffd", text)
            self.assertRegex(text, r"needs a password; .* --password-file \(\S+\.\.\.\S+/locked\.pdf\)")
            self.assertRegex(text, r"is damaged beyond repair: [a-z ,]+ \([^()]+\) \(\S+\.\.\.\S+/damaged\.pdf\)")

    def test_the_output_folder_may_be_inside_the_input_folder_or_the_same(self):
        (self.place.input / "a.pdf").write_bytes(minimal_pdf())
        inside = self.place.input / "results"
        inside.mkdir()
        outcome = self.place.run_folder(self.sequence, FERRULEALTOUTPUTPATH=str(inside))
        self.assertEqual(outcome.values("Number of input files"), ["1"], outcome)
        self.assertEqual(page_count(inside / "a.pdf", "open sesame"), 1)
        (inside / "a.pdf").unlink()
        outcome = self.place.run_folder(self.sequence, FERRULEALTOUTPUTPATH=str(self.place.input))
        self.assertEqual((outcome.code, self.place.names(self.place.input)), (0, ["a (1).pdf", "a.pdf", "results"]), outcome)
        self.assertEqual(page_count(self.place.input / "a (1).pdf", "open sesame"), 1)

    def test_many_inputs_cost_no_more_than_in_proportion(self):
        # The list of inputs alone: the files are no documents, so that each fails at once.
        count = 3000
        for number in range(count):
            (self.place.input / f"{number:05}.pdf").write_bytes(b"x")
        outcome = self.place.run_folder(self.sequence)
        self.assertEqual(outcome.values("Number of input files"), [str(count)], outcome.errors[-500:])
        self.assertEqual(outcome.code, 3)


if __name__ == "__main__":
    unittest.main()
