"""Final actions in folders of drive C: what refuses them, and how programs are started."""
import subprocess
import time
import unittest

from unattended import SAVE, minimal_pdf, page_count, save_items
from wine import HOST, WINE, WindowsPlace, windows

INPUT, OTHER = minimal_pdf("Input"), minimal_pdf("Other")
ACCESS_DENIED, IN_USE = 5, 32
NAME = "Übersicht März 1.pdf"


class FinalActions(unittest.TestCase):
    def setUp(self):
        self.place = WindowsPlace()
        self.addCleanup(self.place.close)
        self.sequence = self.place.protect_sequence()

    def apply(self, code, destination, before=None):
        """Over one input; answers the outcome and the log's entries about the final action."""
        for path in list(self.place.done.iterdir()) + list(self.place.output.iterdir()):
            path.unlink()
        self.source = self.place.input / NAME
        self.source.write_bytes(INPUT)
        if before:
            before()
        outcome = self.place.run_folder(self.sequence, code, destination)
        entries = ("File is ", "Can't ", "Missing output", "Input file location", "Error code", "An error occured", "ERROR: Unknown")
        return outcome, [line.strip() for line in outcome.lines if line.strip().startswith(entries)]

    def test_what_another_process_holds_stays_as_it_was(self):
        done = windows(self.place.done)
        taken = self.place.done / NAME
        taken.write_bytes(OTHER)
        with self.place.held_open(taken):
            outcome = self.place.run_folder(self.sequence, 6, done)
            self.assertEqual(outcome.values("Can't move file to"), [], "there is no input yet")
            (self.place.input / NAME).write_bytes(INPUT)
            outcome = self.place.run_folder(self.sequence, 6, done)
        self.assertEqual(outcome.values("Can't move file to"), [f"{done}\\{NAME}"], outcome)
        self.assertIn(outcome.values("Error code"), ([str(ACCESS_DENIED)], [str(IN_USE)]), outcome)
        self.assertEqual((taken.read_bytes(), (self.place.input / NAME).read_bytes()), (OTHER, INPUT))

    def test_a_read_only_input_is_moved_and_not_deleted(self):
        for code in (3, 6):
            with self.subTest(code=code):
                outcome, entries = self.apply(code, windows(self.place.done), before=lambda: self.source.chmod(0o444))
                left = self.source if code == 3 else self.place.done / NAME
                self.assertEqual(left.read_bytes(), INPUT, outcome)
                self.assertEqual(f"Can't delete file : {windows(self.source)}" in entries, code == 3, outcome)
                left.chmod(0o644)

    def script(self):
        path = self.place.root / "start.cmd"
        path.write_bytes(b'@echo off\r\n> "%~dp0started.txt" echo %1\r\n')
        return path

    def assert_started_with(self, argument):
        """The first argument of the script, as it came. Which code page writes it is the matter of its shell."""
        path = self.place.root / "started.txt"
        for _ in range(400):
            if path.exists() and path.stat().st_size > 0:
                break
            time.sleep(0.05)
        written = path.read_bytes().strip()
        self.assertIn(argument, [written.decode(codec, "replace") for codec in ("utf-8", "cp1252", "cp437", "cp850")])

    def test_a_step_that_starts_a_program_passes_the_path_without_quotes(self):
        """A path with blanks arrives as several arguments."""
        self.sequence = self.place.sequence("start.sequ", [
            ("QLNX_FerruleProcessWithExternalAppCommand", {"File": ("string", windows(self.script()))}), (SAVE, save_items())])
        outcome = self.apply(0, "")[0]
        self.assertEqual(outcome.values("External application started"), [windows(self.script())], outcome)
        self.assert_started_with(windows(self.source).split(" ")[0])

    def test_a_final_action_that_starts_a_program_passes_the_path_in_quotes(self):
        script = self.script()
        outcome, entries = self.apply(5, windows(script))
        self.assertEqual(entries, [f"File is executed : {windows(script)}"], outcome)
        self.assert_started_with(f'"{windows(self.source)}"')
        for missing in (windows(self.place.root) + "\\nicht da.exe", ""):
            with self.subTest(program=missing):
                outcome, entries = self.apply(5, missing)
                self.assertEqual(entries, [f"An error occured while trying to execute file : {missing}".rstrip()], outcome)
                self.assertEqual(outcome.code, 3)

    def test_a_batch_file_runs_it(self):
        (self.place.input / "plain.pdf").write_bytes(INPUT)
        folder = windows(self.place.root)
        lines = ["@echo off", "cd /d %~dp0", "set FERRULESEQU=\"%CD%\\protect.sequ\"", "set FERRULEFINAL=2", "set FERRULEDEST=%CD%\\done",
                 "set FERRULEALTPATH=\"%CD%\\in\"", "set FERRULEALTOUTPUTPATH=%CD%\\out", "set FERRULENOPROGRESS=yes",
                 f"\"{windows(HOST)}\"", "exit %ERRORLEVEL%"]
        batch = self.place.root / "nightly.bat"
        batch.write_bytes("\r\n".join(lines).encode() + b"\r\n")
        done = subprocess.run([WINE, "cmd", "/c", windows(batch)], env=self.place.environment(), capture_output=True, timeout=120, check=False)
        self.assertEqual(done.returncode, 0, done)
        self.assertEqual((self.place.done / "plain.pdf").read_bytes(), INPUT)
        self.assertEqual(page_count(self.place.output / "plain.pdf", "open sesame"), 1)
        self.assertIn(f"File is moved to : {folder}\\done\\plain.pdf".encode(), self.place.log.read_bytes())


if __name__ == "__main__":
    unittest.main()
