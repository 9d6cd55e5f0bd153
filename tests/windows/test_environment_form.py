"""A hundred real documents, processed from environment variables: on Windows they come out as they do on Linux, with the
same log, and open in independent libraries."""
import csv
import difflib
import os
import shutil
import subprocess
import unittest
from pathlib import Path

from commandline import PASSWORD, records
from test_corpus import LIBRARY_KILLERS
from test_equal import NORMALISE
from unattended import HOST as LINUX_HOST, PROTECT, SAVE, Workplace, page_count, protect_items, save_items, text_of, tool
from wine import HOST as WINDOWS_HOST, WindowsPlace

CORPUS = Path(os.environ.get("FERRULE_CORPUS", ""))
COUNT = 100


def documents():
    """Every so many'th file that the manifest calls usable or damaged, encrypted ones among them."""
    with open(CORPUS / "MANIFEST.tsv", encoding="utf-8", newline="") as stream:
        rows = [row for row in csv.DictReader(stream, delimiter="\t", quoting=csv.QUOTE_NONE)
                if row["path"].lower().endswith(".pdf") and row["theme"] != "nonpdf"]
    return [CORPUS / rows[number * len(rows) // COUNT]["path"] for number in range(COUNT)]


class Run:
    """One run over the same documents in a place of either system."""

    def __init__(self, place, program, paths):
        self.place, self.program = place, program
        for number, path in enumerate(paths):
            shutil.copyfile(path, place.input / f"{number:03} {path.name}")
        sequence = place.sequence("protect.sequ", [(PROTECT, protect_items()), (SAVE, save_items())])
        self.record = place.root / "record.jsonl"
        self.outcome = place.run_folder(sequence, 7, place.done, ["--record", self.record])
        self.log = place.root / "log.txt"
        self.log.write_bytes(self.outcome.raw_log)

    def comparable(self, path):
        """Without times and folders, and with one kind of separators."""
        folders = [f"{self.place.told(self.place.root)}=PLACE", f"{self.place.told(self.program.parent)}=PROGRAMS"]
        done = subprocess.run([NORMALISE, path, *folders], check=True, capture_output=True)
        return done.stdout.decode("utf-8", "surrogateescape").replace("\\\\", "/").replace("\\", "/").splitlines()


class EnvironmentForm(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        if not (CORPUS / "MANIFEST.tsv").is_file() or not LINUX_HOST.is_file():
            raise unittest.SkipTest("the real documents or the programs for Linux are not here")
        paths = documents()
        cls.linux, cls.windows = Run(Workplace(), LINUX_HOST, paths), Run(WindowsPlace(), WINDOWS_HOST, paths)
        cls.addClassCleanup(cls.linux.place.close)
        cls.addClassCleanup(cls.windows.place.close)

    def same(self, on_linux, on_windows):
        difference = list(difflib.unified_diff(on_linux, on_windows, "Linux", "Windows", lineterm="", n=0))
        self.assertEqual(difference, [], "\n".join(line[:300] for line in difference[:20]))

    def test_files_log_and_record_are_the_same(self):
        def names(place):
            return sorted(str(path.relative_to(place.root)) for folder in (place.input, place.output, place.done)
                          for path in folder.rglob("*"))
        self.same(names(self.linux.place), names(self.windows.place))
        self.assertGreater(len(list(self.windows.place.output.iterdir())), COUNT // 2)
        self.assertEqual(self.linux.outcome.code, self.windows.outcome.code, self.windows.outcome.errors[-2000:])
        self.same(self.linux.comparable(self.linux.log), self.windows.comparable(self.windows.log))
        self.same(self.linux.comparable(self.linux.record), self.windows.comparable(self.windows.record))

    def test_the_results_open_in_independent_libraries(self):
        killers = {Path(name).name for name in LIBRARY_KILLERS}  # independent libraries hang on them, too
        wrong, looked_at = [], 0
        for line in records(self.windows.record).values():
            path = self.windows.place.output / self.windows.place.local(line["path"]).name
            if line["outcome"] != "saved" or path.name[4:] in killers:
                continue
            looked_at += 1
            other = self.linux.place.output / path.name
            pages = [tool("qpdf", "--password=" + PASSWORD, "--show-npages", each)[1] for each in (path, other)]
            if not pages[0] or pages[0] != pages[1]:
                wrong.append(f"{path.name}: qpdf sees the pages {pages}")
            if page_count(path, PASSWORD) is None or text_of(path, PASSWORD) != text_of(other, PASSWORD):
                wrong.append(f"{path.name}: poppler sees another text")
            if page_count(path) is not None:
                wrong.append(f"{path.name}: opens without a password")
        self.assertEqual(wrong, [])
        self.assertGreater(looked_at, COUNT // 2)


if __name__ == "__main__":
    unittest.main()
