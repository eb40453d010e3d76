#!/usr/bin/env python3
# SPDX-FileCopyrightText: the dbftable authors
# SPDX-License-Identifier: MIT
"""Compares the library with other programs, value by value, and writes what came out of it.

compare.py INTEROP FOLDER REPORT: the library's program, a folder to work in, the page to write.
Fails when a program differs in any other way than those named here, or when one of those is gone.
"""

import datetime
import decimal
import sys

import dbfread

import codepages
import strangers
from programs import (PROGRAMS, Refused, as_library, encodings, folder, interop, path, report, run,
                      same)

CYRILLIC = strangers.CYRILLIC

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

# The same of the tables of other programs: (program, version, type letter) -> reason, the version
# None where it does not matter.
NO_MEMO = "the program shows where the memo begins, not the memo"
OFFICE_MEMO = "the program shows no memos of tables of versions 0x30 and 0x31"
OFFICE_BYTES = ("the program shows nothing for pictures, objects, memos marked binary and pointers "
                "to binary memos")
COUNTED_HEAD = "the program takes 8 bytes behind the memo for a part of it"
BLOCKS_OF_512 = "the program takes blocks of 1024 bytes for blocks of 512"
POINTER = ("the library gives the pointer's bytes, the program what it leads to, with 8 bytes that "
           "stand behind it")
VARIABLE = ("the library gives all bytes, the last of which may be a length; the program takes "
            "them for text")
UNOPENED = "the program does not open tables of this version"
NO_SUCH_TYPE = "the program does not open tables with columns of type Q or W"
KNOWN_LETTERS = {
    ("dbfread", 0x32, "V"): VARIABLE,
    ("dbfread", 0x8B, "M"): COUNTED_HEAD,
    ("dbfread", 0x8B, "B"): POINTER,
    ("dbfread", 0xCB, "M"): BLOCKS_OF_512,
    ("soffice", None, "G"): OFFICE_BYTES,
    ("soffice", None, "P"): OFFICE_BYTES,
    ("soffice", 0x8B, "B"): OFFICE_BYTES,
    ("soffice", 0x30, "M"): OFFICE_MEMO,
    ("soffice", 0x31, "M"): OFFICE_MEMO,
    ("dbfdump", None, "D"): NOT_SHOWN,
    ("dbfdump", None, "L"): NOT_SHOWN,
}
for plain in ("ogr2ogr", "dbfdump"):
    KNOWN_LETTERS.update({(plain, None, letter): NO_MEMO for letter in "MGPW"})
    KNOWN_LETTERS.update({(plain, None, letter): NO_BINARY for letter in "TYIBVQ0"})
NOT_OPENED = {("soffice", f"version-{version:02x}"): UNOPENED
              for version in (0x02, 0x32, 0x63, 0xCB, 0xFB)}
NOT_OPENED["soffice", "version-32-binary"] = UNOPENED
NOT_OPENED["dbfread", "version-32-binary"] = NO_SUCH_TYPE

# The same of code pages: (byte or codec, program or None for all) -> (codes that are equal, that
# differ, that the library alone knows, that the program alone knows), reason.
MICRO = "code 0xE6 is the Greek letter mu to the library, the micro sign to the program"
KNOWN_CODES = {(codec, None): ((127, 1, 0, 0), MICRO)
               for codec in ("IBM437", "IBM860", "IBM861", "IBM863", "IBM865")}
KNOWN_CODES.update({
    (0x66, None): ((54, 74, 0, 0), "code page byte 0x66 is DOS Cyrillic to the library, DOS Nordic "
                   "to the program"),
    (0x57, "ogr2ogr"): ((96, 0, 27, 0), "the program takes code page byte 0x57 for ISO 8859-1"),
    ("IBM852", None): ((127, 0, 0, 1), "code 0xAA, the not sign, is missing in Qt's codec"),
    ("windows-1253", None): ((111, 0, 1, 0), "code 0xAA is a sign in Qt's codec alone"),
    ("GBK", "dbfread"): ((21791, 0, 1, 0), "code 0x80 is the euro sign in Qt's codec"),
    ("Big5", "dbfread"): ((13503, 0, 0, 249), "the program has signs from code 0xC6A1 on that Qt's "
                          "codec does not have"),
    ("x-mac-cyrillic", "ogr2ogr"): ((126, 2, 0, 0), "the program's set is an older one"),
})


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


def equal_values(rows):
    count = sum(len(values) for mark, values in rows)
    return f"{count} values equal" if count else "no record, as written"


def cell(what, program, table, rows):
    """Returns the words for the report after holding the result against what is known."""
    different = differing_columns(table, rows)
    expected, reason = KNOWN.get((what, program), (set(), ""))
    if different != expected:
        failures.append(f"{what} with {program}: {sorted(different)} differ, "
                        f"{sorted(expected)} were to")
    if not different:
        return equal_values(rows)
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
    for program, make, encoding, label in (("ogr2ogr", ogr_table, "CP1251", ""),
                                           ("ogr2ogr", ogr_table, "CP866", ""),
                                           ("ogr2ogr", ogr_table, "UTF-8", ""),
                                           ("dbfadd", shapelib_table, "cp1251", "ANSI 1251")):
        name, rows = make(encoding)
        how = f"codec of the label {label}"
        if not label:
            with open(path(name[:-len("dbf")] + "cpg")) as beside:
                label = beside.read()
            how = f"codec of the label {label}, which its .cpg file has"
        table = as_library(name, label)
        names = [column[0] for column in table.columns]
        theirs = [(False, dict(zip(names, row))) for row in rows]
        yield program, encoding, how, cell(name, "library", table, theirs)


def known_difference(program, stranger, column):
    """Returns (the name by which a column is to differ, the reason)."""
    letter = column.letter
    if program == "soffice" and letter == "L":
        return "missing " + column.name, NO_UNKNOWN
    if program == "soffice" and letter == "M" and column.flags & strangers.BINARY:
        return column.name, OFFICE_BYTES
    reason = KNOWN_LETTERS.get((program, stranger.version, letter),
                               KNOWN_LETTERS.get((program, None, letter)))
    return column.name, reason


def stranger_cell(program, stranger, table):
    """Returns the words for what a program reads in a table of another one."""
    where = f"{stranger.name} with {program}"
    unopened = NOT_OPENED.get((program, stranger.name))
    try:
        rows = PROGRAMS[program](stranger.name + ".dbf", table.columns)
    except Refused:
        if not unopened:
            failures.append(f"{where}: refused")
        return f"refused [{note(unopened or '')}]"
    known = [known_difference(program, stranger, column) for column in stranger.columns]
    reasons = {name: reason for name, reason in known if reason}
    different = differing_columns(table, rows)
    if unopened or different != set(reasons):
        failures.append(f"{where}: {sorted(different)} differ, {sorted(reasons)} were to")
    if not different:
        return equal_values(rows)
    by_reason = {}
    for name, reason in reasons.items():
        by_reason.setdefault(reason, []).append(name)
    return "all but " + "; ".join(f"{', '.join(names)} [{note(reason)}]"
                                  for reason, names in by_reason.items())


def is_as_written(written, read):
    """Whether the library reads a value of a table of another program as it was meant."""
    if isinstance(written, decimal.Decimal):
        return read is not None and decimal.Decimal(str(read)) == written
    if isinstance(written, datetime.datetime):
        return read == written.isoformat(timespec="milliseconds")
    if isinstance(written, datetime.date):
        return read == written.isoformat()
    return type(read) in (type(written), int if isinstance(written, float) else type(written)) \
        and read == written


def as_written(stranger, rows, table):
    """Returns the words for what the library reads in a table of another program."""
    pairs = zip(rows, table.rows, strict=True)
    wrong = {name for (deleted, written), (mark, read) in pairs for name in written
             if deleted != mark or not is_as_written(written[name], read[name])}
    if wrong:
        failures.append(f"{stranger.name}: {sorted(wrong)} are not read as written")
    return equal_values(table.rows)


def stranger_cells(stranger, rows):
    table = as_library(stranger.name + ".dbf")
    return [as_written(stranger, rows, table)] + [stranger_cell(program, stranger, table)
                                                  for program in PROGRAMS]


def stranger_tables():
    """The tables of other programs, each written byte by byte."""
    for stranger in strangers.strangers():
        name = stranger.name + ".dbf"
        stranger.write(folder)
        encodings[name] = stranger.encoding
        cells = stranger_cells(stranger, stranger.rows())
        kind = f"0x{stranger.version:02X}"
        if stranger.memos:
            kind += ", " + stranger.memos.suffix.upper()
        letters = " ".join(dict.fromkeys(column.letter for column in stranger.columns))
        run(interop, "change", path(name))
        stranger_cells(stranger, stranger.changed_rows())
        yield [kind, letters] + cells


def refused_tables():
    """The tables that the library refuses, and whether the others read the text in them."""
    for name in strangers.refused_tables(folder):
        try:
            as_library(name + ".dbf")
            failures.append(f"{name} is read")
        except Refused as refusal:
            cells = [str(refusal)]
        for program, read in PROGRAMS.items():
            try:
                rows = read(name + ".dbf", [("TEXT", "C")])
                is_read = any("Hello" in map(str, values.values()) for mark, values in rows)
                cells.append("reads it" if is_read else "opens it, shows other values")
            except Refused:
                cells.append("refused")
        yield [name] + cells


def code_cell(code_page, codec, program, counts):
    """Returns the words for how a program takes the codes of a code page."""
    if not any(counts[:2]):
        return "not known"
    expected, reason = next((KNOWN_CODES[key] for key in ((code_page, program), (code_page, None),
                                                          (codec, program), (codec, None))
                             if key in KNOWN_CODES), ((counts[0], 0, 0, 0), ""))
    if counts != expected:
        failures.append(f"code page byte 0x{code_page:02X} with {program}: {counts}, "
                        f"{expected} were to be")
    words = [f"{counts[0]} equal"]
    words += [f"{count} {what}" for count, what in zip(counts[1:], (
        "differ", "known to the library alone", "known to the program alone")) if count]
    return ", ".join(words) + (f" [{note(reason)}]" if reason else "")


def code_pages():
    """What code page bytes mean, with the bytes of which all the same is true in one row."""
    groups = {}
    for code_page, codec, encoding, results in codepages.compare():
        row = (codec, encoding or "", *(code_cell(code_page, codec, program, counts)
                                        for program, counts in results.items()))
        groups.setdefault(row, []).append(f"{code_page:02X}")
    return [[" ".join(codes), *row] for row, codes in groups.items()]


def version(*command):
    return run(*command).decode().split(",")[0].strip()


def rows_of(head, rows):
    """Returns the lines of a table of the page."""
    return ["| " + " | ".join(head) + " |", "|" + " --- |" * len(head)] + [
        "| " + " | ".join(row) + " |" for row in rows]


def introduction():
    shapelib = version("dpkg-query", "--show", "--showformat=${source:Upstream-Version}",
                       "shapelib")
    office = " ".join(version("soffice", "--version").split()[:2])
    return [
        "# Interoperation", "",
        "`scripts/interop` wrote this page. It compares every value of tables that the library",
        "writes with what other programs read in them, and the other way round. The programs:",
        f"dbfread {dbfread.__version__}, {version('ogr2ogr', '--version')} (`ogr2ogr`), shapelib "
        f"{shapelib}", "(`dbfdump`, `dbfcreate`, `dbfadd`), "
        f"{office} (`soffice`, headless, to CSV).", ""]


def own_tables():
    return [
        "## Written by the library", "",
        *rows_of(["table", *PROGRAMS], [[name, *cells] for name, cells in library_tables()]), "",
        "All but `default-converters` are written with the nullable set, and all are read with it:",
        "a field without a value counts as equal only where the program, too, shows none. The",
        "Cyrillic tables and the restructured copy have columns of types C, N, F, D and L, with",
        "blank, zero, negative and widest values and a deleted record; `binary` has the types I,",
        "Y, T and B of version 0x30; `wide` has 250 columns of 255 bytes. `ogr2ogr` and `soffice`",
        "leave out deleted records; the others show them, marked. `soffice` is told the code page;",
        "it shows numbers with 15 digits and times to the minute, and is compared by these.", "",
        "## Read by the library", "",
        *rows_of(["written by", "text in", "read", "result"], program_tables()), ""]


def tables_of_every_version():
    return [
        "## Tables of every version", "",
        "[interop/strangers.py](../interop/strangers.py) writes these tables and their memo files",
        "byte by byte, without the library, from the layouts of [format.md](format.md): every",
        "version that the library reads, with the type letters that belong to it. All are read in",
        "the way that the [guide](guide.md) shows for tables in other code pages, memos included;",
        "the library's column says whether it reads what was meant, the others whether they read",
        "the same. Each table has a record without values and one marked deleted; the memos are",
        "short, of several lines, and longer than a block. That `soffice` shows a line feed where",
        "a memo has a carriage return before it counts as equal.", "",
        *rows_of(["version", "letters", "library", *PROGRAMS], stranger_tables()), "",
        "Then the library changes a value of each table, appends a record, and inserts a column in",
        "place. All read the table again: the library what was meant, the others the same, but for",
        "what is said above.", "",
        "Tables with one of these version bytes but another layout are refused: those with",
        "field descriptors of 48 bytes (`wide`), and those with a header of 8 bytes (`short`).", "",
        *rows_of(["table", "library", *PROGRAMS], refused_tables()), ""]


def code_page_tables():
    return [
        "## Code pages", "",
        "For each code page byte to which `DbfTable::codecByLanguageDriver` knows a codec there is",
        "a table that has it, with a record for each code from 0x80 on; for Chinese, Japanese and",
        "Korean, for each pair of bytes, too. The columns count the codes that mean the same",
        "character to both. Codes that mean none to either, or a private one, are left out.", "",
        *rows_of(["bytes, 0x", "codec", "to dbfread", "with dbfread", "with ogr2ogr"],
                 code_pages()), ""]


def differences():
    return [
        "## What differs, and why", "",
        *(f"{i}. {reason[0].upper()}{reason[1:]}." for i, reason in enumerate(notes, 1)), "",
        "A table whose code page byte is 0, or means something else than its text, needs its",
        "codec imposed; see the [guide](guide.md). What the default converters write instead is",
        "told in [values.md](values.md)."]


def main():
    lines = introduction() + own_tables() + tables_of_every_version() + code_page_tables()
    if failures:
        sys.exit("\n".join(failures))
    with open(report, "w") as page:
        page.write("\n".join(lines + differences()) + "\n")


main()
