"""`ferrule index` and the steps that purge and rebuild an index: what is found, what is read again, and what a broken, busy, full
or foreign index costs."""
import fcntl
import json
import os
import re
import resource
import shutil
import signal
import time
import unittest

from commandline import CommandPlace, documents
from unattended import CORPUS, SAVE, minimal_pdf, pdf_of_pages, save_items, tool

PLACE = CommandPlace  # where the indexes lie; tests of another system put theirs here
EXAMPLES = CORPUS.parent / "sequences" / "examples"
PURGE, REBUILD = "QLNX_FerrulePurgeIndexCommand", "QLNX_FerruleRebuildIndexCommand"


def page(*texts):
    return "/MediaBox[0 0 600 800]", "\n".join(f"BT /F 12 Tf 50 {700 - 14 * n} Td ({text}) Tj ET" for n, text in enumerate(texts))


class Index(unittest.TestCase):
    def setUp(self):
        self.place = PLACE()
        self.addCleanup(self.place.close)
        self.index = self.place.root / "all.pdx"
        self.file = self.place.root / "all.index" / "texts.sqlite"

    def create(self, *more):
        self.place.expect(0, "index", "create", self.index, self.place.input, *more)

    def build(self, *more, code=0):
        """The summary, as "read" and its like, and what was said."""
        result = self.place.expect(code, "index", "build", self.index, "--json", *more)
        return json.loads(result.output), result.errors

    def counts(self, *more, code=0):
        summary = self.build(*more, code=code)[0]
        return [summary[key] for key in ("documents", "read", "unchanged", "removed")]

    def found(self, query, *more, code=0):
        result = self.place.expect(code, "index", "search", self.index, query, "--json", *more)
        return [(re.split(r"[\\/]", hit["path"])[-1], hit["page"]) for hit in map(json.loads, result.output.splitlines())]

    def test_queries_hold_for_documents_and_show_pages(self):
        (self.place.input / "a.pdf").write_bytes(pdf_of_pages([page("Payable with-", "in thirty days."), page("Signed: Muller")]))
        (self.place.input / "b.pdf").write_bytes(pdf_of_pages([page("within payable Muller"), page("THIRTY contracts")]))
        self.create()
        self.assertEqual(self.counts(), [2, 2, 0, 0])
        both = [("a.pdf", 1), ("a.pdf", 2), ("b.pdf", 1)]
        for query, wanted in [
            ("payable muller", both), ("payable AND Muller", both), ('"payable within"', [("a.pdf", 1)]), ("contr*", [("b.pdf", 2)]),
            ("payable -contracts", [("a.pdf", 1)]), ("(signed OR contracts) thirty", [("a.pdf", 1), ("a.pdf", 2), ("b.pdf", 2)]),
            ("contr", []), ("muller NOT thirty", []), ("signed OR contracts", [("a.pdf", 2), ("b.pdf", 2)]),
            ("and", []), ('"Days; in"', []), ('"within; thirty"', [("a.pdf", 1)]), ("M\u00fcller", [("a.pdf", 2), ("b.pdf", 1)]),
        ]:
            with self.subTest(query):
                self.assertEqual(self.found(query, code=0 if wanted else 1), wanted)
        self.assertEqual(self.found("payable muller", "--same-page"), [("b.pdf", 1)])
        self.assertEqual(self.found("muller", "--limit", "1"), [("a.pdf", 2)])
        said = [self.place.expect(0, "index", "search", self.index, "muller OR days", option).output.replace("\\", "/").split() for option in ("-c", "-l")]
        self.assertEqual(said, [["in/a.pdf:2", "in/b.pdf:1"], ["in/a.pdf", "in/b.pdf"]])
        self.assertEqual(self.place.expect(0, "index", "search", self.index, "thirty days").output.splitlines()[0][2:],
                         f"{self.place.told('/')[-1]}a.pdf:1: Payable within thirty days.")
        for query, why in [("()", "missing"), ('"open', "quotation mark"), ("(a", "parenthesis"), ("a)", "parenthesis"), ("NOT a", "beside"),
                           ("a AND", "both sides"), ("NOT", "behind it"), ("...", "no letter"), ("(" * 500 + "a", "too many")]:
            with self.subTest(query[:9]):
                self.assertIn(why, self.place.expect(2, "index", "search", self.index, query).errors)

    def test_only_what_changed_is_read_again(self):
        paths = sorted(documents(self.place, [f"{n}.pdf" for n in range(5)], "Former"))
        long_ago = time.time_ns() - 10**12
        for path in paths:
            os.utime(path, ns=(long_ago, long_ago))
        time.sleep(2.1)  # files that have just changed are looked at more closely
        self.create()
        self.assertEqual(self.counts(), [5, 5, 0, 0])
        before = self.file.stat()
        self.assertEqual(self.counts(), [5, 0, 5, 0])
        after = self.file.stat()
        self.assertEqual((after.st_ino, after.st_mtime_ns), (before.st_ino, before.st_mtime_ns), "nothing changed, nothing written")
        self.assertEqual((before.st_mode & 0o777, self.file.parent.stat().st_mode & 0o777), (0o600, 0o700))
        os.utime(paths[0])  # touched
        changed = paths[1].read_bytes().replace(b"Former", b"Latter")
        paths[1].write_bytes(changed)
        os.utime(paths[1], ns=(long_ago, long_ago))  # same size, same time
        paths[2].unlink()
        (self.place.input / "new.pdf").write_bytes(minimal_pdf("Former"))
        self.assertEqual(self.counts(), [5, 2, 3, 1])
        self.assertEqual(self.found("latter"), [("1.pdf", 1)])
        self.assertEqual(self.found("former"), [(name, 1) for name in ("0.pdf", "3.pdf", "4.pdf", "new.pdf")])
        # What cannot be looked at for a while is no reason to forget it.
        hidden = self.place.root / "elsewhere"
        self.place.input.rename(hidden)
        self.assertIn("no folder", self.place.expect(1, "index", "build", self.index).errors)
        self.assertEqual(len(self.found("former")), 4)
        # All of it moved together is still the same.
        shutil.copytree(hidden, self.place.root / "moved" / "in")
        shutil.copytree(self.file.parent, self.place.root / "moved" / "all.index")
        shutil.copy(self.index, self.place.root / "moved")
        self.index = self.place.root / "moved" / "all.pdx"
        self.assertEqual(self.counts(), [5, 0, 5, 0])

    def test_documents_without_text_in_the_index_are_named(self):
        documents(self.place, ["fine.pdf"])
        (self.place.input / "picture.pdf").write_bytes(pdf_of_pages([("/MediaBox[0 0 9 9]", "0 0 5 5 re f")]))
        (self.place.input / "broken.pdf").write_bytes(b"%PDF-1.4\nnothing")
        for name, rights in (("secret.pdf", ["user", "owner"]), ("open.pdf", ["", "owner"]), ("closed.pdf", ["", "other"])):
            deny = ["--extract=n", "--accessibility=n"] if name == "closed.pdf" else []
            source = self.place.root / "secret.pdf"
            source.write_bytes(minimal_pdf("Topsecret"))
            tool("qpdf", "--encrypt", *rights, "256", *deny, "--", source, self.place.input / name)
        self.create()
        summary, errors = self.build(code=3)
        self.assertEqual((summary["documents"], summary["problems"]), (1, {"failed": 1, "no-text": 1, "encrypted": 3}))
        self.assertEqual(sorted(re.findall(r"in[\\/](\w+)\.pdf: ", errors)), ["broken", "closed", "open", "picture", "secret"])
        quiet = self.place.expect(3, "index", "build", self.index, "--quiet").errors.splitlines()
        self.assertEqual((len(quiet), "broken.pdf" in quiet[0]), (1, True), quiet)
        self.index.unlink()
        self.create("--include-encrypted")
        passwords = self.place.root / "passwords"
        passwords.write_text("user\n")
        self.assertEqual(self.counts(code=3), [2, 3, 3, 0])
        self.assertEqual(self.counts("--password-file", passwords, code=3), [3, 2, 4, 0])
        self.assertEqual(self.found("topsecret"), [("open.pdf", 1), ("secret.pdf", 1)])
        self.assertEqual(json.loads(self.place.expect(0, "index", "status", self.index, "--json").output)["problems"],
                         {"failed": 1, "no-text": 1, "not-permitted": 1})
        # What is not wanted any more is nowhere in the file.
        self.index.write_text(self.index.read_text().replace("true", "false"))
        self.assertTrue(b"opsecret" in self.file.read_bytes())
        self.counts(code=3)
        self.assertFalse(b"opsecret" in self.file.read_bytes())

    def test_an_index_that_is_no_good_is_told_and_made_anew(self):
        documents(self.place, ["a.pdf", "b.pdf"])
        self.assertIn("cannot be read", self.place.expect(1, "index", "build", self.index).errors)
        self.create()
        self.assertIn("exists already", self.place.expect(1, "index", "create", self.index, self.place.input).errors)
        self.assertIn("has not been built", self.place.expect(2, "index", "search", self.index, "document").errors)
        self.counts()
        good = self.file.read_bytes()
        for bad, why, purged in [(good[:-4096], "cut off", 0), (good[:60], "cut off", 0), (good[:60] + bytes(4) + good[64:], "another version", 0),
                                 (good[:68] + bytes(4) + good[72:], "is no index of Ferrule", 1), (b"my thesis", "is no index of Ferrule", 1)]:
            with self.subTest(why=why, size=len(bad)):
                self.file.write_bytes(bad)
                for code, words in ((2, ("search", self.index, "document")), (1, ("status", self.index))):
                    self.assertIn(why, self.place.expect(code, "index", *words).errors)
                self.place.expect(purged, "index", "purge", self.index)
                self.assertEqual(self.file.exists(), purged == 1)
                self.file.write_bytes(bad)
                self.assertEqual(self.counts(), [2, 2, 0, 0])
        half = len(good) // 2
        self.file.write_bytes(good[:half] + b"\xa5" * 4096 + good[half + 4096:])
        self.assertIn("damaged", self.place.expect(1, "index", "status", self.index).errors)
        self.place.expect(0, "index", "purge", self.index)
        self.assertEqual(os.listdir(self.file.parent), ["texts.lock"])
        os.rename(self.file.parent / "texts.lock", self.file.parent / "mine.txt")
        for words in (("purge", self.index), ("build", self.index)):
            self.assertIn("mine.txt", self.place.expect(1, "index", *words).errors)
        for text in (b"%PDX\x00\x01binary", b"{}", b'{"ferrule":"index","version":2,"folders":["in"]}',
                     b'{"ferrule":"index","version":1,"folders":["in"],"includeEncryptd":true}'):
            self.index.write_bytes(text)
            self.assertIn(self.place.told(self.index), self.place.expect(1, "index", "build", self.index).errors)

    def test_kills_other_builders_and_a_full_disk_leave_the_former_index(self):
        documents(self.place, [f"{n:03}.pdf" for n in range(150)])
        self.create()
        self.counts()
        good = self.file.read_bytes()
        for path in self.place.input.iterdir():
            path.write_bytes(path.read_bytes().replace(b"Document", b"Contract"))
        process = self.place.start("index", "build", self.index)
        while not (self.file.parent / "texts.new").exists() and process.poll() is None:
            time.sleep(0.01)
        for host in self.place.workers_of(process):
            os.kill(host, signal.SIGSTOP)
        self.assertIn("another program", self.place.expect(1, "index", "build", self.index).errors)
        self.assertEqual(len(self.found("document")), 150, "it serves while a new one is built")
        process.kill()
        process.communicate()
        with open(self.file.parent / "texts.lock", "rb+") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)  # until the host is gone, too
        self.assertTrue(self.file.read_bytes() == good)
        small = (20000, 20000)
        full = self.place.start("index", "build", self.index, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, small))
        self.assertIn("cannot be written", full.communicate()[1].decode())
        self.assertEqual((full.returncode, self.file.read_bytes() == good), (1, True))
        self.assertEqual(sorted(os.listdir(self.file.parent)), ["texts.lock", "texts.sqlite"])
        self.assertEqual(self.counts("--jobs", "2"), [150, 150, 0, 0])
        self.assertEqual(len(self.found("contract")), 150)

    def test_steps_purge_and_rebuild_in_a_real_sequence(self):
        example = EXAMPLES / "delete-all-comments.sequ"
        text = example.read_text(encoding="utf-8") if example.exists() else self.place.sequence("s", [(SAVE, save_items())]).read_text()
        told = self.place.told(self.index)
        steps = "".join(f'<Command name="{step}"><Items><Item name="File" type="string" value="{told}"/></Items></Command>'
                        for step in (PURGE, REBUILD))
        sequence = self.place.root / "real.sequ"
        sequence.write_text(text.replace("</Workflow>", f'<Group label="Index">{steps}</Group></Workflow>'), encoding="utf-8")
        documents(self.place, ["a.pdf", "b.pdf", "c.pdf"])

        def logged():
            outcome = self.place.run_folder(sequence)
            self.assertEqual(outcome.code, 0, outcome)
            return [outcome.values(f"{name} Catalog Index") for name in ("Purge", "Rebuild")]
        self.assertEqual(logged(), [[], []], "without an index there is nothing to do")
        self.create()
        self.assertEqual(logged(), [[f"Index is purged: {told}"] * 3, [f"Rebuild is done: {told}"] * 3])
        self.assertEqual(len(self.found("document")), 3)
        if PLACE is CommandPlace:
            with open(self.file.parent / "texts.lock", "rb+") as lock:
                fcntl.flock(lock, fcntl.LOCK_EX)
                self.assertEqual(logged(), [[f"Cannot rebuild index (Catalog is busy): {told}"] * 3] * 2)
        self.file.unlink()
        self.file.mkdir()
        (self.file / "mine").touch()
        self.assertEqual(logged(), [[f"Index is invalid: {told}"] * 3, [f"Index could not be saved: {told}"] * 3])
        self.index.write_bytes(b"%PDX binary")
        self.assertEqual(logged(), [[f"Index is invalid: {told}"] * 3] * 2)

    @unittest.skipUnless(CORPUS.is_dir(), "the real documents are not here")
    def test_real_documents_of_many_languages_and_one_that_never_ends(self):
        names = ["languages/russian.pdf", "languages/UserFont_CJKV.pdf", "languages/UserFont_Hebrew.pdf", "languages/UserFont_Arabic.pdf",
                 "damaged/GHOSTSCRIPT-691770-0.pdf"]
        for name in names:
            shutil.copy(CORPUS / name, self.place.input)
        self.create()
        errors = self.build("--timeout", "3", code=3)[1]
        self.assertIn("took longer than 3 seconds", errors)
        for name in names[:-1]:
            with self.subTest(name):
                path = CORPUS / name
                written = "[\u3400-\u9fff]{3,}" if "CJKV" in name else r"[^\W\d_]{3,}"
                word = max(re.findall(written, tool("pdftotext", path, "-")[1].decode()), key=len)
                self.assertIn((path.name, 1), self.found(word[1:3] if "CJKV" in name else word))
        self.assertEqual(self.counts("--timeout", "3", code=3), [4, 0, 5, 0])


if __name__ == "__main__":
    unittest.main()
