#!/usr/bin/env python3
"""Checks that every fixed text of the product is spelled somewhere in the plug-in's sources, letter for letter.

usage: check_fixed_texts.py SOURCE_FOLDER LIST

Operators and scripts read log lines, keys and names, so that none may change by accident. LIST holds one text a line,
written as inside a C string. Comments do not count; neighbouring literals are joined.
"""
import re
import sys
from pathlib import Path

PLUG_IN_FOLDERS = ("hostapi", "common", "hostcalls", "pdflib", "search", "engine", "commands", "batchrun", "tools", "jobs", "host",
                   "platform", "protocol", "sequence")
TOKEN = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:[^"\\\n]|\\.)*"|\'(?:[^\'\\\n]|\\.)*\'|\s+|.', re.S)
ESCAPES = {"n": "\n", "r": "\r", "t": "\t", '"': '"', "\\": "\\", "'": "'", "0": "\0"}


def unescape(text):
    return re.sub(r"\\(.)", lambda match: ESCAPES.get(match.group(1), match.group(0)), text, flags=re.S)


def literals(source):
    joined = None
    for token in TOKEN.findall(source):
        if token.startswith('"'):
            joined = (joined or "") + unescape(token[1:-1])
        elif not token.isspace() and not token.startswith(("//", "/*")) and joined is not None:
            yield joined
            joined = None
    if joined is not None:
        yield joined


def missing(folder, texts):
    found = set()
    for part in PLUG_IN_FOLDERS:
        for path in sorted((folder / part).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                found.update(literals(path.read_text(encoding="utf-8")))
    everything = "\x00".join(found)
    # Short words would be found inside others: they must be a literal of their own.
    return [text for text in texts if (text not in found if len(text) < 12 else text not in everything)]


def main():
    texts = [unescape(line) for line in Path(sys.argv[2]).read_text(encoding="utf-8").splitlines() if line]
    absent = missing(Path(sys.argv[1]), texts)
    for text in absent:
        print(f"not in the sources: {text!r}")
    print(f"{len(texts)} fixed texts, {len(absent)} missing")
    return 1 if absent or len(texts) < 100 else 0


if __name__ == "__main__":
    sys.exit(main())
