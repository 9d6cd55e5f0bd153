"""`ferrule plan --engine`: the scripts do the parts of a plan and join them, whatever the folders are called."""
import os
import shutil
import subprocess
import unittest

from commandline import CommandPlace, is_protected, records
from unattended import minimal_pdf

FOLDER = "it's\n\"{}\" {1} 100% $(touch x) `id` \\ Ω"
# Takes what sbatch takes, tells what it was given, and does it at once.
SBATCH = r"""#!/bin/sh
printf '%s|' "$@" >> "$CALLS"; echo >> "$CALLS"
for word; do case $word in --array=1-*) last=${word#--array=1-} ;; esac; done
while [ "$1" != "${1#--}" ]; do shift; done
script=$1; shift
cp "$script" "$CALLS.spooled"
export SLURM_CPUS_PER_TASK=2 SLURM_MEM_PER_NODE=4000
for task in $(seq "${last:-1}"); do SLURM_ARRAY_TASK_ID=$task sh "$CALLS.spooled" "$@" >&2; done
echo "17;cluster"
"""
# Takes what ssh takes, and does it here as the user's shell there would.
SSH = r"""#!/bin/sh
while [ "$1" != "${1#-}" ]; do shift; done
echo "$1" >> "$CALLS"; shift
[ "$1" != -- ] || shift
exec sh -c "$*"
"""


class Machines(unittest.TestCase):
    def setUp(self):
        self.place = CommandPlace()
        self.addCleanup(self.place.close)
        self.folder = self.place.root / FOLDER
        self.folder.mkdir()
        self.plan = self.folder / "plan.jsonl"
        for number in range(12):
            (self.place.input / f"{number}.pdf").write_bytes(minimal_pdf())
        self.sequence = self.place.protect_sequence()

    def make_plan(self, code, engine, *more):
        return self.place.expect(code, "plan", self.sequence, "-i", self.place.input, "-o", self.place.output, "--manifest", self.plan,
                                 "--engine", engine, *more)

    def call(self, engine, more=None, options=()):
        script = f"{self.plan}.{engine}.sh"
        subprocess.run(["sh", "-n", script], check=True)
        done = subprocess.run(["sh", script, *options], env=self.place.environment(more), cwd=self.place.root, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=300, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        found = sorted(self.folder.glob("*.record.jsonl"))
        self.assertEqual(len(found), 1, done.stderr)
        record = records(found[0])
        self.assertEqual({line["outcome"] for line in record.values()}, {"saved"})
        self.assertEqual(sorted(record), list(range(1, 13)))
        self.assertTrue(all(is_protected(self.place.output / f"{number}.pdf") for number in range(12)))
        self.assertFalse((self.place.root / "x").exists())
        return found[0].read_bytes()

    def program(self, name, text):
        folder = self.place.root / "programs"
        folder.mkdir()
        (folder / name).write_text(text)
        (folder / name).chmod(0o755)
        return folder

    @unittest.skipUnless(shutil.which("parallel"), "parallel is not installed")
    def test_parallel(self):
        self.make_plan(0, "parallel", "--shards", "3")
        programs = self.program("ssh", SSH)
        calls = self.place.root / "calls"
        self.call("parallel", {"CALLS": str(calls)}, ["--ssh", str(programs / "ssh"), "--sshlogin", "1/node1,1/node2"])
        self.assertLessEqual({"node1", "node2"}, set(calls.read_text().split()))
        self.assertEqual(len(list(self.folder.glob("*-of-3.journal"))), 3)
        journal = next(self.folder.glob("*.2-of-3.journal"))
        before = {path.name: path.stat().st_mtime_ns for path in self.place.output.iterdir()}
        journal.write_bytes(b"\n".join(journal.read_bytes().split(b"\n")[:-3]) + b"\n")  # killed before its last lines
        self.call("parallel")
        self.assertEqual(before, {path.name: path.stat().st_mtime_ns for path in self.place.output.iterdir()})

    def test_slurm(self):
        self.make_plan(0, "slurm", "--shards", "3")
        programs = self.program("sbatch", SBATCH)
        calls = self.place.root / "calls"
        self.call("slurm", {"PATH": f"{programs}:{os.environ['PATH']}", "CALLS": str(calls)})
        told = calls.read_text()
        for word in ("--requeue|", "--array=1-3|", "--dependency=afterany:17|", f"|{self.plan}.slurm.sh|part|", "|merge|"):
            self.assertIn(word, told)

    def test_shards_and_places(self):
        """Few files are one part; a file that is no script is never replaced, an older script is."""
        self.assertIn("for 1 part:", self.make_plan(0, "slurm").errors)
        script = self.folder / "plan.jsonl.parallel.sh"
        script.write_text("#!/bin/sh\necho mine\n")
        self.assertIn("was not written by", self.make_plan(1, "parallel").errors)
        self.assertEqual(script.read_text(), "#!/bin/sh\necho mine\n")
        self.make_plan(0, "slurm", "--shards", "50")
        self.assertIn("\nshards=12\n", (self.folder / "plan.jsonl.slurm.sh").read_text())
        self.place.expect(2, "plan", self.sequence, "-i", self.place.input, "--manifest", self.plan, "--shards", "3")


if __name__ == "__main__":
    unittest.main()
