#!/usr/bin/env python3
# SPDX-FileCopyrightText: the dbftable authors
# SPDX-License-Identifier: MIT
"""Writes benchmarks.md and benchmarks.svg from what the benchmark programs measured.

report.py RESULTS DOCS: the folder RESULTS holds the JSON output of the programs (read, write, copy,
safe, recode, scale_*, qt5_* and qt6_*), memory.txt (kind of copy, records, KiB) and machine.txt (lines for the page).
"""

import json
import pathlib
import sys

RECORDS = 1000000
RECODED = 100000

# Workload, subject and its benchmark, peer and its benchmark, records, least ratio of their times.
COMPARISONS = [
    ("whole table, `readRecords`", "dbftable/readRecords", "shapelib/readAll", RECORDS, 1.15),
    ("", "dbftable/readRecords", "xbase64/readAll", RECORDS, 3),
    ("", "dbftable/readRecords", "gdal/readAll", RECORDS, 8),
    ("", "dbftable/readRecords", "dbfread/readAll", RECORDS, 12),
    ("whole table, `cursor.record()`", "dbftable/cursorRecord", "shapelib/readAll", RECORDS, 1.45),
    ("whole table, cursor", "dbftable/cursor", "shapelib/readAll", RECORDS, 3),
    ("2 of 10 columns, cursor", "dbftable/cursorTwoColumns", "shapelib/readAll", RECORDS, 10),
    ("", "dbftable/cursorTwoColumns", "shapelib/readTwoColumns", RECORDS, 4),
    ("100,000 random `readRecord`", "dbftable/readRecord", "shapelib/readRandom", RECORDS, 1.25),
    ("…, buffered file", "dbftable/readRecordBuffered", "shapelib/readRandom", RECORDS, 1.25),
    ("`appendRecord` each record", "dbftable/appendRecord", "shapelib/append", RECORDS, 1.5),
    ("`appendRecords`, 1000 a call", "dbftable/appendRecords", "shapelib/append", RECORDS, 4),
    ("`updateRecord`, every tenth record", "plain/updateRecord", "shapelib/update", RECORDS, 1.3),
    ("copy as it is", "copytable/identity", "cp/identity", RECORDS, 0.9),
    ("restructuring copy", "copytable/restructure", "ogr2ogr/restructure", RECORDS, 10),
    ("copy into another codec", "copytable/recode", "ogr2ogr/recode", RECODED, 5),
    ("", "copytable/recode", "ogr2ogr/identity", RECODED, 5),
    ("`dbftable cat --csv`", "command/csv", "ogr2ogr/csv", RECORDS, 10),
]
# What is measured, its benchmark, the plain way and its benchmark, the most that it may cost.
SAFE_WAYS = [
    ("`readRecords`, nullable set", "nullable/readRecords",
     "`readRecords`", "plain/readRecords", 1.1),
    ("`appendRecord`, nullable set", "nullable/appendRecord",
     "`appendRecord`", "plain/appendRecord", 1.1),
    ("`appendRecords`, nullable set", "nullable/appendRecords",
     "`appendRecords`", "plain/appendRecords", 1.1),
    ("`appendRecord`, values checked", "checkedPlain/appendRecord",
     "`appendRecord`", "plain/appendRecord", 1.6),
    ("`appendRecords`, values checked", "checkedPlain/appendRecords",
     "`appendRecords`", "plain/appendRecords", 1.6),
    ("`appendRecord`, nullable set, values checked", "checkedNullable/appendRecord",
     "`appendRecord`, nullable set", "nullable/appendRecord", 1.6),
    ("`appendRecords`, nullable set, values checked", "checkedNullable/appendRecords",
     "`appendRecords`, nullable set", "nullable/appendRecords", 1.6),
    ("`updateValues`", "plain/updateValues", "`updateRecord`", "plain/updateRecord", 2),
    ("`updateValues`, nullable set", "nullable/updateValues",
     "`updateRecord`, nullable set", "nullable/updateRecord", 2),
]
PEER_NAMES = {
    "shapelib/readTwoColumns": "shapelib, the same 2",
    "cp/identity": "cp",
    "ogr2ogr/identity": "ogr2ogr, codec kept",
}
# What nobody can do without, its benchmark, and the workloads that cannot be faster.
FLOORS = [("reading the bytes of a table", "floor/readBytes", ("cursor", "cursorTwoColumns")),
          ("making the values of a table's records", "floor/makeValues",
           ("readRecords", "cursorRecord")),
          ("one call that reads a record's bytes, 100,000 times", "floor/readRandom",
           ("readRecord", "readRecordBuffered")),
          ("two calls that write a record and the count", "floor/appendDeviceCalls",
           ("appendRecord",)),
          ("one call that writes a record, for every tenth", "floor/updateDeviceCalls",
           ("updateRecord",)),
          ("writing the bytes of a table", "floor/writeBytes",
           ("appendRecords", "restructure", "recode"))]
FLOOR_NAMES = {name: title for title, name, _ in FLOORS}
FLOOR_OF = {"identity": "cp/identity",
            **{workload: name for _, name, workloads in FLOORS for workload in workloads}}
MEMORY_LIMIT = 32 * 1024
FLATNESS_LIMIT = 15
QT6_LIMIT = 1.1


def medians(path):
    """Returns, by name, the medians of one program's run."""
    result = {}
    for entry in json.loads(path.read_text())["benchmarks"]:
        if entry.get("aggregate_name") == "median":
            name = entry["run_name"].removesuffix("/manual_time")
            wall = entry["real_time"] / 1e3
            result[name] = {"wall": wall, "cpu": entry["cpu"], "user": entry["user"],
                            "items": wall * entry["items_per_second"],
                            "repetitions": entry["repetitions"]}
    return result


def row(*cells):
    return "| " + " | ".join(str(cell) for cell in cells) + " |"


def seconds(value):
    return f"{value:.3f}" if value < 1 else f"{value:.2f}"


def compared(results):
    """Yields each comparison that was measured with both medians."""
    title = ""
    for workload, subject, peer, records, target in COMPARISONS:
        title = workload or title
        ours = results.get(f"{subject}/{records}")
        theirs = results.get(f"{peer}/{records}")
        if ours and theirs:
            name = PEER_NAMES.get(peer, peer.split("/")[0])
            floor = results.get(f"{FLOOR_OF.get(subject.split('/')[1])}/{RECORDS}")
            best = theirs["wall"] * floor["items"] / (floor["wall"] * ours["items"]) if floor else None
            yield title, name, records, ours, theirs, target, best


def ratios(ours, theirs):
    return theirs["wall"] / ours["wall"], theirs["cpu"] / ours["cpu"]


def comparison_table(results):
    yield row("workload", "records", "beside", "dbftable s (CPU s)", "peer s (CPU s)", "ratio",
              "CPU ratio", "target", "at best")
    yield row("---", "---:", "---", *["---:"] * 6)
    for title, name, records, ours, theirs, target, best in compared(results):
        yield row(title, f"{records:,}", name,
                  *(f"{seconds(one['wall'])} ({seconds(one['cpu'])})" for one in (ours, theirs)),
                  *(f"{ratio:.2f}" if ratio >= target else f"**{ratio:.2f}**"
                    for ratio in ratios(ours, theirs)), f"{target:.3g}",
                  f"{best:.2f}" if best else "")


def safe_table(results):
    yield row("safe way", "beside", "safe s (CPU s)", "plain s (CPU s)", "ratio", "CPU ratio",
              "at most")
    yield row("---", "---", *["---:"] * 5)
    for title, safe, plain_title, plain, limit in SAFE_WAYS:
        ours, theirs = (results[f"{name}/{RECORDS}"] for name in (safe, plain))
        yield row(title, plain_title,
                  *(f"{seconds(one['wall'])} ({seconds(one['cpu'])})" for one in (ours, theirs)),
                  *(f"{ratio:.2f}" if ratio <= limit else f"**{ratio:.2f}**"
                    for ratio in ratios(theirs, ours)), limit)


def spread(costs):
    percent = (max(costs) / min(costs) - 1) * 100
    return f"{percent:.0f}" if percent <= FLATNESS_LIMIT else f"**{percent:.0f}**"


def scaling_table(results, sizes):
    yield row("workload", *(f"{size:,}" for size in sizes), "spread %", "outside the kernel")
    yield row("---", *["---:"] * (len(sizes) + 2))
    # Sorted by name, so that the floors come last.
    names = sorted({name.rsplit("/", 1)[0] for name in results})
    for name in names:
        entries = [results[f"{name}/{size}"] for size in sizes]
        costs, own = ([entry[kind] / entry["items"] * 1e9 for entry in entries]
                      for kind in ("cpu", "user"))
        title = FLOOR_NAMES.get(name, f"`{name.split('/')[1]}`")
        # The floors are the kernel's for the most part; what they need outside is too little to
        # compare.
        yield row(title, *(f"{cost:.0f} ({user:.0f})" for cost, user in zip(costs, own)),
                  spread(costs), "" if name in FLOOR_NAMES else spread(own))


def both_qts_table(by_qt):
    yield row("workload", "Qt 5 CPU s", "Qt 6 CPU s", "ratio")
    yield row("---", *["---:"] * 3)
    for name, five in by_qt["qt5"].items():
        six = by_qt["qt6"][name]
        ratio = six / five
        yield row(f"`{name.rsplit('/', 1)[0]}`", f"{five:.4f}", f"{six:.4f}",
                  f"{ratio:.2f}" if ratio <= QT6_LIMIT else f"**{ratio:.2f}**")


def memory_table(path):
    yield row("copy", "records", "MiB", "limit")
    yield row("---", *["---:"] * 3)
    for line in path.read_text().splitlines():
        kind, records, size = line.split()
        yield row(kind, f"{int(records):,}", f"{int(size) / 1024:.1f}", MEMORY_LIMIT // 1024)


def page(results, scaling, by_qt, folder):
    copied = results[f"extra/readRecordsToString/{RECORDS}"]
    main = [entry for name, entry in results.items() if name.startswith("dbftable/")]
    yield "# Benchmarks\n"
    yield "Written by `scripts/bench`, which repeats it all; every figure is measured.\n"
    yield (folder / "machine.txt").read_text()
    yield f"""## Beside others

![How many times faster](benchmarks.svg)

Medians of {main[0]['repetitions']} repetitions that ran interleaved in random order, files in the
page cache, Release build. The ratio is the peer's time on the clock by dbftable's; the CPU ratio
compares processor time, system time and child processes included, which other load on the machine
disturbs less. Ratios below their target are bold; the chart shows the lower of the two. "At best"
is the ratio (on the clock) that a program would have which did nothing but what stands below as a
floor; for the copy as it is, what cp does.
"""
    yield "\n".join(comparison_table(results))
    yield f"""
The table has ten columns (N10, C30, C20, N14.2, D, L, F20.6, C50, C8, N6), 168 bytes a record, with
Cyrillic text of varying length in Windows-1251. Before a time counts, what was read or written is
summed up (characters, numbers, dates, truth values by column) and must equal the sums known from
making the table.

- `readRecords` takes 400 records a call, some 64 KiB. Texts are looked at where they are, as those
  of the others; a copy of each (`QVariant::toString`) makes it {seconds(copied["wall"])} s
  ({seconds(copied["cpu"])} s CPU). The cursor decodes every C and N to text, the other
  columns to their values; of two columns, NAME (C30) and WEIGHT (F20.6).
- `readRecord` works on a file opened `Unbuffered`, and on one that is opened as Qt does by default.
- shapelib and xbase64 give every field as bytes, undecoded, and F as double; GDAL gives features
  with typed fields; dbfread is a plain loop and counted with the start of its interpreter. shapelib
  appends and updates bytes as they are, but formats F as dbftable does.
- Both append the same 1000 rows over and over to a new table.
- Copies run in processes of their own, start included. The restructuring one drops a column,
  inserts one, widens a C, turns an N into F (ogr2ogr: N), and moves one. The copy into another
  codec goes from Windows-1251 to IBM 866. ogr2ogr is slow at that because it loads its converters
  anew for each record, and quick where it knows the codec itself: "codec kept" is its copy from
  Windows-1251 to Windows-1251, which decodes and encodes every text, too.

Floors, measured in the same runs:
"""
    for title, name, _ in FLOORS:
        entry = results[f"{name}/{RECORDS}"]
        yield f"- {title}: {seconds(entry['wall'])} s ({seconds(entry['cpu'])} s CPU)"
    yield """
## What safety costs

Times of the ways that lose nothing by those of the plain ways, on a million records of the same
table, 1000 a call of `appendRecords`. Updates write every tenth record, in random order, with the
values of another row. Ratios beyond what a way may cost are bold.
"""
    yield "\n".join(safe_table(results))
    sizes = sorted({int(name.rsplit("/", 1)[1]) for name in scaling})
    yield "\n## Cost per record\n"
    yield f"""Nanoseconds of processor time per record on tables of different sizes, copies without a process of
their own; in parentheses those outside the kernel. The spread between the least and the greatest is
to stay within {FLATNESS_LIMIT} %; it is bold beyond that.

Where the floor below grows with the table, which then no longer fits the processor's caches, so does
what stands on it. A virtual machine may also give free memory back to its host: whoever then
writes a gigabyte pays for getting it again, up to ten times what the writing costs otherwise. Both
show in the kernel's part.
"""
    yield "\n".join(scaling_table(scaling, sizes))
    if by_qt["qt6"]:
        yield f"""
## With Qt 6

Processor time of the same work with both, {RECODED:,} records: the least median of three runs that
took turns. Ratios beyond {QT6_LIMIT} are bold. A variant of Qt 6 takes 32 bytes, one of Qt 5 takes 16:
that is the floor where records are made of variants.
"""
        yield "\n".join(both_qts_table(by_qt))
    yield "\n## Memory of copies\n"
    yield "By how much the copying process grew at most above its start, and the limit.\n"
    yield "\n".join(memory_table(folder / "memory.txt"))
    yield "\n## Repeat it\n\n    scripts/bench\n"
    yield "It installs what is missing and needs some 5 GB of disk for a while."


def chart(results):
    """A bar per comparison, as long as the ratio on a logarithmic scale, a tick at the target."""
    from math import log10
    rows = list(compared(results))
    left, width, step, top = 330, 420, 24, 56
    height = top + step * len(rows) + 16

    def x(ratio):
        return left + (log10(min(max(ratio, 0.2), 200)) - log10(0.2)) / 3 * width

    yield (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {left + width + 70} {height}" '
           'font-family="sans-serif" font-size="13">')
    yield f'<rect width="{left + width + 70}" height="{height}" fill="#fff"/>'
    yield '<text x="12" y="22" font-size="15">How many times faster dbftable is: the lower of both ratios (dark mark: target)</text>'
    for ratio in (1, 10, 100):
        yield (f'<line x1="{x(ratio):.1f}" x2="{x(ratio):.1f}" y1="{top - 6}" y2="{height - 12}" '
               'stroke="#ccc"/>')
        yield f'<text x="{x(ratio):.1f}" y="{top - 10}" fill="#666" text-anchor="middle">{ratio}×</text>'
    for index, (title, name, _, ours, theirs, target, _) in enumerate(rows):
        ratio = min(ratios(ours, theirs))
        y = top + step * index
        end = x(ratio)
        color = "#3b7dd8" if ratio >= target else "#d8893b"
        label = f"{title.replace('`', '')} / {name}"
        yield f'<text x="{left - 8}" y="{y + 14}" text-anchor="end">{label}</text>'
        yield f'<rect x="{left}" y="{y + 3}" width="{end - left:.1f}" height="15" fill="{color}"/>'
        yield (f'<line x1="{x(target):.1f}" x2="{x(target):.1f}" y1="{y + 1}" y2="{y + 20}" '
               'stroke="#222" stroke-width="2"/>')
        yield f'<text x="{max(end, x(target)) + 6:.1f}" y="{y + 15}">{ratio:.1f}×</text>'
    yield "</svg>"


def main():
    folder, docs = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    results, scaling, by_qt = {}, {}, {"qt5": {}, "qt6": {}}
    for path in sorted(folder.glob("*.json")):
        kind = path.name.split("_")[0]
        if kind in by_qt:
            for name, entry in medians(path).items():
                by_qt[kind][name] = min(entry["cpu"], by_qt[kind].get(name, entry["cpu"]))
        else:
            (scaling if kind == "scale" else results).update(medians(path))
    docs.mkdir(exist_ok=True)
    (docs / "benchmarks.md").write_text("\n".join(page(results, scaling, by_qt, folder)) + "\n")
    (docs / "benchmarks.svg").write_text("\n".join(chart(results)) + "\n")


main()
