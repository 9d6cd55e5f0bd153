"""ferrule report: its figures against the lines of records, counted here independently; hostile and broken records."""
import json
import os
import shutil
import subprocess
import unittest
from collections import Counter
from html.parser import HTMLParser
from pathlib import Path

from commandline import PROGRAM, CommandPlace, documents

CORPUS = Path(os.environ.get("FERRULE_CORPUS", ""))
VOID = {"meta", "line", "rect", "circle", "link", "br"}
MILLION = 1_000_000
LINES = int(os.environ.get("FERRULE_REPORT_LINES", MILLION))
# Documents that are saved, that need a password, and that nobody can open.
CHOSEN = ("business", "encrypted", "damaged", "forms")


class Page(HTMLParser):
    """What a page says, what it would load, and whether its elements are closed."""

    def __init__(self, text):
        super().__init__()
        self.words, self.loads, self.open, self.scripts = [], [], [], 0
        self.feed(text)
        assert not self.open, self.open

    def handle_starttag(self, tag, attrs):
        self.loads += [value for name, value in attrs if name in ("src", "href", "xlink:href", "data", "srcset")]
        self.scripts += tag in ("script", "iframe", "object", "embed", "img")
        if tag not in VOID:
            self.open.append(tag)

    def handle_endtag(self, tag):
        if tag not in VOID:
            assert self.open.pop() == tag, tag

    def handle_data(self, data):
        self.words.append(data)

    def text(self):
        return "".join(self.words)


def line(number, **more):
    return {"number": number, "path": f"/in/{number}.pdf", "size": 1000, "sha256": "", "outcome": "saved", "message": "",
            "milliseconds": 5, "outputs": [], **more}


class Report(unittest.TestCase):
    def setUp(self):
        self.place = CommandPlace()
        self.addCleanup(self.place.close)

    def record(self, name, lines, end="\n"):
        path = self.place.root / name
        path.write_text("\n".join(each if isinstance(each, str) else json.dumps(each) for each in lines) + end, encoding="utf-8")
        return path

    def report(self, *paths, code=0):
        return json.loads(self.place.expect(code, "report", "--json", *paths).output)

    def expect_figures(self, report, lines):
        """Each figure, counted anew."""
        self.assertEqual(report["all"], {"files": len(lines), "bytes": sum(each["size"] for each in lines),
                                         "milliseconds": sum(each["milliseconds"] for each in lines)})
        outcomes = Counter(each["outcome"] for each in lines)
        self.assertEqual({word: sums["files"] for word, sums in report["outcomes"].items() if sums["files"]}, dict(outcomes))
        reasons = Counter()
        for group in report["reasons"]:
            reasons[group["outcome"]] += group["count"]
        unfine = Counter(each["outcome"] for each in lines if each["outcome"] != "saved" or each["message"])
        self.assertEqual(reasons, unfine)
        timed = [each for each in lines if each["outcome"] != "skipped"]
        self.assertEqual(sum(step["files"] for step in report["millisecondsPerFile"]["steps"]), len(timed))
        for step in report["millisecondsPerFile"]["steps"]:
            inside = [each for each in timed if step["from"] - 1e-6 <= max(each["milliseconds"], 1) < step["below"] - 1e-6]
            self.assertEqual(step["files"], len(inside), step)
        self.assertEqual([each["milliseconds"] for each in report["slowest"]],
                         sorted((each["milliseconds"] for each in timed), reverse=True)[:20])
        speeds = sorted((each["milliseconds"] / each["size"] for each in timed if each["size"] >= 10_000), reverse=True)
        for told, speed in zip(report["slowestPerMegabyte"], speeds[:20], strict=True):
            self.assertAlmostEqual(told["milliseconds"] / told["size"], speed)
        results = [(each["size"], sum(output["size"] for output in each["outputs"])) for each in lines if each["outputs"]]
        self.assertEqual((report["sizes"]["files"], report["sizes"]["before"], report["sizes"]["after"], report["sizes"]["unknown"]),
                         (len(results), sum(one for one, _ in results), sum(other for _, other in results), 0))
        self.assertEqual(report["sizes"]["larger"], sum(other > one for one, other in results))
        protection = Counter(json.dumps(each["protection"], sort_keys=True) for each in lines if "protection" in each)
        told = Counter({json.dumps({key: each[key] for key in ("before", "after") if key in each}, sort_keys=True): each["files"]
                        for each in report["protection"]})
        self.assertEqual(told, protection)
        actions = Counter((each["finalAction"]["act"], each["finalAction"]["state"]) for each in lines if "finalAction" in each)
        self.assertEqual({(each["act"], each["state"]): each["count"] for each in report["finalActions"]}, dict(actions))

    def test_the_figures_of_a_run_over_real_documents_are_those_of_its_record(self):
        if not CORPUS.is_dir() or not CORPUS.name:
            self.skipTest("no corpus")
        for folder in CHOSEN:
            shutil.copytree(CORPUS / folder, self.place.input / folder)
        done, record, page = (self.place.root / name for name in ("done", "record.jsonl", "page.html"))
        self.place.expect(3, "run", self.place.protect_sequence(method=3), "-i", self.place.input, "-o", self.place.output, "--jobs", 2,
                          "--final-action", "move", "--destination", done, "--record", record, "--report", page, timeout=900)
        lines = [json.loads(each) for each in record.read_text(encoding="utf-8").splitlines()]
        self.assertGreater(len({each["outcome"] for each in lines}), 2)
        for each in lines:
            for output in each["outputs"]:
                self.assertEqual(output["size"], Path(output["path"]).stat().st_size)
            if each["outcome"] == "saved":
                self.assertEqual(each["protection"]["after"], {"method": "aes256", "password": True}, each["path"])
            if "/encrypted/" not in each["path"] and each["outcome"] == "saved" and "/damaged/" not in each["path"]:
                self.assertEqual(each["protection"]["before"], {"method": "none"}, each["path"])
        report = self.report(record)
        self.assertTrue(report["complete"])
        self.expect_figures(report, lines)
        # The page that the run has written is the one that its record makes.
        again = self.place.root / "again.html"
        self.place.expect(0, "report", record, "--html", again)
        self.assertEqual(page.read_bytes(), again.read_bytes())
        read = Page(page.read_text(encoding="utf-8"))
        self.assertEqual((read.loads, read.scripts), ([], 0))
        for group in report["reasons"]:
            self.assertIn(group["reason"], read.text())
            for file in group["files"]:
                self.assertIn(file["path"], read.text())

    def test_shards_repeated_runs_and_journals_are_one_report(self):
        documents(self.place, [f"{number}.pdf" for number in range(6)])
        (self.place.input / "broken.pdf").write_text("none")
        plan, sequence = self.place.root / "plan.jsonl", self.place.protect_sequence()
        self.place.expect(0, "plan", sequence, "-i", self.place.input, "-o", self.place.output, "--manifest", plan)
        parts = []
        for part in (1, 2):
            parts.append({kind: self.place.root / f"{kind}{part}.jsonl" for kind in ("journal", "record")})
            self.place.ferrule("run", "--manifest", plan, "--shard", f"{part}/2", "--journal", parts[-1]["journal"], "--record",
                               parts[-1]["record"])
        merged = self.place.root / "merged.jsonl"
        self.place.expect(3, "merge", "--manifest", plan, *(each["journal"] for each in parts), "--record", merged)
        whole = self.report(merged)
        both = self.report(*(each["record"] for each in parts))
        journals = self.report(*(each["journal"] for each in parts))
        packed = self.report(parts[0]["record"], merged)  # a file of both counts once
        figures = ("all", "outcomes", "millisecondsPerFile", "sizes", "protection", "complete")
        for other in (both, journals, packed):
            self.assertEqual({key: other[key] for key in figures}, {key: whole[key] for key in figures})
        self.assertTrue(packed["notes"])
        one = self.report(parts[0]["record"], code=3)
        self.assertIn("have no outcome here", one["problems"][0])
        # What was begun and not finished, as after a power cut.
        journal = parts[0]["journal"].read_text(encoding="utf-8").splitlines(keepends=True)
        cut = next(place for place, each in enumerate(journal) if each.startswith('{"done"'))
        broken = self.place.root / "broken.jsonl"
        broken.write_text("".join(journal[:cut]) + journal[cut] + '{"intent":{"number":99,"act":"put","purpose":"output"}}\n{"do', encoding="utf-8")
        self.assertIn("interrupted", " ".join(self.report(broken, code=3)["problems"]))
        edited = self.place.root / "edited.jsonl"
        edited.write_text("".join(journal[:cut + 1]) + "rubbish\n", encoding="utf-8")
        self.assertRegex(" ".join(self.report(edited, code=3)["problems"]), f"Line {cut + 2} of the journal {edited}")

    def test_what_cannot_be_told_is_named_with_file_and_line(self):
        good = [line(1), line(2)]
        rows = [("edited", [good[0], "{rubbish", good[1]], "\n", 3, "Line 2 of .*edited"),
                ("cut", [*good, '{"number":3,"pa'], "", 3, "Line 3 of .*cut.*cut off"),
                ("first", ["x", *good], "\n", 3, "Line 1 of .*first"),
                ("newer", [{**good[0], "version": 99, "run": {"id": "abc"}}], "\n", 1, "Line 1 of .*newer.*version 99"),
                ("plan", [{"ferrule": "manifest", "version": 4}], "\n", 1, "is a plan"),
                ("text", ["Dear reader,"], "\n", 1, "neither a record nor a journal"),
                ("nothing", [], "", 1, "is empty"),
                ("negative", [line(1, size=-5, milliseconds=-7), line(2, milliseconds=2 ** 63, size=2 ** 63), line(-3)], "\n", 3, "Line 3"),
                ("missing part", [{**good[0], "version": 2, "total": 5, "run": {"id": "abc"}}], "\n", 3, "4 files of the 5")]
        for name, lines, end, code, problem in rows:
            with self.subTest(name):
                result = self.place.expect(code, "report", self.record(f"{name}.jsonl", lines, end))
                self.assertRegex(result.output + result.errors, problem)
        old = self.report(self.record("old.jsonl", [line(1, outputs=[{"path": "/out/1.pdf", "sha256": ""}])]))
        self.assertEqual((old["complete"], old["sizes"]["unknown"]), (True, 1))

    def test_no_name_gets_out_of_the_page_and_no_other_file_is_replaced(self):
        names = ['<script>alert(1)</script>.pdf', '"><img src=x onerror=y>.pdf', "line\nend\x1b[31m.pdf", "\u202efdp.exe", "\ue0ff.pdf", "&amp;.pdf"]
        lines = [line(place + 1, path=f"/in/{name}", outcome="failed", message=f"Bad page {place} of /in/{name}") for place, name in enumerate(names)]
        record, page = self.record("hostile.jsonl", lines), self.place.root / "page.html"
        self.place.expect(0, "report", record, "--html", page)
        read = Page(page.read_text(encoding="utf-8"))
        self.assertEqual((read.loads, read.scripts), ([], 0))
        self.assertIn("Bad page # of", read.text())
        self.assertIn("line\\x0aend\\x1b[31m.pdf", read.text())
        self.assertNotIn("\x1b", self.place.expect(0, "report", record).output)
        self.place.expect(0, "report", record, "--html", page)  # an earlier report is replaced
        letter = self.place.root / "letter.html"
        letter.write_text("<!DOCTYPE html><p>mine")
        documents(self.place, ["a.pdf"])
        for target, why in ((letter, "text of another kind"), (record, "is a record"), (self.place.root / "no" / "where.html", "No such file")):
            for words in (["report", record, "--html", target], ["protect", self.place.input, "-o", self.place.output, "--open-password-file",
                                                                 letter, "--report", target]):
                before = target.read_bytes() if target.exists() else None
                result = self.place.expect(1, *words)
                self.assertRegex(result.errors, f"{why}|it is the open password file")
                self.assertEqual(target.read_bytes() if target.exists() else None, before)
        self.assertEqual(list(self.place.output.iterdir()), [])

    def test_a_million_lines_take_little_memory(self):
        record = self.place.root / "million.jsonl"
        with open(record, "w", encoding="utf-8") as stream:
            for number in range(1, LINES + 1):
                failed = number % 7 == 0
                stream.write(json.dumps({**line(number, size=number, milliseconds=number % 5000, outcome="failed" if failed else "saved",
                                                message=f"Reason {'abcdefgh'[number % 8]} on page {number}" if failed else ""),
                                         **({"version": 2, "total": LINES, "run": {"id": "abc"}} if number == 1 else {})}) + "\n")
        process = subprocess.Popen([PROGRAM, "report", record, "--html", self.place.root / "page.html"], stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(process.returncode, 0)
        if LINES == MILLION:  # the sanitizers keep what was freed
            self.assertLess(usage.ru_maxrss, 300 * 1024)
        page = (self.place.root / "page.html").read_text(encoding="utf-8")
        self.assertIn(f"{LINES // 7:,}", Page(page).text())
        self.assertLess(len(page), 300_000)


if __name__ == "__main__":
    unittest.main()
