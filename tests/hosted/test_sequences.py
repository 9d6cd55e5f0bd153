"""Real sequence files load and run as far as this host has their steps; what is no sequence is refused."""
import os
import sys
import unittest
from pathlib import Path

from unattended import PROTECT, SAVE, Workplace, minimal_pdf, page_count

EXAMPLES = Path(os.environ.get("FERRULE_SEQUENCES", ""))
SAMPLES = Path(os.environ.get("FERRULE_SAMPLES", "samples"))
IMPOSTOR = "not-a-workflow-root.sequ"


class Sequences(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        (self.place.input / "a.pdf").write_bytes(minimal_pdf())

    def test_every_real_sequence_loads_and_the_impostor_is_refused(self):
        files = sorted(EXAMPLES.glob("*.sequ"))
        if not files:
            self.skipTest("the folder of real sequences is not here")
        for path in files:
            with self.subTest(path.name):
                (self.place.input / "a.pdf").write_bytes(minimal_pdf())
                outcome = self.place.run_folder(path)
                loaded = path.name != IMPOSTOR
                self.assertEqual(outcome.has("Sequence file is loaded from XML format"), loaded, outcome)
                self.assertEqual(outcome.values("Error reading sequence file"), [] if loaded else [str(path)], outcome)
                self.assertEqual(outcome.has("Adobe Acrobat has been closed."), True, outcome)
                self.assertIn(outcome.code, (0, 3) if loaded else (1,), outcome)
                commands = path.read_text(encoding="utf-8").count("<Command ")
                if loaded:
                    self.assertEqual(outcome.values("Number of batch commands in the sequence"), [str(commands)])
                    # A save step without items saves where the document is: that may rewrite the input, whole.
                    self.assertEqual(page_count(self.place.input / "a.pdf"), 1, outcome)
                for result in self.place.output.iterdir():
                    result.unlink()

    def test_every_sample_sequence_does_its_job_on_the_samples(self):
        files = sorted((SAMPLES / "sequences").glob("*.sequ"))
        self.assertGreaterEqual(len(files), 3)
        for path in files:
            with self.subTest(path.name):
                outcome = self.place.run_folder(path)
                self.assertEqual(outcome.code, 0, outcome)
                self.assertEqual(len(list(self.place.output.iterdir())), 1, outcome)
                for result in self.place.output.iterdir():
                    result.unlink()

    def test_the_log_of_a_run_reads_as_it_always_did(self):
        sequence = self.place.sequence("s.sequ", [(PROTECT, {"EncryptionMethod": ("integer", "3"),
                                                             "PasswordProtect": ("boolean", "true"),
                                                             "Password": ("text", "pass")}), (SAVE, {})])
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


if __name__ == "__main__":
    sys.exit(0 if unittest.main(exit=False).result.wasSuccessful() else 1)
