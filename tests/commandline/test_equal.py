"""The same files give the same log and the same record, whoever processes them: the environment form, one worker, four
workers, four shards merged."""
import difflib
import os
import shutil
import subprocess
import unittest
from pathlib import Path

from commandline import FINAL_ACTIONS, CommandPlace, documents

NORMALISE = Path(__file__).resolve().parents[2] / "scripts" / "normalise-run"
SAMPLES = Path(os.environ.get("FERRULE_SAMPLES", ""))
# Names that collide in the output folder and in the destination, and one that is what a collision is called.
NAMES = [f"{folder}report{number}.pdf" for folder in ("", "one/", "two/") for number in ("", " (1)", " 2")] + ["sub/Ünïcode ß.pdf"]


class Variant:
    """One way of processing the same folder."""

    def __init__(self, name, final, sequence="protect"):
        self.name, self.final = name, final
        self.place = CommandPlace()
        documents(self.place, NAMES)
        (self.place.input / "broken.pdf").write_bytes(b"%PDF-1.4 but nothing else")
        (self.place.input / "zz empty.pdf").write_bytes(b"")
        for path in sorted((SAMPLES / "documents").glob("*.pdf")):
            shutil.copyfile(path, self.place.input / ("sample " + path.name))
        shutil.copyfile(self.place.input / "report.pdf", self.place.done / "report.pdf")
        in_place = sequence == "in place"
        self.output = None if in_place else self.place.output
        self.sequence = self.place.protect_sequence(DontOverwrite=("boolean", "false" if in_place else "true"))
        self.record, self.log = self.place.root / "record.jsonl", self.place.root / "log.txt"

    def close(self):
        self.place.close()

    def comparable(self, path):
        place = f"{self.place.root}=PLACE"
        done = subprocess.run([NORMALISE, path, place], check=True, capture_output=True)
        return done.stdout.decode("utf-8", "surrogateescape").splitlines()

    def tree(self):
        return sorted(str(path.relative_to(self.place.root)) for folder in (self.place.input, self.place.output, self.place.done)
                      for path in folder.rglob("*"))

    def base(self, *what):
        words = [*what, self.sequence, "--input", self.place.input, "--final-action", FINAL_ACTIONS[self.final]]
        if self.output:
            words += ["--output", self.output]
        if self.final not in (0, 3):
            words += ["--destination", self.place.done]
        return words

    # ---- the ways

    def environment_form(self):
        outcome = self.place.run_folder(self.sequence, self.final, "" if self.final in (0, 3) else self.place.done,
                                        ["--record", self.record], output=self.output is not None, FERRULEFILEEXT="pdf", FERRULENOPROGRESS="")
        self.log.write_bytes(outcome.raw_log)
        return outcome.code

    def jobs(self, number):
        return self.place.ferrule(*self.base("run"), "--jobs", number, "--record", self.record, "--log", self.log, "--quiet").code

    def shards(self, count):
        manifest = self.place.root / "manifest.jsonl"
        self.place.expect(0, *self.base("plan"), "--manifest", manifest)
        journals = [self.place.root / f"journal-{shard}.jsonl" for shard in range(1, count + 1)]
        for shard in range(count, 0, -1):
            done = self.place.ferrule("run", "--manifest", manifest, "--shard", f"{shard}/{count}", "--journal", journals[shard - 1])
            assert done.code in (0, 3), str(done)
        return self.place.ferrule("merge", "--manifest", manifest, *journals, "--record", self.record, "--log", self.log).code


WAYS = {
    "environment form": Variant.environment_form,
    "one worker": lambda variant: variant.jobs(1),
    "four workers": lambda variant: variant.jobs(4),
    "four shards": lambda variant: variant.shards(4),
}


class Equal(unittest.TestCase):
    maxDiff = None

    def check(self, final, sequence="protect"):
        seen = {}
        for name, way in WAYS.items():
            variant = Variant(name, final, sequence)
            self.addCleanup(variant.close)
            code = way(variant)
            seen[name] = {"log": variant.comparable(variant.log), "record": variant.comparable(variant.record),
                          "tree": variant.tree(), "exit code": [str(code)]}
            self.assertGreater(len(seen[name]["record"]), len(NAMES))
        for name, what in seen.items():
            for kind, lines in what.items():
                difference = list(difflib.unified_diff(seen["environment form"][kind], lines, "environment form", name, lineterm="", n=1))
                self.assertEqual(difference, [], f"{kind}:\n" + "\n".join(difference[:60]))

    def test_log_record_and_files(self):
        for final, sequence in ((0, "protect"), (7, "protect"), (8, "protect"), (1, "in place")):
            with self.subTest(final=final):
                self.check(final, sequence)


if __name__ == "__main__":
    unittest.main()
