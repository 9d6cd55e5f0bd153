"""The host's own steps on real documents: all six in one sequence, the results judged by other tools page by page."""
import os
import re
import shutil
import sys
import unittest
from pathlib import Path

from unattended import SAVE, Workplace, minimal_pdf, page_count, save_items, tool

CORPUS = Path(os.environ.get("FERRULE_CORPUS", ""))
OTHER_UNITS = "fxo-red-rotate.pdf"  # some of its pages do not count in points
MARGINS = {"Left": 7, "Top": 11, "Right": 13, "Bottom": 17}
# As the page is shown: which margin the unturned left, bottom, right and top edge get.
EDGES = {0: ("Left", "Bottom", "Right", "Top"), 90: ("Top", "Left", "Bottom", "Right"),
         180: ("Right", "Top", "Left", "Bottom"), 270: ("Bottom", "Right", "Top", "Left")}
STEPS = [("DeletePages", {"From": ("text", 1), "To": ("text", 1)}),
         ("CropPages", {key: ("double", f"{value:.6f}") for key, value in MARGINS.items()}),
         ("RotatePages", {"Degrees": ("integer", 90)}),
         ("DeleteAll", {}),
         ("GeneralInfo", {"Title": ("text", "Übersicht 適合"), "Keywords": ("string", "one, two")}),
         ("OpenInfo", {"PageNum": ("text", 1), "Magnification": ("text", "适合宽度"), "DisplayDocTitle": ("boolean", "true")}),
         (SAVE, save_items())]


def pages_of(path):
    """Rotation, media box and crop box of each page."""
    out = tool("pdfinfo", "-box", "-f", "1", "-l", "999", path)[1].decode("utf-8", "replace")
    boxes = {kind: [[float(number) for number in line.split()] for line in re.findall(rf"^Page +\d+ {kind}: +(.*)$", out, re.M)]
             for kind in ("MediaBox", "CropBox")}
    turned = [int(number) for number in re.findall(r"^Page +\d+ rot: +(\d+)$", out, re.M)]
    return list(zip(turned, boxes["MediaBox"], boxes["CropBox"]))


class OwnSteps(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)

    def test_six_steps_on_real_documents_leave_pages_and_settings_as_asked(self):
        themes = ("pages", "labels", "navigation", "annotations")
        files = [path for theme in themes for path in sorted((CORPUS / theme).glob("*.pdf"))
                 if (page_count(path) or 0) > 1 and path.stat().st_size < 1_000_000 and path.name != OTHER_UNITS]
        if not files:
            self.skipTest("the corpus is not here")
        for path in files:
            shutil.copyfile(path, self.place.input / path.name)
        outcome = self.place.run_folder(self.place.sequence("s.sequ", STEPS))
        self.assertEqual(outcome.code, 0, outcome)
        for path in files:
            with self.subTest(path.name):
                result = self.place.output / path.name
                self.assertLessEqual(tool("qpdf", "--check", result)[0], tool("qpdf", "--check", path)[0])
                before, after = pages_of(path)[1:], pages_of(result)
                self.assertEqual(len(after), len(before))
                for (turned, media, _), (now, _, crop) in zip(before, after):
                    self.assertEqual(now, (turned + 90) % 360)
                    wanted = [edge + sign * MARGINS[name] for edge, name, sign in zip(media, EDGES[turned], (1, 1, -1, -1))]
                    self.assertEqual([round(edge, 1) for edge in crop], [round(edge, 1) for edge in wanted])
                out = tool("pdfinfo", result)[1].decode()
                self.assertIn("Übersicht 適合", out)
                self.assertIn("one, two", out)
                self.assertNotRegex(tool("qpdf", "--json", "--json-key=qpdf", result)[1],
                                    rb'"/Subtype": "/(Text|Highlight|Popup|FreeText|Stamp)"')

    def test_a_step_that_fails_costs_its_file_alone_and_saves_nothing(self):
        (self.place.input / "one.pdf").write_bytes(minimal_pdf())
        (self.place.input / "two.pdf").write_bytes(minimal_pdf(pages=2))
        outcome = self.place.run_folder(self.place.sequence("s.sequ", STEPS))
        self.assertEqual(outcome.code, 3, outcome)
        self.assertEqual([path.name for path in self.place.output.iterdir()], ["two.pdf"])
        self.assertTrue(outcome.has("the step DeletePages would leave no page"), outcome)
        self.assertIn("one.pdf", outcome.errors)


if __name__ == "__main__":
    sys.exit(0 if unittest.main(exit=False).result.wasSuccessful() else 1)
