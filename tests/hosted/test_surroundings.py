"""The host under bad circumstances: no room for its files, no standard streams, folders that nobody may write to."""
import os
import unittest

from unattended import HOST, PROTECT, SAVE, Workplace, minimal_pdf, page_count, protect_items, save_items

LIMIT_BLOCKS = 128  # of 512 bytes
PLAIN_TEXT = "com.adobe.acrobat.plain-text"


def long_pdf():
    """Needs more room than the limit leaves, however well the host packs it."""
    random = os.urandom(100000).hex().encode()
    stream = b"7 0 obj\n<</Length %d>>stream\n%s\nendstream\nendobj\n" % (len(random), random)
    return minimal_pdf().replace(b"/Catalog", b"/Catalog/Extra 7 0 R").replace(b"xref\n0 6", stream + b"xref\n0 6")


class Surroundings(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)

    def run_shell(self, script, sequence, *arguments, output=True, final=0):
        """Runs the host from a shell that prepares what it finds."""
        variables = {"FERRULESEQU": sequence, "FERRULEFINAL": final, "FERRULEDEST": "", "FERRULENOPROGRESS": "yes",
                     "FERRULEALTPATH": self.place.input}
        if output:
            variables["FERRULEALTOUTPUTPATH"] = self.place.output
        return self.place.run(variables, ["-c", script, HOST, *arguments], program="/bin/sh")

    def protect(self, optimise=True):
        flags = save_items(OptimizePDF=("boolean", str(optimise).lower()))
        return self.place.sequence("protect.sequ", [(PROTECT, protect_items()), (SAVE, flags)])

    def test_a_file_that_finds_no_room_costs_only_itself(self):
        text = self.place.sequence("text.sequ", [(SAVE, save_items(HandlerUniqueID=("string", PLAIN_TEXT)))])
        rows = [  # what is saved, where, what the small file becomes
            ("linearised into a folder", self.protect, True, [], True),
            ("plainly into a folder", lambda: self.protect(False), True, [], True),
            ("linearised in place", self.protect, True, ["--host-version", "8"], False),
            ("plainly in place", lambda: self.protect(False), True, ["--host-version", "8"], False),
            ("as text", lambda: text, False, [], True),
        ]
        big_pdf, small_pdf = long_pdf(), minimal_pdf()
        long_text = minimal_pdf("many words on every page", 4000)
        for name, sequence, is_pdf, arguments, into_folder in rows:
            with self.subTest(name):
                for folder in (self.place.input, self.place.output):
                    for path in folder.iterdir():
                        path.unlink()
                big = self.place.input / "a big one.pdf"
                content = big_pdf if is_pdf else long_text
                big.write_bytes(content)
                (self.place.input / "b.pdf").write_bytes(small_pdf)
                outcome = self.run_shell(f'ulimit -f {LIMIT_BLOCKS}; exec "$0" "$@"', sequence(), *arguments,
                                         output=into_folder, final=3 if into_folder else 0)
                self.assertEqual(outcome.code, 3, outcome)
                told = [line for line in outcome.errors.splitlines() if "a big one.pdf" in line]
                self.assertTrue(any("File too large" in line for line in told), outcome)
                self.assertEqual(big.read_bytes(), content)
                inputs = ["a big one.pdf"] if into_folder else ["a big one.pdf", "b.pdf"]
                self.assertEqual(sorted(p.name for p in self.place.input.iterdir()), inputs)
                results = ["b.pdf" if is_pdf else "b.txt"] if into_folder else []
                self.assertEqual([p.name for p in self.place.output.iterdir()], results)
                if is_pdf:
                    result = (self.place.output if into_folder else self.place.input) / "b.pdf"
                    self.assertEqual(page_count(result, "open sesame"), 1)

    def test_no_message_goes_into_a_document_when_the_standard_streams_are_closed(self):
        (self.place.input / "a.pdf").write_bytes(minimal_pdf())
        broken = self.place.input / "b.pdf"
        broken.write_bytes(b"no document")
        outcome = self.run_shell('exec "$0" "$@" <&- >&- 2>&-', self.protect(), "--verbose")
        self.assertEqual(outcome.code, 3, outcome)
        self.assertEqual(page_count(self.place.output / "a.pdf", "open sesame"), 1)
        self.assertEqual(broken.read_bytes(), b"no document")
        self.assertNotIn(b"ferrule-host:", outcome.raw_log)

    def test_a_reader_of_the_messages_that_left_does_not_end_the_run(self):
        for number in range(3):
            (self.place.input / f"{number}.pdf").write_bytes(minimal_pdf())
        outcome = self.run_shell('{ sleep 0.3; "$0" "$@" 2>&1; echo $? > code; } | true', self.protect(), "--verbose")
        self.assertEqual((self.place.root / "code").read_text(), "0\n", outcome)
        self.assertEqual(len(list(self.place.output.iterdir())), 3, outcome)

    def test_a_folder_that_nobody_may_write_to(self):
        if os.geteuid() == 0:
            self.skipTest("the superuser can write everywhere")
        (self.place.input / "a.pdf").write_bytes(minimal_pdf())
        self.place.output.chmod(0o555)
        outcome = self.run_shell('exec "$0" "$@"', self.protect(), final=3)
        self.assertEqual(outcome.code, 3, outcome)
        self.assertIn(f"{self.place.output}/a.pdf: cannot write: Permission denied", outcome.errors)
        self.assertTrue((self.place.input / "a.pdf").exists())


if __name__ == "__main__":
    unittest.main()
