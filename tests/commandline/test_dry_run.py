"""A dry run touches nothing and tells what the later run does, for folders and sequences made at random."""
import os
import random
import unittest

from commandline import FINAL_ACTIONS, CommandPlace, minimal_pdf, records
from unattended import PROTECT, SAVE, protect_items, save_items, tool

ROUNDS = int(os.environ.get("FERRULE_DRY_RUNS", "25"))
WORDS = ("a", "b", "a (1)", "A", "report", "ü")
FOLDERS = ("", "one/", "two/", "one/deep/")


def snapshot(place):
    """Everything below the three folders: names, contents, times."""
    return {str(path.relative_to(place.root)): (path.read_bytes() if path.is_file() else None, path.stat().st_mtime_ns)
            for folder in (place.input, place.output, place.done) for path in [folder, *folder.rglob("*")]}


def make_files(place, chance):
    restricted = place.root / "restricted.pdf"
    plain = place.root / "plain.pdf"
    plain.write_bytes(minimal_pdf("restricted"))
    tool("qpdf", "--encrypt", "", "owner", "128", "--modify=none", "--", plain, restricted)
    for _ in range(chance.randint(1, 12)):
        path = place.input / (chance.choice(FOLDERS) + chance.choice(WORDS) + chance.choice((".pdf", ".PDF", ".pdf")))
        path.parent.mkdir(parents=True, exist_ok=True)
        kind = chance.random()
        path.write_bytes(b"broken" if kind < 0.1 else restricted.read_bytes() if kind < 0.2 else minimal_pdf(str(chance.random())))
    made = [path for path in place.input.rglob("*") if path.is_file()]
    for link in (os.symlink, os.link):
        path = place.input / (chance.choice(WORDS) + f" {link.__name__}.pdf")
        if chance.random() < 0.4:
            link(chance.choice(made), path)
    for folder in (place.output, place.done):
        for word in chance.sample(WORDS, 2):
            (folder / f"{word}.pdf").write_bytes(b"was here before")


def make_sequence(place, chance):
    save = {"DontOverwrite": ("boolean", chance.choice(("true", "false")))}
    if chance.random() < 0.5:
        save |= {"AddToBaseName": ("boolean", "true"), "InsertAfterBaseName": ("string", chance.choice(("-x", " (1)", ""))),
                 "InsertBeforeBaseName": ("string", chance.choice(("a", "")))}
    steps = [(SAVE, save_items(**save))]
    if chance.random() < 0.7:
        steps.insert(0, (PROTECT, protect_items(chance.randint(0, 3))))
    if chance.random() < 0.2:
        steps.append((SAVE, save_items(**save)))
    return place.sequence("random.sequ", steps)


def arguments(place, sequence, chance):
    code = chance.choice((0, 0, 1, 2, 3, 4, 6, 7, 8))
    words = ["run", sequence, "--input", place.input, "--final-action", FINAL_ACTIONS[code], "--allow-in-place"]
    if chance.random() < 0.7:
        words += ["--output", place.output]
    if code == 4:
        words += ["--destination", "renamed.pdf"]
    elif code not in (0, 3):
        words += ["--destination", place.done]
    return words


def told(lines):
    """What a record tells beside hashes and durations."""
    return {number: {"path": line["path"], "outcome": line["outcome"], "message": line["message"],
                     "outputs": [output["path"] for output in line.get("outputs", [])],
                     "finalAction": line.get("finalAction")} for number, line in lines.items()}


class DryRun(unittest.TestCase):
    maxDiff = None

    def check(self, seed):
        chance = random.Random(seed)
        place = CommandPlace()
        self.addCleanup(place.close)
        make_files(place, chance)
        words = arguments(place, make_sequence(place, chance), chance)
        before = snapshot(place)
        dry = place.ferrule(*words, "--dry-run", "--record", place.root / "dry.jsonl")
        self.assertEqual(snapshot(place), before, f"seed {seed}: something was touched\n{dry}")
        real = place.ferrule(*words, "--jobs", chance.choice(("1", "3")), "--record", place.root / "real.jsonl")
        story = f"seed {seed}: {words}\n{dry}\n{real}"
        self.assertEqual(dry.code, real.code, story)
        self.assertEqual(told(records(place.root / "dry.jsonl")), told(records(place.root / "real.jsonl")), story)
        return len(records(place.root / "real.jsonl"))

    def test_random_folders_and_sequences(self):
        first = int(os.environ.get("FERRULE_SEED", "1"))
        files = sum(self.check(seed) for seed in range(first, first + ROUNDS))
        self.assertGreater(files, ROUNDS, "there was hardly anything to compare")


if __name__ == "__main__":
    unittest.main()
