"""Plays the supervisor: starts the host as a worker, hands it a job and its inputs, and answers what it asks."""
import json
import os
import subprocess

from unattended import HOST, VARIABLES


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
    """One start of a worker and everything it said."""

    def __init__(self, place, job, inputs=(), answer=None, arguments=(), to_do=None, timeout=120):
        """`inputs`: paths; `answer(ask)`: what to answer an "act", by default "go", or "pretend" in a trial run."""
        self.place, self.inputs, self.acts, self.marks = place, list(inputs), [], []
        self.records, self.reports, self.remarks, self.states = [], [], [], {}
        self.end, self.end_message, self.started = None, None, None
        self.to_do = to_do or {}
        self.dry = bool(job.get("dryRun"))
        self.answer = answer or (lambda ask: "pretend" if self.dry else "go")
        self.total = len(self.inputs)
        self.next = 0
        environment = {key: value for key, value in os.environ.items() if key not in VARIABLES}
        environment["XDG_CONFIG_HOME"] = str(place.root / "config")
        place.log.unlink(missing_ok=True)
        with subprocess.Popen([str(HOST), "--worker", *map(str, arguments)], env=environment, cwd=place.root,
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            try:
                self.talk(process, job)
                self.errors = process.communicate(timeout=timeout)[1].decode("utf-8", "replace")
            finally:
                process.kill()
        self.code = process.returncode
        log = place.log.read_bytes() if place.log.exists() else b""
        self.lines = [line.partition(b": ")[2].decode("utf-8", "surrogateescape") for line in log.split(b"\r\n") if line]

    def talk(self, process, job):
        for line in process.stdout:
            said = json.loads(line)
            reply = self.reply(said, job) if "ask" in said else self.note(said)
            if reply is not None:
                process.stdin.write(json.dumps(reply).encode() + b"\n")
                process.stdin.flush()

    def reply(self, said, job):
        kind = said["ask"]
        if kind == "job":
            return {"job": job}
        if kind == "input":
            return {"input": self.next_input()}
        if kind == "act":
            self.acts.append(said)
            answer = self.answer(said)
            if answer == "pretend":
                self.pretend(said)
            return {"answer": answer}
        if kind == "exists":
            return {"exists": self.states.get(said["path"])}
        assert kind == "mark", said
        self.marks.append(said["mark"])
        return {}

    def next_input(self):
        if self.next == self.total:
            return None
        self.next += 1
        path = self.inputs[self.next - 1]
        return {"number": self.next, "total": self.total, "path": to_text(path), "toDo": self.to_do.get(path, "whole")}

    def pretend(self, said):
        if said["act"] in ("put", "move"):
            self.states[said["target"]] = True
        if said["act"] in ("move", "delete"):
            self.states[said["file"]] = False

    def note(self, said):
        kind = said["tell"]
        if kind == "file":
            self.records.append(said["record"])
        elif kind == "report":
            self.reports.append(said["report"])
        elif kind == "remark":
            self.remarks.append(said["text"])
        elif kind == "starts":
            self.started = said["inputs"]
        elif kind == "ends":
            assert self.end is None, "told its end twice"
            self.end, self.end_message = said["end"], said["message"]

    def planned(self):
        """The inputs of a plan, and the plan."""
        return [report["input"] for report in self.reports if "input" in report], self.reports[-1].get("plan")

    def __str__(self):
        return (f"end {self.end}: {self.end_message}, exit code {self.code}\n--- log\n" + "\n".join(self.lines) +
                f"\n--- records {self.records}\n--- acts {self.acts}\n--- standard error\n{self.errors}")


def job_of(kind, sequence, final=0, destination="", source="", output="", settings=(), **more):
    """The JSON of a run or a plan."""
    words = ("nothing", "copy", "move", "delete", "rename", "execute", "move-replace", "move-versions", "copy-versions")
    values = {"sequence": to_text(sequence), "output": to_text(output), "destination": to_text(destination), "extensions": "pdf",
              "inputs": [to_text(source)] if source else [], "finalAction": words[final], **dict(settings)}
    return {"kind": kind, "version": 2, "run": "test1", "description": {key: value for key, value in values.items() if value},
            **more}
