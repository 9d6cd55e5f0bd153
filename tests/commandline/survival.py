"""The promise to people with only copies, stated once: what must hold after a run was hurt, and after it was resumed."""
import os
import shutil
import time
from pathlib import Path

from commandline import FINAL_ACTIONS, CommandPlace, documents, has_title, is_protected, is_whole, records, sha256, temporaries

TITLE = "A new title"
NAMES = ("a.pdf", "sub/a.pdf", "b ü.pdf")


class Scene:
    """A folder of inputs, a way of processing it, and the state it may be in.

    `final` is a final action's code, None for saving in place, or "metadata" for changing titles in place."""

    def __init__(self, final, names=NAMES, jobs=1, place=CommandPlace):
        self.final, self.jobs = final, jobs
        if final == 4:
            names = names[:1]  # all files of a folder would get the same new name
        if final in (2, 6):  # what refuses a taken name, or replaces it, needs names of their own
            names = [f"{number} {Path(name).name}" for number, name in enumerate(names)]
        self.place = place()
        self.titles = final == "metadata"
        self.in_place = final is None or self.titles
        self.originals = documents(self.place, names)
        self.record = self.place.root / "record.jsonl"
        self.started = self.place.root / "started"
        self.started.mkdir()
        self.sequence = (self.place.protect_sequence(DontOverwrite=("boolean", "false")) if self.in_place
                         else self.place.protect_sequence())
        self.existing = {}
        if final in (1, 6, 7, 8):  # something of that name is there already
            old = self.place.done / Path(names[0]).name
            old.write_bytes(b"an older document")
            self.existing[old] = old.read_bytes()

    def close(self):
        self.place.close()

    def arguments(self, *more):
        if self.titles:
            return ["metadata", "set", self.place.input, "--title", TITLE, "--in-place", "--jobs", self.jobs, "--record", self.record, "--quiet", *more]
        words = ["run", self.sequence, "--input", self.place.input, "--jobs", self.jobs, "--record", self.record, "--quiet"]
        if not self.in_place:
            words += ["--output", self.place.output, "--final-action", FINAL_ACTIONS[self.final]]
        if self.final == 4:
            words += ["--destination", "renamed.pdf"]
        elif self.final == 5:
            words += ["--destination", self._program()]
        elif self.final not in (None, 0, 3):
            words += ["--destination", self.place.done]
        return [*words, *more]

    def _program(self):
        program = self.place.root / "start.sh"
        if not program.exists():
            program.write_text(f'#!/bin/sh\nmktemp "{self.started}/$(basename "$1").XXXXXX" >/dev/null\n')
            program.chmod(0o755)
        return program

    def is_result(self, path):
        return has_title(path, TITLE) if self.titles else is_protected(path)

    # ---- what must hold at any time

    def complaints_at_any_time(self):
        """Nothing is lost and nothing is half: every input's content exists, every visible document is whole."""
        wrong = []
        for path, original in self.originals.items():
            if not self._content_is_safe(path, original):
                wrong.append(f"{path.relative_to(self.place.root)}: its content is lost")
        for path in self._visible():
            if path.read_bytes() in {*self.originals.values(), *self.existing.values()} or self.is_result(path):
                continue
            if not (path in self._incomplete_results() and is_whole(path)):
                wrong.append(f"{path.relative_to(self.place.root)}: not a whole result")
        return wrong

    def _incomplete_results(self):
        """What the record itself says was saved although a step was not completed."""
        lines = records(self.record).values() if self.record.exists() else []
        return {self.place.local(output["path"]) for line in lines if line["outcome"] == "incomplete" for output in line["outputs"]}

    def _visible(self):
        for folder in (self.place.input, self.place.output, self.place.done):
            for path in folder.rglob("*"):
                if path.is_file() and not path.name.startswith(".ferrule-"):
                    yield path

    def _content_is_safe(self, path, original):
        if self.in_place:
            return path.is_file() and (path.read_bytes() == original or self.is_result(path))
        if any(each.read_bytes() == original for each in self._visible()):
            return True
        return self.final == 3 and len(self._outputs()) > 0 and all(map(is_whole, self._outputs()))

    def _outputs(self):
        return sorted(self.place.output.rglob("*.pdf"))

    # ---- what must hold at the end

    def complaints_at_the_end(self, undisturbed):
        """The same names as after an undisturbed run, all results whole, nothing done twice, nothing left over."""
        wrong = self.complaints_at_any_time()
        names = self.names()
        if names != undisturbed:
            wrong.append(f"names: {sorted(undisturbed - names)} are missing, {sorted(names - undisturbed)} too many")
        results = list(self.originals) if self.in_place else self._outputs()
        wrong += [f"{path}: not processed" for path in results if not self.is_result(path)]
        wrong += [f"left over: {path}" for path in temporaries(self.place.root)]
        for path, content in self.existing.items():
            if self.final in (7, 8) and path.read_bytes() != content:
                wrong.append(f"{path}: an older file was replaced")
        wrong += self._complaints_about_starts()
        return wrong + self._complaints_about_record()

    def code_of_record(self):
        """The exit code that fits what the record tells of each file."""
        return 0 if all(line["outcome"] == "saved" for line in records(self.record).values()) else 3

    def names(self):
        return {str(path.relative_to(self.place.root)) for path in self._visible()}

    def _complaints_about_starts(self):
        if self.final != 5:
            return []
        starts = {}
        for path in self.started.iterdir():
            starts.setdefault(path.name.rsplit(".", 1)[0], []).append(path)
        return [f"{name}: started {len(paths)} times for {count} file(s)" for name, paths in starts.items()
                for count in [sum(path.name == name for path in self.originals)] if len(paths) > count]

    def _complaints_about_record(self):
        lines = records(self.record)
        if sorted(lines) != list(range(1, len(self.originals) + 1)):
            return [f"the record has the numbers {sorted(lines)}"]
        wrong = []
        for line in lines.values():
            unknown = line.get("finalAction", {}).get("state") == "unknown"
            # Processed, but told as failed, when something went wrong after it had been saved in place: doing it once
            # more would do it twice.
            processed = self.in_place and bool(line.get("outputs"))
            if line["outcome"] != "saved" and not (unknown and self.final == 5) and not processed:
                wrong.append(f"record: {line}")
            for output in line.get("outputs", []):
                path = self.place.local(output["path"])
                if not path.is_file() or sha256(path) != output["sha256"]:
                    wrong.append(f"record: {output} is not what is on the disk")
        return wrong


def undisturbed_names(final, names=NAMES, jobs=1, place=CommandPlace):
    """What a run that nobody hurts leaves; also shows that it comes out at all."""
    scene = Scene(final, names, jobs, place)
    try:
        result = scene.place.ferrule(*scene.arguments())
        assert result.code == 0, str(result)
        left = scene.names()
        wait_for_starts(scene)
        wrong = scene.complaints_at_the_end(left)
        assert not wrong, "\n".join(wrong) + f"\n{result}"
        return left
    finally:
        scene.close()


def wait_for_starts(scene):
    """Started programs run on their own; gives them time to come as far as they do."""
    if scene.final != 5:
        return
    for _ in range(100):
        if len(list(scene.started.iterdir())) >= len(scene.originals):
            return
        time.sleep(0.01)


def preserve(scene, why):
    """Keeps the folder of a failure for a look, when the environment names a place for that."""
    place = os.environ.get("FERRULE_KEEP_FAILURES")
    if place:
        shutil.copytree(scene.place.root, Path(place) / why.replace("/", "_"), dirs_exist_ok=True, symlinks=True)
