#!/usr/bin/env python3
"""Compares the headers of the plug-in interface with the tables of facts behind them.

usage: compare_with_facts.py HEADER_FOLDER FACTS_FOLDER C_COMPILER

The compiler is the judge: each fact becomes an assertion in a C file that includes the headers, or a line of a list
that the preprocessor expands. Prints what does not hold. Ends with 0 when everything does, 1 when something does not,
77 when the folder of facts is missing.
"""
import csv
import re
import subprocess
import sys
from pathlib import Path

SKIPPED = 77
BETA = 0x80000000
INTEGERS = {"int8": "signed char", "uint8": "unsigned char", "int16": "short", "uint16": "unsigned short",
            "int32": "int", "uint32": "unsigned int", "int64": "long long", "uint64": "unsigned long long",
            "size_t": "__SIZE_TYPE__"}
PRELUDE = """#include "HostInterface.h"
#include "HostSlotLists.h"
#include <stddef.h>
typedef struct IDispatch IDispatch;
"""
LISTS = ["HOST_TABLES", "HOST_ERRORS"]  # and one of slots for each table


def tokens(text):
    return " ".join(re.findall(r"\w+|\.\.\.|[^\s\w]", text))


class CComparison:
    def __init__(self, headers, facts, compiler):
        self._headers, self._facts, self._compiler = headers, facts, compiler
        self._texts = {path.name: path.read_text(encoding="utf-8") for path in headers.glob("Host*.h")}
        self._lines, self._differences = [], []

    def run(self):
        self._tables()
        self._types()
        self._records()
        self._constants()
        self._lists()
        self.facts_compared = len(self._lines)
        said = self._compile("\n".join(self._lines), "-fsyntax-only")
        return self._differences + [line for line in said.stderr.split("\n") if "error" in line]

    def _rows(self, name):
        with open(self._facts / name, encoding="utf-8", newline="") as stream:
            return list(csv.DictReader(stream, delimiter="\t", quoting=csv.QUOTE_NONE))

    def _compile(self, text, mode):
        text = PRELUDE + text
        command = [self._compiler, "-std=c11", "-x", "c", mode, "-I", str(self._headers), "-"]
        return subprocess.run(command, input=text, capture_output=True, text=True)

    def _holds(self, condition, *what):
        self._lines.append(f'_Static_assert({condition}, "{" ".join(what)}");')

    def _is_of_type(self, expression, wanted, *what):
        self._holds(f"_Generic({expression}, {wanted}: 1, default: 0)", *what)

    def _has_size(self, expression, row, *what):
        for system in ("win64", "lp64"):  # one header stands for both systems
            if row[f"size_{system}"] not in ("", "-"):
                self._holds(f'sizeof({expression}) == {row[f"size_{system}"]}', *what)

    def _is_text(self, name, wanted, *what):
        self._holds(f'__builtin_strcmp({name}, "{wanted}") == 0', *what)

    def _declares_only(self, headers, pattern, wanted):
        found = {name for header in headers.split() for name in re.findall(pattern, self._texts.get(header, ""))}
        for name in sorted(found ^ set(wanted)):
            self._differences.append(f"{headers}: {name} stands only in the {'header' if name in found else 'facts'}")

    def _function(self, row, procedure, *what):
        parameters = row["parameters"] if row["parameters"] not in ("", "-") else "void"
        self._is_of_type(f"({procedure})0", f'{row["returns"]} (HOSTCALL *)({parameters})', *what)

    def _tables(self):
        slots = self._rows("slots.tsv")
        for row in self._rows("tables.tsv"):
            table = row["table"]
            LISTS.append(f"HOST_SLOTS_{table.upper()}")
            self._is_text(f"HOST_TABLE_{table.upper()}", row["name_atom"], "table name", table)
            self._holds(f'kTable{table}Version == {int(row["version_here"], 0) & ~BETA}', "table version", table)
            self._holds(f'kTable{table}Selectors == {row["selectors"]}', "table selectors", table)
            own = [slot for slot in slots if slot["table"] == table]
            for slot in own:
                self._holds(f'kSlot{slot["function"]} == {slot["slot"]}', "slot", table, slot["function"])
                self._function(slot, slot["function"] + "SlotProc", "signature", table, slot["function"])
            names = [slot["function"] for slot in own]
            self._declares_only(f"HostTable{table}.h", r"\bkSlot(\w+) =", names)
            self._declares_only(f"HostTable{table}.h", r"\b(\w+)SlotProc\)", names)

    def _types(self):
        rows = self._rows("types.tsv")
        names = {row["name"] for row in rows}
        handles = [row["name"] for row in rows if row["kind"] == "opaque pointer" and "Const" not in row["name"]
                   and row["defined_through"] not in names]
        # Two names of one type are an error here, so a handle cannot stand for another kind of object.
        self._lines.append(f"enum {{ kHandles = _Generic(0, {': 1, '.join(handles)}: 1, int: 2) }};")
        for row in rows:
            name = row["name"]
            if row["kind"] == "opaque struct":
                continue
            self._has_size(name, row, "type size", name)
            if row["kind"] == "opaque pointer" and "Const" in name:  # the same handle, for looking only
                changing = name.replace("Const", "")
                self._is_of_type(f"({name})0", f"const __typeof__(*({changing})0) *", "type", name)
            elif row["kind"] in ("integer", "enum"):
                self._is_of_type(f"({name})0", INTEGERS.get(row["is"], "int"), "type", name)
            elif row["kind"] != "array" and row["defined_through"] in handles:
                self._is_of_type(f"({name})0", row["defined_through"], "type", name)
            elif row["kind"] != "opaque pointer":
                read_only = row["defined_through"] if row["defined_through"].startswith("const ") else None
                kind = read_only or re.sub(r"\(.*\)", "", row["is"])
                self._is_of_type(f"({name} *)0", _pointer_to(kind), "type", name)
        structs = {row["struct"] for row in self._rows("structs.tsv")}
        self._declares_only("HostTypes.h", r"typedef [^;]*?\b(\w+)(?:\[\d+\])?;",
                            structs | {row["name"] for row in rows if row["kind"] != "opaque struct"})

    def _records(self):
        fields = self._rows("structs.tsv")
        for row in fields:
            name, field = row["struct"], row["field"]
            self._has_size(f"struct {name}", row, "record size", name)
            for system in ("win64", "lp64"):
                offset = row[f"offset_{system}"]
                self._holds(f"offsetof({name}, {field}) == {offset}", "offset", f"{name}.{field}", system)
            self._is_of_type(f"&(({name} *)0)->{field}", _pointer_to(row["type"]), "record", f"{name}.{field}")
        self._declares_only("HostTypes.h HostRecords.h", r"(?m)^struct (\w+) \{", {row["struct"] for row in fields})
        callbacks = self._rows("callbacks.tsv")
        for row in callbacks:
            self._function(row, row["name"], "callback", row["name"])
        self._declares_only("HostRecords.h", r"\(HOSTCALL \*(\w+)\)", [row["name"] for row in callbacks])

    def _constants(self):
        for row in self._rows("constants.tsv"):
            self._holds(f'{row["name"]} == {row["value"]}', "constant", row["name"])
            self._holds(f'(unsigned)({row["value"]}) == (unsigned){row["hex"]}', "two values of", row["name"])
        for row in self._rows("strings.tsv"):
            self._is_text(row["name"], row["literal"], "string", row["name"])
        for row in self._rows("errors.tsv"):
            code = row["usual_code_hex"]
            composed = f'(unsigned)HOST_ERROR_CODE({row["usual_severity"]}, {row["system_no"]}, {row["number"]})'
            self._holds(f'(unsigned){row["name"]} == {code}', "error", row["name"])
            self._holds(f"{code} == 0 || {code} == {composed}", "parts of", row["name"])
        self._holds("HOST_ERROR_IDENTITY(HOST_ERROR_CODE(4, 3, 39)) == HOST_ERROR_IDENTITY(pdErrNeedPassword)",
                    "the severity does not count in a comparison")
        for header, facts in ("HostConstants.h", "constants.tsv"), ("HostErrors.h", "errors.tsv"):
            names = [row["name"] for row in self._rows(facts)]
            self._declares_only(header, r"(?m)^(?:    |#define )(\w+) (?:= |0x)", names)

    def _lists(self):
        """The lists that headers offer to users, in the order of the facts."""
        lists = "\n".join(f"LIST {name} {name}(ROW) END" for name in LISTS)
        said = self._compile("#define ROW(...) [__VA_ARGS__]\n" + lists, "-E")
        found = {name: tokens(entries) for name, entries in re.findall(r"\bLIST (\w+)(.*?) END\b", said.stdout, re.S)}
        wanted = {name: [] for name in LISTS}
        for row in self._rows("tables.tsv"):
            wanted["HOST_TABLES"].append(f'[{row["table"]}, "{row["name_atom"]}"]')
        for row in self._rows("slots.tsv"):
            wanted[f'HOST_SLOTS_{row["table"].upper()}'].append(f'[{row["table"]}, {row["slot"]}, {row["function"]}]')
        for name in set(LISTS) - {"HOST_ERRORS"}:
            self._differ(found.get(name) != tokens(" ".join(wanted[name])), f"list {name}")
        errors = re.findall(r"\[ (\w+) ,", found.get("HOST_ERRORS", ""))
        self._differ(errors != [row["name"] for row in self._rows("errors.tsv")], "list HOST_ERRORS")

    def _differ(self, condition, what):
        if condition:
            self._differences.append(f"{what} differs from the facts")


def _pointer_to(kind):
    """The type of a pointer to something: "char[8]" makes "char (*)[8]"."""
    base, bracket, length = kind.partition("[")
    return f"{base} (*)[{length}" if bracket else f"{kind} *"


def main(arguments):
    headers, facts, compiler = Path(arguments[0]), Path(arguments[1]), arguments[2]
    if not (facts / "slots.tsv").exists():
        print(f"no facts in {facts}: nothing compared")
        return SKIPPED
    comparison = CComparison(headers, facts, compiler)
    differences = comparison.run()
    print("\n".join(differences))
    print(f"{comparison.facts_compared} assertions, {len(differences)} differences")
    return 1 if differences or comparison.facts_compared < 5000 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
