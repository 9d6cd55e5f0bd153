"""`ferrule search` and `ferrule text`: what is found, where it is found, and what is said when something is in the way."""
import json
import re
import unittest

from commandline import CommandPlace
from unattended import pdf_of_pages, tool

PLACE = CommandPlace  # where the runs take place; tests of another system put theirs here
PLACES = {"north": (150, 600), "south": (150, 100), "east": (400, 300), "west": (120, 300)}
OUTSIDE = (20, 20)


def words_at(places):
    return "\n".join(f"BT /F 12 Tf {x} {y} Td ({word}) Tj ET" for word, (x, y) in places.items())


def lines(*texts):
    return "\n".join(f"BT /F 12 Tf 50 {700 - 14 * number} Td ({text}) Tj ET" for number, text in enumerate(texts))


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
        one = self.place.expect(2, "search", "needle", self.place.input, "--jobs", "1")
        several = self.place.expect(2, "search", "needle", self.place.input, "--jobs", "3")
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

    def test_wrong_arguments_begin_nothing(self):
        path = self.put("page.pdf", ("", lines("text")))
        for code, words, said in [
            (2, ["search"], "say what to look for"),
            (2, ["search", "word"], "name files or folders"),
            (2, ["search", "", path], "empty text"),
            (1, ["search", "word", "no such folder"], "no such file or folder"),
            (2, ["search", "--regex", "(", path], "no regular expression"),
            (2, ["search", "text", path, "--area", "1,2,3"], "--area takes"),
            (2, ["search", "text", path, "--pages", "x"], "Unrecognized page reference keyword"),
            (1, ["text", path, "--pages", "9"], "greater than a total number of pages"),
        ]:
            with self.subTest(words=words):
                self.assertIn(said, self.place.expect(code, *words).errors)


if __name__ == "__main__":
    unittest.main()
