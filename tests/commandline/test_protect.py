"""`ferrule protect`: what is refused, what is left alone, and that documents come out protected or as they were."""
import os
import shutil
import signal
import time
import unittest

from commandline import CommandPlace, documents, records, sha256, temporaries
from unattended import CORPUS, page_count, text_of, tool

OPEN, OWNER = "open sesame", "owner secret"
LEFT_ALONE = {  # document, and what is said of it
    "signed/two_signatures.pdf": "signed, certified",
    "restricted/enc-R3,V2,O=master.pdf": "Cannot apply security settings. Please check document access permissions.",
    "encrypted/enc-long-password.pdf": "Cannot open input document. Document can be already password protected.",
    "damaged/gh-229.pdf": "damaged",
}
SOUND = ("labels/page_labels.pdf", "business/missouri.pdf", "tagged/text_only_pdfa1b.pdf")


class Protect(unittest.TestCase):
    def setUp(self):
        self.place = CommandPlace()
        self.addCleanup(self.place.close)
        self.open, self.owner = self.secret("open.txt", OPEN + "\n"), self.secret("owner.txt", OWNER + "\r\nnotes\n")

    def secret(self, name, content):
        path = self.place.root / name
        path.write_bytes(content.encode("utf-8", "surrogateescape"))
        path.chmod(0o600)
        return path

    def protect(self, code, *words, **options):
        return self.place.expect(code, "protect", *words, **options)

    def state(self):
        return {path: sha256(path) for path in self.place.input.rglob("*") if path.is_file()}

    def corpus(self, names):
        if not CORPUS.is_dir():
            self.skipTest("no corpus")
        for name in names:
            target = self.place.input / name
            target.parent.mkdir(exist_ok=True)
            shutil.copyfile(CORPUS / name, target)

    def test_what_does_not_fit_is_refused_before_anything_is_done(self):
        before = documents(self.place, ["a.pdf"])
        empty = self.secret("empty.txt", " \n" + OWNER)
        owner, opening, out = ["--owner-password-file", self.owner], ["--open-password-file", self.open], ["-o", self.place.output]
        tables = {"no comma": ("a.pdf pw", "Line 1 of the password table has no comma"), "quoted comma": ('x,y\n\n"a,b" pw', "Line 3 of the password table has no comma"),
                  "no password": ("x, y\na.pdf ,", "Line 2 of the password table has no password"), "no name": (" , pw", "Line 1 of the password table has no name"),
                  "two passwords": ("a.pdf, 1\nsub/A.PDF, 2", "two passwords for A.PDF"),
                  "none": ("\n", "lists no file"), "no text": ("a.pdf, \udcff", "UTF-8")}
        rows = [(2, owner, "--output FOLDER"), (2, owner, "--in-place"), (2, owner + out + ["--in-place"], "contradict"),
                (2, out, "--passwords-from"), (2, opening + out + ["--allow", "print"], "--owner-password-file"),
                (2, owner + out + ["--allow", "print,fly"], "extract"), (2, owner + out + ["--allow", "none,print"], "alone"),
                (2, ["--open-password-file", "-"] + out, "more than once"), (1, ["--owner-password-file", empty] + out, "no password"),
                (1, ["--open-password-file", os.devnull] + out, "regular file"), (1, ["--open-password-file", "gone"] + out, "gone")]
        for what, (content, message) in tables.items():
            rows.append((1, ["--passwords-from", self.secret(what, content)] + out, message))
        for code, words, message in rows:
            with self.subTest(words=words):
                result = self.protect(code, self.place.input, *words)
                self.assertIn(message, result.errors)
                self.assertEqual((self.state(), self.place.names(self.place.output)),
                                 ({path: sha256(path) for path in before}, []))

    def test_in_place_and_back(self):
        self.corpus([*SOUND, *LEFT_ALONE])
        (self.place.input / "link.pdf").symlink_to(self.place.input / SOUND[0])
        before = self.state()
        words = [self.place.input, self.place.input / SOUND[1], "--in-place", "--owner-password-file", self.owner, "--open-password-file",
                 self.open, "--allow", "print-low,comment", "--keep-originals", self.place.root / "kept", "--record", "record.jsonl"]
        self.protect(3, *words, "--dry-run")
        self.assertEqual(self.state(), before)
        self.protect(3, *words)
        for name in SOUND:
            path = self.place.input / name
            said = tool("qpdf", "--show-encryption", f"--password={OWNER}", path)[1].decode()
            for line in ("R = 6", "print low resolution: allowed", "print high resolution: not allowed", "modify annotations: allowed",
                         "extract for any purpose: not allowed", "Supplied password is owner password"):
                self.assertIn(line, said)
            self.assertEqual((page_count(path), text_of(path, OPEN)), (None, text_of(CORPUS / name)))
        told = {line["path"]: line for line in records(self.place.root / "record.jsonl").values()}
        self.assertEqual(len(told), len(SOUND) + len(LEFT_ALONE), "each file once, and no link")
        for name, message in LEFT_ALONE.items():
            path = self.place.input / name
            self.assertEqual((told[str(path)]["outcome"], sha256(path)), ("failed", before[path]))
            self.assertIn(message, told[str(path)]["message"])
        for path in self.place.root.rglob("*"):
            if path.is_file() and path.suffix != ".txt" or path.name.endswith("Log.txt"):
                self.assertFalse(any(secret.encode() in path.read_bytes() for secret in (OPEN, OWNER)), path)
        self.place.expect(0, "undo")
        self.assertEqual(self.state(), before)

    def test_each_file_gets_the_password_of_its_name(self):
        documents(self.place, ["a.pdf", "b,c.PDF", "d.pdf"])
        table = self.secret("table.csv", '\ufeffsub/A.pdf , one, two\r\n"b,c.pdf",three\n')
        words = [self.place.input, "-o", self.place.output, "--passwords-from", table, "--owner-password-file", self.owner]
        result = self.protect(3, *words)
        self.assertIn("does not list it", result.errors)
        self.assertEqual({name: page_count(self.place.output / name, password) for name, password in
                          (("a.pdf", "one, two"), ("b,c.pdf", "three"))}, {"a.pdf": 1, "b,c.pdf": 1})
        self.assertEqual(self.place.names(self.place.output), ["a.pdf", "b,c.pdf"])
        table.chmod(0o644)
        self.assertIn("others may read", self.protect(0, *words, "--open-password-file", self.open, "-q").errors)
        self.assertEqual(page_count(self.place.output / "d.pdf", OPEN), 1)

    def test_a_list_of_files_a_second_name_and_an_interruption(self):
        names = [f"{number:03}.pdf" for number in range(150)]
        before = documents(self.place, names)
        listed = self.place.root / "list"
        listed.write_bytes(b"".join(os.fsencode(path) + b"\0" for path in [*before, self.place.input / "gone.pdf", self.place.input]))
        os.link(self.place.input / names[0], self.place.root / "second.pdf")
        words = ["--files-from", listed, self.place.root / "second.pdf", "--in-place", "--open-password-file", self.open,
                 "--keep-originals", self.place.root / "kept"]
        process = self.place.start("protect", *words)
        first = self.place.input / names[2]
        until = time.monotonic() + 60
        while first.read_bytes() == before[first] and time.monotonic() < until:
            time.sleep(0.01)
        os.kill(process.pid, signal.SIGKILL)
        process.communicate()
        self.secret("open.txt", "another one\n")
        self.assertIn("was changed since the run was planned", self.protect(1, *words, "--resume").errors)
        self.secret("open.txt", OPEN + "\n")
        result = self.protect(3, *words, "--resume", "--record", "record.jsonl")
        told = {line["path"]: line["outcome"] for line in records(self.place.root / "record.jsonl").values()}
        second = self.place.root / "second.pdf"  # comes first, so the other name is left out
        self.assertEqual(told, {str(path): "saved" for path in [second, *list(before)[1:]]} | {str(self.place.input / "gone.pdf"): "skipped"}, result)
        self.assertEqual([path.name for path in list(before)[1:] if page_count(path, OPEN) is None or page_count(path) is not None], [])
        self.assertEqual(temporaries(self.place.root), [])
        self.place.expect(0, "undo", "record.jsonl")
        self.assertEqual({path: path.read_bytes() for path in before}, before)


if __name__ == "__main__":
    unittest.main()
