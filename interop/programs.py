# SPDX-FileCopyrightText: the dbftable authors
# SPDX-License-Identifier: MIT
"""Reads tables with the library and with other programs, and tells whether two values are equal."""

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

# The character sets of the tables that are in another than Windows Cyrillic, and the numbers by
# which soffice knows these sets.
encodings = {"dos-cyrillic.dbf": "cp866"}
OFFICE_NUMBERS = {"cp437": 3, "cp850": 4, "cp866": 30, "cp1250": 33, "cp1251": 34, "cp1252": 1}


class Refused(Exception):
    """The program does not open the table."""


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


def with_bytes(value):
    return bytes.fromhex(value["hex"]) if isinstance(value, dict) else value


def as_library(name, *label):
    try:
        output = run(interop, "dump", path(name), *label)
    except subprocess.CalledProcessError as error:
        raise Refused(error.stderr.decode().splitlines()[0])
    lines = [[with_bytes(value) for value in json.loads(line)] for line in output.splitlines()]
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

    try:
        table = dbfread.DBF(path(name), ignore_missing_memofile=True, parserclass=Raw)
    except Exception as error:
        raise Refused(str(error))
    live = [(False, dict(record)) for record in table]
    return live + [(True, dict(record)) for record in table.deleted]


def as_ogr2ogr(name, columns):
    try:
        output = run("ogr2ogr", "-f", "GeoJSONSeq", "/vsistdout/", path(name))
    except subprocess.CalledProcessError:
        raise Refused
    features = [json.loads(line.decode("utf-8", "replace")) for line in output.splitlines()]
    return [(False, {column: feature["properties"].get(column) for column, letter in columns})
            for feature in features]


def as_dbfdump(name, columns):
    encoding = encodings.get(name, "cp1251")
    try:
        output = run("dbfdump", "-m", path(name))
    except subprocess.CalledProcessError:
        raise Refused
    rows = []
    for block in output.split(b"\nRecord: ")[1:]:
        lines = block.split(b"\n")[1:]
        values = {}
        for (column, letter), line in zip(columns, lines):
            text = line[len(column) + 2:].decode(encoding, "replace").strip()
            values[column] = None if text in ("(NULL)", "") else text
        rows.append((b"(DELETED)" in lines, values))
    return rows


def as_soffice(name, columns):
    """The program is told the code page, and takes the way it shows dates from the language."""
    code_page = OFFICE_NUMBERS[encodings.get(name, "cp1251")]
    result = path(name[:-len("dbf")] + "csv")
    if os.path.exists(result):
        os.remove(result)
    run("soffice", "-env:UserInstallation=file://" + path("profile"), "--headless",
        f"--infilter=dBase:{code_page}", "--convert-to",
        "csv:Text - txt - csv (StarCalc):44,34,76,1", "--outdir", folder, path(name),
        LC_ALL="en_CA.UTF-8")
    if not os.path.exists(result):
        raise Refused
    with open(result, newline="", encoding="utf-8") as source:
        rows = list(csv.reader(source))[1:]
    return [(False, {column: None if text in ("", "#N/A") else text
                     for (column, letter), text in zip(columns, row)})
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
    if isinstance(ours, bytes):
        return ours == theirs
    if letter in "NFIYB":
        return same_number(letter, ours, theirs)
    if letter == "T":
        return same_time(ours, theirs)
    if letter == "M" and isinstance(theirs, str):
        return theirs in (ours, ours and ours.replace("\r\n", "\n"))
    return ours == (theirs.isoformat() if isinstance(theirs, datetime.date) else theirs)
