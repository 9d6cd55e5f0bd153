#!/usr/bin/env python3
"""Spoils copies of headers and facts, one fault at a time, and expects the comparison to report each of them.

usage: compare_with_facts_test.py HEADER_FOLDER C_COMPILER
"""
import contextlib
import io
import re
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
import compare_with_facts  # noqa: E402

HEADERS, COMPILER = Path(sys.argv.pop(1)).resolve(), sys.argv.pop(1)

# File, pattern (must match exactly once), replacement, and what the report has to name.
FAULTS = [
    ("HostTablePDModel.h", r"kSlotPDDocSave = 70\b", "kSlotPDDocSave = 71", "slot PDModel PDDocSave"),
    ("HostTableWin.h", r"enum \{ kSlotWinAppGetModalParent = 4 \};", "", "kSlotWinAppGetModalParent"),
    ("HostTableCore.h", r"enum \{ kSlotASRaise = 1 \};", r"\g<0> enum { kSlotASAgain = 15 };", "ASAgain stands only"),
    ("HostTableASExtra.h", r"ASTextDupSlotProc\)\(ASConstText", "ASTextDupSlotProc)(ASText", "ASExtra ASTextDup"),
    ("HostTableCos.h", r"ASInt32 \(HOSTCALL \*CosIntegerValue", "ASUns32 (HOSTCALL *CosIntegerValue", "Cos CosInt"),
    ("HostTableCore.h", r'"Core"\n', '"Kern"\n', "table name Core"),
    ("HostTableAcroView.h", r"0x000C0003", "0x000C0002", "table version AcroView"),
    ("HostTableCatalog.h", r"Selectors = 5", "Selectors = 4", "table selectors Catalog"),
    ("HostSlotLists.h", r"X\(Core, 7, ASAtomGetString\)", "X(Core, 6, ASAtomGetString)", "list HOST_SLOTS_CORE"),
    ("HostSlotLists.h", r'X\(Win, "Win"\)', 'X(Win, "win")', "list HOST_TABLES"),
    ("HostTypes.h", r"typedef unsigned short ASBool;", "typedef short ASBool;", "type ASBool"),
    ("HostTypes.h", r"typedef struct PDDoc_ \*PDDoc;", "typedef struct AVDoc_ *PDDoc;", "compatible types"),
    ("HostRecords.h", r"(ASCabValueType type;)(\s+)(ASInt32 intVal;)", r"\3\2\1", "offset ASCabEntryRec.type win64"),
    ("HostRecords.h", r"    ASInt16 millisecond;\n", "", "millisecond"),
    ("HostRecords.h", r"ASBool \(HOSTCALL \*ASCabEnumProc\)", "void (HOSTCALL *ASCabEnumProc)", "ASCabEnumProc"),
    ("HostConstants.h", r"kASValueDouble = 3,", "kASValueDouble = 4,", "constant kASValueDouble"),
    ("HostConstants.h", r"kASValueDouble = 3,", "", "kASValueDouble stands only in the facts"),
    ("HostConstants.h", r'"UIPolicy"', '"UiPolicy"', "string kAVCommandUIPolicy"),
    ("HostErrors.h", r"pdErrNeedPassword = 0x20030027", "pdErrNeedPassword = 0x20030028", "error pdErrNeedPassword"),
    ("HostErrors.h", r"    X\(genErrCanceled, [^\n]*\n", "", "list HOST_ERRORS"),
    ("facts/slots.tsv", r"(?m)^Core\t1\tASRaise\t", "Core\t2\tASRaise\t", "slot Core ASRaise"),
    ("facts/structs.tsv", r"(ASTimeRec\t\d+\t\d+\t\d+\t1\tyear\tASInt16\t0\t)0", r"\g<1>4", "ASTimeRec.year lp64"),
    ("facts/errors.tsv", r"(genErrCanceled\t)10\t", r"\g<1>11\t", "parts of genErrCanceled"),
]


def compare(headers, facts):
    output = io.StringIO()
    with contextlib.redirect_stdout(output):
        code = compare_with_facts.main([str(headers), str(facts), COMPILER])
    return code, output.getvalue()


class CompareWithFacts(unittest.TestCase):
    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)
        self.copy = Path(self._folder.name) / "hostapi"
        shutil.copytree(HEADERS, self.copy)

    def test_every_single_fault_is_reported_by_name(self):
        for file, pattern, replacement, named in FAULTS:
            with self.subTest(file=file, fault=pattern):
                text = (HEADERS / file).read_text(encoding="utf-8")
                spoilt, count = re.subn(pattern, replacement, text)
                self.assertEqual(count, 1, "the pattern no longer fits the file")
                (self.copy / file).write_text(spoilt, encoding="utf-8")
                code, report = compare(self.copy, self.copy / "facts")
                self.assertEqual(code, 1, report)
                self.assertRegex(report, named)
                (self.copy / file).write_text(text, encoding="utf-8")

    def test_a_missing_header_is_a_difference_and_missing_facts_are_a_skip(self):
        (self.copy / "HostTableCos.h").unlink()
        code, report = compare(self.copy, self.copy / "facts")
        self.assertEqual(code, 1)
        self.assertIn("HostTableCos.h", report)
        self.assertEqual(compare(self.copy, self.copy / "nowhere")[0], 77)


if __name__ == "__main__":
    unittest.main()
