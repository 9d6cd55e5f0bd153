"""`ferrule rename`: new names come out as the list says, nothing is lost, and undo gives back the same folder."""
import csv
import io
import os
import random
import signal
import time
import unittest

from commandline import CommandPlace, records
from settingsfiles import rename_settings, title_part
from unattended import pdf_of_pages

KILLS = max(int(os.environ.get("FERRULE_KILLS", "200")) // 8, 3)
# Files that are there, lines of the list, more words of the command; then the files that are there with their
# contents (a file contains its former name), the exit code, and a text that is told.
PLANS = {
    "swap": ("ab", "a,b b,a", "", "a=b b=a", 0, ""),
    "three in a cycle": ("abc", "a,b b,c c,a", "", "a=c b=a c=b", 0, ""),
    "two cycles and a tail": ("abcdef", "e,a a,b b,a c,d d,c f,f", "", "a=b a_1=e b=a c=d d=c f=f", 0, "was taken"),
    "chain in its order": ("abc", "a,b b,c c,d", "", "b=a c=b d=c", 0, ""),
    "chain against its order": ("abc", "c,d b,c a,b", "", "b=a c=b d=c", 0, ""),
    "letter case": ("a", "a,A", "", "A=a", 0, ""),
    "form of Unicode": ("a", "a,u\u0308", "", "u\u0308=a", 0, ""),
    "its own name": ("ab", "a,a b,c", "", "a=a c=b", 0, ""),
    "a name that is taken": ("ax", "a,x", "", "x=x x_1=a", 0, "x_1.pdf now"),
    "one name for two": ("ab", "a,x b,x", "", "x=a x_1=b", 0, "x_1.pdf now"),
    "replaces another's file": ("ax", "a,x", "--overwrite", "x=a", 0, ""),
    "never a result": ("ab", "a,x b,x", "--overwrite", "x=a b=b", 3, "not replaced"),
    "never an input": ("ab", "a,b b,b", "--overwrite", "a=a b=b", 3, "not replaced"),
    "no new name": ("ab", "a, b,c", "", "a=a c=b", 3, "no valid output filename specified"),
    "a cycle with a file that is gone": ("ab", "a,b b,c c,a", "", "b=a c=b", 3, "is gone"),
    "a name with a folder": ("a", "a,sub/x", "", "a=a", 3, "holds a folder"),
    "what shells would run": ("a", "a,$(touch\u00a0x)`id`", "", "$(touch\u00a0x)`id`=a", 0, ""),
}
REFUSED = {"Input File;Other\n": "has to name the columns", "": "has to name the columns", "Input File,Output Filename\n": "lists no file",
           'Input File,Output Filename\n"a.pdf,b.pdf\n': "ine 2", "Input File,Output Filename\na.pdf\n": "Line 2: it has fewer",
           "Input File,Output Filename\na.pdf,b.pdf\n./a.pdf,c.pdf\na.pdf,d.pdf\n": "listed a second time",
           "Input File,Output Filename\n.,b.pdf\n": "is a folder"}


class Rename(unittest.TestCase):
    def setUp(self):
        self.place = CommandPlace()
        self.addCleanup(self.place.close)
        self.plan = self.place.root / "plan.csv"

    def files(self, names):
        for name in names:
            (self.place.input / f"{name}.pdf").write_text(name)
        return self.state()

    def state(self):
        return {path.relative_to(self.place.input).as_posix(): path.read_text() for path in self.place.input.rglob("*") if path.is_file()}

    def listed(self, pairs, separator=","):
        lines = [separator.join(("Output Filename", "Input File"))]
        lines += [separator.join((f"{new}.pdf" if new else "", f'"{self.place.input}//{old}.pdf"')) for old, new in pairs]
        self.plan.write_bytes("\r\n".join(lines).encode("utf-8-sig"))

    def rename(self, code, *words):
        return self.place.expect(code, "rename", "--apply", self.plan, *words)

    def test_names_come_from_what_is_in_the_documents(self):
        for name, title in (("1.pdf", "Offer $(touch x)"), ("2.pdf", "A/B: C?"), ("3.pdf", "A/B: C?"), ("4.pdf", "")):
            (self.place.input / name).write_bytes(pdf_of_pages([("/MediaBox[0 0 9 9]", "")] * 2, {"Title": title}))
        (self.place.input / "5.pdf").write_bytes(b"no document")
        words = ["rename", self.place.input, "--name", "<title>", "--replace", "C=c_", "--replace-regex", r"(\w)\s+(\w)=\1-\2", "--case", "upper"]
        before = {path: path.read_bytes() for path in self.place.input.iterdir()}
        told = self.place.expect(3, *words, "--dry-run").output
        rows = {row["Input File"][-5:]: row["Output Filename"] for row in csv.DictReader(io.StringIO(told.lstrip("\ufeff")))}
        self.assertEqual(rows, {"1.pdf": "OFFER $(TOUCH-X).pdf", "2.pdf": "AB C_.pdf", "3.pdf": "AB C_.pdf", "4.pdf": "", "5.pdf": ""})
        self.assertEqual({path: path.read_bytes() for path in self.place.input.iterdir()}, before)
        result = self.place.expect(3, *words, "--record", self.place.root / "record")
        self.assertIn("Filename is empty. Please verify settings and input document content.", result.errors)
        self.assertEqual(self.place.names(self.place.input), ["4.pdf", "5.pdf", "AB C_.pdf", "AB C__1.pdf", "OFFER $(TOUCH-X).pdf"])
        plan = result.errors.split("--apply ")[1].split(" --resume")[0]
        self.assertIn("--apply", self.place.expect(2, *words, "--resume").errors)
        self.place.expect(3, "rename", "--apply", plan, "--resume")
        self.place.expect(0, "undo", self.place.root / "record")
        self.assertEqual({path: path.read_bytes() for path in self.place.input.iterdir()}, before)

    def test_each_list_comes_out_as_written_and_undo_gives_back_the_same(self):
        for number, (what, (names, lines, more, wanted, code, told)) in enumerate(PLANS.items()):
            with self.subTest(what):
                for path in self.place.input.iterdir():
                    path.unlink()
                before = self.files(names)
                self.listed([line.split(",") for line in lines.split(" ")], ",;\t"[number % 3])
                self.assertEqual(self.rename(code if code else 0, "--dry-run", *more.split()).code, code)
                self.assertEqual(self.state(), before)
                record = self.place.root / f"record {number}.jsonl"
                self.rename(code, "--keep-originals", self.place.root / f"kept {number}", "--record", record, *more.split())
                self.assertEqual(self.state(), {f"{new}.pdf": content for new, content in (pair.split("=") for pair in wanted.split(" "))})
                self.assertIn(told, " ".join(line["message"] for line in records(record).values()))
                self.place.expect(0, "undo", record)
                self.assertEqual(self.state(), before)

    def test_lists_that_say_nothing_clear_change_nothing(self):
        before = self.files("ab")
        for content, told in REFUSED.items():
            with self.subTest(content):
                self.plan = self.place.input.parent / "in.csv"
                self.plan.write_text(content.replace("a.pdf", f"{self.place.input}/a.pdf") if "." in content else content)
                self.assertIn(told, self.rename(1).errors)
                self.assertEqual(self.state(), before)

    def test_moves_into_a_folder(self):
        before = self.files("ab")
        (self.place.output / "a.pdf").write_text("there before")
        self.listed([("a", "a"), ("b", "c")])
        self.rename(0, "-o", self.place.output)
        self.assertEqual(sorted(path.name for path in self.place.output.iterdir()), ["a.pdf", "a_1.pdf", "c.pdf"])
        self.assertEqual(self.state(), {})
        self.place.expect(0, "undo")
        self.assertEqual(self.state(), before)

    def test_script_gets_the_paths_as_variables_alone_and_is_awaited(self):
        hostile = ["$(touch x)", "`touch x`", "%CD%&touch x", "a;touch x'", "last"]
        for number, title in enumerate(hostile):
            (self.place.input / f"{number}.pdf").write_bytes(pdf_of_pages([("/MediaBox[0 0 9 9]", "")], {"Title": title}))
        before = {path: path.read_bytes() for path in self.place.input.iterdir()}
        told, report = self.place.root / "told", self.place.root / "report.txt"
        script = f"""begun=$(ls -ld "${{0%/*}}" | cut -c1-10)
printf '%s|%s|%s\\n' "$begun" "$INPUTDOCUMENT" "$OUTPUTDOCUMENT" >> '{told}'
test -f "$OUTPUTDOCUMENT" || exit 9
case $INPUTDOCUMENT in
  */2.pdf) echo "no luck" >&2; exit 7;;
  */3.pdf) (sleep 1000; touch '{told}.late') & sleep 1000;;
esac"""
        settings = rename_settings(self.place.root / "s.docren", [title_part()], ExecuteScript=True, Script=script)
        words = ["rename", self.place.input, "--settings", settings, "--script-timeout", 2]
        self.assertIn("0.pdf", self.place.expect(0, *words, "--dry-run").output)
        self.assertFalse(told.exists())
        record = self.place.root / "record"
        result = self.place.expect(3, *words, "--record", record, "--report-text", report)
        names = {f"{number}.pdf": "".join(c for c in title if c not in '"/*?<>:|') + ".pdf" for number, title in enumerate(hostile)}
        self.assertEqual(sorted(told.read_text().splitlines()), [f"drwx------|{self.place.input}/{old}|{self.place.input}/{new}" for old, new in names.items()])
        self.assertEqual(self.place.names(self.place.input), sorted(names.values()))
        self.assertEqual([path for path in self.place.root.rglob("*") if path.name in ("x", "x.pdf", "script.sh")], [])
        problems = {line["path"][-5:]: line["message"] for line in records(record).values() if line["outcome"] != "saved"}
        self.assertEqual([line["outcome"] for line in records(record).values()], ["saved", "saved", "incomplete", "incomplete", "saved"])
        self.assertRegex(problems.pop("2.pdf"), r"^It has been renamed to .* ended with the code 7 \(no luck\)\.$")
        self.assertIn("took longer than 2 s", problems.pop("3.pdf"))
        self.assertEqual(problems, {})
        self.assertRegex(report.read_bytes().decode(), "(?s)^FILE PROCESSING REPORT\r\n\r\nSoftware Build Date: .*\r\nProcessing Date: .*\r\n"
                         "Total number of input files selected: 5\r\nNumber of files renamed: 5\r\n.*generated\\): 0\r\n.*application\\): 0\r\n\r\n"
                         "List of files that have been renamed:\r\n\r\n1. .*0.pdf has been renamed to ")
        # Nothing that was started is started again, and what the script did stays.
        plan = result.errors.split("--apply ")[1].split(" --settings")[0]
        self.place.expect(3, "rename", "--apply", plan, "--settings", settings, "--script-timeout", 2, "--resume", "--retry-failed")
        self.assertEqual(len(told.read_text().splitlines()), 5)
        self.assertIn("what it did stays", self.place.expect(3, "undo", record, "--partly").errors)
        self.assertEqual({path: path.read_bytes() for path in self.place.input.iterdir()}, before)

    def test_kills_leave_each_file_once_and_are_gone_on_with_or_taken_back(self):
        chance = random.Random(4711)
        cycles = [[f"{size} {at}" for at in range(size)] for size in range(2, 9)]
        pairs = [(old, new) for cycle in cycles for old, new in zip(cycle, cycle[1:] + cycle[:1])]
        self.listed(pairs)
        usual = None
        for kill in range(KILLS):
            for path in self.place.input.iterdir():
                path.unlink()
            before = self.files(old for old, _ in pairs)
            began = time.monotonic()
            if usual is None:
                self.rename(0)
                usual = time.monotonic() - began
                continue
            process = self.place.start("rename", "--apply", self.plan)
            time.sleep(chance.uniform(0.3, 1) * usual)
            workers = self.place.workers_of(process)
            try:
                os.kill(workers[-1] if workers and kill % 3 == 0 else process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.communicate(timeout=120)
            for worker in workers:
                while os.path.exists(f"/proc/{worker}"):
                    time.sleep(0.01)
            self.assertEqual(sorted(self.state().values()), sorted(before.values()))
            if kill % 2:
                self.rename(0, "--resume", "--retry-failed")
                self.assertEqual(self.state(), {f"{new}.pdf": old for old, new in pairs})
            self.place.expect(0, "undo")
            self.assertEqual(self.state(), before)


if __name__ == "__main__":
    unittest.main()
