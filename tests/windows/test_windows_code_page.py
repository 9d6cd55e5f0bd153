"""In a process whose code page is not UTF-8, such as Acrobat's: what it holds is done, what it does not keeps its name."""
import os
import subprocess
import unittest

from unattended import PROTECT, SAVE, minimal_pdf, page_count, protect_items, save_items
from wine import HOST, WindowsPlace, windows

OBJCOPY = os.environ.get("FERRULE_OBJCOPY", "x86_64-w64-mingw32-objcopy")
INPUT = minimal_pdf()
EXPRESSIBLE = ("Größe ü.pdf", "a’b.pdf", "plain.pdf")
OTHERS = ("Письмо.pdf", "𝄞.pdf")


class CodePage(unittest.TestCase):
    def setUp(self):
        self.place = WindowsPlace("Büro ")
        self.addCleanup(self.place.close)
        # Without its manifest the host lives in the code page of the machine.
        self.host = self.place.root / "host.exe"
        subprocess.run([OBJCOPY, "--remove-section", ".rsrc", HOST, self.host], check=True)
        for name in EXPRESSIBLE + OTHERS + ("日本/inside.pdf",):
            path = self.place.input / name
            path.parent.mkdir(exist_ok=True)
            path.write_bytes(INPUT)

    def run_host(self, output, **items):
        sequence = self.place.sequence("p.sequ", [(PROTECT, protect_items()), (SAVE, save_items(**items))])
        variables = {"FERRULESEQU": sequence, "FERRULEALTPATH": self.place.input, "FERRULENOPROGRESS": "yes", **output}
        arguments = ["--plugin", HOST.parent / "plug_ins" / "Ferrule.api"]
        outcome = self.place.run(variables, arguments, program=self.host)
        self.assertEqual(outcome.code, 3, outcome)
        self.assertIn(windows(self.place.input / EXPRESSIBLE[0]).encode("cp1252"), outcome.raw_log)
        self.assertEqual(outcome.raw_log.count(b"Can't open input document"), len(OTHERS))
        for name in OTHERS:
            self.assertEqual((self.place.input / name).read_bytes(), INPUT)
        return outcome

    def names(self, folder):
        return sorted(path.name for path in folder.rglob("*.pdf"))

    def test_results_and_moved_inputs_keep_their_names(self):
        self.run_host({"FERRULEALTOUTPUTPATH": self.place.output, "FERRULEFINAL": 2, "FERRULEDEST": self.place.done})
        done = sorted(EXPRESSIBLE + ("inside.pdf",))
        self.assertEqual((self.names(self.place.output), self.names(self.place.done)), (done, done))
        self.assertEqual(self.names(self.place.input), sorted(OTHERS))

    def test_saving_in_place_leaves_no_second_name(self):
        self.run_host({}, DontOverwrite=("boolean", "false"))
        self.assertEqual(self.names(self.place.input), sorted(EXPRESSIBLE + OTHERS + ("inside.pdf",)))
        for path in [self.place.input / name for name in EXPRESSIBLE] + [self.place.input / "日本" / "inside.pdf"]:
            self.assertEqual((page_count(path), page_count(path, "open sesame")), (None, 1), path)


if __name__ == "__main__":
    unittest.main()
