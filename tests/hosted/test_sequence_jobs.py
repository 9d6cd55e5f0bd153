"""Sequences that jobs make and convert do in a run what was asked for; every sequence job ends as it should."""
import os
import sys
import unittest
from pathlib import Path

from unattended import Workplace, minimal_pdf, page_count, text_of, tool
from worker import Job, from_text, to_text

EXAMPLES = Path(os.environ.get("FERRULE_SEQUENCES", ""))
OPEN, OWNER = "Leinen los! \u00e4", "K\u00e4pit\u00e4n <&> \"42\""


class SequenceJobs(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        self.sequence = self.place.root / "new.sequ"
        (self.place.input / "a.pdf").write_bytes(minimal_pdf("Hello"))

    def ask(self, kind, end="finished", **fields):
        """Does a job; answers its report, or its message when it is not to finish."""
        job = Job(self.place, {"kind": "sequence-" + kind, "path": to_text(self.sequence), **fields})
        self.assertEqual((job.end, job.code == 0), (end, end == "finished"), job)
        self.assertEqual(job.acts, [], "sequence files are not what a run asks about")
        self.assertEqual(len(job.reports), 1 if end == "finished" else 0, job)
        for secret in (OPEN, OWNER):
            self.assertNotIn(secret, str(job) + repr(job.reports) + repr(job.remarks))
        return job.reports[0]["sequence"] if job.reports else job.end_message

    def run_it(self, sequence=None):
        outcome = self.place.run_folder(sequence or self.sequence, FERRULEFILEEXT="pdf")
        self.assertEqual(outcome.code, 0, outcome)
        return sorted(path.name for path in self.place.output.iterdir())

    def assert_protected(self):
        result = self.place.output / "a.pdf"
        self.assertIsNone(page_count(result), "opens without a password")
        self.assertEqual(page_count(result, OPEN), 1)
        info = tool("pdfinfo", "-upw", OPEN, result)[1]
        self.assertIn(b"algorithm:AES-256", info)
        self.assertIn(b"print:yes copy:no change:no", info)
        self.assertIn(b"Supplied password is owner password",
                      tool("qpdf", "--password-mode=unicode", "--password=" + OWNER, "--show-encryption", result)[1])

    def test_the_protect_template_protects_in_both_forms(self):
        made = self.ask("new", template="protect", protect={"userPassword": OPEN, "ownerPassword": OWNER, "allow": ["print"]})
        self.assertTrue(made["holdsPasswords"])
        self.assertEqual(self.sequence.stat().st_mode & 0o777, 0o600)
        checked = self.ask("check", description={"inputs": ["/in"], "output": "/out"})
        self.assertEqual((checked["ok"], [finding["code"] for finding in checked["findings"]]), (True, ["holds-passwords", "metadata-readable"]))
        self.assertEqual(self.run_it(), ["a.pdf"])
        self.assert_protected()
        (self.place.output / "a.pdf").unlink()
        host = self.place.root / "host.sequ"
        self.assertEqual(self.ask("convert", to="host", target=to_text(host))["to"], "host")
        self.assertEqual(self.run_it(host), ["a.pdf"])
        self.assert_protected()

    def test_the_other_templates_do_what_their_names_say(self):
        self.ask("new", template="text")
        self.assertEqual(self.run_it(), ["a.txt"])
        self.assertIn(b"Hello 1", (self.place.output / "a.txt").read_bytes())
        (self.place.output / "a.txt").unlink()
        self.ask("new", template="save", output={"prefix": "x-", "suffix": "-y"}, overwrite=True)
        self.assertEqual(self.run_it(), ["x-a-y.pdf"])
        self.assertEqual(text_of(self.place.output / "x-a-y.pdf").split(), [b"Hello", b"1"])

    def test_a_name_of_any_bytes_is_a_name(self):
        self.sequence = Path(os.fsdecode(os.fsencode(str(self.place.root)) + b"/n\xffm\xe9.sequ"))
        self.ask("new", template="save")
        self.assertEqual(from_text(self.ask("show")["path"]), os.fsencode(self.sequence))
        message = self.ask("new", template="save", end="not-started")
        self.assertIn(os.fsencode(self.sequence), from_text(message))

    def test_every_real_sequence_can_be_shown_checked_and_converted(self):
        files = sorted(EXAMPLES.glob("*.sequ"))
        if not files:
            self.skipTest("the folder of real sequences is not here")
        for number, path in enumerate(files):
            with self.subTest(path.name):
                self.sequence = path
                real = path.name != "not-a-workflow-root.sequ"
                checked = self.ask("check")
                steps = path.read_text(encoding="utf-8").count("<Command ")
                if not real:
                    self.assertEqual([finding["code"] for finding in checked["findings"]], ["wrong-root"])
                    self.assertIn("line 13", self.ask("show", end="not-started"))
                    continue
                shown = self.ask("show")
                self.assertEqual(sum(len(group["steps"]) for group in shown["groups"]), steps)
                unavailable = [step["number"] for group in shown["groups"] for step in group["steps"] if not step["available"]]
                self.assertEqual([finding["step"] for finding in checked["findings"]
                                  if finding["code"] == "step-not-available"], unavailable)
                self.ask("convert", to="host", target=to_text(self.place.root / f"{number}.host"))

    def test_hostile_files_are_findings_and_nothing_worse(self):
        bombs = {"entities": b"<!DOCTYPE w [<!ENTITY a 'aaaa'><!ENTITY b '&a;&a;'>]><Workflow title='&b;'/>",
                 "depth": b"<Workflow>" + b"<Group>" * 100000, "outside": b"<!DOCTYPE w SYSTEM 'file:///etc/passwd'><Workflow/>",
                 "bytes": bytes(range(256)) * 100, "cut cab": b"\x8fFCab\r\n\x1a\x01\x00\x00\x00"}
        for name, content in bombs.items():
            with self.subTest(name):
                self.sequence.write_bytes(content)
                checked = self.ask("check")
                self.assertEqual((checked["ok"], checked["errors"]), (False, 1), checked)
                self.assertIn(str(self.sequence), self.ask("show", end="not-started"))


if __name__ == "__main__":
    sys.exit(0 if unittest.main(exit=False).result.wasSuccessful() else 1)
