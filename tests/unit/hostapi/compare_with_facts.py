#!/usr/bin/env python3
"""Compares the headers of the plug-in interface with the tables of facts behind them.

usage: compare_with_facts.py HEADER_FOLDER FACTS_FOLDER

Reads the headers as C, with a parser of its own that shares nothing with the generator, and prints every difference and
their number. Ends with 0 when there is none, 1 when there are some, 77 when the folder of facts is missing.
"""
import csv
import re
import sys
from collections import Counter
from pathlib import Path

SKIPPED = 77
BETA = 0x80000000
INTEGERS = {"int8": "signed char", "uint8": "unsigned char", "int16": "short", "uint16": "unsigned short",
            "int32": "int", "uint32": "unsigned int", "int64": "long long", "uint64": "unsigned long long",
            "size_t": "size_t"}


def tokens(text):
    """C text with one blank between tokens, so that layout never matters. One structure has its tag only."""
    return " ".join(re.findall(r"\w+|\.\.\.|[^\s\w]", text.replace("struct IDispatch", "IDispatch")))


class CHeader:
    """What one header declares."""

    def __init__(self, source):
        self.types, self.functions, self.records, self.constants = {}, {}, {}, {}
        self.strings, self.lists, self.sizes, self.offsets = {}, {}, {}, {}
        self.unknown = []
        text = re.sub(r"/\*.*?\*/", " ", source, flags=re.S).replace("\\\n", " ")
        code = []
        for line in text.split("\n"):
            if line.lstrip().startswith("#"):
                self._directive(line.strip())
            else:
                code.append(line)
        for statement in re.findall(r"(?:[^;{}]|\{[^{}]*\})+;", "\n".join(code)):
            self._statement(tokens(statement[:-1]))

    def _directive(self, line):
        if match := re.fullmatch(r'#define (\w+) "([^"]*)"', line):
            self.strings[match[1]] = match[2]
        elif match := re.fullmatch(r"#define (\w+) (0[xX][0-9A-Fa-f]+|\d+)u?", line):
            self.constants[match[1]] = int(match[2], 0)
        elif match := re.fullmatch(r"#define (HOST_\w+)\(X\)(.*)", line):
            self.lists[match[1]] = [[tokens(part).strip('" ') for part in entry.split(",", 2)]
                                    for entry in re.findall(r'X\(((?:"[^"]*"|[^")])*)\)', match[2])]

    def _statement(self, text):
        if not text:
            return
        if match := re.fullmatch(r"typedef (.+) \( HOSTCALL \* (\w+) \) \( (.*) \)", text):
            self.functions[match[2]] = (match[1], match[3])
        elif match := re.fullmatch(r"typedef (.+?) (\w+)((?: \[ \d+ \])*)", text):
            self.types[match[2]] = match[1] + match[3]
        elif match := re.fullmatch(r"struct (\w+) \{ (.*) ; \}", text):
            self.records[match[1]] = [_field(field) for field in match[2].split(" ; ")]
        elif match := re.fullmatch(r"enum \{ (.*?)(?: ,)? \}", text):
            for member in match[1].split(" , "):
                name, value = member.split(" = ")
                self.constants[name] = int(value.replace(" ", ""), 0)
        elif match := re.fullmatch(r'HOST_STATIC_ASSERT \( sizeof \( (\w+) \) = = (\d+) , ".*" \)', text):
            self.sizes[match[1]] = int(match[2])
        elif match := re.fullmatch(r'HOST_STATIC_ASSERT \( offsetof \( (\w+) , (\w+) \) = = (\d+) , ".*" \)', text):
            self.offsets[match[1], match[2]] = int(match[3])
        elif not re.fullmatch(r"(struct )?IDispatch", text):
            self.unknown.append(text)


def _field(text):
    match = re.fullmatch(r"(.+?) (\w+)((?: \[ \d+ \])*)", text)
    return (match[2], match[1] + match[3]) if match else (text, "?")


class CComparison:
    def __init__(self, headers, facts):
        self.differences = []
        self.compared = Counter()
        self._facts = facts
        self._by_file = {path.name: CHeader(path.read_text(encoding="utf-8")) for path in sorted(headers.glob("Host*.h"))}

    def run(self):
        for name, header in self._by_file.items():
            self._differ(bool(header.unknown), name, "declarations that are none of the interface's", header.unknown)
        self._tables()
        self._slots()
        self._types()
        self._records()
        self._callbacks()
        self._constants()
        self._strings()
        self._errors()
        return self.differences

    def _rows(self, name):
        with open(self._facts / name, encoding="utf-8", newline="") as stream:
            return list(csv.DictReader(stream, delimiter="\t", quoting=csv.QUOTE_NONE))

    def _header(self, name):
        if name not in self._by_file:
            self.differences.append(f"{name} is missing")
            self._by_file[name] = CHeader("")
        return self._by_file[name]

    def _all(self, kind):
        return {name: value for header in self._by_file.values() for name, value in getattr(header, kind).items()}

    def _differ(self, condition, *what):
        if condition:
            self.differences.append(" ".join(str(part) for part in what))

    def _same(self, area, name, found, wanted):
        self.compared[area] += 1
        self._differ(found != wanted, f"{area} {name}: header has {found}, facts have {wanted}")

    def _same_names(self, area, found, wanted):
        for name in sorted(set(found) - set(wanted)):
            self.differences.append(f"{area} {name}: not among the facts")
        for name in sorted(set(wanted) - set(found)):
            self.differences.append(f"{area} {name}: not in the header")

    def _tables(self):
        facts = self._rows("tables.tsv")
        for row in facts:
            table, header = row["table"], self._header(f'HostTable{row["table"]}.h')
            self._same("table name", table, header.strings.get(f"HOST_TABLE_{table.upper()}"), row["name_atom"])
            self._same("table version", table, header.constants.get(f"kTable{table}Version"),
                       int(row["version_here"], 0) & ~BETA)
            self._same("table selectors", table, header.constants.get(f"kTable{table}Selectors"), int(row["selectors"]))
        found = [name[len("HostTable"):-2] for name in self._by_file if name.startswith("HostTable")]
        self._same_names("table", found, [row["table"] for row in facts])
        self._same("table list", "HOST_TABLES", self._header("HostSlotLists.h").lists.get("HOST_TABLES"),
                   [[row["table"], row["name_atom"]] for row in facts])

    def _slots(self):
        facts = self._rows("slots.tsv")
        for table in {row["table"] for row in self._rows("tables.tsv")}:
            rows = [row for row in facts if row["table"] == table]
            header = self._header(f"HostTable{table}.h")
            for row in rows:
                name = row["function"]
                parameters = row["parameters"] if row["parameters"] not in ("", "-") else "void"
                self._same("slot", f"{table} {name}", header.constants.get(f"kSlot{name}"), int(row["slot"]))
                self._same("signature", f"{table} {name}", header.functions.get(f"{name}SlotProc"),
                           (tokens(row["returns"]), tokens(parameters)))
            found = [name[len("kSlot"):] for name in header.constants if name.startswith("kSlot")]
            self._same_names(f"slot {table}", found, [row["function"] for row in rows])
            self._same_names(f"signature {table}", header.functions, [row["function"] + "SlotProc" for row in rows])
            self._same("slot list", table, self._header("HostSlotLists.h").lists.get(f"HOST_SLOTS_{table.upper()}"),
                       [[table, row["slot"], row["function"]] for row in rows])

    def _types(self):
        types, sizes = self._all("types"), self._all("sizes")
        rows = self._rows("types.tsv")
        for row in rows:
            name, kind = row["name"], row["kind"]
            if kind == "opaque struct":
                continue
            self.compared["type"] += 1
            found = types.get(name, "nothing")
            self._differ(not self._type_fits(row, found, types), f'type {name}: header has {found}, facts have {kind} '
                                                                f'{row["is"]} {row["defined_through"] or ""}')
            for system in ("win64", "lp64"):
                if row[f"size_{system}"] not in ("", "-"):
                    self._same("type size", f"{name} {system}", sizes.get(name), int(row[f"size_{system}"]))
        structs = {row["struct"] for row in self._rows("structs.tsv")}
        self._same_names("type", set(types) - structs, {row["name"] for row in rows if row["kind"] != "opaque struct"})

    @staticmethod
    def _type_fits(row, found, types):
        if row["kind"] == "integer":
            return found == INTEGERS[row["is"]]
        if row["kind"] == "enum":
            return found == "int"
        if row["kind"] == "array":
            return found == tokens(row["is"])
        if row["kind"] == "pointer":
            return found in (tokens(re.sub(r"\(.*\)", "", row["is"])), tokens(row["defined_through"] or ""))
        if row["defined_through"] in types:  # another name of a handle
            return found == row["defined_through"]
        read_only = re.fullmatch(r"(\w+?)Const(\w+)", row["name"])
        if read_only:  # the same handle, for looking only
            return found == "const " + types.get(read_only[1] + read_only[2], "?")
        return bool(re.fullmatch(r"struct \w+ \*", found)) and list(types.values()).count(found) == 1

    def _records(self):
        records, sizes, offsets = self._all("records"), self._all("sizes"), self._all("offsets")
        wanted = {}
        for row in self._rows("structs.tsv"):
            wanted.setdefault(row["struct"], []).append(row)
        for name, rows in wanted.items():
            fields = [(row["field"], tokens(row["type"])) for row in sorted(rows, key=lambda row: int(row["field_no"]))]
            self._same("record", name, records.get(name), fields)
            for system in ("win64", "lp64"):  # one assertion stands for both systems
                self._same("record size", f"{name} {system}", sizes.get(name), int(rows[0][f"size_{system}"]))
                for row in rows:
                    self._same("offset", f'{name}.{row["field"]} {system}', offsets.get((name, row["field"])),
                               int(row[f"offset_{system}"]))
        self._same_names("record", records, wanted)
        self._same_names("offset", offsets, {(row["struct"], row["field"]) for rows in wanted.values() for row in rows})

    def _callbacks(self):
        found, facts = self._header("HostRecords.h").functions, self._rows("callbacks.tsv")
        for row in facts:
            self._same("callback", row["name"], found.get(row["name"]), (tokens(row["returns"]), tokens(row["parameters"])))
        self._same_names("callback", found, [row["name"] for row in facts])

    def _constants(self):
        found, facts = self._header("HostConstants.h").constants, self._rows("constants.tsv")
        for row in facts:
            self._same("constant", row["name"], found.get(row["name"]), int(row["value"]))
            self._differ((int(row["value"]) ^ int(row["hex"], 0)) & 0xFFFFFFFF != 0, "constant", row["name"],
                         "has two values among the facts")
        self._same_names("constant", found, [row["name"] for row in facts])

    def _strings(self):
        found, facts = self._header("HostConstants.h").strings, self._rows("strings.tsv")
        for row in facts:
            self._same("string", row["name"], found.get(row["name"]), row["literal"])
        self._same_names("string", found, [row["name"] for row in facts])

    def _errors(self):
        header, facts = self._header("HostErrors.h"), self._rows("errors.tsv")
        for row in facts:
            code = int(row["usual_code_hex"], 0)
            self._same("error", row["name"], header.constants.get(row["name"]), code)
            parts = int(row["usual_severity"]) << 28 | int(row["system_no"]) << 16 | int(row["number"])
            self._differ(code not in (parts, 0), "error", row["name"], "is not composed of its parts among the facts")
        self._same_names("error", header.constants, [row["name"] for row in facts])
        self._same("error list", "HOST_ERRORS", [entry[0] for entry in header.lists.get("HOST_ERRORS", [])],
                   [row["name"] for row in facts])


def main(arguments):
    if len(arguments) != 2:
        print(__doc__)
        return 2
    headers, facts = Path(arguments[0]), Path(arguments[1])
    if not (facts / "slots.tsv").exists():
        print(f"no facts in {facts}: nothing compared")
        return SKIPPED
    comparison = CComparison(headers, facts)
    for difference in comparison.run():
        print(difference)
    print(", ".join(f"{number} {area}" for area, number in comparison.compared.items()))
    print(f"{len(comparison.differences)} differences")
    return 1 if comparison.differences else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
