"""Each file-system call of a run fails once, and once the process dies there: nothing is lost, and resume completes."""
import os
import re
import sys
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from commandline import CommandPlace, temporaries
from survival import Scene, preserve, undisturbed_names, wait_for_starts

FAULTS = os.environ.get("FERRULE_FAULTS_LIBRARY", "")
# Only every so many'th call is hurt where that is set: the sanitizers take their time.
STEP = int(os.environ.get("FERRULE_FAULT_STEP", "1"))
# What each kind of call may plausibly fail with; the process dies at each of them as well.
PLAUSIBLE = {"open": ["EACCES", "EMFILE"], "create": ["ENOSPC"], "write": ["ENOSPC", "EIO"], "fsync": ["EIO"],
             "rename": ["EACCES"], "link": ["EACCES"], "unlink": ["EACCES"], "mkdir": ["ENOSPC"]}
FINAL_ACTIONS = (None, "metadata", 1, 2, 3, 4, 5, 6, 7, 8)  # None: saved in place


def errors_for(call):
    for name, errors in PLAUSIBLE.items():
        if name in call.lower():
            return errors
    return ["EIO"]


def calls_of(final):
    """The calls of an undisturbed run in order: (program, call, path) each."""
    scene = Scene(final)
    try:
        return calls_by(scene.place, scene.arguments())
    finally:
        scene.close()


def calls_by(place, words):
    listing = place.root / "calls"
    result = place.ferrule(*words, more={"LD_PRELOAD": FAULTS, "FERRULE_FAULT_COUNT": str(listing)})
    assert result.code == 0, str(result)
    lines = listing.read_text(encoding="utf-8", errors="replace").splitlines()
    return [tuple(line.split("\t")[1:4]) for line in lines if line]


def hurt(place, words, number, fault):
    counter = Path(tempfile.mkstemp(dir=place.root)[1])
    return place.ferrule(*words, more={
        "LD_PRELOAD": FAULTS, "FERRULE_FAULT_COUNT": str(counter), "FERRULE_FAULT_AT": f"{number}:{fault}"})


def cases_of(calls):
    return [(number, fault) for number in list(places(calls))[STEP // 2::STEP]
            for fault in [*errors_for(calls[number - 1][1]), "die"]]


def places(calls):
    """The numbers of the calls to hurt. Of equal calls in a row, such as the lines of one log, the first and the last."""
    for number, call in enumerate(calls, 1):
        inside = 1 < number < len(calls) and calls[number - 2] == call == calls[number]
        if not inside:
            yield number


def complaints_about_order(final, calls):
    """What a power cut could lose. A worker puts whole contents in their place, and acts only on what the journal holds
    on the disk; the folders that it changed are on the disk before the journal goes on."""
    wrong, journal, flushed, waiting = [], None, set(), {}
    for number, (program, call, path) in enumerate(calls, 1):
        folder, name = os.path.split(path)
        if name == "journal.jsonl" and call in ("write", "fdatasync"):
            journal = call
            wrong += [f"call {since} changed {each}, which is not flushed" for each, since in waiting.items()]
            waiting = {}
        if program != "ferrule-host" or not re.search("/(in|out|done)(/|$)", path):
            continue
        temporary = name.startswith(".ferrule-")
        if call == "fsync":
            flushed.add(path)
            waiting.pop(path, None)
        elif call.startswith(("rename", "link")) or (call == "unlink" and not temporary):
            waiting[folder] = number
            if final in (2, 6, 7) and not temporary:  # moved: the folder that it is in now
                waiting[re.sub("/in(/sub)?$", "/done", folder)] = number
            if journal != "fdatasync":
                wrong.append(f"call {number}: {call} {path} before its intent is on the disk")
            if temporary and path not in flushed:
                wrong.append(f"call {number}: {call} {path} before its content is on the disk")
    return wrong if flushed else ["nothing was done"]


def hurt_and_resume(final, number, fault, undisturbed):
    """Complaints about one run that was hurt at its call `number`."""
    scene = Scene(final)
    try:
        first = hurt(scene.place, scene.arguments(), number, fault)
        wrong = [f"after the fault: {each}" for each in scene.complaints_at_any_time()]
        if first.code not in (0, 1, 3) and fault != "die":
            wrong.append(f"after the fault: exit code {first.code}")
        resumed = scene.place.ferrule(*scene.arguments("--resume", "--retry-failed"))
        wait_for_starts(scene)
        wrong += [f"after resuming: {each}" for each in scene.complaints_at_the_end(undisturbed)]
        if resumed.code != scene.code_of_record():
            wrong.append(f"after resuming: exit code {resumed.code}, not {scene.code_of_record()}")
        if wrong:
            preserve(scene, f"{final}-{number}-{fault}")
            wrong.append(f"--- the hurt run: {first}\n--- resumed: {resumed}")
        return wrong
    finally:
        scene.close()


class Names:
    """Files whose new names are each other's, others' and in another folder; each holds its own name."""
    PAIRS = {"in/a": "in/b", "in/b": "in/a", "in/c": "in/d", "in/d": "in/e", "in/e": "in/c", "in/f": "in/g", "in/g": "in/h", "in/i": "out/i"}

    def __init__(self):
        self.place = CommandPlace()
        for name in self.PAIRS:
            (self.place.root / name).write_text(name)
        rows = [f'"{self.place.root / old}","{self.place.root / new}"' for old, new in self.PAIRS.items()]
        plan = self.place.root / "plan.csv"
        plan.write_text("\n".join(["Input File,Output Filename", *rows, ""]))
        self.words = ["rename", "--apply", plan, "--quiet"]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.place.close()

    def contents(self):
        return {str(path.relative_to(self.place.root)): path.read_text() for folder in (self.place.input, self.place.output)
                for path in folder.rglob("*") if path.is_file()}

    def complaints(self, when, wanted):
        found = self.contents()
        return [] if found == wanted else [f"{when}: {found}"]


def hurt_and_take_back(case):
    """Complaints about a renaming that was hurt, gone on with when the call's number is odd, and taken back."""
    with Names() as names:
        first = hurt(names.place, names.words, *case)
        wrong = [] if sorted(names.contents().values()) == sorted(Names.PAIRS) else names.complaints("after the fault", {})
        if first.code not in (0, 1, 3) and case[1] != "die":
            wrong.append(f"after the fault: exit code {first.code}")
        told = [first]
        if case[0] % 2:
            told.append(names.place.ferrule(*names.words, "--resume", "--retry-failed"))
            wrong += names.complaints("after resuming", {new: old for old, new in Names.PAIRS.items()})
        told.append(names.place.ferrule("undo"))
        wrong += names.complaints("after taking it back", {old: old for old in Names.PAIRS})
        wrong += [f"left over: {path}" for path in temporaries(names.place.input) + temporaries(names.place.output)]
        return wrong + [f"--- {result}" for result in told if wrong]


class Faults(unittest.TestCase):
    maxDiff = None

    def check(self, final):
        undisturbed = undisturbed_names(final)
        calls = calls_of(final)
        self.assertGreater(len(calls), 30, "the layer under test was not there")
        self.sweep(f"final action {final}", calls, lambda case: hurt_and_resume(final, *case, undisturbed))

    def sweep(self, what, calls, try_case):
        cases = cases_of(calls)
        with ThreadPoolExecutor(2) as pool:
            outcomes = list(pool.map(try_case, cases))
        failed = [(case, wrong) for case, wrong in zip(cases, outcomes) if wrong]
        print(f"{what}: {len(calls)} calls, {len(cases)} faults, {len(failed)} complaints", flush=True)
        report = "\n\n".join(f"call {number} {calls[number - 1]}, {fault}:\n" + "\n".join(wrong)
                             for (number, fault), wrong in failed[:int(os.environ.get("FERRULE_FAULT_REPORTS", "5"))])
        self.assertEqual(len(failed), 0, report)

    def test_each_call_fails_once(self):
        for final in FINAL_ACTIONS:
            with self.subTest(final=final):
                self.check(final)

    def test_each_call_fails_once_while_files_get_new_names(self):
        with Names() as names:
            calls = calls_by(names.place, names.words)
        self.assertGreater(len(calls), 30, "the layer under test was not there")
        self.sweep("new names", calls, hurt_and_take_back)

    def test_nothing_is_done_before_it_is_on_the_disk(self):
        for final in FINAL_ACTIONS:
            with self.subTest(final=final):
                self.assertEqual(complaints_about_order(final, calls_of(final)), [])


if __name__ == "__main__":
    if not Path(FAULTS).is_file():
        print("skipped: the library that makes calls fail was not built")
        sys.exit(77)
    unittest.main()
