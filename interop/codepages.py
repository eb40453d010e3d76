# SPDX-FileCopyrightText: the dbftable authors
# SPDX-License-Identifier: MIT
"""Compares, character by character, what the code page byte of a table means to the library and to
other programs."""

import json
import unicodedata

import dbfread

import strangers
from programs import interop, path, run

END = "!"  # stands behind each character, and within none
SINGLE = [bytes([code]) for code in range(0x80, 0x100)]
DOUBLE = [bytes([lead, trail]) for lead in range(0x81, 0xFF) for trail in range(0x40, 0xFF)]
DOUBLE_SETS = {"GBK", "windows-949", "Big5", "Shift_JIS"}


def character(text):
    """Returns the character of a record; None for codes that mean none, or a private one."""
    if not isinstance(text, str) or not text.endswith(END) or len(text) == len(END):
        return None
    found = text[:-len(END)]
    private = any(unicodedata.category(letter) in ("Cc", "Co", "Cn") for letter in found)
    return None if private or "\uFFFD" in found else found


def by_library(name):
    lines = run(interop, "dump", path(name)).splitlines()[1:]
    return [character(json.loads(line)[1]) for line in lines]


def by_dbfread(name):
    """Returns the name of the set, too; None for a byte that means nothing to the program."""
    table = dbfread.DBF(path(name), char_decode_errors="replace")
    if table.encoding == "ascii":
        return None, []
    return table.encoding, [character(record["TEXT"]) for record in table]


def by_ogr2ogr(name):
    """The program leaves out bytes that mean nothing: what is left of a code may be its second."""
    output = run("ogr2ogr", "-f", "GeoJSONSeq", "/vsistdout/", path(name))
    found = [character(json.loads(line.decode("utf-8", "replace"))["properties"]["TEXT"])
             for line in output.splitlines()]
    single = dict(zip(SINGLE, found))
    return found[:len(SINGLE)] + [
        None if letter in (single[code[:1]], single.get(code[1:])) or letter.isascii() else letter
        for code, letter in zip(DOUBLE, found[len(SINGLE):])]


def result(ours, theirs):
    """Returns how many codes are equal, differ, are known to the library alone, to the program."""
    pairs = list(zip(ours, theirs, strict=True))
    return (sum(mine is not None and mine == other for mine, other in pairs),
            sum(None not in pair and pair[0] != pair[1] for pair in pairs),
            sum(mine is not None and other is None for mine, other in pairs),
            sum(mine is None and other is not None for mine, other in pairs))


def compare():
    """Gives, for each byte that the library knows, the name of its codec, what dbfread calls the
    set, and the result with each program."""
    for line in run(interop, "codecs").splitlines():
        code_page, codec = json.loads(line)
        name = f"code-page-{code_page:02x}.dbf"
        codes = SINGLE + DOUBLE if codec in DOUBLE_SETS else SINGLE
        strangers.code_page_table(path(name), code_page, codes, END)
        ours = by_library(name)
        encoding, theirs = by_dbfread(name)
        yield code_page, codec, encoding, {
            "dbfread": result(ours, theirs) if encoding else (0, 0, 0, 0),
            "ogr2ogr": result(ours, by_ogr2ogr(name))}
