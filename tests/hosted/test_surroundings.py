"""The host under circumstances of all kinds: each of its versions, no room for its files, no standard streams."""
import os
import unittest

from unattended import HOST, PROTECT, SAVE, Workplace, minimal_pdf, page_count, protect_items, save_items, tool

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
        variables = {"FERRULESEQU": sequence, "FERRULEFINAL": final, "FERRULENOPROGRESS": "yes",
                     "FERRULEALTPATH": self.place.input}
        if output:
            variables["FERRULEALTOUTPUTPATH"] = self.place.output
        return self.place.run(variables, ["-c", script, HOST, *arguments], program="/bin/sh")

    def protect(self, **flags):
        return self.place.sequence("protect.sequ", [(PROTECT, protect_items()), (SAVE, save_items(**flags))])

    def test_a_file_that_finds_no_room_costs_only_itself(self):
        text = self.place.sequence("text.sequ", [(SAVE, save_items(HandlerUniqueID=("string", PLAIN_TEXT)))])
        plainly = {"OptimizePDF": ("boolean", "false")}
        rows = [  # what saves, more arguments, whether into a folder, what becomes of the small file
            (self.protect(), [], True, "b.pdf"),
            (self.protect(**plainly), ["--host-version", "8"], False, "b.pdf"),
            (text, [], True, "b.txt"),
        ]
        for sequence, arguments, into_folder, result in rows:
            with self.subTest(result=result, into_folder=into_folder):
                self.place.clear(self.place.input, self.place.output)
                big, small = self.place.input / "a big one.pdf", self.place.input / "b.pdf"
                content = long_pdf() if result == "b.pdf" else minimal_pdf("many words on every page", 4000)
                big.write_bytes(content)
                small.write_bytes(minimal_pdf())
                outcome = self.run_shell(f'ulimit -f {LIMIT_BLOCKS}; exec "$0" "$@"', sequence, *arguments,
                                         output=into_folder, final=3 if into_folder else 0)
                self.assertEqual(outcome.code, 3, outcome)
                self.assertRegex(outcome.errors, "(?m)a big one.pdf.*File too large")
                self.assertEqual(big.read_bytes(), content)
                self.assertEqual(small.exists(), not into_folder)
                self.assertEqual(self.place.names(self.place.output), [result] if into_folder else [])
                if result == "b.pdf":
                    self.assertEqual(page_count((self.place.output if into_folder else self.place.input) / result, "open sesame"), 1)

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

    def test_what_depends_on_the_hosts_version(self):
        source, result, sequence = self.place.input / "a.pdf", self.place.output / "a.pdf", self.protect()
        closed, no_quit = "Adobe Acrobat has been closed.", "Quit command is not available. Cannot close Adobe Acrobat."
        rows = [  # arguments, exit code, revision written, whether views open and saves are redirected, how the log ends
            (["--host-version", 5], 1, None, False, None),  # closed by a window message, and here is no window to send it to
            (["--host-version", 6], 0, 4, False, closed),
            (["--host-version", 8], 0, 4, False, closed),
            (["--host-version", 9], 0, 6, False, closed),
            (["--host-version", 10], 0, 6, False, closed),
            (["--host-version", 11], 0, 6, True, closed),
            (["--host-version", 21], 0, 6, True, closed),
            (["--no-quit-item"], 1, 6, True, no_quit),
        ]
        for arguments, code, revision, redirected, closing in rows:
            with self.subTest(arguments):
                source.write_bytes(minimal_pdf())
                result.unlink(missing_ok=True)
                outcome = self.place.run_folder(sequence, arguments=arguments)
                self.assertEqual(outcome.code, code, outcome)
                self.assertEqual((result.exists(), outcome.has("Displaying input document...")), (redirected, redirected), outcome)
                if revision:  # the save step saves in place where nobody redirects it
                    shown = tool("qpdf", "--show-encryption", "--password=open sesame", result if redirected else source)[1]
                    self.assertTrue(shown.startswith(b"R = %d\n" % revision), shown)
                else:
                    self.assertEqual(source.read_bytes(), minimal_pdf(), outcome)
                self.assertEqual([text for text in (closed, no_quit) if outcome.has(text)], [closing] if closing else [])


if __name__ == "__main__":
    unittest.main()
