// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef BENCH_PROGRAM_H
#define BENCH_PROGRAM_H

#include "testtable.h"

#include <dbf/dbf.h>

#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <functional>
#include <string>
#include <vector>

namespace bench
{

/// A test table to run the workloads on.
struct Table {
    std::string path;
    int records;
};

/// Hands the command line to Google Benchmark and returns the tables that remain on it. Ends the
/// program when there is none.
std::vector<Table> initialize(int argc, char** argv);

/// Something to measure.
struct Workload {
    std::string name;              ///< As benchmarkName() gives it.
    int items;                     ///< Records that it handles.
    std::function<void()> work;    ///< What is measured.
    std::function<void()> check;   ///< Ends the program if the work did not do what it had to.
    std::function<void()> prepare; ///< Runs before each measurement; may be empty.
};

/// Registers \a workload. Its time is that on the clock; a counter "cpu" gives the seconds of
/// processor time, child processes included, which others on the machine disturb less, and "user"
/// those outside the kernel.
void add(const Workload& workload);

/// Runs what was registered and returns the program's exit code.
int run();

/// Returns "SUBJECT/WORKLOAD/RECORDS", the form of all benchmark names.
std::string benchmarkName(const std::string& subject, const std::string& workload, int records);

/// A table in a file, opened; throws std::runtime_error when it does not open.
struct OpenTable {
    explicit OpenTable(const std::string& path, QIODevice::OpenMode mode = QIODevice::ReadOnly,
                       QTextCodec* codec = nullptr);

    QFile file;
    dbf::DbfTable table;
};

/// Returns the sums of a table of ten columns, N as numbers. Columns are known by their names, so
/// that a column may have moved or become of another type; one of an unknown name counts for
/// nothing. The codec is that of the header when \a codec is null.
Sums sumsInTable(const std::string& path, QTextCodec* codec = nullptr);

/// Ends the program when a table was not read or written as it had to be.
void requireSame(const std::string& subject, const Sums& seen, const Sums& expected);

/// Runs a process, throws std::runtime_error unless it ends with 0, and returns what it printed,
/// which goes into the file \a output where that is named.
QByteArray runProcess(const QStringList& command, const QString& output = {});

} // namespace bench

#endif
