"""Real documents: every usable one is protected by each method and opens again; every other ends as its record says."""
import csv
import json
import shutil
import sys
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from unattended import CORPUS, PROTECT, SAVE, Workplace, page_count, protect_items, save_items, text_of, tool

# Files on which the PDF library itself does not survive; only a process of their own could contain them.
LIBRARY_KILLERS = {
    "damaged/GHOSTSCRIPT-691770-0.pdf": "the library never comes back from it",
    "damaged/xref-compressed-in-compressed.pdf": "the library overflows its stack on it",
}
# Counted as usable by their record, but there is nothing to compare.
NOTHING_TO_SHOW = {
    "damaged/T02-03_006_page-object-missing.pdf": "its only page is not in the file",
    "damaged/T02-02_007_page-tree-wrong-count.pdf": "claims nine pages and has one",
}
HARD = CORPUS.parent / "corpus-repair"
REVISIONS = {0: 4, 1: 3, 2: 4, 3: 6}
CIPHERS = {0: b"AESv2", 1: b"", 2: b"AESv2", 3: b"AESv3"}  # nothing is said for RC4


def manifest():
    with open(CORPUS / "MANIFEST.tsv", encoding="utf-8", newline="") as stream:
        for row in csv.DictReader(stream, delimiter="\t", quoting=csv.QUOTE_NONE):
            if row["path"] not in ("-", "") and row["theme"] != "nonpdf" and row["path"] not in LIBRARY_KILLERS:
                yield row


def word(password, method):
    """What a reader has to be given: up to revision 4 readers pass on bytes, which are those of the document encoding."""
    return password.encode("latin-1" if REVISIONS[method] < 5 else "utf-8")


def flat(row):
    return row["path"].replace("/", "--")


def result_name(row):
    return str(Path(flat(row)).with_suffix(".pdf"))


def passwords(row):
    found = []
    for column in ("user_password", "owner_password"):
        text = row[column]
        if text and text != "(empty)":
            found.append(json.loads(text))
    return found


class Corpus(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)

    def fill(self, rows):
        for row in rows:
            shutil.copyfile(CORPUS / row["path"], self.place.input / flat(row))

    def run_protect(self, items, **more):
        sequence = self.place.sequence("protect.sequ", [(PROTECT, items), (SAVE, save_items())])
        return self.place.run({"FERRULESEQU": sequence, "FERRULEALTPATH": self.place.input, "FERRULENOPROGRESS": "yes",
                               "FERRULEALTOUTPUTPATH": self.place.output}, timeout=1500, **more)

    def check_protected(self, row, method, source_text):
        """Complaints about one protected result, judged by three independent libraries."""
        path, source = self.place.output / result_name(row), self.place.input / flat(row)
        if not path.exists():
            return ["did not come out"]
        wrong = []
        code, out = tool("qpdf", "--show-encryption", "--password=open ü", path)
        if code not in (0, 3) or f"R = {REVISIONS[method]}\n".encode() not in out or CIPHERS[method] not in out:
            wrong.append(f"qpdf: {code} {out[:60]}")
        for line in (b"print high resolution: not allowed", b"print low resolution: allowed",
                     b"extract for any purpose: not allowed", b"modify annotations: allowed"):
            if line not in out:
                wrong.append(f"permission missing: {line.decode()}")
        if tool("qpdf", "--show-npages", path)[0] != 2:
            wrong.append("qpdf opens it without a password")
        password = word("open ü", method)
        pages = page_count(path, password)
        if pages != page_count(source):
            wrong.append(f"pages: {page_count(source)} before, {pages} after")
        if text_of(path, password) != source_text:
            wrong.append("the text has changed")
        if page_count(path) is not None:
            wrong.append("poppler opens it without a password")
        code, out = tool("mutool", "info", "-p", "open ü", path)
        before = tool("mutool", "info", source)[0]
        if code != 0 and before == 0:
            wrong.append(f"mutool: {out[:60]}")
        return wrong

    def test_usable_documents_with_each_method(self):
        rows = [row for row in manifest() if not row["encryption"] and row["path"] not in NOTHING_TO_SHOW and
                (row["expected"] == "opens" or (row["expected"].startswith("damaged") and row["qpdf"] in ("ok", "minor", "warn")))]
        self.assertGreater(len(rows), 150)
        self.fill(rows)
        with ThreadPoolExecutor(2) as pool:
            texts = list(pool.map(lambda row: text_of(self.place.input / flat(row)), rows))
            for method in REVISIONS:
                outcome = self.run_protect(protect_items(method, "open ü", "owner ü", CanCopy=False, HiResPrinting=False))
                done = list(pool.map(lambda pair, m=method: (pair[0]["path"], self.check_protected(pair[0], m, pair[1])),
                                     zip(rows, texts)))
                wrong = {path: complaints for path, complaints in done if complaints}
                self.assertEqual(wrong, {}, f"method {method}\n{outcome.errors[-3000:]}")
                self.place.clear(self.place.output)

    def test_encrypted_documents_open_with_their_passwords(self):
        rows = [row for row in manifest() if row["encryption"]]
        self.fill(rows)
        candidates = list(dict.fromkeys(password for row in rows for password in passwords(row)))
        file = self.place.root / "passwords.txt"
        file.write_text("not this one\n" + "\n".join(candidates) + "\n", encoding="utf-8")
        without = self.run_protect(protect_items(3, "open ü", "owner ü"))
        came_out = self.place.names(self.place.output)
        for row in rows:
            if row["expected"] == "needs password":
                self.assertNotIn(flat(row), came_out, "opened without its password")
                self.assertIn(flat(row), without.errors)
        self.place.clear(self.place.output)
        outcome = self.run_protect(protect_items(3, "open ü", "owner ü"), arguments=["--password-file", file])
        for row in rows:
            with self.subTest(row["path"]):
                self.assertEqual((self.place.input / flat(row)).read_bytes(), (CORPUS / row["path"]).read_bytes(), "written to")
                result = self.place.output / result_name(row)
                owner = row["owner_password"] != ""
                if row["encryption"] == "public key":
                    self.assertFalse(result.exists())
                    self.assertIn(flat(row), outcome.errors)
                elif owner:
                    self.assertTrue(result.exists(), f"{row['owner_password']}\n" + "\n".join(
                        line for line in outcome.errors.splitlines() if flat(row) in line))
                    self.assertEqual(page_count(result, "open ü"), int(row["pages"]))
                elif result.exists():  # opened by its user password: left as protected as it was
                    self.assertIsNone(page_count(result, "open ü"))
                    self.assertEqual(page_count(result, *passwords(row)[:1]), int(row["pages"]))
        text = outcome.raw_log.decode("utf-8", "replace") + outcome.errors
        names = "".join(flat(row) for row in rows)
        for secret in candidates + ["open ü", "owner ü"]:
            if len(secret.strip()) > 5 and secret not in names:
                self.assertNotIn(secret, text, "a password was written down")

    def test_documents_that_are_hard_to_open_or_to_write(self):
        if not HARD.is_dir():
            self.skipTest("their folder is not here")
        with open(HARD / "MANIFEST.tsv", encoding="utf-8", newline="") as stream:
            rows = list(csv.DictReader(stream, delimiter="\t", quoting=csv.QUOTE_NONE))
        for row in rows:
            shutil.copyfile(HARD / row["path"], self.place.input / row["path"])
        words = self.place.root / "passwords.txt"
        words.write_text("\n".join(row["owner_password"] for row in rows if row["owner_password"]) + "\n", encoding="utf-8")
        outcome = self.run_protect(protect_items(3, "open ü", "owner ü"), arguments=["--password-file", words])
        for row in rows:
            with self.subTest(row["path"]):
                source, result = self.place.input / row["path"], self.place.output / row["path"]
                self.assertEqual(page_count(result, "open ü"), int(row["pages"]), outcome)
                text = text_of(source, row["user_password"]).split()
                self.assertEqual(text_of(result, "open ü").split() if text else [], text)
                code, said = tool("qpdf", "--check", "--password=open ü", result)
                known = tool("qpdf", "--check", "--password=" + row["user_password"], source)[0]
                self.assertTrue(code == 0 or code <= known, said)


if __name__ == "__main__":
    if not (CORPUS / "MANIFEST.tsv").is_file():
        print("skipped: the folder of real documents is not here")
        sys.exit(77)
    unittest.main()
