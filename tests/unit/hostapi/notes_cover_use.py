#!/usr/bin/env python3
"""Checks that every function that the plug-in calls or the open host offers is described in the interface header.

usage: notes_cover_use.py SOURCE_FOLDER
"""
import re
import sys
from pathlib import Path

OFFERED = re.compile(r"OFFER\(\s*\w+\s*,\s*\w+\s*,\s*(\w+)\s*,|PutTyped<(\w+)SlotProc>")
CALLED = re.compile(r"HOST_SLOT\(\s*\w+\s*,\s*(\w+)\s*\)|\bkSlot(\w+)")


def names(folder, pattern):
    found = set()
    for path in sorted(folder.rglob("*.cpp")) + sorted(folder.rglob("*.h")):
        for match in pattern.findall(path.read_text(encoding="utf-8")):
            found.update(name for name in match if name)
    return found


def main():
    source = Path(sys.argv[1])
    facts = source / "hostapi" / "facts"
    known = {line.split("\t")[2] for line in (facts / "slots.tsv").read_text(encoding="utf-8").splitlines()[1:]}
    noted = {line.split("\t")[1] for line in (facts / "slot-notes.tsv").read_text(encoding="utf-8").splitlines()[1:]}
    offered, called = names(source / "openhost", OFFERED) & known, names(source / "hostcalls", CALLED) & known
    silent = sorted((offered | called) - noted)
    for name in silent:
        print(f"in use, but not described in the header: {name}")
    print(f"{len(offered)} functions offered, {len(called)} called, {len(silent)} without a description")
    return 1 if silent or len(offered) < 200 or len(called) < 50 else 0


if __name__ == "__main__":
    sys.exit(main())
