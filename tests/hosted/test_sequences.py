"""Real and sample sequences, and the host's own steps on real documents; the results are judged by other tools."""
import re
import shutil
import unittest

from unattended import (CORPUS, PROTECT, SAVE, Workplace, from_environment, minimal_pdf, page_count, protect_items,
                        save_items, tool)

EXAMPLES = from_environment("FERRULE_SEQUENCES", "../shared/sequences/examples")
SAMPLES = from_environment("FERRULE_SAMPLES", "samples")
IMPOSTOR = "not-a-workflow-root.sequ"
OTHER_UNITS = "fxo-red-rotate.pdf"  # some of its pages do not count in points
MARGINS = {"Left": 7, "Top": 11, "Right": 13, "Bottom": 17}
# As the page is shown: which margin the unturned left, bottom, right and top edge get.
EDGES = {0: ("Left", "Bottom", "Right", "Top"), 90: ("Top", "Left", "Bottom", "Right"),
         180: ("Right", "Top", "Left", "Bottom"), 270: ("Bottom", "Right", "Top", "Left")}
OWN_STEPS = [("DeletePages", {"From": ("text", 1), "To": ("text", 1)}),
             ("CropPages", {key: ("double", f"{value:.6f}") for key, value in MARGINS.items()}),
             ("RotatePages", {"Degrees": ("integer", 90)}),
             ("DeleteAll", {}),
             ("GeneralInfo", {"Title": ("text", "Übersicht 適合"), "Keywords": ("string", "one, two")}),
             ("OpenInfo", {"PageNum": ("text", 1), "Magnification": ("text", "适合宽度"), "DisplayDocTitle": ("boolean", "true")}),
             (SAVE, save_items())]


def pages_of(path):
    """Rotation, media box and crop box of each page."""
    out = tool("pdfinfo", "-box", "-f", "1", "-l", "999", path)[1].decode("utf-8", "replace")
    boxes = [[[float(number) for number in line.split()] for line in re.findall(rf"^Page +\d+ {kind}: +(.*)$", out, re.M)]
             for kind in ("MediaBox", "CropBox")]
    return list(zip([int(number) for number in re.findall(r"^Page +\d+ rot: +(\d+)$", out, re.M)], *boxes))


class Sequences(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        self.document = self.place.input / "a.pdf"
        self.document.write_bytes(minimal_pdf())

    def test_scripts_read_and_describe_their_own_document_only(self):
        script = ("// CR, CR LF and LF end lines\rglobal.count = (global.count || 0) + 1;\r\nArray = null;\n"
                  "if (numPages > 1) this.nothing();\rthis.info.Title = 'Ü ' + numPages + ' ' + global.count;")
        sequence = self.place.sequence("s.sequ", [("JavaScript", {"ScriptCode": ("text", script)}), (SAVE, save_items())])
        (self.place.input / "b.pdf").write_bytes(minimal_pdf(pages=2))
        (self.place.input / "c.pdf").write_bytes(minimal_pdf())
        outcome = self.place.run_folder(sequence)
        self.assertEqual(outcome.code, 3, outcome)
        self.assertEqual(self.place.names(self.place.output), ["a.pdf", "c.pdf"], outcome)
        for name, title in (("a.pdf", "Ü 1 1"), ("c.pdf", "Ü 1 2")):
            self.assertIn(f"Title:           {title}\n", tool("pdfinfo", self.place.output / name)[1].decode(), outcome)
        self.assertIn("the step JavaScript failed in line 4: TypeError", outcome.errors, outcome)
        self.assertIn("b.pdf", outcome.errors, outcome)

    def test_every_real_sequence_loads_and_the_impostor_is_refused(self):
        files = sorted(EXAMPLES.glob("*.sequ"))
        if not files:
            self.skipTest("the folder of real sequences is not here")
        for path in files:
            with self.subTest(path.name):
                self.document.write_bytes(minimal_pdf())
                outcome = self.place.run_folder(path)
                loaded = path.name != IMPOSTOR
                self.assertEqual(outcome.has("Sequence file is loaded from XML format"), loaded, outcome)
                self.assertEqual(outcome.values("Error reading sequence file"), [] if loaded else [str(path)], outcome)
                self.assertTrue(outcome.has("Adobe Acrobat has been closed."), outcome)
                self.assertIn(outcome.code, (0, 3) if loaded else (1,), outcome)
                commands = path.read_text(encoding="utf-8").count("<Command ")
                counted = outcome.values("Number of batch commands in the sequence")
                self.assertEqual(counted, [str(commands)] if loaded else [])
                # A save step without items saves where the document is: that may rewrite the input, whole.
                self.assertEqual(page_count(self.document), 1, outcome)
                self.place.clear(self.place.output)

    def test_every_sample_sequence_does_its_job_on_the_samples(self):
        files = sorted((SAMPLES / "sequences").glob("*.sequ"))
        self.assertGreaterEqual(len(files), 3)
        for path in files:
            with self.subTest(path.name):
                outcome = self.place.run_folder(path)
                self.assertEqual((outcome.code, len(self.place.names(self.place.output))), (0, 1), outcome)
                self.place.clear(self.place.output)

    def test_the_log_of_a_run_reads_as_it_always_did(self):
        sequence = self.place.sequence("s.sequ", [(PROTECT, protect_items(3, "pass", "")), (SAVE, {})])
        outcome = self.place.run_folder(sequence, FERRULEFILEEXT="pdf")
        self.assertEqual(outcome.code, 0, outcome)
        expected = [
            "Registering sequence file : " + str(sequence), "\tSequence file : " + str(sequence), "\tFinal action : 0",
            "\tDestination : ", "\tAlternative path : " + str(self.place.input), "\tExecute in steps : ",
            "\tProgress dialog : yes", "\tAlternative output path : " + str(self.place.output),
            "Allowed file extentions : pdf", "No subfolders : ", "\tSequence file is loaded from XML format : ",
            "\tProcessing batch sequence : " + str(sequence), "\tAllowed file extension : pdf"]
        start = outcome.lines.index(expected[0])
        self.assertEqual(outcome.lines[start:start + len(expected)], expected)
        self.assertTrue(outcome.lines[0].startswith("LOG STARTED: "), outcome)
        numbers = [int(line.split(b":")[0]) for line in outcome.raw_log.split(b"\r\n") if line]
        self.assertEqual(numbers, list(range(1, len(numbers) + 1)))
        self.assertEqual(outcome.lines.count("-" * 86), 1)
        tail = [line.split(" : ")[0].split(":")[0] for line in outcome.lines[-5:]]
        self.assertEqual(tail, ["LOG STOPPED", "Plugin", "Acrobat viewer host application", "Language", "Software build date"])

    def test_six_steps_on_real_documents_leave_pages_and_settings_as_asked(self):
        """The one of a single page fails and costs nothing but itself."""
        themes = ("pages", "labels", "navigation", "annotations")
        files = [path for theme in themes for path in sorted((CORPUS / theme).glob("*.pdf"))
                 if (page_count(path) or 0) > 1 and path.stat().st_size < 1_000_000 and path.name != OTHER_UNITS]
        for path in files:
            shutil.copyfile(path, self.place.input / path.name)
        (self.place.input / "two pages.pdf").write_bytes(minimal_pdf(pages=2))
        outcome = self.place.run_folder(self.place.sequence("s.sequ", OWN_STEPS))
        self.assertEqual(outcome.code, 3, outcome)
        self.assertEqual(self.place.names(self.place.output), sorted(["two pages.pdf", *(path.name for path in files)]))
        self.assertTrue(outcome.has("the step DeletePages would leave no page"), outcome)
        self.assertIn("a.pdf", outcome.errors)
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


if __name__ == "__main__":
    unittest.main()
