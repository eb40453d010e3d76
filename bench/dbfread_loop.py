#!/usr/bin/env python3
# SPDX-FileCopyrightText: the dbftable authors
# SPDX-License-Identifier: MIT
"""Loops over a table with dbfread: prints the seconds of the plain loop, or with --sums what it saw."""

import sys
import time

from dbfread import DBF


def contribution(field, value):
    if value is None:
        return 0
    if field.type == "C":
        return len(value.strip())
    return 1 if field.type == "D" else float(value)


path = sys.argv[1]
if "--sums" in sys.argv:
    table = DBF(path)
    sums = [0.0] * len(table.fields)
    for record in table:
        for column, field in enumerate(table.fields):
            sums[column] += contribution(field, record[field.name])
    print(*(repr(total) for total in sums))
else:
    start = time.perf_counter()
    for record in DBF(path):
        pass
    print(time.perf_counter() - start)
