#!/usr/bin/env python3
# SPDX-FileCopyrightText: the dbftable authors
# SPDX-License-Identifier: MIT
"""Compares the library with other programs, value by value, and writes what came out of it.

compare.py INTEROP FOLDER REPORT: the library's program, a folder to work in, the page to write.
Fails when a program differs in any other way than those named here, or when one of those is gone.
"""

import csv
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

# What is known to differ, and why: (table, program) -> (columns, reason). Values that are missing
# are told from the others.
DOS_BYTE = ("the library takes code page byte 0x66 for DOS Cyrillic, the program takes it for DOS "
            "Nordic; the bytes of the text are right")
NO_BINARY = "the program does not know columns of this type and shows their bytes as text"
NOT_SHOWN = "the program shows nothing for columns of type D and L"
NO_UNKNOWN = "the program takes a missing truth value for false"
ZERO_BYTES = ("the default text converter fills the field with zero bytes, which the program does "
              "not take for its end; the nullable set writes spaces")
KNOWN = {
    ("dos-cyrillic", "dbfread"): ({"TEXT"}, DOS_BYTE),
    ("dos-cyrillic", "ogr2ogr"): ({"TEXT"}, DOS_BYTE),
    ("binary", "ogr2ogr"): ({"I", "Y", "T", "B"}, NO_BINARY),
    ("binary", "dbfdump"): ({"I", "Y", "T", "B"}, NO_BINARY),
    ("default-converters", "dbfread"): ({"WHOLE", "PARTS"}, ZERO_BYTES),
    ("default-converters", "soffice"): ({"TEXT"}, ZERO_BYTES),
    ("default-converters", "dbfdump"): ({"DAY", "TRUTH"}, NOT_SHOWN),
    ("restructured", "dbfdump"): ({"DAY", "TRUTH"}, NOT_SHOWN),
}
for cyrillic in ("windows-cyrillic", "dos-cyrillic"):
    KNOWN[cyrillic, "dbfdump"] = ({"DAY", "TRUTH"}, NOT_SHOWN)
for blank in ("windows-cyrillic", "dos-cyrillic", "restructured"):
    KNOWN[blank, "soffice"] = ({"missing TRUTH"}, NO_UNKNOWN)


def run(*command, **environment):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          env={**os.environ, **environment}).stdout


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
            values[column] = None if text in ("(NULL)", "") else text
        rows.append((b"(DELETED)" in lines, values))
    return rows


def as_soffice(name, columns):
    """The program is told the code page, and takes the way it shows dates from the language."""
    code_page = 30 if name.startswith("dos") else 34  # by its own numbers
    run("soffice", "-env:UserInstallation=file://" + path("profile"), "--headless",
        f"--infilter=dBase:{code_page}", "--convert-to",
        "csv:Text - txt - csv (StarCalc):44,34,76,1", "--outdir", folder, path(name),
        LC_ALL="en_CA.UTF-8")
    with open(path(name[:-len("dbf")] + "csv"), newline="", encoding="utf-8") as source:
        rows = list(csv.reader(source))[1:]
    return [(False, {column: text or None for (column, letter), text in zip(columns, row)})
            for row in rows]


PROGRAMS = {"dbfread": as_dbfread, "ogr2ogr": as_ogr2ogr, "dbfdump": as_dbfdump,
            "soffice": as_soffice}
TRUTH = {"T": True, "TRUE": True, "F": False, "FALSE": False, "?": None}


def number(value):
    try:
        return decimal.Decimal(str(value))
    except decimal.InvalidOperation:
        return None


def same_number(letter, ours, theirs):
    if number(theirs) is None or ours is None:
        return False
    if isinstance(theirs, decimal.Decimal) or letter == "I":
        return number(ours) == number(theirs)
    return math.isclose(float(ours), float(theirs), rel_tol=1e-15)


def same_time(ours, theirs):
    """Programs that show text show minutes."""
    if isinstance(theirs, datetime.datetime):
        return ours == theirs.isoformat(timespec="milliseconds")
    return theirs is not None and ours is not None and ours[:16] == theirs.replace(" ", "T")


def same(letter, ours, theirs):
    """Whether two values are equal; no value is equal to no value alone."""
    if letter == "C":
        return ours == (theirs or "")
    if letter == "L":
        return ours == TRUTH.get(theirs, theirs)
    if ours is None and theirs is None:
        return True
    if letter in "NFIYB":
        return same_number(letter, ours, theirs)
    if letter == "T":
        return same_time(ours, theirs)
    return ours == (theirs.isoformat() if isinstance(theirs, datetime.date) else theirs)


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
            different |= {name if mine[name] is not None else "missing " + name
                          for name, letter in table.columns
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
    names = ", ".join(prefix + name for name, letter in table.columns for prefix in ("", "missing ")
                      if prefix + name in different)
    return f"all but {names} [{note(reason)}]"


def library_tables():
    """The tables that the library writes, as the other programs read them."""
    samples = ["windows-cyrillic", "dos-cyrillic", "binary", "wide", "empty", "default-converters"]
    for sample in samples:
        run(interop, "write", sample, path(sample + ".dbf"))
    run(interop, "restructure", path("windows-cyrillic.dbf"), path("restructured.dbf"))
    for sample in samples + ["restructured"]:
        name = sample + ".dbf"
        table = as_library(name)
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
    office = " ".join(version("soffice", "--version").split()[:2])
    ours = list(library_tables())
    theirs = list(program_tables())
    lines = [
        "# Interoperation", "",
        "`scripts/interop` wrote this page. It compares every value of tables that the library",
        "writes with what other programs read in them, and the other way round. The programs:",
        f"dbfread {dbfread.__version__}, {version('ogr2ogr', '--version')} (`ogr2ogr`), shapelib "
        f"{shapelib}", "(`dbfdump`, `dbfcreate`, `dbfadd`), "
        f"{office} (`soffice`, headless, to CSV).", "",
        "## Written by the library", "",
        "| table | " + " | ".join(PROGRAMS) + " |", "| --- |" + " --- |" * len(PROGRAMS)]
    lines += [f"| {name} | " + " | ".join(cells) + " |" for name, cells in ours]
    lines += [
        "",
        "All but `default-converters` are written with the nullable set, and all are read with it:",
        "a field without a value counts as equal only where the program, too, shows none. The",
        "Cyrillic tables and the restructured copy have columns of types C, N, F, D and L, with",
        "blank, zero, negative and widest values and a deleted record; `binary` has the types I,",
        "Y, T and B of version 0x30; `wide` has 250 columns of 255 bytes. `ogr2ogr` and `soffice`",
        "leave out deleted records; the others show them, marked. `soffice` is told the code page;",
        "it shows numbers with 15 digits and times to the minute, and is compared by these.", "",
        "## Read by the library", "",
        "| written by | text in | read | result |", "| --- | --- | --- | --- |"]
    lines += [f"| {' | '.join(row)} |" for row in theirs]
    lines += ["", "## What differs, and why", ""]
    lines += [f"{i}. In the columns named: {reason}." for i, reason in enumerate(notes, 1)]
    lines += [
        "", "A table that names no code page, or one other than Windows and DOS Cyrillic, needs",
        "its codec imposed; see the [guide](guide.md). What the default converters write instead",
        "is told in [values.md](values.md)."]
    if failures:
        sys.exit("\n".join(failures))
    with open(report, "w") as page:
        page.write("\n".join(lines) + "\n")


main()
