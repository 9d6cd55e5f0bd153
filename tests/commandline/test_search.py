"""`ferrule search` and `ferrule text`: what is found, where it is found, and what is said when something is in the way."""
import csv
import html
import io
import json
import os
import re
import subprocess
import unittest
from pathlib import Path

from commandline import CommandPlace
from settingsfiles import settings_file
from unattended import CORPUS, pdf_of_pages, tool

PLACE = CommandPlace  # where the runs take place; tests of another system put theirs here
KILLED_AFTER = (0.05, 0.15, 0.3)  # seconds; searches that make copies
PLACES = {"north": (150, 600), "south": (150, 100), "east": (400, 300), "west": (120, 300)}
OUTSIDE = (20, 20)
RULED = ("labels/page_labels.pdf", "text/us_constitution.pdf", "text/PDFBOX-3110-poems-beads.pdf", "labels/PageLabelsTest.pdf",
         "business/extended_eof.pdf", "business/missouri.pdf", "tagged/text_only_pdfa1b.pdf", "labels/test_pagelabels.pdf")


def words_at(places):
    return "\n".join(f"BT /F 12 Tf {x} {y} Td ({word}) Tj ET" for word, (x, y) in places.items())


def lines(*texts):
    return "\n".join(f"BT /F 12 Tf 50 {700 - 14 * number} Td ({text}) Tj ET" for number, text in enumerate(texts))


def rules_file(path, rules, **report):
    """Writes a .pdfsearch file; a rule is {key: value}."""
    return settings_file(path, {"NumItems": len(rules), **report, **{str(number): rule for number, rule in enumerate(rules)}})


def words_of_pages(path):
    """Of each page: (left, bottom, right, top, word), as another program reads them."""
    pages = []
    for text in tool("pdftotext", "-bbox", path, "-")[1].decode().split("<page ")[1:]:
        height = float(re.search(r'height="([\d.]+)"', text)[1])
        found = re.findall(r'<word xMin="([-\d.]+)" yMin="([-\d.]+)" xMax="([-\d.]+)" yMax="([-\d.]+)">(.*?)</word>', text)
        pages.append([(float(left), height - float(bottom), float(right), height - float(top), html.unescape(word))
                      for left, top, right, bottom, word in found])
    return pages


class Search(unittest.TestCase):
    def setUp(self):
        self.place = PLACE()
        self.addCleanup(self.place.close)

    def put(self, name, *pages):
        path = self.place.input / name
        path.write_bytes(pdf_of_pages([("/MediaBox[0 0 600 800]" + entries, content) for entries, content in pages]))
        return path

    def lines_of(self, result):
        return result.output.replace("\\", "/").splitlines()

    def found(self, *words, code=0):
        """(file name, page, text) of each place."""
        result = self.place.expect(code, "search", *words, "--json")
        return [(re.split(r"[\\/]", line["path"])[-1], line["page"], line["text"])
                for line in map(json.loads, result.output.splitlines())]

    def test_areas_are_those_of_the_page_before_it_is_turned(self):
        for rotation in (0, 90, 180, 270):
            for entries in ("", "/CropBox[100 50 500 650]", "/CropBox[100 50 500 650]/UserUnit 2"):
                with self.subTest(rotation=rotation, entries=entries):
                    path = self.put("page.pdf", (f"/Rotate {rotation}{entries}", words_at({**PLACES, "outside": OUTSIDE})))
                    for word, (x, y) in PLACES.items():
                        area = f"{x - 3},{y - 4},{x + 40},{y + 14}"
                        self.assertEqual(self.place.expect(0, "text", path, "--area", area).output.strip(), word)
                    self.assertEqual("outside" in self.place.expect(0, "text", path).output, "Crop" not in entries)

    def test_what_a_reader_takes_for_one_text_is_found(self):
        path = self.put("lines.pdf", ("", lines("A long exam-", "ple of a phrase", "that goes on.")),
                        ("", lines("Well-known: Tea", "TEA tea 17 + 4", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa!")))
        table = [
            (["example"], [(1, "example")]),
            (["phrase that goes"], [(1, "phrase that goes")]),
            (["--regex", "^that", "--line-ends"], [(1, "that")]),
            (["--regex", "phrase that", "--line-ends"], []),
            (["tea"], [(2, "tea")]),
            (["tea", "-i"], [(2, "Tea"), (2, "TEA"), (2, "tea")]),
            (["Well", "-w"], []),
            (["17 + 4"], [(2, "17 + 4")]),
            (["--regex", r"(\d+) \+ (?<b>\d)", "--format", r"\g<b>/\1"], [(2, "4/17")]),
            (["-e", "goes", "-e", "TEA"], [(1, "goes"), (2, "TEA")]),
            (["e", "--pages", "2", "-l"], None),
            (["--regex", "!zebra"], [(1, "")]),
            (["--regex", "!tea"], []),
            (["!"], [(2, "!")]),
            (["example", "--pages", "-1"], []),
            (["example", "--pages", "1..last"], [(1, "example")]),
        ]
        for words, wanted in table:
            with self.subTest(words=words):
                if wanted is None:
                    self.assertEqual(self.lines_of(self.place.expect(0, "search", *words, path)), ["in/lines.pdf"])
                    continue
                self.assertEqual(self.found(*words, path, code=0 if wanted else 1), [("lines.pdf", *place) for place in wanted])
        runaway = self.place.expect(2, "search", "--regex", "(a+)+[bc]", path)
        self.assertIn("(a+)+[bc]", runaway.errors)

    def test_files_that_cannot_be_searched_are_named_and_the_others_searched(self):
        for number in range(12):
            self.put(f"{number:02}.pdf", ("", lines(f"needle {number}")))
        self.put("picture.pdf", ("", "0 0 100 100 re f"))
        for name, rights in (("secret.pdf", ["needle", "owner"]), ("closed.pdf", ["", "owner"])):
            tool("qpdf", "--encrypt", *rights, "256", "--extract=n", "--accessibility=n", "--", self.place.input / "00.pdf", self.place.input / name)
        (self.place.input / "broken.pdf").write_bytes(b"%PDF-1.4\nnothing")
        before = sorted(self.place.root.rglob("*"))
        one = self.place.expect(2, "search", "needle", self.place.input, "--jobs", "1", "--no-cache")
        several = self.place.expect(2, "search", "needle", self.place.input, "--jobs", "3", "--no-cache")
        self.assertEqual(one.output, several.output)
        self.assertEqual(self.lines_of(one), [f"in/{number:02}.pdf:1: needle" for number in range(12)])
        for name, why in (("secret", "needs a password"), ("closed", "not permitted"), ("broken", "ferrule: in"),
                          ("picture", "There is no text")):
            self.assertTrue(any(name in line and why in line for line in one.errors.splitlines()), one)
        self.assertEqual(sorted(self.place.root.rglob("*")), before, "a search leaves nothing behind")

        passwords = self.place.root / "passwords"
        passwords.write_text("owner\n")
        with_password = self.place.expect(0, "search", "needle", self.place.input / "secret.pdf", "--password-file", passwords)
        self.assertEqual(self.lines_of(with_password), ["in/secret.pdf:1: needle"])

    def entries(self):
        return sorted((self.place.root / "cache").rglob("*.words"))

    def test_what_was_read_before_is_found_as_if_it_were_read_again(self):
        path = self.put("page.pdf", ("/Rotate 90", lines("An exam-", "ple of text")), ("", words_at(PLACES)))
        self.put("other.pdf", ("", lines("nothing of that")))
        tool("qpdf", "--encrypt", "", "owner", "256", "--", path, self.place.input / "closed.pdf")
        words = ["search", "--regex", r"\S+", self.place.input, "--json"]
        area = ["text", path, "--area", "45,670,120,712"]
        plain, inside = [self.place.expect(0, *command, "--no-cache").output for command in (words, area)]
        self.assertEqual(self.entries(), [])

        def compare(what):
            for command, wanted in ((words, plain), (area, inside)):
                for times in range(2):
                    with self.subTest(what, times=times, command=command[0]):
                        self.assertEqual(self.place.expect(0, *command).output, wanted)

        compare("new")
        kept = self.entries()
        self.assertEqual(len(kept), 2, "none of the encrypted document")
        for entry in kept:
            self.assertEqual((entry.stat().st_mode & 0o777, entry.parent.stat().st_mode & 0o777), (0o600, 0o700))
        state = json.loads(self.place.expect(0, "cache", "status", "--json").output)
        self.assertEqual((state["documents"], state["bytes"]), (2, sum(entry.stat().st_size for entry in kept)))
        for what, spoil in (("cut", lambda content: content[:len(content) // 2]), ("empty", lambda content: b""),
                            ("another version", lambda content: content.replace(b"Words 1", b"Words 9")),
                            ("a byte", lambda content: content[:40] + bytes([content[40] ^ 1]) + content[41:])):
            for entry in kept:
                entry.write_bytes(spoil(entry.read_bytes()))
            compare(what)

        stat = path.stat()
        content = path.read_bytes()
        path.write_bytes(content.replace(b"ple of text", b"ple of salt"))  # neither size nor time tells
        os.utime(path, ns=(stat.st_atime_ns, stat.st_mtime_ns))
        self.assertEqual(self.found("example of salt", path), [("page.pdf", 1, "example of salt")])
        path.write_bytes(content)
        self.assertIn("3 documents", self.place.expect(0, "cache", "clear", "--dry-run").output)
        self.assertEqual(len(self.entries()), 3)
        self.place.expect(0, "cache", "clear")
        self.assertEqual(self.entries(), [])

    def test_a_cache_that_cannot_be_used_is_done_without(self):
        path = self.put("page.pdf", ("", lines("text")))
        cache = self.place.root / "cache" / "Quillon" / "Ferrule" / "Text"
        cache.parent.mkdir(parents=True)
        for what, spoil in (("a file", lambda: cache.write_text("mine")), ("a link", lambda: cache.symlink_to(self.place.input))):
            with self.subTest(what):
                spoil()
                before = sorted(self.place.root.rglob("*"))
                self.assertEqual(self.found("text", path), [("page.pdf", 1, "text")])
                self.assertIn(str(cache), self.place.expect(1, "cache", "clear").errors)
                self.assertEqual(sorted(self.place.root.rglob("*")), before)
                cache.unlink()

    def rows(self, report):
        """The rows of a CSV report behind its header."""
        rows = list(csv.reader(io.StringIO(report.with_suffix(".csv").read_bytes().decode("utf-8-sig"), newline="")))
        self.assertEqual(rows[0], ["File", "Page", "Text"])
        return rows[1:]

    def test_copies_and_reports_are_made_once_and_taken_back(self):
        for number in range(6):
            self.put(f"{number}.pdf", ("", lines(f"needle {number % 3} needle")))
        copies, report, foreign = self.place.input / "copies", self.place.root / "report.txt", self.place.root / "notes.txt"
        words = ["search", "-e", "needle 1", "-e", "needle", self.place.input, "--copy-to", copies, "--count"]
        self.place.expect(0, *words, "--dry-run")
        self.assertFalse(copies.exists())
        self.assertIn("no folder", self.place.expect(1, *words, "--report", self.place.root / "none" / "report.txt").errors)
        record = self.place.root / "record.jsonl"
        first = self.place.expect(0, *words, "--report", report, "--jobs", "2", "--record", record)
        self.assertEqual([line.split(":")[-1] for line in self.lines_of(first)], ["2", "3", "2"] * 2)
        self.assertEqual(self.place.names(copies), [f"{number}.pdf" for number in range(6)])
        self.assertEqual([row[2] for row in self.rows(report)], ["needle", "needle", "needle 1", "needle", "needle", "needle", "needle"] * 2)
        self.assertEqual(self.place.expect(0, *words, "--dry-run").output, first.output, "copies are not searched in turn")
        self.place.expect(0, "undo", record)
        self.assertEqual(self.place.names(copies), [])
        for seconds in KILLED_AFTER:  # and gone on with
            process = self.place.start(*words, "--report", report, "--jobs", "2")
            try:
                process.wait(seconds)
            except subprocess.TimeoutExpired:
                process.kill()
            process.communicate()
            resumed = self.place.expect(0, *words, "--report", report, "--resume", "--record", record)
            self.assertEqual(resumed.output, first.output)
            self.assertEqual(len(self.rows(report)), 14)
            self.assertEqual(self.place.names(copies), [f"{number}.pdf" for number in range(6)])
            self.place.expect(0, "undo", record)
        foreign.write_text("mine")
        self.assertIn("no search report", self.place.expect(2, "search", "needle 2", self.place.input, "--report", foreign).errors)
        self.assertEqual(foreign.read_text(), "mine")
        foreign.unlink()
        self.place.expect(0, "search", "needle 2", self.place.input, "--report", foreign, "--resume")
        self.assertEqual([row[2] for row in self.rows(foreign)], ["needle 2"] * 2)

    def test_a_copy_cut_off_before_it_was_announced_is_cleaned_up(self):
        for number in range(6):
            self.put(f"{number}.pdf", ("", lines("needle")))
        copies = self.place.input / "copies"
        words = ["search", "-e", "needle", self.place.input, "--copy-to", copies]
        self.place.expect(0, *words)
        manifest, = self.place.root.rglob("manifest.jsonl")
        run = json.loads(manifest.read_text().splitlines()[0])["job"]["run"]
        journal = manifest.with_name("journal.jsonl")
        journal.write_text(journal.read_text().splitlines(keepends=True)[0])
        for copy in copies.iterdir():
            copy.unlink()
        (copies / f".ferrule-{run}-1-1.tmp").write_text("cut")
        self.place.expect(0, *words, "--resume")
        self.assertEqual(self.place.names(copies), [f"{number}.pdf" for number in range(6)])

    def test_twelve_rules_over_documents_find_what_another_reader_counts(self):
        for name in RULED:
            (self.place.input / Path(name).name).write_bytes((CORPUS / name).read_bytes())
        copies, report = self.place.root / "copies", self.place.root / "report.txt"
        copies.mkdir()
        first, last = ({"PageSelection": 2, "FirstPageExpression": page, "LastPageExpression": page} for page in ("1", "last"))
        area = (0.0, 100.0, 300.0, 500.0)
        script = "if (!/^[A-Za-z]/.test(originalFileName) || /pdf$/.test(originalFileName)) throw originalFileName;"
        rules = [  # and: the expression that counts, whether a page of so many counts, the form of a match
            ({"RegExp": "section", "UseRegExp": False}, "(?i)section"),
            ({"RegExp": r"\b\d{4}\b"}, r"\b\d{4}\b"),
            ({"RegExp": r"\b\d+\b", "PageRange": first}, r"\b\d+\b", lambda page, pages: page == 1),
            ({"RegExp": r"\b\d+\b", "PageRange": last}, r"\b\d+\b", lambda page, pages: page == pages),
            ({"RegExp": "and", "UseRegExp": False, "WholeWords": True, "MatchCase": True}, r"(?<!\S)and(?!\S)"),
            ({"RegExp": r"\b[A-Z]{2,}\b", "MatchCase": True, "UseArea": True,
              "Area": dict(zip(("Left", "Bottom", "Right", "Top"), area))}, r"\b[A-Z]{2,}\b"),
            ({"RegExp": "!zebra"}, None),
            ({"RegExp": "[0-9]", "StopSearchOnMatch": True}, "[0-9]"),
            ({"RegExp": r"\b[Oo]f\b", "MatchCase": True, "CopyFile": True, "CopyFolder": str(copies), "Prefix": "P_"}, r"\b[Oo]f\b"),
            ({"RegExp": "[a-z]", "StopSearchOnMatch": True, "ExecuteCode": True, "ActionCode": script}, "(?i)[a-z]"),
            ({"RegExp": r"(\d)(\d)", "Format": r"\2-\1"}, r"(\d)(\d)", lambda *_: True, r"\2-\1"),
            ({"RegExp": r"\b[A-Z]\b", "MatchCase": True, "PageRange": {"PageSubset": 2}}, r"\b[A-Z]\b", lambda page, _: page % 2 == 0)]
        expected, copied = [], []
        for path in sorted(self.place.input.iterdir(), key=lambda path: path.name.upper()):
            pages = words_of_pages(path)
            for rule, pattern, *more in rules:
                counts, form = (more + [lambda *_: True, r"\g<0>"][len(more):])
                found = [] if pattern else [(1, "")]
                for number, words in enumerate(pages, 1):
                    inside = [word for left, bottom, right, top, word in words if "Area" not in rule
                              or area[0] < (left + right) / 2 < area[2] and area[1] < (bottom + top) / 2 < area[3]]
                    if pattern and counts(number, len(pages)):
                        text = re.sub("(?<=[A-Za-z])- (?=[a-z])", "", " ".join(inside))  # divided at the end of a line
                        found += [(number, match.expand(form)) for match in re.finditer(pattern, text, re.ASCII)]
                found = found[:1] if rule.get("StopSearchOnMatch") else found
                expected += [[str(path), str(page), text] for page, text in found]
                copied += ["P_" + path.name] if found and rule.get("CopyFile") else []
        file = rules_file(self.place.root / "twelve.pdfsearch", [rule for rule, *_ in rules], ReportFile=str(report), OverwriteReport=True)
        for times in range(2):
            result = self.place.expect(0, "search", "--rules", file, self.place.input, "--jobs", "2", "--count")
            self.assertEqual(self.rows(report), expected)
        again = self.place.root / "again.txt"
        appended = rules_file(self.place.root / "append.pdfsearch", [{"RegExp": "Amendment"}], ReportFile=str(again), AppendReport=True)
        self.place.expect(0, "search", "--rules", appended, self.place.input)
        once = self.rows(again)
        self.place.expect(0, "search", "--rules", appended, self.place.input)  # at once, and no rest of a killed one
        self.assertEqual(self.rows(again), 2 * once)
        text = report.read_bytes().decode("utf-8-sig").split("\r\n")
        self.assertEqual(sum(int(line.rpartition(" ")[2]) for line in text if line.startswith("Search text: ")), len(expected))
        self.assertEqual(sum(line.startswith("\tFile: ") for line in text), len(expected))
        self.assertEqual(sum(int(line.rpartition(":")[2]) for line in result.output.splitlines()), len(expected))
        self.assertEqual(self.place.names(copies), sorted(copied + [name.replace(".pdf", " (1).pdf") for name in copied]))
        self.assertGreater(len(copied), 2)

        for content, said in ((file.read_bytes()[:200], "damaged"), (b"%PDF", "not a settings file")):
            file.write_bytes(content)
            self.assertIn(said, self.place.expect(2, "search", "--rules", file, self.place.input).errors)

    def test_wrong_arguments_begin_nothing(self):
        path = self.put("page.pdf", ("", lines("text")))
        for code, words, said in [
            (2, ["search"], "say what to look for"),
            (2, ["search", "word"], "name files or folders"),
            (2, ["search", "", path], "empty text"),
            (1, ["search", "word", "no such folder"], "no such file or folder"),
            (2, ["search", "--rules", path, path, "--regex"], "no meaning with --rules"),
            (2, ["search", "text", path, "--resume"], "simply done again"),
            (2, ["search", "--regex", "(", path], "no regular expression"),
            (2, ["search", "text", path, "--area", "1,2,3"], "--area takes"),
            (2, ["search", "text", path, "--pages", "x"], "Unrecognized page reference keyword"),
            (1, ["text", path, "--pages", "9"], "greater than a total number of pages"),
        ]:
            with self.subTest(words=words):
                self.assertIn(said, self.place.expect(code, *words).errors)


if __name__ == "__main__":
    unittest.main()
