"""Jobs that a supervisor hands to a worker: plans, runs with inputs from outside, trial runs, making of sequences."""
import json
import os
import subprocess
import unittest
from pathlib import Path

from unattended import (FOREIGN, HOST, PROTECT, SAVE, VARIABLES, Workplace, minimal_pdf, page_count, protect_items,
                        save_items, tool)

OPEN, OWNER = "Leinen los! \u00e4", "K\u00e4pit\u00e4n <&> \"42\""
SIGNED = (b"/AcroForm<</SigFlags 3/Fields[<</FT/Sig/T(s)/V<</Type/Sig/Filter/Adobe.PPKLite/SubFilter/adbe.pkcs7.detached"
          b"/ByteRange[0 1 2 3]/Contents<00>>>>>]>>/Pages 2 0 R")

FIRST, LAST = "\uF780", "\uF7FF"  # the characters that stand for bytes


def to_text(path):
    """A path as it stands in JSON: bytes that are no UTF-8 become private-use characters, and so do those of these."""
    text = ""
    for character in os.fsencode(path).decode("utf-8", "surrogateescape"):
        plain = not (FIRST <= character <= LAST or "\uDC80" <= character <= "\uDCFF")
        text += character if plain else "".join(chr(0xF700 + byte) for byte in character.encode("utf-8", "surrogateescape"))
    return text


def from_text(text):
    return b"".join(bytes([ord(c) - 0xF700]) if FIRST <= c <= LAST else c.encode("utf-8") for c in text)


class Job:
    """Plays the supervisor: starts the host as a worker, hands it a job and inputs, answers and keeps what it says."""

    def __init__(self, place, job, inputs=(), answer=None, arguments=(), finished=()):
        """`inputs`: paths; `answer(ask)`: what to answer an "act", by default "go", or "pretend" in a trial run;
        `finished`: those of which only the final action is left."""
        self.inputs, self.next, self.finished = list(inputs), 0, finished
        self.acts, self.records, self.reports, self.remarks, self.states = [], [], [], [], {}
        self.end = self.end_message = None
        self.answer = answer or (lambda ask: "pretend" if job.get("dryRun") else "go")
        environment = {key: value for key, value in os.environ.items() if key not in VARIABLES}
        environment["XDG_CONFIG_HOME"] = str(place.root / "config")
        place.log.unlink(missing_ok=True)
        with subprocess.Popen([str(HOST), "--worker", *map(str, arguments)], env=environment, cwd=place.root,
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            try:
                for line in process.stdout:
                    said = json.loads(line)
                    if "tell" in said:
                        self.note(said)
                        continue
                    reply = {"job": job} if said["ask"] == "job" else self.reply(said)
                    process.stdin.write(json.dumps(reply).encode() + b"\n")
                    process.stdin.flush()
                self.errors = process.communicate(timeout=120)[1].decode("utf-8", "replace")
            finally:
                process.kill()
        self.code = process.returncode
        log = place.log.read_bytes() if place.log.exists() else b""
        self.lines = [line.partition(b": ")[2].decode("utf-8", "surrogateescape") for line in log.split(b"\r\n") if line]

    def reply(self, said):
        kind = said["ask"]
        if kind == "input":
            return {"input": self.next_input()}
        if kind == "act":
            self.acts.append(said)
            answer = self.answer(said)
            if answer == "pretend":
                self.states[said["target"]] = said["act"] in ("put", "move")
            return {"answer": answer}
        assert kind in ("exists", "mark"), said
        return {"exists": self.states.get(said["path"])} if kind == "exists" else {}

    def next_input(self):
        if self.next == len(self.inputs):
            return None
        self.next += 1
        path = self.inputs[self.next - 1]
        return {"number": self.next, "total": len(self.inputs), "path": to_text(path),
                "toDo": "final-action" if path in self.finished else "whole"}

    def note(self, said):
        kind = said["tell"]
        if kind == "file":
            self.records.append(said["record"])
        elif kind == "report":
            self.reports.append(said["report"])
        elif kind == "remark":
            self.remarks.append(said["text"])
        elif kind == "ends":
            assert self.end is None, "told its end twice"
            self.end, self.end_message = said["end"], said["message"]

    def __str__(self):
        return (f"end {self.end}: {self.end_message}, exit code {self.code}\n--- log\n" + "\n".join(self.lines) +
                f"\n--- records {self.records}\n--- acts {self.acts}\n--- standard error\n{self.errors}")


def job_of(kind, sequence, final=0, destination="", source="", output="", settings=(), **more):
    """The JSON of a run or a plan."""
    words = ("nothing", "copy", "move", "delete", "rename", "execute", "move-replace", "move-versions", "copy-versions")
    values = {"work": {"kind": "sequence", "files": {"sequence": to_text(sequence)}}, "output": to_text(output),
              "destination": to_text(destination), "extensions": "pdf",
              "inputs": [to_text(source)] if source else [], "finalAction": words[final], **dict(settings)}
    description = {key: value for key, value in values.items() if value}
    return {"kind": kind, "version": 3, "run": "test1", "description": description, **more}


class JobTest(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)

    def write(self, *names):
        paths = [self.place.input / name for name in names]
        for path in paths:
            path.write_bytes(minimal_pdf(path.name))
        return [str(path) for path in paths]

    def results(self):
        return self.place.names(self.place.output)


class Jobs(JobTest):
    def setUp(self):
        super().setUp()
        self.sequence = self.place.sequence("protect.sequ", [(PROTECT, protect_items()), (SAVE, save_items())])

    def run_job(self, inputs, sequence=None, final=0, arguments=(), answer=None, finished=(), **more):
        place = self.place
        job = job_of("run", sequence or self.sequence, final, place.done, place.input, place.output, **more)
        return Job(self.place, job, inputs, answer, arguments, finished)

    def test_a_plan_takes_several_places_or_those_that_the_sequence_names(self):
        self.write("a.pdf", "b.pdf")
        other = self.place.root / "other"
        other.mkdir()
        for name in ("c.pdf", "d.txt"):
            (other / name).write_bytes(b"x")
        folder, b = self.place.input, self.place.input / "b.pdf"
        for sources, inputs, found in (([], [folder, other, b, other / "d.txt"], ["a.pdf", "b.pdf", "c.pdf", "d.txt"]),
                                       ([("Folder", folder)], [], ["a.pdf", "b.pdf"]), ([("File", b)], [], ["b.pdf"]),
                                       ([("Folder", self.place.output), ("File", b)], [], ["b.pdf"]),
                                       ([], [self.place.done], [])):
            with self.subTest(sources=sources, inputs=inputs):
                sequence = self.place.sequence("named.sequ", [(PROTECT, protect_items()), (SAVE, save_items())], sources)
                job = Job(self.place, job_of("plan", sequence, output=self.place.output,
                                             settings={"inputs": [to_text(path) for path in inputs]}))
                self.assertEqual((job.end, job.code, job.acts, job.records), ("finished", 0, [], []), job)
                planned = [file for report in job.reports[:-1] for file in report["inputs"]]
                self.assertEqual([Path(file["path"]).name for file in planned], found, job)
                self.assertEqual(job.reports[-1]["plan"]["total"], len(found))
                said = "No input files have been found at specified location, processing is terminated"
                self.assertEqual(said in job.lines, not found)

    def test_what_is_no_job_ends_as_not_started(self):
        for job in ({"kind": "dance"}, {}, [], 7, {"kind": 5}, {"kind": "run"}, {"kind": "plan", "version": 1}):
            with self.subTest(job=job):
                done = Job(self.place, job if isinstance(job, dict) else {"kind": job})
                self.assertEqual((done.end, done.code), ("not-started", 1), done)
                self.assertNotEqual(done.end_message, "")

    def test_only_the_final_action_is_left(self):
        inputs = self.write("a.pdf", "b.pdf")
        job = self.run_job(inputs, final=7, finished=inputs[:1])
        self.assertEqual([(ask["number"], ask["purpose"], ask["act"]) for ask in job.acts],
                         [(1, "final-action", "move"), (2, "output", "put"), (2, "final-action", "move")], job)
        self.assertEqual((self.results(), self.place.names(self.place.done)), (["b.pdf"], ["a.pdf", "b.pdf"]))

    def test_an_incomplete_file_stays_where_it_is(self):
        sequence = self.place.sequence("some.sequ", [("Maker:Gone", {}), (SAVE, save_items())])
        for code in (1, 2, 3, 6, 7, 8):
            with self.subTest(code=code):
                inputs = self.write("a.pdf")
                job = self.run_job(inputs, sequence, code)
                self.assertEqual(job.records[0]["outcome"], "incomplete", job)
                self.assertIn("stays where it is", job.records[0]["message"], job)
                self.assertTrue(os.path.exists(inputs[0]), job)
                self.assertEqual(list(self.place.done.iterdir()), [])
                self.place.clear(self.place.output)

    def test_a_refused_act_fails_the_file_and_nothing_else(self):
        names = ["a.pdf", "b.pdf"]
        inputs = self.write(*names)
        for refused, outcome, written in (("output", "failed", 0), ("final-action", "incomplete", 2)):
            with self.subTest(refused=refused):
                job = self.run_job(inputs, final=6, answer=lambda ask, no=refused: ("go", "refuse")[ask["purpose"] == no])
                self.assertEqual([record["outcome"] for record in job.records], [outcome] * 2, job)
                self.assertEqual([Path(path).read_bytes() for path in inputs], [minimal_pdf(name) for name in names])
                self.assertEqual((len(self.results()), list(self.place.done.iterdir())), (written, []))

    def test_a_trial_run_leaves_out_steps_of_other_makers(self):
        sequence = self.place.sequence("foreign.sequ", [("T:WithoutReserve", {}), (SAVE, save_items())])
        job = self.run_job(self.write("a.pdf"), sequence, dryRun=True, arguments=FOREIGN)
        self.assertIn("T:WithoutReserve was left out of the trial run", job.records[0]["message"], job)
        self.assertNotIn("T:WithoutReserve", job.errors, "the step was not even made")
        self.assertEqual(self.results(), [])

    def test_a_signed_document_that_is_written_as_a_whole_is_told(self):
        inputs = self.write("signed.pdf", "plain.pdf")
        Path(inputs[0]).write_bytes(minimal_pdf("x").replace(b"/Pages 2 0 R", SIGNED, 1))
        job = self.run_job(inputs)
        self.assertEqual([record.get("signatures") for record in job.records], ["broken", None], job)
        self.assertTrue(any("signed.pdf" in remark and "signatures broken" in remark for remark in job.remarks), job)
        self.place.clear(self.place.output)
        self.assertEqual(self.run_job(inputs, dryRun=True).records[0].get("signatures"), "broken", "foretold, too")
        unsaved = self.place.sequence("no-save.sequ", [(PROTECT, protect_items())])
        self.assertNotIn("signatures", self.run_job(inputs, unsaved).records[0], "nothing was written")

    def test_without_a_supervisor_nothing_more_is_done(self):
        path = self.write("a.pdf")[0]
        job = job_of("run", self.sequence, 3, "", self.place.input, self.place.output)
        answers = [{"job": job}, {"input": {"number": 1, "total": 9, "path": path, "toDo": "whole"}}, {}, {}]
        for count in range(len(answers) + 1):
            with self.subTest(answers=count):
                done = subprocess.run([str(HOST), "--worker"], timeout=60, check=False, capture_output=True,
                                      input=b"".join(json.dumps(answer).encode() + b"\n" for answer in answers[:count]),
                                      env=dict(os.environ, XDG_CONFIG_HOME=str(self.place.root / "config")))
                self.assertEqual((done.returncode, os.path.exists(path), self.results()), (1, True, []), done)

    def test_a_record_that_cannot_be_written_is_no_good_run(self):
        self.write("a.pdf")
        outcome = self.place.run_folder(self.sequence, arguments=("--record", "/dev/full"))
        self.assertEqual(outcome.code, 1, outcome)
        self.assertIn("the record /dev/full cannot be written", outcome.errors)
        outcome = self.place.run_folder(self.sequence, arguments=("--record", self.place.root / "no" / "such"))
        self.assertEqual((outcome.code, outcome.lines), (1, []), "the run did not even start")


class SequenceJobs(JobTest):
    def setUp(self):
        super().setUp()
        self.sequence = self.place.root / "new.sequ"
        self.write("a.pdf")

    def ask(self, kind, end="finished", **fields):
        """Does a job; answers its report, or its message when it is not to finish."""
        job = Job(self.place, {"kind": "sequence-" + kind, "path": to_text(self.sequence), **fields})
        self.assertEqual((job.end, job.code == 0), (end, end == "finished"), job)
        self.assertEqual(job.acts, [], "sequence files are not what a run asks about")
        self.assertEqual(len(job.reports), 1 if end == "finished" else 0, job)
        for secret in (OPEN, OWNER):
            self.assertNotIn(secret, str(job) + repr(job.reports) + repr(job.remarks))
        return job.reports[0]["answer"] if job.reports else job.end_message

    def run_it(self, sequence=None):
        self.place.clear(self.place.output)
        outcome = self.place.run_folder(sequence or self.sequence, FERRULEFILEEXT="pdf")
        self.assertEqual(outcome.code, 0, outcome)
        return self.results()

    def test_the_protect_template_protects_in_both_forms(self):
        protection = {"userPassword": OPEN, "ownerPassword": OWNER, "allow": ["print"]}
        made = self.ask("new", template="protect", protect=protection)
        self.assertTrue(made["holdsPasswords"])
        self.assertEqual(self.sequence.stat().st_mode & 0o777, 0o600)
        checked = self.ask("check", description={"inputs": ["/in"], "output": "/out"})
        self.assertEqual((checked["ok"], [finding["code"] for finding in checked["findings"]]),
                         (True, ["holds-passwords", "metadata-readable"]))
        host, result = self.place.root / "host.sequ", self.place.output / "a.pdf"
        self.assertEqual(self.ask("convert", to="host", target=to_text(host))["to"], "host")
        for sequence in (self.sequence, host):
            self.assertEqual(self.run_it(sequence), ["a.pdf"])
            self.assertEqual((page_count(result), page_count(result, OPEN)), (None, 1))
            info = tool("pdfinfo", "-upw", OPEN, result)[1]
            self.assertIn(b"algorithm:AES-256", info)
            self.assertIn(b"print:yes copy:no change:no", info)
            self.assertIn(b"Supplied password is owner password",
                          tool("qpdf", "--password-mode=unicode", "--password=" + OWNER, "--show-encryption", result)[1])

    def test_a_name_of_any_bytes_is_a_name(self):
        self.sequence = Path(os.fsdecode(os.fsencode(str(self.place.root)) + b"/n\xffm\xe9.sequ"))
        self.ask("new", template="save")
        self.assertEqual(from_text(self.ask("show")["path"]), os.fsencode(self.sequence))
        message = self.ask("new", template="save", end="not-started")
        self.assertIn(os.fsencode(self.sequence), from_text(message))
        self.sequence.write_bytes(b"<Workflow>" + b"<Group>" * 100000)
        self.assertEqual(self.ask("check")["errors"], 1, "deep, and harmless")


if __name__ == "__main__":
    unittest.main()
