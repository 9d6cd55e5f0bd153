"""The command line on Windows: workers, journal and limits; files that are held, read-only, hidden, or hard to name."""
import os
import resource
import signal
import stat
import subprocess
import unittest

from commandline import documents, is_protected, records, temporaries
from unattended import minimal_pdf
from wine import DRIVE, HOST, WINE, WindowsPlace, windows

LARGEST = 40_000  # bytes; log and small results stay below


class CommandLine(unittest.TestCase):
    def setUp(self):
        self.place = WindowsPlace()
        self.addCleanup(self.place.close)
        self.record = self.place.root / "record.jsonl"
        self.sequence = self.place.protect_sequence()

    def run_folder(self, code, *more, output=True):
        words = ["run", self.sequence, "--input", self.place.input, "--record", self.record, "--quiet"]
        self.place.expect(code, *words, *(["--output", self.place.output] if output else []), *more)

    def outcomes(self):
        return {self.place.local(line["path"]).name: line["outcome"] for line in records(self.record).values()}

    def attribute(self, flag, path):
        subprocess.run([WINE, "attrib", flag, windows(path)], env=self.place.environment(), check=True, capture_output=True)

    def test_one_bad_file_costs_only_itself(self):
        documents(self.place, ["a.pdf", "held.pdf", "read only.pdf", "z.pdf"])
        (self.place.input / "broken.pdf").write_bytes(b"no document")
        (self.place.input / "read only.pdf").chmod(0o444)
        self.sequence = self.place.protect_sequence(DontOverwrite=("boolean", "false"))
        with self.place.held_open(self.place.input / "held.pdf"):
            self.run_folder(3, output=False)
        self.assertEqual(self.outcomes(), {"a.pdf": "saved", "broken.pdf": "failed", "held.pdf": "failed", "read only.pdf": "failed",
                                           "z.pdf": "saved"})
        for name in ("a.pdf", "held.pdf", "read only.pdf"):
            self.assertEqual(is_protected(self.place.input / name), name == "a.pdf")
            self.assertTrue((self.place.input / name).read_bytes().startswith(b"%PDF"))
        self.assertEqual(temporaries(self.place.root), [])

    def test_a_batch_file_does_what_it_says(self):
        documents(self.place, ["a.pdf"])
        name = self.place.root / "nightly.bat"
        words = ["batchfile", self.sequence, "--output", name, "--final-action", "move", "--destination"]
        self.assertIn("R&D", self.place.expect(1, *words, self.place.root / "R&D").errors)
        self.place.expect(0, *words, self.place.done, "--hidden")
        lines = name.read_bytes().split(b"\r\n")
        self.assertRegex(lines[0], rb"^@CHCP \d+ >NUL$")
        self.assertEqual(len(lines), 10)
        command = [WINE, "cmd", "/c", name.name, windows(self.place.input), windows(self.place.output)]
        done = subprocess.run(command, env=self.place.environment(), cwd=self.place.root, capture_output=True, timeout=100)
        self.assertEqual(done.returncode, 0, done)
        self.assertTrue(is_protected(self.place.output / "a.pdf") and (self.place.done / "a.pdf").exists())

    def test_a_result_that_cannot_be_written_leaves_its_input(self):
        def no_large_files():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (LARGEST, LARGEST))
        inputs = {self.place.input / f"{pages} pages.pdf": minimal_pdf("x", pages) for pages in (1, 400, 9)}
        for path, content in inputs.items():
            path.write_bytes(content)
        variables = {"FERRULESEQU": self.place.protect_sequence(DontOverwrite=("boolean", "false")), "FERRULEALTPATH": self.place.input}
        with self.place.start_program(HOST, more=variables, preexec_fn=no_large_files) as process:
            errors = process.communicate(timeout=100)[1].decode("utf-8", "replace")
        self.assertEqual(process.returncode, 3, errors)
        self.assertEqual({path.name for path in inputs if path.read_bytes() == inputs[path]}, {"400 pages.pdf"}, errors)
        self.assertEqual([path.name for path in self.place.input.iterdir() if not is_protected(path)], ["400 pages.pdf"])
        self.assertRegex(errors, r"cannot write: .*400 pages\.pdf")
        self.assertEqual(temporaries(self.place.root), [])

    def test_hidden_files_are_left_alone(self):
        documents(self.place, ["seen.pdf", "hidden.pdf", "kept folder/inside.pdf"])
        self.attribute("+h", self.place.input / "hidden.pdf")
        self.attribute("+h", self.place.input / "kept folder")
        self.run_folder(0)
        self.assertEqual(self.outcomes(), {"seen.pdf": "saved"})

    def test_names_that_are_hard_for_the_system(self):
        deep = "/".join(["ein langer Ordnername " + "x" * 40] * 6)
        names = ["𝄞 日本語 Ελλ.pdf", "endet mit Punkt./im Ordner.pdf", "two  blanks.pdf", "a [1]!%PATH%&^.pdf", f"{deep}/tief unten.pdf", "UPPER.PDF"]
        documents(self.place, names)
        self.assertGreater(len(windows(self.place.input / names[4])), 300)
        self.run_folder(0)
        self.assertEqual(set(self.outcomes().values()), {"saved"})
        for name in names:
            self.assertTrue(is_protected(self.place.output / (os.path.splitext(os.path.basename(name))[0] + ".pdf")), name)

    def test_a_folder_may_be_written_in_every_form(self):
        documents(self.place, ["a.pdf", "sub/b.pdf"])
        root = windows(self.place.root)
        forms = [root.lower() + "\\in", root.replace("\\", "/") + "/in", root + "\\\\in\\", root + "\\in\\..\\in", "in", root[2:] + "\\in",
                 "\\\\?\\" + root + "\\in"]
        for form in forms:
            with self.subTest(form=form):
                self.place.expect(0, "run", self.sequence, "--input", form, "--output", self.place.output, "--quiet")
                self.assertEqual(sorted(path.name for path in self.place.output.iterdir()), ["a.pdf", "b.pdf"])
                for path in self.place.output.iterdir():
                    path.unlink()

    def test_folders_of_another_machine(self):
        share = DRIVE.parent / "dosdevices" / "unc" / "server" / "share"  # where Wine looks for them
        share.parent.mkdir(parents=True, exist_ok=True)
        share.symlink_to(self.place.root)
        self.addCleanup(share.unlink)
        (self.place.root / "p.sequ").write_bytes(self.sequence.read_bytes())
        for root in (r"\\server\share", r"\\?\UNC\server\share"):
            with self.subTest(root=root):
                originals = documents(self.place, ["a ü.pdf", "sub/b.pdf"])
                self.place.expect(0, "run", root + r"\p.sequ", "--input", root + r"\in", "--output", root + r"\out", "--final-action",
                                            "move-replace", "--destination", root + r"\done", "--record", root + r"\record.jsonl", "--quiet")
                self.assertEqual([line["path"] for line in records(self.record).values()],
                                 [r"\\server\share\in\a ü.pdf", r"\\server\share\in\sub\b.pdf"])
                self.assertEqual(sorted(path.read_bytes() for path in self.place.done.iterdir()), sorted(originals.values()))
                self.assertTrue(all(map(is_protected, self.place.output.iterdir())))
                for path in (*self.place.output.iterdir(), *self.place.done.iterdir()):
                    path.unlink()
        self.place.expect(1, "run", self.sequence, "--input", r"\\server\nowhere\in", "--output", self.place.output)

    def test_device_names_are_never_written_to(self):
        documents(self.place, ["a.pdf"])
        for name in ("NUL", "CON.pdf"):
            with self.subTest(name=name):
                result = self.place.ferrule("run", self.sequence, "--input", self.place.input, "--output", self.place.output,
                                            "--final-action", "rename", "--destination", name)
                self.assertNotEqual(result.code, 0, result)
                self.assertEqual([path.name for path in self.place.input.iterdir()], ["a.pdf"])
                for path in self.place.output.iterdir():
                    path.unlink()

    def test_letter_case_makes_no_other_file(self):
        """Results whose names differ in letter case alone are two files all the same, under two names."""
        documents(self.place, ["one/Report.pdf", "two/REPORT.pdf"])
        self.run_folder(0, "--jobs", 2)
        self.assertEqual(sorted(path.name.lower() for path in self.place.output.iterdir()), ["report (1).pdf", "report.pdf"])

    def test_a_sequence_with_passwords_is_its_owners_alone(self):
        (self.place.root / "owner.txt").write_bytes(b"ge heim\r\n")
        new, converted = self.place.root / "neu ü.sequ", self.place.root / "host ü.sequ"
        for path, words in ((new, ["new", new, "--template", "protect", "--owner-password-file", self.place.root / "owner.txt"]),
                            (converted, ["convert", new, converted, "--to", "host"])):
            self.place.expect(0, "sequence", *words)
            # Wine tells by the mode whom the access list lets in; its group stands for the administrators.
            self.assertEqual(path.stat().st_mode & stat.S_IRWXO, 0)
            shown = self.place.ferrule("sequence", "show", path)
            self.assertEqual((shown.code, "ge heim" in shown.output), (0, False), shown)
        self.assertNotEqual(self.sequence.stat().st_mode & stat.S_IRWXO, 0)


if __name__ == "__main__":
    unittest.main()
