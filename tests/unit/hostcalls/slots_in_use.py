#!/usr/bin/env python3
"""Checks which functions of the host are used: the plug-in reaches only those whose use is settled, and each that it
calls or that the open host offers is described in the interface header.

usage: slots_in_use.py SOURCE_FOLDER
"""
import csv
import re
import sys
from pathlib import Path

ALLOWED = {
    ("AcroView", "AVAuthOpen"): "the host's own password prompt; there is no other way to ask with it",
}
OWN_TABLES = {"FerruleJobs", "FerruleIndex"}  # ours, described in headers of their own
CALLED = re.compile(r"HOST_SLOT\(\s*(\w+)\s*,\s*(\w+)\s*\)|\bkSlot()([A-Z]\w+)")
OFFERED = re.compile(r"OFFER\(\s*\w+\s*,\s*(\w+)\s*,\s*(\w+)\s*,|PutTyped<()(\w+)SlotProc>")


def uses(folder, pattern):
    """File name, table (or nothing) and function named in the sources, comments and macro definitions left out."""
    for path in sorted(folder.rglob("*.cpp")) + sorted(folder.rglob("*.h")):
        text = re.sub(r"//[^\n]*|#define(?:[^\n]*\\\n)*[^\n]*", "", path.read_text(encoding="utf-8"))
        for groups in pattern.findall(text):
            yield path.name, *(groups[:2] if groups[1] else groups[2:])


def rows(path):
    with open(path, encoding="utf-8", newline="") as file:
        return list(csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE))


def main(source):
    facts = source / "hostapi" / "facts"
    needs = {}
    for row in rows(facts / "slots.tsv"):
        needs.setdefault(row["function"], {})[row["table"]] = row["need"]
    noted = {row["function"] for row in rows(facts / "slot-notes.tsv")}
    called, offered = list(uses(source / "hostcalls", CALLED)), list(uses(source / "openhost", OFFERED))
    faults = set()
    for file, table, function in called:
        if table in OWN_TABLES or (table, function) in ALLOWED:
            continue
        places = {known: need for known, need in needs.get(function, {}).items() if table in ("", known)}
        if not places:
            faults.add(f"{file}: {function} is not in the table {table or 'of any name'}")
        elif "P" not in places.values():
            faults.add(f"{file}: {function} is not marked P")
    for file, _, function in called + offered:
        if function in needs and function not in noted:
            faults.add(f"{file}: {function} is in use, but not described in the header")
    print("\n".join(sorted(faults)))
    counts = [len({use[2] for use in each} & set(needs)) for each in (offered, called)]
    print("%d functions offered, %d called" % tuple(counts))
    return 1 if faults or counts[0] < 200 or counts[1] < 50 else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
