"""Runs are taken back on Windows, too, where originals are kept as copies."""
import unittest

import test_undo
from wine import WindowsPlace

test_undo.PLACE = WindowsPlace
test_undo.HAS_TRAITS = False
test_undo.WAYS = [(None, False), (3, True), (6, False), (7, False)]
test_undo.KILLS = 4


class Undo(unittest.TestCase):
    maxDiff = None
    scene, assert_back, kill_at = test_undo.Undo.scene, test_undo.Undo.assert_back, test_undo.Undo.kill_at
    test_every_way_comes_back = test_undo.Undo.test_every_way_comes_back
    test_killed_runs_and_killed_undos_come_back = test_undo.Undo.test_killed_runs_and_killed_undos_come_back


if __name__ == "__main__":
    unittest.main()
