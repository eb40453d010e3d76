#!/usr/bin/env python3
# SPDX-FileCopyrightText: the dbftable authors
# SPDX-License-Identifier: MIT
"""Compares the library with other programs, value by value, and writes what came out of it.

compare.py INTEROP FOLDER REPORT: the library's program, a folder to work in, the page to write.
Fails when a program differs in any other way than those named here, or when one of those is gone.
"""

import datetime
import decimal
import json
import math
import os
import subprocess
import sys

import dbfread

interop, folder, report = sys.argv[1:]

CYRILLIC = "Чай чёрный"

# What is known to differ, and why: (table, program) -> (columns, reason).
DOS_BYTE = ("the library takes code page byte 0x66 for DOS Cyrillic, the program takes it for DOS "
            "Nordic; the bytes of the text are right")
NO_BINARY = "the program does not know columns of this type and shows their bytes as text"
NOT_SHOWN = "the program shows nothing for columns of type D and L"
KNOWN = {
    ("dos-cyrillic", "dbfread"): ({"TEXT"}, DOS_BYTE),
    ("dos-cyrillic", "ogr2ogr"): ({"TEXT"}, DOS_BYTE),
    ("binary", "ogr2ogr"): ({"I", "Y", "B"}, NO_BINARY),
    ("binary", "dbfdump"): ({"I", "Y", "B"}, NO_BINARY),
    ("binary", "dbfread"): ({"B"}, "in version 0x03 the program takes type B for a memo field"),
    ("windows-cyrillic", "dbfdump"): ({"DAY", "TRUTH"}, NOT_SHOWN),
    ("dos-cyrillic", "dbfdump"): ({"DAY", "TRUTH"}, NOT_SHOWN),
    ("restructured", "dbfdump"): ({"DAY", "ADDED", "TRUTH"}, NOT_SHOWN),
    ("numbers-as-text", "dbfread"): (
        {"WHOLE", "PARTS"},
        "the text converter fills the field with zero bytes, which the program does not take for "
        "the end of a number; with `DbfDoubleConverter` on the columns it reads them"),
}


def run(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE).stdout


def path(name):
    return os.path.join(folder, name)


class Table:
    """Columns as (name, type letter), rows as (deleted, values by name)."""

    def __init__(self, columns, rows):
        self.columns = columns
        self.rows = rows


def as_library(name, *codec):
    lines = [json.loads(line) for line in run(interop, "dump", path(name), *codec).splitlines()]
    names = [column[0] for column in lines[0]]
    return Table(lines[0], [(line[0], dict(zip(names, line[1:]))) for line in lines[1:]])


def as_dbfread(name, columns):
    class Raw(dbfread.FieldParser):
        """Gives the error in the place of a value that the program refuses."""

        def parse(self, field, data):
            try:
                return super().parse(field, data)
            except Exception as error:
                return error

    table = dbfread.DBF(path(name), ignore_missing_memofile=True, parserclass=Raw)
    live = [(False, dict(record)) for record in table]
    return live + [(True, dict(record)) for record in table.deleted]


def as_ogr2ogr(name, columns):
    output = run("ogr2ogr", "-f", "GeoJSONSeq", "/vsistdout/", path(name))
    features = [json.loads(line.decode("utf-8", "replace")) for line in output.splitlines()]
    return [(False, {column: feature["properties"].get(column) for column, letter in columns})
            for feature in features]


def as_dbfdump(name, columns):
    encoding = "cp866" if name.startswith("dos") else "cp1251"
    rows = []
    for block in run("dbfdump", "-m", path(name)).split(b"\nRecord: ")[1:]:
        lines = block.split(b"\n")[1:]
        values = {}
        for (column, letter), line in zip(columns, lines):
            text = line[len(column) + 2:].decode(encoding, "replace").strip()
            values[column] = None if text == "(NULL)" else text
        rows.append((b"(DELETED)" in lines, values))
    return rows


PROGRAMS = {"dbfread": as_dbfread, "ogr2ogr": as_ogr2ogr, "dbfdump": as_dbfdump}


def number(value):
    """Blank fields are 0 to the library."""
    try:
        return decimal.Decimal(str(value)) if value not in (None, "") else decimal.Decimal(0)
    except decimal.InvalidOperation:
        return None


def same(letter, ours, theirs):
    if letter == "C":
        return ours == (theirs or "")
    if letter == "Y":
        theirs = number(theirs)
        return theirs is not None and number(ours) == theirs * 10000
    if letter in "NFIB":
        theirs = number(theirs)
        return theirs is not None and math.isclose(float(number(ours)), float(theirs),
                                                   rel_tol=1e-15)
    if letter == "D":
        return ours == (theirs.isoformat() if isinstance(theirs, datetime.date) else theirs)
    return ours == {"T": True, "F": False}.get(theirs, theirs)


def differing_columns(table, rows):
    """Returns the columns with unequal values; the programs may leave out deleted records."""
    def pick(rows, deleted):
        return [values for mark, values in rows if mark == deleted]

    different = set()
    for deleted in (False, True):
        ours, theirs = pick(table.rows, deleted), pick(rows, deleted)
        if deleted and not theirs:
            continue
        if len(ours) != len(theirs):
            sys.exit(f"{len(ours)} records are {len(theirs)} to the other program")
        for mine, other in zip(ours, theirs):
            different |= {name for name, letter in table.columns
                          if not same(letter, mine[name], other[name])}
    return different


notes = []
failures = []


def note(reason):
    if reason not in notes:
        notes.append(reason)
    return notes.index(reason) + 1


def cell(what, program, table, rows):
    """Returns the words for the report after holding the result against what is known."""
    different = differing_columns(table, rows)
    expected, reason = KNOWN.get((what, program), (set(), ""))
    if different != expected:
        failures.append(f"{what} with {program}: {sorted(different)} differ, "
                        f"{sorted(expected)} were to")
    count = sum(len(values) for mark, values in rows)
    if not different:
        return f"{count} values equal" if count else "no record, as written"
    names = ", ".join(name for name, letter in table.columns if name in different)
    return f"all but {names} [{note(reason)}]"


def library_tables():
    """The tables that the library writes, as the other programs read them."""
    samples = ["windows-cyrillic", "dos-cyrillic", "numbers-as-text", "binary", "wide", "empty"]
    for sample in samples:
        run(interop, "write", sample, path(sample + ".dbf"))
    run(interop, "restructure", path("windows-cyrillic.dbf"), path("restructured.dbf"))
    for sample in samples + ["restructured"]:
        name = sample + ".dbf"
        table = as_library(name)
        if sample == "numbers-as-text":
            # The numbers, as text, are in no doubt; the library's number converter is not meant
            # for fields filled with zero bytes.
            table.rows = [(False, {"WHOLE": w, "PARTS": p})
                          for w, p in ((42, 1234.5), (-7, 0.25), (0, 0))]
        yield sample, [cell(sample, program, table, read(name, table.columns))
                       for program, read in PROGRAMS.items()]


OGR_TYPES = '"String(20)","Integer(9)","Integer64(18)","Real(24.15)","Date","Integer(Boolean)"\n'
OGR_ROWS = [(CYRILLIC, 42, 123456789012, 1234.5, "2024-02-29", 1),
            ("", None, None, None, None, None),
            ("12345678901234567890", -99999999, -1, -0.125, "1999-12-31", 0)]
SHAPELIB_ROWS = [(CYRILLIC, 42, -1.5), ("", None, None), ("inner  spaces", -99999999, 1234567.125)]


def ogr_table(encoding):
    name = f"ogr-{encoding.lower()}.dbf"
    with open(path("source.csvt"), "w") as types:
        types.write(OGR_TYPES)
    with open(path("source.csv"), "w") as source:
        source.write("TEXT,WHOLE,LARGE,PARTS,DAY,TRUTH\n")
        for row in OGR_ROWS:
            source.write(",".join("" if value is None else str(value) for value in row) + "\n")
    run("ogr2ogr", "-f", "ESRI Shapefile", path(name), path("source.csv"),
        "-lco", "ENCODING=" + encoding)
    return name, OGR_ROWS


def shapelib_table(encoding):
    name = f"shapelib-{encoding}.dbf"
    run("dbfcreate", path(name), "-s", "TEXT", "20", "-n", "WHOLE", "9", "0", "-n", "PARTS", "12",
        "3")
    for row in SHAPELIB_ROWS:
        run("dbfadd", path(name), *("" if value is None else str(value).encode(encoding)
                                    for value in row))
    return name, SHAPELIB_ROWS


def program_tables():
    """The tables that the other programs write, as the library reads them."""
    for program, make, encoding, codec in (("ogr2ogr", ogr_table, "CP1251", ""),
                                           ("ogr2ogr", ogr_table, "CP866", "IBM 866"),
                                           ("ogr2ogr", ogr_table, "UTF-8", "UTF-8"),
                                           ("dbfadd", shapelib_table, "cp1251", "Windows-1251")):
        name, rows = make(encoding)
        table = as_library(name, *filter(None, [codec]))
        names = [column[0] for column in table.columns]
        theirs = [(False, dict(zip(names, row))) for row in rows]
        how = f"codec {codec} imposed" if codec else "by itself"
        yield program, encoding, how, cell(name, "library", table, theirs)


def version(*command):
    return run(*command).decode().split(",")[0].strip()


def main():
    shapelib = version("dpkg-query", "--show", "--showformat=${source:Upstream-Version}",
                       "shapelib")
    ours = list(library_tables())
    theirs = list(program_tables())
    lines = [
        "# Interoperation", "",
        "`scripts/interop` wrote this page. It compares every value of tables that the library",
        "writes with what other programs read in them, and the other way round. The programs:",
        f"dbfread {dbfread.__version__}, {version('ogr2ogr', '--version')} (`ogr2ogr`), shapelib "
        f"{shapelib}", "(`dbfdump`, `dbfcreate`, `dbfadd`).", "",
        "## Written by the library", "",
        "| table | " + " | ".join(PROGRAMS) + " |", "| --- |" + " --- |" * len(PROGRAMS)]
    lines += [f"| {name} | " + " | ".join(cells) + " |" for name, cells in ours]
    lines += [
        "",
        "The Cyrillic tables and the restructured copy have columns of types C, N, F, D and L,",
        "with blank, negative and widest values and a deleted record; their N columns have",
        "`DbfDoubleConverter`. `wide` has 250 columns of 255 bytes, `binary` columns of types I, Y",
        "and B, and the table `numbers-as-text` has N columns with their default converter.",
        "`ogr2ogr` leaves out deleted records; the others show them, marked. A blank number counts",
        "as equal to 0, which the library reads in it.", "",
        "## Read by the library", "",
        "| written by | text in | read | result |", "| --- | --- | --- | --- |"]
    lines += [f"| {' | '.join(row)} |" for row in theirs]
    lines += ["", "## What differs, and why", ""]
    lines += [f"{i}. In the columns named: {reason}." for i, reason in enumerate(notes, 1)]
    lines += [
        "", "A table that names no code page, or one other than Windows and DOS Cyrillic, needs",
        "its codec imposed; see the [guide](guide.md). Text comes back without the spaces at its",
        "ends, and the library writes it so."]
    if failures:
        sys.exit("\n".join(failures))
    with open(report, "w") as page:
        page.write("\n".join(lines) + "\n")


main()
