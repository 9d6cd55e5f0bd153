"""Supervisor and workers are killed at random moments, again and again: nothing is lost, nothing is done twice."""
import os
import random
import signal
import time
import unittest
from pathlib import Path

from commandline import CommandPlace
from survival import Scene, preserve, undisturbed_names, wait_for_starts

KILLS = int(os.environ.get("FERRULE_KILLS", "200"))
SCENES = (None, "metadata", 1, 2, 3, 5, 6, 7, 8)
PLACE = CommandPlace  # where the runs take place; tests of another system put theirs here
NAMES = [f"{folder}file {number}.pdf" for folder in ("", "sub/") for number in range(15)]


def run_until_killed(scene, chance, resume):
    """Starts or resumes the run and kills something of it at a random moment; answers its exit code, None when killed."""
    process = scene.place.start(*scene.arguments(*(["--resume", "--retry-failed"] if resume else [])))
    time.sleep(chance.uniform(0.02, scene.place.usual_seconds))
    victims = [process.pid] + (scene.place.workers_of(process) if chance.random() < 0.6 else [])
    try:
        os.kill(victims[-1] if len(victims) > 1 else process.pid, signal.SIGKILL)
        killed = True
    except ProcessLookupError:
        killed = False
    _, errors = process.communicate(timeout=120)
    return killed, process.returncode, errors.decode("utf-8", "replace")


class Kills(unittest.TestCase):
    def check(self, final, kills, chance):
        undisturbed = undisturbed_names(final, NAMES, 2, PLACE)
        done = 0
        while done < kills:
            scene = Scene(final, NAMES, 2, PLACE)
            try:
                resume, story = False, []
                for _ in range(8):
                    killed, code, errors = run_until_killed(scene, chance, resume)
                    done += killed
                    resume = True
                    story.append((killed, code, errors))
                    wrong = scene.complaints_at_any_time()
                    if wrong:
                        preserve(scene, f"kill-{final}-{done}")
                    self.assertEqual(wrong, [], story)
                    if code == 0 and not killed:
                        break
                result = scene.place.ferrule(*scene.arguments("--resume", "--retry-failed"))
                wait_for_starts(scene)
                wrong = scene.complaints_at_the_end(undisturbed)
                if wrong:
                    preserve(scene, f"kill-{final}-{done}-end")
                self.assertEqual(wrong, [], f"{story}\n{result}")
            finally:
                scene.close()
        return done

    def test_random_kills(self):
        seed = int(os.environ.get("FERRULE_SEED", "20"))
        chance = random.Random(seed)
        done = {final: self.check(final, max(1, KILLS // len(SCENES)), chance) for final in SCENES}
        print(f"{sum(done.values())} kills, seed {seed}", flush=True)


if __name__ == "__main__":
    unittest.main()
