# SPDX-FileCopyrightText: the dbftable authors
# SPDX-License-Identifier: MIT
"""Writes tables of every version, with every type letter that belongs there and their memo files,
byte by byte as docs/format.md describes them and without the library."""

import datetime
import decimal
import os
import struct

CYRILLIC = "Чай чёрный"
WESTERN = "Grüße, ça va"
CENTRAL = "Příliš žluťoučký"
LONG = " long" * 150  # more than one block of any size


class Memos:
    """A memo file, built up; add() returns the number of the block where the memo begins."""

    suffix = "fpt"

    def __init__(self, block_size):
        self.block_size = block_size
        self.header_size = max(512, block_size)
        self.blocks = b""

    def add(self, content, kind):
        block = (self.header_size + len(self.blocks)) // self.block_size
        memo = self.framed(content, kind)
        self.blocks += memo + bytes(-len(memo) % self.block_size)
        return block

    def framed(self, content, kind):
        return struct.pack(">II", kind, len(content)) + content

    def header(self, next_block):
        return struct.pack(">IHH", next_block, 0, self.block_size)

    def bytes(self):
        next_block = (self.header_size + len(self.blocks)) // self.block_size
        return self.header(next_block).ljust(self.header_size, b"\0") + self.blocks


class EndedMemos(Memos):
    """The memo file of version 0x83."""

    suffix = "dbt"

    def framed(self, content, kind):
        return content + b"\x1A\x1A"

    def header(self, next_block):
        return struct.pack("<I", next_block)


class CountedMemos(Memos):
    """The memo file of versions 0x8B and 0xCB."""

    suffix = "dbt"

    def framed(self, content, kind):
        return b"\xFF\xFF\x08\x00" + struct.pack("<I", len(content) + 8) + content

    def header(self, next_block):
        return struct.pack("<I", next_block).ljust(20, b"\0") + struct.pack("<H", self.block_size)


PICTURE, TEXT, OBJECT = range(3)  # what a memo of an FPT file is
KIND_OF_LETTER = {"M": TEXT, "G": OBJECT, "P": PICTURE, "W": PICTURE}
SYSTEM, NULLABLE, BINARY, AUTOINCREMENT = 0x01, 0x02, 0x04, 0x0C


class Column:
    """A column with its values: those that the first records have, the last of which is deleted.

    A value of a memo column is its text or bytes."""

    def __init__(self, name, letter, length, values, decimals=0, flags=0):
        self.name, self.letter, self.length, self.values = name, letter, length, values
        self.decimals, self.flags = decimals, flags

    def descriptor(self, offset):
        fixed = self.name.encode().ljust(11, b"\0") + self.letter.encode()
        step = (len(self.values) + 1, 1) if self.flags & 0x08 else (0, 0)
        return fixed + struct.pack("<IBBBIB8x", offset, self.length, self.decimals, self.flags,
                                   *step)


def pointer(column, value, memos, encoding):
    block = 0
    if value is not None:
        content = value.encode(encoding) if isinstance(value, str) else value
        is_text = isinstance(value, str) or column.letter == "M" and column.flags & BINARY
        block = memos.add(content, TEXT if is_text else KIND_OF_LETTER[column.letter])
    if column.length == 4:
        return struct.pack("<I", block)
    return (str(block) if block else "").rjust(10).encode()


def time_of(value):
    day = datetime.timedelta(days=1)
    days, rest = divmod(value - datetime.datetime(1970, 1, 1), day)
    return struct.pack("<ii", 2440588 + days, rest // datetime.timedelta(milliseconds=1))


def field(column, value, memos, encoding):
    """Returns the bytes of a value in its record."""
    letter, length = column.letter, column.length
    if letter in KIND_OF_LETTER and memos:
        return pointer(column, value, memos, encoding)
    if isinstance(value, bytes):
        return value
    if letter == "L":
        return {True: b"T", False: b"F", None: b"?"}[value]
    if value is None:
        return bytes(length) if letter in "TYIB" else b" " * length
    if letter == "D":
        return value.strftime("%Y%m%d").encode()
    if letter == "T":
        return time_of(value)
    if letter == "Y":
        return struct.pack("<q", int(value * 10000))
    if letter == "I":
        return struct.pack("<i", value)
    if letter == "B":
        return struct.pack("<d", value)
    if letter in "NF":
        return f"{value:.{column.decimals}f}".rjust(length).encode()
    return value.encode(encoding).ljust(length)


class Stranger:
    """A table of another program, to be."""

    def __init__(self, version, code_page, encoding, columns, memos=None, suffix=""):
        self.version, self.code_page, self.encoding = version, code_page, encoding
        self.columns, self.memos = columns, memos
        self.name = f"version-{version:02x}" + (suffix and "-" + suffix)
        self.row_count = len(columns[0].values)

    def rows(self):
        """Returns what stands in the table, as (deleted, values by name)."""
        return [(row == self.row_count - 1, {column.name: column.values[row]
                                             for column in self.columns})
                for row in range(self.row_count)]

    def changed_rows(self):
        """Returns the same after the library has changed the table."""
        rows = self.rows()
        rows[1][1]["WHOLE"] = decimal.Decimal(7)
        copy = {column.name: None if column.letter in KIND_OF_LETTER else column.values[0]
                for column in self.columns}
        return [(deleted, {**values, "ADDED": None})
                for deleted, values in rows + [(False, copy)]]

    def bytes(self):
        back_link = bytes(263) if 0x30 <= self.version <= 0x32 else b""
        fields, offset = b"", 1
        for column in self.columns:
            fields += column.descriptor(offset)
            offset += column.length
        records = b""
        for row in range(self.row_count):
            records += b"*" if row == self.row_count - 1 else b" "
            for column in self.columns:
                stored = field(column, column.values[row], self.memos, self.encoding)
                assert len(stored) == column.length, (self.name, column.name, stored)
                records += stored
        header_length = 32 + len(fields) + 1 + len(back_link)
        flags = 0x02 if self.memos and back_link else 0
        header = struct.pack("<4BIHH16xBBxx", self.version, 124, 2, 29, self.row_count,
                             header_length, offset, flags, self.code_page)
        return header + fields + b"\r" + back_link + records + b"\x1A"

    def write(self, folder):
        base = os.path.join(folder, self.name)
        with open(base + ".dbf", "wb") as table:
            table.write(self.bytes())
        if self.memos:
            with open(f"{base}.{self.memos.suffix}", "wb") as memos:
                memos.write(self.memos.bytes())


def numbers(*texts):
    return [text and decimal.Decimal(text) for text in texts]


def plain(text):
    """The columns that every version has."""
    return [Column("TEXT", "C", 20, [text, "inner  spaces", "", "20 characters, all.", "gone"]),
            Column("WHOLE", "N", 9, numbers("42", "-99999999", None, "999999999", "0")),
            Column("PARTS", "N", 12, numbers("1234.50", "-0.25", None, "999999999.99", "0.01"), 2),
            Column("TRUTH", "L", 1, [True, False, None, True, False])]


def with_date(text):
    days = [datetime.date(2024, 2, 29), datetime.date(1900, 1, 1), None,
            datetime.date(9999, 12, 31), datetime.date(1970, 1, 1)]
    return plain(text) + [Column("DAY", "D", 8, days)]


def with_float(text):
    return with_date(text) + [
        Column("FLOATING", "F", 20, [0.000001, -1e11, None, 3.141593, 0.0], 6)]


def memo_column(text, length=10, name="NOTE", flags=0):
    return Column(name, "M", length, [text, "two\r\nlines", None, text + LONG, "gone"], flags=flags)


PIXELS = b"\x89PNG\r\n\x1A\n\0\0" + bytes(range(256))


def bytes_column(name, letter, length=10):
    return Column(name, letter, length, [PIXELS, b"\0", None, PIXELS * 3, b"gone"])


def binary(text):
    """The columns of version 0x30."""
    times = [datetime.datetime(2024, 2, 29, 23, 59, 58), datetime.datetime(1900, 1, 1), None,
             datetime.datetime(9999, 12, 31, 12), datetime.datetime(1970, 1, 1)]
    return with_float(text) + [
        Column("T", "T", 8, times),
        Column("Y", "Y", 8, numbers("1.2345", "-922337203685477.5807", "0", "922337203685477.5807",
                                    "-0.01"), 4),
        Column("I", "I", 4, [42, -2147483647, 0, 2147483647, 1]),
        Column("B", "B", 8, [1.5, -1e300, 0.0, 5e-324, 0.1], 4),
        memo_column(text, 4),
        memo_column("ASCII", 4, "BINARY", BINARY),
        bytes_column("OBJECT", "G", 4),
        bytes_column("PICTURE", "P", 4)]


def with_autoincrement(text):
    return binary(text) + [Column("SERIAL", "I", 4, [1, 2, 3, 4, 5], flags=AUTOINCREMENT)]


def null_flags(*values):
    return Column("_NullFlags", "0", 1, values, flags=SYSTEM | BINARY)


def with_variable_text(text):
    """The columns of version 0x32; bit 0 of the null flags says that OPTION is null, bit 1 that the
    last byte of V is its length."""
    return with_autoincrement(text) + [
        Column("OPTION", "C", 6, ["yes", "no", "", "maybe", "gone"], flags=NULLABLE),
        Column("V", "V", 6, [b"abc\0\0\x03", b"abcdef", bytes(6), b"a\0\0\0\0\x01",
                             b"gone\0\x04"]),
        null_flags(b"\x02", b"\x00", b"\x03", b"\x02", b"\x02")]


def with_variable_bytes(text):
    """The columns of version 0x32 that few programs know; bit 0 of the null flags says that the
    last byte of Q is its length."""
    return plain(text) + [
        Column("Q", "Q", 4, [b"\xFF\0\0\x01", b"\0\1\2\3", bytes(4), b"ab\0\x02", b"gone"],
               flags=BINARY),
        bytes_column("BLOB", "W", 4),
        null_flags(b"\x01", b"\x00", b"\x01", b"\x01", b"\x00")]


def strangers():
    """Returns a table for each version."""
    return [
        Stranger(0x02, 0x65, "cp866", plain(CYRILLIC)),
        Stranger(0x03, 0x03, "cp1252", with_float(WESTERN)),
        Stranger(0x30, 0xC8, "cp1250", binary(CENTRAL), Memos(64)),
        Stranger(0x31, 0xC9, "cp1251", with_autoincrement(CYRILLIC), Memos(64)),
        Stranger(0x32, 0x03, "cp1252", with_variable_text(WESTERN), Memos(512)),
        Stranger(0x32, 0x03, "cp1252", with_variable_bytes(WESTERN), Memos(64), "binary"),
        Stranger(0x43, 0x02, "cp850", with_float(WESTERN)),
        Stranger(0x63, 0x01, "cp437", with_float("Grüße, ça va")),
        Stranger(0x83, 0x65, "cp866", with_date(CYRILLIC) + [memo_column(CYRILLIC)],
                 EndedMemos(512)),
        Stranger(0x8B, 0x65, "cp866", with_float(CYRILLIC) + [
            memo_column(CYRILLIC), Column("B", "B", 10, [b"         1"] * 5)], CountedMemos(512)),
        Stranger(0xCB, 0x02, "cp850", with_float(WESTERN) + [memo_column(WESTERN)],
                 CountedMemos(1024)),
        Stranger(0xF5, 0x65, "cp866", with_float(CYRILLIC) + [
            memo_column(CYRILLIC), bytes_column("OBJECT", "G"), bytes_column("PICTURE", "P")],
                 Memos(64)),
        Stranger(0xFB, 0x65, "cp866", with_date(CYRILLIC)),
    ]


def code_page_table(path, code_page, codes, end):
    """Writes a table of one text column, a record for each of the codes, whose code page byte says
    what they mean. Each is followed by the end, so that no blank ends a text."""
    length = max(map(len, codes)) + 1
    header = struct.pack("<4BIHH16xBBxx", 3, 124, 2, 29, len(codes), 65, length + 1, 0, code_page)
    with open(path, "wb") as table:
        table.write(header + Column("TEXT", "C", length, []).descriptor(1) + b"\r")
        table.write(b"".join(b" " + (code + end.encode()).ljust(length) for code in codes))
        table.write(b"\x1A")


def refused_tables(folder):
    """Writes tables with the version bytes of others, laid out otherwise; returns their names."""
    wide_field = (b"TEXT".ljust(32, b"\0") + b"C\x05").ljust(48, b"\0")
    tables = {}
    for version in (0x04, 0x8C):
        header = struct.pack("<4BIHH16xBBxx", version, 124, 2, 29, 1, 68 + 48 + 1, 6, 0, 0x03)
        tables[f"wide-{version:02x}"] = header + bytes(36) + wide_field + b"\r Hello\x1A"
    field_of_16 = b"TEXT".ljust(11, b"\0") + b"C\x05\0\0\0"
    tables["short-02"] = (struct.pack("<BHBBBH", 2, 1, 2, 29, 124, 6) + field_of_16 + b"\r").ljust(
        521, b"\0") + b" Hello\x1A"
    for name, content in tables.items():
        with open(os.path.join(folder, name + ".dbf"), "wb") as table:
            table.write(content)
    return list(tables)
