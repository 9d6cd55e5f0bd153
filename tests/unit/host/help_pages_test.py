#!/usr/bin/env python3
"""The pages of the help: each that the program asks for is there, and what they refer to as well."""
import re
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[3]
HELP = ROOT / "help"


def places(text):
    """Files, and marks inside of them, that a page refers to."""
    return re.findall(r'(?:href|src)="([^"]+)"', text)


class Help(unittest.TestCase):
    def test_everything_referred_to_is_there(self):
        pages = {path.name: path.read_text(encoding="utf-8") for path in HELP.glob("*.htm")}
        self.assertGreater(len(pages), 5)
        asked = set()
        for path in (ROOT / "src").rglob("*.cpp"):
            asked.update(re.findall(r'"(\w+\.htm(?:#[\w-]+)?)"', path.read_text(encoding="utf-8")))
        self.assertIn("SecuritySettings.htm", asked)
        for place in asked.union(*(places(text) for text in pages.values())):
            name, _, mark = place.partition("#")
            self.assertTrue((HELP / name).is_file(), place)
            if mark:
                self.assertIn(f'id="{mark}"', pages[name], place)


if __name__ == "__main__":
    sys.exit(unittest.main())
