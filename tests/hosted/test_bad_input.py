"""Bad sequences, documents and surroundings: each is told with its file, the run goes on, nothing is lost."""
import os
import unittest

from unattended import HOST, PROTECT, SAVE, Workplace, minimal_pdf, page_count, protect_items, save_items, tool


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
        rows = {"garbage": os.urandom(5000), "truncated": workflow(STEP)[:-20], "damaged host form": good[:-3],
                "empty group": workflow('<Group label="a"></Group>'),
                "deep": workflow(f'<Group><Command name="X">{nested}</Command></Group>'),
                "name that no cab takes": workflow(STEP.replace('name="a"', 'name="größe"'))}
        for missing in parts:
            path = self.place.host_sequence("x.sequ", [("cab", part, "") for part in parts if part != missing])
            rows["no " + missing] = path.read_bytes()
        for name, content in rows.items():
            with self.subTest(name):
                path = self.place.root / (name + ".sequ")
                path.write_bytes(content)
                outcome = self.place.run_folder(path, final=3)
                self.assertEqual(outcome.code, 1, outcome)
                told = [] if name.startswith("no ") else [str(path)]
                self.assertEqual(outcome.values("Error reading sequence file"), told, outcome)
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
            self.assertIn(name, outcome.errors)
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
        self.assertEqual(self.place.names(self.place.input), ["a (1).pdf", "a.pdf", "results"], outcome)
        self.assertEqual(page_count(self.place.input / "a (1).pdf", "open sesame"), 1)

    def test_many_inputs_cost_no_more_than_in_proportion(self):
        # The list of inputs alone: the files are no documents, so that each fails at once.
        count = 3000
        for number in range(count):
            (self.place.input / f"{number:05}.pdf").write_bytes(b"x")
        outcome = self.place.run_folder(self.sequence)
        self.assertEqual(outcome.values("Number of input files"), [str(count)], outcome.errors[-500:])
        self.assertEqual(outcome.code, 3)


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
                    where = self.place.output if into_folder else self.place.input
                    self.assertEqual(page_count(where / result, "open sesame"), 1)

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
        rows = [  # arguments, exit code, revision written, whether views open and saves go elsewhere, the last line
            (["--host-version", 5], 1, None, False, []),  # is closed by a window, and here is none
            (["--host-version", 6], 0, 4, False, [closed]),
            (["--host-version", 8], 0, 4, False, [closed]),
            (["--host-version", 9], 0, 6, False, [closed]),
            (["--host-version", 10], 0, 6, False, [closed]),
            (["--host-version", 11], 0, 6, True, [closed]),
            (["--host-version", 21], 0, 6, True, [closed]),
            (["--no-quit-item"], 1, 6, True, [no_quit]),
        ]
        for arguments, code, revision, redirected, closing in rows:
            with self.subTest(arguments):
                source.write_bytes(minimal_pdf())
                result.unlink(missing_ok=True)
                outcome = self.place.run_folder(sequence, arguments=arguments)
                self.assertEqual(outcome.code, code, outcome)
                self.assertEqual(result.exists(), redirected, outcome)
                self.assertEqual(outcome.has("Displaying input document..."), redirected, outcome)
                if revision:  # the save step saves in place where nobody redirects it
                    saved = result if redirected else source
                    shown = tool("qpdf", "--show-encryption", "--password=open sesame", saved)[1]
                    self.assertTrue(shown.startswith(b"R = %d\n" % revision), shown)
                else:
                    self.assertEqual(source.read_bytes(), minimal_pdf(), outcome)
                self.assertEqual([text for text in (closed, no_quit) if outcome.has(text)], closing, outcome)


if __name__ == "__main__":
    unittest.main()
