"""What depends on the host's version: loading, closing, key length, redirection of the save step, views, the tools' guard."""
import unittest

from unattended import PROTECT, SAVE, Workplace, minimal_pdf, protect_items, save_items, tool


class Versions(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        self.sequence = self.place.sequence("protect.sequ", [(PROTECT, protect_items(3)), (SAVE, save_items())])

    def encryption(self, path):
        code, out = tool("qpdf", "--show-encryption", "--password=open sesame", path)
        self.assertIn(code, (0, 3), out)
        return out.split(b"\n")[0].decode()

    def test_matrix(self):
        rows = [
            # version, exit code, sequence accepted, revision written, saved in the output folder, view opened, closed
            (5, 1, False, None, False, False, "Adobe Acrobat has been closed."),
            (6, 0, True, 4, False, False, "Adobe Acrobat has been closed."),
            (8, 0, True, 4, False, False, "Adobe Acrobat has been closed."),
            (9, 0, True, 6, False, False, "Adobe Acrobat has been closed."),
            (10, 0, True, 6, False, False, "Adobe Acrobat has been closed."),
            (11, 0, True, 6, True, True, "Adobe Acrobat has been closed."),
            (21, 0, True, 6, True, True, "Adobe Acrobat has been closed."),
        ]
        for version, code, accepted, revision, redirected, view, closing in rows:
            with self.subTest(version=version):
                source, result = self.place.input / "a.pdf", self.place.output / "a.pdf"
                source.write_bytes(minimal_pdf())
                result.unlink(missing_ok=True)
                outcome = self.place.run_folder(self.sequence, arguments=["--host-version", version])
                self.assertEqual(outcome.code, code, outcome)
                self.assertEqual(outcome.has("Processing batch sequence"), True, outcome)
                self.assertEqual(result.exists(), redirected, outcome)
                if accepted:
                    written = result if redirected else source  # the save step saves in place where nobody redirects it
                    self.assertEqual(self.encryption(written), f"R = {revision}", outcome)
                else:
                    self.assertEqual(source.read_bytes(), minimal_pdf(), outcome)
                self.assertEqual(outcome.has("Displaying input document..."), view, outcome)
                # Version 5 is closed by a window message, and here is no window to send it to.
                self.assertEqual(outcome.has(closing), version >= 6, outcome)

    def test_without_a_quit_item_the_host_ends_with_an_error_and_says_so(self):
        (self.place.input / "a.pdf").write_bytes(minimal_pdf())
        outcome = self.place.run_folder(self.sequence, arguments=["--no-quit-item"])
        self.assertTrue(outcome.has("Quit command is not available. Cannot close Adobe Acrobat."), outcome)
        self.assertEqual(outcome.code, 1, outcome)

    def test_host_versions_outside_the_range_are_usage_errors(self):
        for version in ("4", "100", "x"):
            outcome = self.place.run_folder(self.sequence, arguments=["--host-version", version])
            self.assertEqual(outcome.code, 2, outcome)


if __name__ == "__main__":
    unittest.main()
