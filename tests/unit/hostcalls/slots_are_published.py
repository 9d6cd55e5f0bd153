#!/usr/bin/env python3
"""Checks that the plug-in reaches only functions of the host whose use is settled.

usage: slots_are_published.py <source folder> <slots.tsv>

Every function named in the folder's sources must be marked P in the table, or stand in ALLOWED with its reason.
"""
import csv
import re
import sys
from pathlib import Path

ALLOWED = {
    ("AcroView", "AVAuthOpen"): "the host's own password prompt; there is no other way to ask with it",
}
OWN_TABLES = {"FerruleJobs"}  # ours, described in a header of its own
SLOT = re.compile(r"HOST_SLOT\(\s*(\w+)\s*,\s*(\w+)\s*\)")
NUMBER = re.compile(r"\bkSlot([A-Z]\w+)")


def uses(text):
    """Pairs (table or None, function) named in a source text, comments and macro definitions left out."""
    text = re.sub(r"//[^\n]*|#define(?:[^\n]*\\\n)*[^\n]*", "", text)
    yield from SLOT.findall(text)
    for function in NUMBER.findall(text):
        yield None, function


def problems(folder, needs):
    found = 0
    for path in sorted(Path(folder).glob("*.[hc]*")):
        for table, function in uses(path.read_text(encoding="utf-8")):
            found += 1
            if table in OWN_TABLES or (table, function) in ALLOWED:
                continue
            places = {known: need for known, need in needs.get(function, {}).items() if table in (None, known)}
            if not places:
                yield f"{path.name}: {function} is not in the table {table or 'of any name'}"
            elif "P" not in places.values():
                yield f"{path.name}: {function} is not marked P"
    if found == 0:
        yield f"{folder}: no function of the host is named here, so nothing was checked"


def main(folder, facts):
    needs = {}
    with open(facts, encoding="utf-8", newline="") as file:
        for row in csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE):
            needs.setdefault(row["function"], {})[row["table"]] = row["need"]
    faults = list(problems(folder, needs))
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
