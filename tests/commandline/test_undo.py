"""A run with --keep-originals that is taken back leaves the folders as they were, whatever happened on the way."""
import itertools
import json
import os
import random
import shutil
import signal
import stat
import time
import unittest
from pathlib import Path

from commandline import CommandPlace, sha256
from survival import Scene

FAULTS = os.environ.get("FERRULE_FAULTS_LIBRARY", "")
STEP = int(os.environ.get("FERRULE_FAULT_STEP", "1"))
KILLS = int(os.environ.get("FERRULE_KILLS", "200")) // 8
NAMES = ("a.pdf", "sub/a.pdf", "b ü.pdf", "linked.pdf")
# Final action, and what stands in the output folder before: nothing, or files of the results' names.
# Tests of another system put theirs here: where runs take place, and whether files have modes, owners and attributes.
PLACE = CommandPlace
HAS_TRAITS = True
WAYS = [(final, taken) for final in (0, 1, 2, 3, 4, 6, 7, 8) for taken in (False, True)] + [(None, False)]


class UndoScene(Scene):
    """Files whose modes, times and attributes are all different."""

    def __init__(self, final, taken=False, keeps=True):
        super().__init__(final, NAMES, place=PLACE)
        self.kept = self.place.root / "kept"
        self.more = ["--keep-originals", self.place.input / ".." / "kept"] if keeps else []
        if taken:
            self.sequence = self.place.protect_sequence(DontOverwrite=("boolean", "false"))
            for path in self.originals:
                (self.place.output / path.name).write_bytes(b"an older result of " + path.name.encode())
        for number, path in enumerate(self.files()):
            os.utime(path, ns=(10**18 + number, 10**18 + 700 * number))
            if not HAS_TRAITS:
                continue
            os.chmod(path, (0o644, 0o600, 0o640)[number % 3])
            try:
                os.setxattr(path, "user.note", path.name.encode())
            except OSError:
                pass  # not every file system has them
        self.before = self.state()

    def close(self):
        if self.place.root.exists():
            super().close()

    def files(self):
        return sorted(path for folder in (self.place.input, self.place.output, self.place.done) for path in folder.rglob("*")
                      if not path.is_dir())

    def state(self):
        """Everything about every file but the time of the last access."""
        def of(path):
            status = os.lstat(path)
            if stat.S_ISLNK(status.st_mode):
                return os.readlink(path)
            content = path.read_bytes() if path.stat().st_size < 100 else sha256(path)
            if not HAS_TRAITS:
                return content, status.st_mtime_ns
            names = os.listxattr(path)
            return (content, status.st_mode, status.st_mtime_ns, status.st_uid, status.st_gid,
                    [(name, os.getxattr(path, name)) for name in names])
        return {str(path.relative_to(self.place.root)): of(path) for path in self.files()}

    def run(self, code=0, *more):
        return self.place.expect(code, *self.arguments(*self.more, *more))

    def undo(self, code, *words, **options):
        return self.place.expect(code, "undo", *words, **options)

    def left_in_kept(self):
        return [str(path) for path in self.kept.rglob("*") if not path.is_dir()] if self.kept.exists() else []


class Undo(unittest.TestCase):
    maxDiff = None

    def scene(self, *arguments, **options):
        scene = UndoScene(*arguments, **options)
        self.addCleanup(scene.close)
        return scene

    def assert_back(self, scene, story=""):
        left = {name: value for name, value in scene.state().items() if scene.before.get(name) != value}
        lost = sorted(set(scene.before) - set(scene.state()))
        self.assertEqual((left, lost), ({}, []), story)

    def test_every_way_comes_back(self):
        sources = itertools.cycle([[], ["record.jsonl"], ["pack"]])
        for (final, taken), source in zip(WAYS, sources):
            with self.subTest(final=final, taken=taken, source=source):
                scene = self.scene(final, taken)
                scene.run()
                after = scene.state()
                self.assertNotEqual(after, scene.before)
                if scene.kept.exists() and HAS_TRAITS:
                    self.assertEqual({stat.S_IMODE(os.stat(path).st_mode) for path in scene.kept.glob("*")}, {0o700})
                if source == ["pack"]:
                    source = list(Path(scene.place.log).parent.rglob("*.jsonl.gz"))
                scene.undo(0, *source, "--dry-run")
                self.assertEqual(scene.state(), after, "a dry run touches nothing")
                scene.undo(0, *source)
                self.assert_back(scene)
                self.assertEqual(scene.left_in_kept(), [])
                again = scene.undo(0, *source)
                self.assertIn("taken back already", again.errors)
                self.assert_back(scene)

    def test_parts_and_their_merged_record(self):
        scene = self.scene(6, True)
        words = [word for word in scene.arguments(*scene.more)[1:] if word not in ("--quiet", "--record", scene.record)]
        jobs = words.index("--jobs")
        scene.place.expect(0, "plan", *words[:jobs], *words[jobs + 2:], "--manifest", "plan.jsonl")
        for part in (1, 2):
            scene.place.expect(0, "run", "--manifest", "plan.jsonl", "--shard", f"{part}/2", "--journal", f"part{part}.jsonl")
        scene.place.expect(0, "merge", "--manifest", "plan.jsonl", "part1.jsonl", "part2.jsonl", "--record", "merged.jsonl")
        scene.undo(0, "part1.jsonl")
        scene.undo(0, "merged.jsonl")
        self.assert_back(scene)

    def test_a_retried_file_comes_back_from_all_attempts(self):
        scene = self.scene(1, True)
        in_the_way = scene.place.done / "linked.pdf"
        in_the_way.mkdir()
        scene.run(3)
        in_the_way.rmdir()
        scene.run(0, "--resume", "--retry-failed")
        scene.undo(0)
        self.assert_back(scene)

    def test_what_cannot_be_taken_back_is_told_first_and_stays(self):
        def result(scene):
            return sorted(scene.place.output.glob("*.pdf"))[0]

        def change(path):
            path.write_bytes(path.read_bytes() + b"\n% changed by somebody")

        rows = [
            ("a result that was changed", 0, lambda s: change(result(s)), "changed since"),
            ("a name that is taken again", 3, lambda s: (s.place.input / "a.pdf").write_bytes(b"newer"), "taken again"),
            ("originals that are gone", 3, lambda s: shutil.rmtree(s.kept), "no longer at"),
            ("an original that was changed", 3, lambda s: change(sorted(s.kept.rglob("*.pdf"))[0]), "was changed since it was kept"),
            ("a link where a moved file was", 2, lambda s: (s.place.input / "0 a.pdf").symlink_to(s.place.done / "0 a.pdf"), "taken again"),
            ("a disk that is not connected", 0, lambda s: s.place.output.rename(s.place.root / "away"), "connect its disk"),
            ("an input that somebody deleted", 0, lambda s: (s.place.input / "a.pdf").unlink(), "a.pdf is not back"),
            ("a moved file that is gone", 2, lambda s: sorted(s.place.done.glob("*.pdf"))[0].unlink(), "neither at"),
            ("a program that was started", 5, lambda s: None, "was started"),
        ]
        for what, final, hurt, words in rows:
            with self.subTest(what):
                scene = self.scene(final)
                scene.run()
                hurt(scene)
                hurt_state = scene.state()
                refused = scene.undo(1)
                self.assertIn(words, refused.errors)
                self.assertIn("--partly", refused.errors)
                self.assertEqual(scene.state(), hurt_state, "nothing was touched")
                self.assertEqual(list(scene.place.root.rglob("undo-*.jsonl")), [], "the run can be gone on with")
                scene.undo(3, "--partly")
                newer = {name: value for name, value in hurt_state.items() if scene.before.get(name, value) != value}
                self.assertEqual({name: scene.state().get(name) for name in newer}, newer, "nothing newer is replaced")
                if what != "originals that are gone":
                    self.assertLess(len(set(scene.state()) ^ set(scene.before)), len(set(hurt_state) ^ set(scene.before)) or 2)

    def test_a_result_that_somebody_took_away_is_told(self):
        scene = self.scene(0)
        scene.run()
        first, *others = sorted(scene.place.output.glob("*.pdf"))
        first.rename(scene.place.root / "mine.pdf")
        told = scene.undo(0)
        self.assertIn(f"{first} is no longer there", told.errors)
        self.assertTrue((scene.place.root / "mine.pdf").exists() and not any(path.exists() for path in others))
        self.assertNotIn("no longer", scene.undo(0).errors)

    def test_without_kept_originals_nothing_is_lost(self):
        scene = self.scene(3, keeps=False)
        scene.run()
        after = scene.state()
        self.assertIn("was not kept", scene.undo(1).errors)
        self.assertEqual(scene.state(), after)
        scene.undo(3, "--partly")
        self.assertEqual(scene.state(), after, "the results are all that is left of the documents")

    def test_records_that_say_what_the_run_could_not_have_done_are_refused(self):
        scene = self.scene(6, True)
        scene.run()
        after = scene.state()
        victim = scene.place.root / "victim.pdf"
        victim.write_bytes(b"precious")
        lines = [json.loads(line) for line in scene.record.read_text(encoding="utf-8").splitlines()]
        acts = lines[0]["acts"]

        def edited(change):
            copy = json.loads(json.dumps(lines))
            change(copy)
            return "".join(json.dumps(line) + "\n" for line in copy)

        rows = [
            (lambda c: c[0]["acts"][0].update(target=str(victim)), "could have touched"),
            (lambda c: c[0]["acts"][0].update(target=f"{scene.place.output}/../victim.pdf"), "could have touched"),
            (lambda c: c[0]["acts"][0]["former"].update(kept=str(victim)), "kept originals"),
            (lambda c: c[0].update(path=str(victim)), "could read"),
            (lambda c: [c[0]["run"]["folders"].append(str(victim.parent)), c[0]["acts"][0].update(target=str(victim))], "edited"),
            (lambda c: [c[0].pop("run"), [line.pop("acts") for line in c]], "version"),
            (lambda c: c.append(c[0]), "another run begins"),
        ]
        self.assertTrue(acts[0]["former"]["kept"])
        texts = [(edited(change), words) for change, words in rows] + [(scene.record.read_text() + "{]\n", "no line of a record")]
        for text, words in texts:
            with self.subTest(words):
                (scene.place.root / "edited.jsonl").write_text(text, encoding="utf-8")
                self.assertIn(words, scene.undo(1, "edited.jsonl").errors)
                self.assertEqual(scene.state(), after)
                self.assertEqual(victim.read_bytes(), b"precious")

    def test_a_place_that_cannot_hold_originals_is_refused(self):
        scene = self.scene(3)
        scene.kept.write_bytes(b"a file")
        self.assertIn("takes a folder", scene.run(1).errors)
        self.assert_back(scene)
        scene.kept.unlink()
        self.assertIn("input folder", scene.place.expect(2, *scene.arguments("--keep-originals", scene.place.input)).errors)

    def test_kept_originals_are_no_inputs_of_later_runs(self):
        scene = self.scene(3)
        scene.kept = scene.place.input / "kept"
        scene.more[1] = scene.kept
        scene.run()
        scene.more = []
        self.assertEqual(len(scene.left_in_kept()), len(NAMES))
        new = scene.place.input / "new.pdf"
        new.write_bytes(next(iter(scene.originals.values())))
        scene.run()
        self.assertFalse(new.exists())
        self.assertEqual(len(scene.left_in_kept()), len(NAMES))

    # ---- sudden ends

    def kill_at(self, process, seconds):
        time.sleep(seconds)
        try:
            os.kill(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.communicate(timeout=120)

    def test_killed_runs_and_killed_undos_come_back(self):
        chance = random.Random(int(os.environ.get("FERRULE_SEED", "20")))
        for final, taken in itertools.islice(itertools.cycle([(None, False), (3, True), (6, True), (2, False)]), KILLS):
            scene = self.scene(final, taken)
            usual = scene.place.usual_seconds
            self.kill_at(scene.place.start(*scene.arguments(*scene.more)), chance.uniform(0.25, 1) * usual)
            self.kill_at(scene.place.start("undo"), chance.uniform(0.0, 0.08) * usual)
            result = scene.place.ferrule("undo")
            story = f"final action {final}, {result}"
            if "no run of yours" not in result.errors:
                self.assertEqual(result.code, 0, story)
            self.assert_back(scene, story)
            scene.close()

    def calls_of(self, scene, *words):
        listing = scene.place.root / "calls"
        listing.unlink(missing_ok=True)
        scene.place.ferrule(*words, more={"LD_PRELOAD": FAULTS, "FERRULE_FAULT_COUNT": str(listing)})
        return len(listing.read_text(encoding="utf-8", errors="replace").splitlines())

    def test_each_call_of_run_and_undo_fails_or_is_the_last(self):
        if not Path(FAULTS).is_file():
            self.skipTest("the library that makes calls fail was not built")
        hurt = 0
        for final, taken in ((None, False), (6, True)):
            scene = self.scene(final, taken)
            calls = {"run": self.calls_of(scene, *scene.arguments(*scene.more)), "undo": self.calls_of(scene, "undo")}
            scene.close()
            for what, count in calls.items():
                self.assertGreater(count, 30)
                for number, fault in itertools.product(range(1 + STEP // 2, count, STEP * 2), ("EIO", "die")):
                    scene = self.scene(final, taken)
                    words = scene.arguments(*scene.more) if what == "run" else ["undo"]
                    if what == "undo":
                        scene.run()
                    more = {"LD_PRELOAD": FAULTS, "FERRULE_FAULT_COUNT": str(scene.place.root / "count"),
                            "FERRULE_FAULT_AT": f"{number}:{fault}"}
                    first = scene.place.ferrule(*words, more=more)
                    result = scene.place.ferrule("undo")
                    story = f"{what}, final action {final}, call {number}, {fault}: {first}\n{result}"
                    if "no run of yours" not in result.errors:
                        self.assertEqual(result.code, 0, story)
                    self.assert_back(scene, story)
                    scene.close()
                    hurt += 1
        print(f"{hurt} calls hurt", flush=True)


if __name__ == "__main__":
    unittest.main()
