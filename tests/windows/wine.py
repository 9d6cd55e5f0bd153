"""Runs the Windows programs as a user would: under Wine, in folders of drive C whose names have blanks and umlauts."""
import os
import shutil
import subprocess
import tempfile
from pathlib import Path

from commandline import CommandPlace
from unattended import VARIABLES, Outcome

WINE = os.environ.get("FERRULE_WINE", "/usr/lib/wine/wine64")
PROGRAM = Path(os.environ.get("FERRULE_WINDOWS_PROGRAM", "build/windows/bin/ferrule.exe"))
HOST = PROGRAM.with_name("ferrule-host.exe")
HOLDER = Path(os.environ.get("FERRULE_FILE_HOLDER", "build/windows/bin/file-holder.exe"))
DRIVE = Path(os.environ["WINEPREFIX"]) / "drive_c"


def windows(path):
    """The path on drive C, or on Z as Wine names the root folder."""
    path = Path(path)
    if path.is_relative_to(DRIVE):
        return "C:\\" + str(path.relative_to(DRIVE)).replace("/", "\\")
    return "Z:" + str(path.absolute()).replace("/", "\\")


class WindowsPlace(CommandPlace):
    """A scratch folder on drive C with in, out and done. Settings and log are those of the one user of the drive."""

    usual_seconds = 4

    def __init__(self, name="Prüf ordner "):
        self.root = Path(tempfile.mkdtemp(prefix=name, dir=DRIVE))
        for name in ("in", "out", "done"):
            (self.root / name).mkdir()
        self.input, self.output, self.done = self.root / "in", self.root / "out", self.root / "done"
        shutil.rmtree(self.settings, ignore_errors=True)

    @property
    def settings(self):
        return next((DRIVE / "users").glob("*/AppData/Roaming")) / "Quillon" / "Ferrule"

    @property
    def log(self):
        return self.settings / "FerruleLog.txt"

    def told(self, path):
        return windows(path)

    def local(self, told):
        drive, rest = told[:2], told[2:].replace("\\", "/").lstrip("/")
        return (DRIVE if drive == "C:" else Path("/")) / rest

    def environment(self, more=None):
        environment = {key: value for key, value in os.environ.items() if key not in VARIABLES}
        environment.update({"NO_COLOR": "1", "LC_ALL": "C.UTF-8", "WINEDEBUG": "-all"})
        environment.update({key: windows(value) if isinstance(value, Path) else str(value) for key, value in (more or {}).items()})
        return environment

    def start_program(self, program, *arguments, more=None, **options):
        words = [windows(word) if isinstance(word, Path) else str(word) for word in arguments]
        options = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
        return subprocess.Popen([WINE, str(program), *words], env=self.environment(more), cwd=self.root, **options)

    def start(self, *arguments, more=None, **options):
        return self.start_program(PROGRAM, *arguments, more=more, **options)

    def run(self, variables, arguments=(), timeout=600, program=None):
        self.log.unlink(missing_ok=True)
        with self.start_program(program or HOST, *arguments, more=variables) as process:
            errors = process.communicate(timeout=timeout)[1]
        log = self.log.read_bytes() if self.log.exists() else b""
        return Outcome(process.returncode, log, errors.decode("utf-8", "replace"))

    def workers_of(self, process):
        """Processes under Wine are no children of each other; their command line tells."""
        found = subprocess.run(["pgrep", "-f", r"ferrule-host\.exe.*--worker"], capture_output=True, text=True, check=False)
        return [int(word) for word in found.stdout.split()]

    def held_open(self, path):
        """As long as the result is in use, another process has the file and lets nobody else have it."""
        return HeldOpen(self, path)


class HeldOpen:
    def __init__(self, place, path):
        self.process = place.start_program(HOLDER, path, stdin=subprocess.PIPE)

    def __enter__(self):
        said = self.process.stdout.readline().strip()
        assert said == b"held", said
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait(timeout=30)
        self.process.stdout.close()
        self.process.stderr.close()
