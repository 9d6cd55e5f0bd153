"""`ferrule metadata`: every form of the table says the same, and what independent readers say."""
import csv
import html
import json
import re
import shutil
import unittest
from xml.etree import ElementTree

from commandline import CommandPlace, sha256
from unattended import CORPUS, pdf_of_pages, tool

COLUMNS = ["Filename", "Title", "Subject", "Author", "Keywords", "Creator", "Producer", "PDF Version", "File Size", "Modified", "Pages",
           "Attachments", "Fields", "Security"]
SPREADSHEET = "{urn:schemas-microsoft-com:office:spreadsheet}"
HOSTILE = {"Title": 'a "quoted", <b>&amp;</b> ]]>\r\nline\ttab', "Subject": "\x00\x01\x1f\ufffe\U0001f600 e\u0301", "Author": "\ud800 alone",
           "Keywords": "https://example.com/?a=b&c", "Client": "=1+1"}
CLEAN = {"Title": HOSTILE["Title"], "Author": "\ufffd alone", "Keywords": HOSTILE["Keywords"], "Client": "=1+1"}


class Metadata(unittest.TestCase):
    def setUp(self):
        self.place = CommandPlace()
        self.addCleanup(self.place.close)

    def table(self, form, *words, code=0):
        path = self.place.root / f"table.{form}"
        self.place.expect(code, "metadata", "export", *words, "-o", path, "--overwrite")
        return self.rows(path.read_bytes(), form)

    def rows(self, content, form):
        """The cells by any reader of the form but ours, the headings first."""
        if form in ("csv", "txt"):
            self.assertTrue(content.startswith(b"\xef\xbb\xbf"))
            return list(csv.reader(content.decode("utf-8-sig").splitlines(keepends=True), delimiter="," if form == "csv" else "\t"))
        if form == "json":
            data = json.loads(content)["Data"]
            return [list(data[0])] + [list(row.values()) for row in data]
        if form == "xml":
            root = ElementTree.fromstring(content)
            return [["".join(cell.itertext()) for cell in row] for row in root.iter(SPREADSHEET + "Row")]
        return [[html.unescape(cell) for cell in re.findall("<t[hd]>(.*?)</t[hd]>", row, re.S)]
                for row in re.findall("<tr>(.*?)</tr>", content.decode("ascii"), re.S)]

    def test_every_form_holds_whatever_the_documents_say(self):
        (self.place.input / "a.pdf").write_bytes(pdf_of_pages([("/MediaBox[0 0 9 9]", "")] * 3, HOSTILE))
        (self.place.input / "b.pdf").write_bytes(b"no document")
        words = [self.place.input, "--fields", "Client,Title, Nobody"]
        expected = None
        for form in ("csv", "txt", "json", "xml", "html"):
            with self.subTest(form):
                head, first, second = self.table(form, *words, code=3)
                self.assertEqual(head, COLUMNS + ["Client", "Nobody"])
                first = dict(zip(head, first))
                self.assertEqual({key: first[key].replace("\r\n", "\n") for key in CLEAN},
                                 {key: text.replace("\r\n", "\n") for key, text in CLEAN.items()})
                self.assertTrue(first["Subject"].endswith("\U0001f600 e\u0301"))
                self.assertEqual([first[key] for key in ("PDF Version", "Pages", "Attachments", "Fields", "Security", "Nobody")], ["1.4", "3", "0", "0", "", ""])
                self.assertEqual(second[:3], [str(self.place.input / "b.pdf"), "Cannot open file", ""])
                times = first["Filename"], first["File Size"], first["Modified"]
                expected = expected or times
                self.assertEqual(times, expected)
        shown = self.place.expect(3, "metadata", "show", *words, "--json")
        self.assertEqual(json.loads(shown.output)["Title"], HOSTILE["Title"])
        self.assertIn("b.pdf: The file cannot be opened", shown.errors)
        self.assertRegex(self.place.expect(0, "metadata", "show", self.place.input / "a.pdf").output, r'Title +a "quoted".*\\x0d\\nline')

    def test_tables_replace_nothing_that_nobody_named(self):
        (self.place.input / "a.pdf").write_bytes(pdf_of_pages([("/MediaBox[0 0 9 9]", "")]))
        target = self.place.root / "table.csv"
        target.write_text("mine")
        for code, words, message in ((1, ["-o", target], "--overwrite"), (2, ["-o", self.place.root / "table"], "--format"), (2, [], "--output"),
                                     (2, ["-o", target, "--overwrite", "--fields", "a#b"], "neither"),
                                     (1, ["-o", self.place.root / "none" / "t.csv"], "cannot be created")):
            self.assertIn(message, self.place.expect(code, "metadata", "export", self.place.input, *words).errors, words)
            self.assertEqual(target.read_text(), "mine")

    def test_changes_are_shown_made_and_taken_back(self):
        document = self.place.input / "a.pdf"
        document.write_bytes(pdf_of_pages([("/MediaBox[0 0 9 9]", "")], {"Title": "Old", "Subject": "Gone"}))
        before = sha256(document)
        change = ["metadata", "set", self.place.input, "--title", "\u20ac \u6f22", "--remove", "Subject", "--set", "Client=a=b", "--set",
                  "ModDate=2024-02-29T10:00:00+01:00"]
        for words, message in ((["--in-place", "--set", "ModDate=2023-02-29"], "is none"), ([], "--in-place"), (["--in-place", "--set", "x"], "FIELD=TEXT"),
                               (["--in-place", "--remove", "Title"], "twice")):
            self.assertIn(message.replace("FIELD=TEXT", "Client=Smith"), self.place.expect(2, *change, *words).errors)
        told = self.place.expect(0, *change, "--in-place", "--dry-run").output
        self.assertIn('Title: "Old" becomes "\u20ac \u6f22"', told)
        self.assertEqual(sha256(document), before)
        self.place.expect(0, *change, "--in-place", "--keep-originals", self.place.root / "kept", "--record", self.place.root / "record")
        shown = json.loads(self.place.expect(0, "metadata", "show", document, "--json", "--fields", "Client,ModDate").output)
        self.assertEqual([shown[key] for key in ("Title", "Subject", "Client", "ModDate")], ["\u20ac \u6f22", "", "a=b", "D:20240229100000+01'00'"])
        said = tool("pdfinfo", "-enc", "UTF-8", "-custom", document)[1].decode()
        self.assertRegex(said, "Title: +\u20ac \u6f22\n")
        self.assertRegex(said, "Client: +a=b\n")
        changed = document.stat().st_mtime_ns
        self.place.expect(0, *change, "--in-place")
        self.assertEqual(document.stat().st_mtime_ns, changed, "what is so already is not written")
        self.place.expect(0, "undo", self.place.root / "record")
        self.assertEqual(sha256(document), before)

    def test_a_table_comes_back_as_it_was_edited_or_not_at_all(self):
        names = ("a.pdf", "sub/a.pdf", "\u00fc b.pdf")
        for name in names:
            path = self.place.input / name
            path.parent.mkdir(exist_ok=True)
            path.write_bytes(pdf_of_pages([("/MediaBox[0 0 9 9]", "")], {"Title": name, "Subject": "kept"}))
        (self.place.input / "broken.pdf").write_bytes(b"no document")
        self.table("csv", self.place.input, code=3)
        table = self.place.root / "table.csv"
        head, *rows = self.rows(table.read_bytes(), "csv")
        self.assertEqual(len(rows), 4)
        wanted = {}
        for row in rows:
            if row[1] != "Cannot open file":
                row[1], row[2] = f'{row[1]}, "new"\n\u6f22', ""
                wanted[row[0]] = (row[1], "kept")
        words = ["metadata", "import", self.place.input, "--table", table, "--in-place", "--keep-originals", self.place.root / "kept"]
        state = {path: sha256(path) for path in self.place.input.rglob("*.pdf")}
        with table.open("w", newline="", encoding="utf-16") as stream:
            csv.writer(stream).writerows([head, *rows, ["a.pdf", "both"]])
        self.assertIn("names several documents", self.place.expect(1, *words).errors)
        with table.open("w", newline="", encoding="utf-16") as stream:
            csv.writer(stream).writerows([head, *rows, ["gone.pdf", "nobody"]])
        self.assertIn("5 records for 3 of 4 documents, 1 for none", self.place.expect(0, *words, "--dry-run").errors)
        self.assertEqual({path: sha256(path) for path in state}, state)
        self.place.expect(0, *words, "--record", self.place.root / "record")
        shown = map(json.loads, self.place.expect(3, "metadata", "show", self.place.input, "--json").output.splitlines())
        self.assertEqual({row["Filename"]: (row["Title"], row["Subject"]) for row in shown}, wanted)
        self.place.expect(0, "undo", self.place.root / "record")
        self.assertEqual({path: sha256(path) for path in state}, state)

    def test_changes_are_appended_and_signatures_stay_as_they_are(self):
        if not CORPUS.is_dir():
            self.skipTest("no corpus")
        names = ("sample_signed-sha512.pdf", "minimal-two-fields-signed-twice.pdf", "signed_verified.pdf")
        for name in names:
            shutil.copyfile(CORPUS / "signed" / name, self.place.input / name)
        output = self.place.root / "changed"
        output.mkdir()
        self.place.expect(0, "metadata", "set", self.place.input, "--title", "New \u03b1", "--output", output)
        self.place.expect(0, "metadata", "set", self.place.input, "--title", "New \u03b1", "--in-place")
        for name in names:
            before = (CORPUS / "signed" / name).read_bytes()
            for path in (output / name, self.place.input / name):
                with self.subTest(path=path):
                    self.assertTrue(path.read_bytes().startswith(before))
                    self.assertIn("New \u03b1", tool("pdfinfo", "-enc", "UTF-8", path)[1].decode())
                    said = [re.findall(rb"Signature Validation.*", tool("pdfsig", file)[1]) for file in (CORPUS / "signed" / name, path)]
                    self.assertTrue(said[0])
                    self.assertEqual(*said)

    def test_what_is_certified_is_left_alone(self):
        if not CORPUS.is_dir():
            self.skipTest("no corpus")
        names = ("certified-with-indirect-refs-in-dir.pdf", "minimal-signed-restricted.pdf", "usageRights.pdf")
        for name in names:
            shutil.copyfile(CORPUS / "signed" / name, self.place.input / name)
        words = ["metadata", "set", self.place.input, "--title", "New", "--in-place"]
        told = self.place.expect(3, *words).errors
        for name in names:
            self.assertRegex(told, f"{name}: failed:.*--break-signatures of the command line changes it")
            self.assertEqual(sha256(self.place.input / name), sha256(CORPUS / "signed" / name))
        (self.place.input / names[1]).unlink()  # needs a password besides
        self.place.expect(0, *words, "--break-signatures")
        for name in names[::2]:
            self.assertIn("New", tool("pdfinfo", self.place.input / name)[1].decode())

    def test_what_proves_impossible_to_append_is_written_anew_or_refused(self):
        """Nobody knows that information is also the catalogue before it is to be written."""
        for name, entries in (("plain.pdf", b""), ("signed.pdf", b"/AcroForm<</Fields[<</FT/Sig/T(s)/V<</Type/Sig>>>>]>>")):
            data = pdf_of_pages([("/MediaBox[0 0 9 9]", "")])
            newer = b"1 0 obj\n<</Type/Catalog/Pages 2 0 R%s>>\nendobj\n" % entries
            newer += b"xref\n1 1\n%010d 00000 n \ntrailer<</Size 6/Root 1 0 R/Info 1 0 R/Prev %s>>\nstartxref\n%d\n%%%%EOF\n" % (
                len(data), data.split()[-2], len(data) + len(newer))
            (self.place.input / name).write_bytes(data + newer)
        before = sha256(self.place.input / "signed.pdf")
        words = ["metadata", "set", self.place.input, "--title", "New", "--in-place", "--record", self.place.root / "record"]
        self.assertRegex(self.place.expect(3, *words).errors, "signed.pdf: failed:.*--break-signatures of the command line changes it")
        self.assertEqual(sha256(self.place.input / "signed.pdf"), before)
        self.assertIn("anew, because its information is also its catalogue", (self.place.root / "record").read_text())
        self.place.expect(0, *words[:-1], self.place.root / "second", "--break-signatures")
        for name in ("plain.pdf", "signed.pdf"):
            self.assertEqual(tool("qpdf", "--check", self.place.input / name)[0], 0)
            self.assertIn("/Title (New)", tool("qpdf", "--show-object=1", self.place.input / name)[1].decode())

    def test_a_rewritten_document_says_nothing_old(self):
        path = self.place.input / "a.pdf"
        other = self.place.input / "b.pdf"
        path.write_bytes(pdf_of_pages([("/MediaBox[0 0 9 9]", "")], {"Title": "Secret plan", "Subject": "Plans"}))
        other.write_bytes(pdf_of_pages([("/MediaBox[0 0 9 9]", "")], {"Title": "Secret plan", "Subject": "A Secret plan"}))

        def holds(text):
            plain = tool("qpdf", "--qdf", "--object-streams=disable", "--decrypt", path, "-")[1] + path.read_bytes()
            wide = text.encode("utf-16-be")
            return any(form in plain for form in (text.encode(), wide, wide.hex().encode(), wide.hex().upper().encode()))

        self.assertTrue(holds("Secret plan"))
        self.place.expect(0, "metadata", "set", path, "--title", "Other", "--in-place")
        self.assertTrue(holds("Secret plan") and holds("Other"), "older values stay in what is appended to")
        self.place.expect(0, "metadata", "set", path, "--title", "Other", "--in-place", "--rewrite")
        self.assertFalse(holds("Secret plan"), "also of revisions that nobody can see")
        before = sha256(other)
        told = self.place.expect(3, "metadata", "set", self.place.input, "--title", "Third", "--in-place", "--rewrite").errors
        self.assertFalse(holds("Other"))
        self.assertRegex(told, 'b.pdf: failed:.*the old text of "Title" still stands in the entry "Subject"')
        self.assertEqual(sha256(other), before)
        table = self.place.root / "table.csv"
        table.write_text("Filename,Title,Subject\nb.pdf,Third,None\na.pdf,Third,Plans\n")
        self.place.expect(0, "metadata", "import", self.place.input, "--table", table, "--in-place", "--rewrite")
        self.assertIn("Third", tool("pdfinfo", other)[1].decode())
        if CORPUS.is_dir():
            shutil.copyfile(CORPUS / "signed" / "two_signatures.pdf", other)
            before = sha256(other)
            words = ["metadata", "set", other, "--title", "Third", "--in-place", "--rewrite"]
            self.assertIn("--break-signatures of the command line changes it", self.place.expect(3, *words).errors)
            self.assertEqual(sha256(other), before)
            self.place.expect(0, *words, "--break-signatures")

    def test_what_independent_readers_say(self):
        if not CORPUS.is_dir():
            self.skipTest("no corpus")
        for theme in ("info", "attachments", "forms", "restricted", "business"):
            for path in (CORPUS / theme).glob("*.pdf"):
                shutil.copyfile(path, self.place.input / path.name)
        head, *rows = self.table("csv", self.place.input)
        compared = 0
        for row in (dict(zip(head, row)) for row in rows):
            said = tool("pdfinfo", "-enc", "UTF-8", row["Filename"])[1].decode("utf-8", "replace")
            info = dict(re.findall(r"^([A-Z][A-Za-z ]+):[ ]*(.*)$", said, re.M))
            if not info or any(char in said for char in "\x00\xef"):  # that reader knows neither text form of the newest documents
                continue
            compared += 1
            packet = html.unescape(tool("pdfinfo", "-meta", row["Filename"])[1].decode("utf-8", "replace"))
            for column, name in [(name, name) for name in COLUMNS[1:7]] + [("Pages", "Pages"), ("PDF Version", "PDF version")]:
                if not info.get(name) and row[column] and row[column] in packet:
                    continue  # stands in the metadata alone
                with self.subTest(path=row["Filename"], column=column):
                    self.assertEqual(row[column].strip().split("\n")[0].strip(), info.get(name, "").strip())
            attached = tool("qpdf", "--list-attachments", row["Filename"])[1]
            self.assertEqual(int(row["Attachments"]), attached.count(b" -> "), row["Filename"])
            if "print:no" in info.get("Encrypted", ""):
                self.assertIn("No HiRes Printing,No Printing", row["Security"])
            if row["Filename"].endswith("testPDFTripleLangTitle.pdf"):
                self.assertEqual(row["Title"], "Hello World")
        self.assertGreater(compared, 20)


if __name__ == "__main__":
    unittest.main()
