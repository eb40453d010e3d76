// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "program.h"

#include <benchmark/benchmark.h>

#include <QtCore/QDate>
#include <QtCore/QProcess>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <stdexcept>

namespace bench
{

namespace
{

size_t columnIndex(const QString& name)
{
    const auto found = std::find_if(columns.cbegin(), columns.cend(), [&](const Column& column) {
        return name == QLatin1String(column.name);
    });
    return static_cast<size_t>(found - columns.cbegin());
}

/// What a field adds to its column's sum, whatever type letter it has in the copy.
double contribution(const dbf::DbfRecordCursor& cursor, int column, char originalType)
{
    const std::string_view bytes = cursor.bytes(column).substr(0, cursor.bytes(column).find('\0'));
    const QByteArray text =
        QByteArray::fromRawData(bytes.data(), static_cast<int>(bytes.size())).trimmed();
    switch (originalType) {
    case 'C':
        return static_cast<double>(cursor.text(column).size());
    case 'D':
        return cursor.value(column).toDate().isValid() ? 1 : 0;
    case 'L':
        return text == "T" ? 1 : 0;
    default:
        return text.toDouble();
    }
}

struct ProcessorTime {
    double user = 0; // seconds outside the kernel
    double all = 0;  // seconds
};

double seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// Returns what this process and its children have used.
ProcessorTime processorTime()
{
    ProcessorTime used;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        getrusage(who, &usage);
        used.user += seconds(usage.ru_utime);
        used.all += seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }
    return used;
}

void measure(benchmark::State& state, const Workload& workload)
{
    ProcessorTime used;
    for ([[maybe_unused]] auto iteration : state) {
        if (workload.prepare)
            workload.prepare();
        const ProcessorTime before = processorTime();
        const auto start = std::chrono::steady_clock::now();
        workload.work();
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        const ProcessorTime after = processorTime();
        used.user += after.user - before.user;
        used.all += after.all - before.all;
        state.SetIterationTime(time.count());
    }
    workload.check();
    state.SetItemsProcessed(state.iterations() * workload.items);
    state.counters["user"] = benchmark::Counter(used.user, benchmark::Counter::kAvgIterations);
    state.counters["cpu"] = benchmark::Counter(used.all, benchmark::Counter::kAvgIterations);
}

} // namespace

void add(const Workload& workload)
{
    benchmark::RegisterBenchmark(workload.name.c_str(),
                                 [workload](benchmark::State& state) { measure(state, workload); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

std::vector<Table> initialize(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    std::vector<Table> tables;
    for (int i = 1; i < argc; ++i)
        tables.push_back({argv[i], OpenTable(argv[i]).table.recordCount()});
    if (tables.empty()) {
        std::cerr << "usage: " << argv[0] << " [--benchmark_OPTION...] TABLE.dbf...\n";
        std::exit(2);
    }
    return tables;
}

int run()
{
    const bool any = benchmark::RunSpecifiedBenchmarks() > 0;
    benchmark::Shutdown();
    return any ? 0 : 1;
}

std::string benchmarkName(const std::string& subject, const std::string& workload, int records)
{
    return subject + '/' + workload + '/' + std::to_string(records);
}

OpenTable::OpenTable(const std::string& path, QIODevice::OpenMode mode, QTextCodec* codec)
    : file(QString::fromStdString(path)), table(&file)
{
    table.overrideTextCodec(codec);
    if (!table.open(mode))
        throw std::runtime_error(path + " does not open");
}

void requireSame(const std::string& subject, const Sums& seen, const Sums& expected)
{
    for (size_t column = 0; column < columnCount; ++column) {
        // Sums of doubles depend a little on how the additions are grouped.
        if (std::abs(seen[column] - expected[column]) <= 1e-9 * std::abs(expected[column]))
            continue;
        std::cerr << std::setprecision(17) << subject << ": column " << columns[column].name
                  << " sums up to " << seen[column] << " instead of " << expected[column] << '\n';
        std::exit(1);
    }
}

Sums sumsInTable(const std::string& path, QTextCodec* codec)
{
    OpenTable source(path, QIODevice::ReadOnly, codec);
    const QVector<dbf::DbfColumn>& made = source.table.schema().columns;
    if (made.size() != columnCount)
        throw std::runtime_error(path + " has another number of columns");
    std::vector<size_t> origins;
    for (const dbf::DbfColumn& column : made)
        origins.push_back(columnIndex(column.descriptor.name));

    Sums sums{};
    dbf::DbfRecordCursor cursor(source.table);
    while (cursor.next()) {
        for (int column = 0; column < columnCount; ++column) {
            const size_t origin = origins[static_cast<size_t>(column)];
            if (origin < columnCount)
                sums[origin] += contribution(cursor, column, columns[origin].type);
        }
    }
    return sums;
}

QByteArray runProcess(const QStringList& command, const QString& output)
{
    QProcess process;
    if (!output.isEmpty())
        process.setStandardOutputFile(output);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(command.first(), command.mid(1));
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        throw std::runtime_error("failed: " + command.join(' ').toStdString());
    return process.readAllStandardOutput();
}

} // namespace bench
