"""The step "Search and Copy Files", in builds that offer it: matches, copies and both reports, from the environment and by `ferrule`."""
import csv
import io
import os
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "hosted"))
from commandline import CommandPlace, documents, records, sha256  # noqa: E402
from test_output_rules import folder, host_sequence  # noqa: E402

SEARCH = "QLNX_FerruleSearchAndCopyCommand"


def parameters(rules, **report):
    """Of the step: rules are {key: (type, value)}."""
    items = {"NumItems": ("integer", len(rules)), **report}
    for number, rule in enumerate(rules):
        items[str(number)] = ("cab", "")
        items.update({f"{number}:{key}": value for key, value in rule.items()})
    return items


class SearchAndCopy(unittest.TestCase):
    def setUp(self):
        self.place = CommandPlace()
        self.addCleanup(self.place.close)
        self.copies = self.place.root / "copies"
        self.copies.mkdir()
        self.report = self.place.root / "report.txt"
        documents(self.place, [f"Report.{number}.final.pdf" for number in range(8)], "Number")

    def sequence(self, rules, append=False):
        flags = {"ReportFile": ("string", str(self.report)),
                 "AppendReport": ("boolean", str(append).lower()), "OverwriteReport": ("boolean", str(not append).lower())}
        return host_sequence(self.place, {"Variation": ("integer", 2), **folder(self.place.output)}, commands=[(SEARCH, parameters(rules, **flags))])

    def rules(self):
        return [{"RegExp": ("string", r"Number [2-5] 1"), "CopyFile": ("boolean", "true"), "Prefix": ("string", "A_"),
                 "Suffix": ("string", "_B"), "CopyFolder": ("string", str(self.copies))},
                {"RegExp": ("text", "number"), "UseRegExp": ("boolean", "false")},
                {"RegExp": ("string", "!Number 7"), "CopyFile": ("boolean", "true"), "CopyFolder": ("string", str(self.copies))}]

    def found(self):
        """The rows of the CSV report behind its header."""
        text = self.report.with_suffix(".csv").read_bytes().decode("utf-8-sig")
        rows = list(csv.reader(io.StringIO(text, newline="")))
        self.assertEqual(rows[0], ["File", "Page", "Text"])
        return rows[1:]

    def expected(self):
        rows = []
        for number in range(8):
            path = str(self.place.input / f"Report.{number}.final.pdf")
            rows += [[path, "1", f"Number {number} 1"]] if 2 <= number <= 5 else []
            rows += [[path, "1", "Number"]] + ([[path, "1", ""]] if number != 7 else [])
        return rows

    def check_copies(self):
        names = {f"A_Report.{number}.final_B.pdf": number for number in range(2, 6)}
        names.update({f"Report.{number}.final.pdf": number for number in range(7)})
        self.assertEqual(self.place.names(self.copies), sorted(names))
        for name, number in names.items():
            self.assertEqual(sha256(self.copies / name), sha256(self.place.input / f"Report.{number}.final.pdf"))

    def test_from_the_environment(self):
        outcome = self.place.run_folder(self.sequence(self.rules()), output=False)
        self.assertEqual(outcome.code, 0, outcome)
        self.check_copies()
        self.assertEqual(sorted(self.found()), sorted(self.expected()))
        text = self.report.read_bytes().decode("utf-8-sig").split("\r\n")
        self.assertEqual(text[0], "Ferrule Text Search Report")
        self.assertEqual(text.count("Ferrule Text Search Report"), 1)
        self.assertEqual(sum("Number of matches: 1" in line for line in text), 4 + 8 + 7)

    def test_jobs_report_in_input_order_and_copies_are_acts(self):
        sequence = self.sequence(self.rules())
        record = self.place.root / "record.jsonl"
        self.place.expect(0, "run", sequence, "-i", self.place.input, "--jobs", 2, "--record", record)
        self.check_copies()
        self.assertEqual(self.found(), self.expected())
        outputs = records(record)[3]["outputs"]
        self.assertEqual([output.get("purpose") for output in outputs], ["copy", "copy", None])
        self.place.expect(0, "run", sequence, "-i", self.place.input, "--dry-run")
        self.assertEqual(self.found(), self.expected())
        self.place.expect(0, "undo", record)
        self.assertEqual(self.place.names(self.copies), [])

    def test_an_interrupted_run_reports_and_copies_nothing_twice(self):
        arguments = ("run", self.sequence(self.rules(), append=True), "-i", self.place.input, "--jobs", 2)
        for attempt, seconds in enumerate((0.3, 0.5, 0.8, 0.2)):
            process = self.place.start(*arguments, *(["--resume"] if attempt else []))
            try:
                process.wait(seconds)
            except Exception:  # still running
                process.kill()
            process.communicate()
        self.place.ferrule(*arguments, "--resume")
        self.check_copies()
        self.assertEqual(self.found(), self.expected())

    def test_a_run_that_was_killed_behind_its_report_reports_nothing_twice(self):
        sequence = self.sequence(self.rules(), append=True)
        plan, journal = self.place.root / "plan.jsonl", self.place.root / "journal.jsonl"
        self.place.expect(0, "plan", sequence, "-i", self.place.input, "--manifest", plan)
        self.place.expect(0, "run", "--manifest", plan, "--journal", journal)
        *lines, end = journal.read_bytes().splitlines(keepends=True)
        self.assertIn(b'"end"', end)
        stat = journal.stat()
        journal.write_bytes(b"".join(lines))
        os.utime(journal, ns=(stat.st_atime_ns, stat.st_mtime_ns))
        self.place.expect(0, "run", "--manifest", plan, "--journal", journal)
        self.assertEqual(self.found(), self.expected())

    def test_what_cannot_be_used_is_said(self):
        rules = self.rules()
        rules[0]["CopyFolder"] = ("string", str(self.place.root / "none"))
        rules[1]["RegExp"], rules[1]["UseRegExp"] = ("string", "("), ("boolean", "true")
        rules[2].update({"ExecuteCode": ("boolean", "true"), "ActionCode": ("string", "throw 'x'")})
        sequence = self.sequence(rules)
        check = self.place.ferrule("sequence", "check", sequence)
        self.assertIn("Rule 2: Invalid search expression specified.", check.output)
        self.report.write_bytes(b"somebody's notes")
        outcome = self.place.run_folder(sequence, output=False)
        self.assertEqual(self.report.read_bytes(), b"somebody's notes")
        path = self.place.input / "Report.3.final.pdf"
        for line in (f"Error occured while copying file for rule 1, document: {path}", "it is no search report",
                     f"Error occured while executed JavaScript code for rule 3, document: {path}"):
            self.assertTrue(outcome.has(line), (line, outcome))


if __name__ == "__main__":
    if os.environ.get("FERRULE_SEARCH_AND_COPY") == "OFF":
        print("This build does not offer the step.")
        sys.exit(77)
    unittest.main()
