"""Supervisor and workers are killed at random moments on Windows, too: nothing is lost, nothing is done twice."""
import unittest

import test_kill
from wine import WindowsPlace

test_kill.PLACE = WindowsPlace
test_kill.SCENES = (None, 1, 2, 3, 6, 7, 8)  # a started program cannot be a shell script here


class Kills(test_kill.Kills):
    pass


if __name__ == "__main__":
    unittest.main()
