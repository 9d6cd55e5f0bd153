#!/usr/bin/env python3
"""Runs the checks of the project on small trees with one fault each, and the generator on a spoilt copy.

usage: check_scripts_test.py SCRIPT_FOLDER
"""
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPTS = Path(sys.argv.pop(1)).resolve()

# File under src/, its content, and a piece of the report; an empty piece means that nothing may be reported.
LAYERS = [
    ("common/A.cpp", '#include "platform/B.h"', ""),
    ("common/A.cpp", '#include "hostapi/HostTypes.h"', "src/common/A.cpp:1: common/ may not include hostapi/HostTypes.h"),
    ("platform/A.cpp", '#include "common/B.h"', "platform/ may not include"),
    ("ui/A.cpp", '\n#include <engine/B.h>', "src/ui/A.cpp:2: ui/ may not include engine/B.h"),
    ("engine/A.cpp", '#include "pdflib/B.h"', ""),
    ("engine/A.cpp", '#include "ui/B.h"', "engine/ may not include"),
    ("commands/A.cpp", '#include "engine/B.h"', "commands/ may not include"),
    ("commands/A.cpp", '#include "batchrun/B.h"', "commands/ may not include"),
    ("tools/A.cpp", '#include "batchrun/B.h"', "tools/ may not include"),
    ("batchrun/A.cpp", '#include "engine/B.h"', ""),
    ("common/A.cpp", '#include "../engine/B.h"', "common/ may not include engine/B.h"),
    ("engine/A.cpp", '// #include "host/B.h"\n/*\n#include "host/B.h"\n*/', ""),
    ("host/A.cpp", '#include "openhost/core/B.h"', "host/ may not include"),
    ("openhost/core/A.cpp", '#include "common/B.h"', "openhost/ may not include"),
    ("openhost/core/A.cpp", '#include "openhost/app/B.h"', "openhost/core/ may not include"),
    ("openhost/app/A.cpp", '#include "openhost/core/B.h"', ""),
    ("supervisor/journal/A.cpp", '#include "supervisor/plan/B.h"', "supervisor/journal/ may not include"),
    ("cli/A.cpp", '#include "engine/B.h"', "cli/ may not include"),
    ("hostapi/A.h", '#include "platform/B.h"', "hostapi/ may not include"),
    ("pdflib/A.cpp", '#include "hostapi/HostRecords.h"', ""),
    ("pdflib/A.cpp", '#include "hostapi/HostTableCos.h"', "types of the interface only"),
    ("pdflib/A.cpp", '#include "hostapi/HostInterface.h"', "types of the interface only"),
    ("pdflib/A.cpp", "call(kSlotPDDocSave);", "src/pdflib/A.cpp:1: kSlotPDDocSave"),
    ("pdflib/A.cpp", "call(); // kSlotPDDocSave", ""),
    ("hostcalls/A.cpp", "call(kSlotPDDocSave);", ""),
    ("common/A.cpp", "#include <windows.h>", "Windows header windows.h"),
    ("common/A_win.cpp", "#include <windows.h>", ""),
    ("platform/A.cpp", "#include <ShlObj.h>", ""),
    ("commands/A.cpp", "#include <wx/grid.h>", "wx/grid.h outside ui/wx/ and openhost/window/"),
    ("ui/A.cpp", "#include <gtk/gtk.h>", "gtk/gtk.h outside ui/wx/ and openhost/window/"),
    ("ui/wx/A.cpp", "#include <wx/grid.h>", ""),
    ("pdflib/A.cpp", "#include <pcre2.h>", "pcre2.h outside common/"),
    ("common/A.cpp", "#include <pcre2.h>", ""),
    ("extras/A.cpp", "", "no such folder"),
]

# File, its content, and a piece of the report. Each text is put together here so that this file stays clean.
WORDS = [
    ("docs/a.md", "see /wo" + "rk/area/file", "absolute path"),
    ("src/a.cpp", 'Open("/tm' + 'p/x")', "absolute path"),
    ("tests/a.cpp", 'Open("/tm' + 'p/x")', ""),
    ("src/a.cpp", '#include "net/wo' + 'rk/file.h"', ""),
    ("src/a.cpp", "// as Pa" + "rt 3.2 says", "numbered part"),
    ("docs/DEVELOPERS" + ".md", "as Pa" + "rt 3.2 says", ""),
    ("README.md", "the settled" + " points", "a discussion"),
    ("README.md", "see spec" + ".md", "private document"),
    ("README.md", "plain words, Pa" + "rt 3 of 4, special.md", ""),
]


class Checks(unittest.TestCase):
    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)
        self.root = Path(self._folder.name)

    def _write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text + "\n", encoding="utf-8")

    def _run(self, script):
        done = subprocess.run([sys.executable, str(SCRIPTS / script), str(self.root)], capture_output=True, text=True)
        return done.returncode, done.stdout

    def _expect(self, script, named, row):
        code, report = self._run(script)
        self.assertEqual(code, 1 if named else 0, f"{row}\n{report}")
        self.assertIn(named, report)
        self.assertIn("1 offences" if named else " 0 offences", report)

    def test_layers_reports_every_forbidden_include_and_no_other(self):
        for row in LAYERS:
            with self.subTest(row=row):
                for name in ("engine/B.h", "platform/B.h"):
                    self._write(f"src/{name}", "")
                self._write(f"src/{row[0]}", row[1])
                self._expect("check-layers", row[2], row)
                shutil.rmtree(self.root / "src")

    def test_layers_does_not_pass_without_sources(self):
        self.assertEqual(self._run("check-layers")[0], 2)

    def test_the_generator_notices_a_changed_header_and_mends_it(self):
        shutil.copytree(SCRIPTS.parent / "src" / "hostapi", self.root / "src" / "hostapi")
        generator = self.root / "scripts" / "make-hostapi"
        generator.parent.mkdir()
        shutil.copy(SCRIPTS / "make-hostapi", generator)

        def generate(*arguments):
            return subprocess.run([sys.executable, str(generator), *arguments], capture_output=True, text=True)

        header = self.root / "src/hostapi/HostTableCore.h"
        header.write_text(header.read_text(encoding="utf-8").replace("kSlotASRaise = 1", "kSlotASRaise = 2"))
        checked = generate("--check")
        self.assertEqual(checked.returncode, 1)
        self.assertIn("HostTableCore.h", checked.stderr)
        self.assertEqual([generate().returncode, generate("--check").returncode], [0, 0])
        with open(self.root / "src/hostapi/facts/slot-notes.tsv", "a", encoding="utf-8") as notes:
            notes.write("Core\tASRaisee\tNo such function.\n")
        self.assertIn("Core ASRaisee", generate("--check").stderr)

    @unittest.skipUnless(shutil.which("git"), "needs git")
    def test_words_looks_at_files_that_git_knows(self):
        for row in WORDS:
            with self.subTest(row=row):
                subprocess.run(["git", "init", "-q", str(self.root)], check=True)
                self._write(row[0], row[1])
                self.assertIn("0 files", self._run("check-words")[1])
                subprocess.run(["git", "-C", str(self.root), "add", row[0]], check=True)
                self._expect("check-words", row[2], row)
                shutil.rmtree(self.root)
                self.root.mkdir()


if __name__ == "__main__":
    unittest.main()
