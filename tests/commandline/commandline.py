"""Runs the command line `ferrule` as a user would, and says what must hold of the files whatever happened."""
import functools
import hashlib
import json
import os
import re
import signal
import subprocess
from pathlib import Path

from unattended import (PROTECT, SAVE, VARIABLES, Workplace, from_environment, minimal_pdf, page_count, protect_items,
                        save_items, tool)

# Whoever started the tests may ignore interrupts; the programs under test are to get those that are sent to them.
signal.signal(signal.SIGINT, signal.default_int_handler)

PROGRAM = from_environment("FERRULE_PROGRAM", "build/release/bin/ferrule")
PASSWORD = "open sesame"
FINAL_ACTIONS = {0: "nothing", 1: "copy", 2: "move", 3: "delete", 4: "rename", 5: "execute", 6: "move-replace",
                 7: "move-versions", 8: "copy-versions"}


class Result:
    """What one call of the program left."""

    def __init__(self, code, output, errors):
        self.code, self.output, self.errors = code, output, errors

    def __str__(self):
        return f"exit code {self.code}\n--- standard output\n{self.output}\n--- standard error\n{self.errors}"


class CommandPlace(Workplace):
    """A scratch folder in which the command line works, with settings of its own."""

    def environment(self, more=None):
        environment = {key: value for key, value in os.environ.items() if key not in VARIABLES}
        environment.update({"XDG_CONFIG_HOME": str(self.root / "config"),
                            "XDG_CACHE_HOME": str(self.root / "cache"), "NO_COLOR": "1"})
        environment.update(more or {})
        return environment

    def start(self, *arguments, more=None, **options):
        return subprocess.Popen([str(PROGRAM), *map(os.fspath, map(_text, arguments))], env=self.environment(more), cwd=self.root,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)

    def ferrule(self, *arguments, more=None, timeout=300):
        process = self.start(*arguments, more=more)
        try:
            output, errors = process.communicate(timeout=timeout)
        except subprocess.TimeoutExpired:
            process.kill()
            output, errors = process.communicate()
            raise AssertionError(f"no end after {timeout} s: {arguments}\n{errors.decode('utf-8', 'replace')}") from None
        return Result(process.returncode, output.decode("utf-8", "replace"), errors.decode("utf-8", "replace"))

    def expect(self, code, *words, **options):
        """The same, with this exit code."""
        result = self.ferrule(*words, **options)
        assert result.code == code, f"not {code}: {words}\n{result}"
        return result

    usual_seconds = 0.6  # what a run over some tens of small documents takes

    def workers_of(self, process):
        """The process ids of the workers of a running command line. The search for leaks at its end has a child, too."""
        found = subprocess.run(["pgrep", "-P", str(process.pid), "-x", "ferrule-host"], capture_output=True, text=True, check=False).stdout
        return [int(word) for word in found.split()]

    def local(self, told):
        """Where a path that the program told is found from here."""
        return Path(told)

    def protect_sequence(self, name="protect.sequ", method=0, **save):
        """Protects with the password of these tests, then saves where the run says."""
        return self.sequence(name, [(PROTECT, protect_items(method)), (SAVE, save_items(**save))])


def _text(value):
    return value if isinstance(value, (str, bytes, os.PathLike)) else str(value)


def sha256(path):
    return hashlib.sha256(Path(path).read_bytes()).hexdigest()


def records(path):
    """The lines of a record, by file number."""
    with open(path, encoding="utf-8") as stream:
        return {line["number"]: line for line in map(json.loads, stream)}


def is_protected(path):
    """A whole document that opens with the password of the test sequences and not without."""
    return _is_protected(Path(path).read_bytes(), str(path))


def is_whole(path):
    """A complete document, protected or, when a step was not completed, not."""
    return is_protected(path) or page_count(path) is not None


@functools.lru_cache(maxsize=4096)
def _is_protected(content, path):
    """Asked once for each content: it takes two starts of an independent tool."""
    return content.rstrip().endswith(b"%%EOF") and page_count(path, PASSWORD) is not None and page_count(path) is None


def has_title(path, title):
    """A whole document with this title."""
    return _has_title(Path(path).read_bytes(), str(path), title)


@functools.lru_cache(maxsize=4096)
def _has_title(content, path, title):
    return content.rstrip().endswith(b"%%EOF") and re.search(rf"^Title: +{title}\nPages: ".encode(), b"\n".join(
        line for line in tool("pdfinfo", path)[1].split(b"\n") if line.startswith((b"Title:", b"Pages:"))), re.M) is not None


def temporaries(root):
    return [str(path) for path in Path(root).rglob(".ferrule-*")]


def documents(place, names, text="Document"):
    """Writes small, different documents into the input folder; answers their bytes by path."""
    made = {}
    for number, name in enumerate(names):
        path = place.input / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(minimal_pdf(f"{text} {number}"))
        made[path] = path.read_bytes()
    return made
