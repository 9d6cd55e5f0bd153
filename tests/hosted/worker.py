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

    def __init__(self, place, job, inputs=(), answer=None, arguments=()):
        """`inputs`: paths; `answer(ask)`: what to answer an "act", by default "go", or "pretend" in a trial run."""
        self.inputs, self.next = list(inputs), 0
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
                    process.stdin.write(json.dumps({"job": job} if said["ask"] == "job" else self.reply(said)).encode() + b"\n")
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
        return {"number": self.next, "total": len(self.inputs), "path": to_text(self.inputs[self.next - 1]), "toDo": "whole"}

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
    return {"kind": kind, "version": 3, "run": "test1", "description": {key: value for key, value in values.items() if value},
            **more}
