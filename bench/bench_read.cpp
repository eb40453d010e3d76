// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

// Reading: whole tables, some columns, and single records.

#include "peers.h"
#include "program.h"

#include <QtCore/QDate>
#include <QtCore/QFileInfo>

#include <unistd.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>

namespace bench
{

namespace
{

constexpr int rangeLength = 400;    // records per call of readRecords: 64 KiB, as in the cache
constexpr int lookupCount = 100000; // records per run of the random workloads

using Reader = std::function<Sums()>;

enum class Texts { InPlace, Copied };

int lengthOfText(const QVariant& value, Texts texts)
{
    return texts == Texts::Copied
               ? static_cast<int>(value.toString().size())
               : static_cast<int>(static_cast<const QString*>(value.constData())->size());
}

// Texts are looked at where they are, as those of the others. Copied ones show what it adds to take
// a reference to each.
void addRecord(Sums& sums, const dbf::DbfRecord& record, Texts texts = Texts::InPlace)
{
    for (int column = 0; column < columnCount; ++column) {
        const QVariant& value = record.values.at(column);
        double& sum = sums[static_cast<size_t>(column)];
        if (column == Weight)
            sum += value.toDouble();
        else if (column == Sold)
            sum += value.toDate().isValid() ? 1 : 0;
        else if (column == Active)
            sum += value.toBool() ? 1 : 0;
        else
            sum += lengthOfText(value, texts);
    }
}

Sums readRecords(const std::string& path, Texts texts)
{
    OpenTable source(path);
    dbf::DbfTable& table = source.table;
    Sums sums{};
    for (int first = 0; first < table.recordCount(); first += rangeLength) {
        const QVector<dbf::DbfRecord> records =
            table.readRecords(first, std::min(rangeLength, table.recordCount() - first));
        for (const dbf::DbfRecord& record : records)
            addRecord(sums, record, texts);
    }
    return sums;
}

Sums readRecordByRecord(const std::string& path)
{
    OpenTable source(path);
    Sums sums{};
    dbf::DbfRecordCursor cursor(source.table);
    while (cursor.next())
        addRecord(sums, cursor.record());
    return sums;
}

Sums readWithCursor(const std::string& path)
{
    OpenTable source(path);
    Sums sums{};
    dbf::DbfRecordCursor cursor(source.table);
    while (cursor.next()) {
        for (const int column : {Id, Name, City, Price, Address, Code, Quantity})
            sums[static_cast<size_t>(column)] += static_cast<double>(cursor.text(column).size());
        sums[Sold] += cursor.value(Sold).toDate().isValid() ? 1 : 0;
        sums[Active] += cursor.value(Active).toBool() ? 1 : 0;
        sums[Weight] += cursor.value(Weight).toDouble();
    }
    return sums;
}

Sums readTwoColumns(const std::string& path)
{
    OpenTable source(path);
    Sums sums{};
    dbf::DbfRecordCursor cursor(source.table);
    while (cursor.next()) {
        sums[Name] += static_cast<double>(cursor.text(Name).size());
        sums[Weight] += cursor.value(Weight).toDouble();
    }
    return sums;
}

Sums readRandomRecords(const std::string& path, const std::vector<int>& indexes,
                       QIODevice::OpenMode mode)
{
    OpenTable source(path, mode);
    Sums sums{};
    for (const int index : indexes)
        addRecord(sums, source.table.readRecord(index));
    return sums;
}

/// The floor of random reading: one call to the kernel for each record. The number of bytes is the
/// first sum.
Sums readRandomImages(const std::string& path, const std::vector<int>& indexes)
{
    QFile file(QString::fromStdString(path));
    file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    char image[recordLength];
    qint64 total = 0;
    for (const qint64 index : indexes)
        total += ::pread(file.handle(), image, recordLength, headerLength + index * recordLength);
    return {static_cast<double>(total)};
}

/// The floor of reading records: their values are made, with nothing in them, and looked at.
Sums makeValues(int records)
{
    Sums sums{};
    for (int i = 0; i < records; ++i) {
        dbf::DbfRecord record(i, QVector<QVariant>(columnCount));
        for (int column = 0; column < columnCount; ++column) {
            if (column == Weight)
                record.values[column] = 0.0;
            else if (column == Sold)
                record.values[column] = QDate();
            else if (column == Active)
                record.values[column] = false;
            else
                record.values[column] =
                    QString(columns[static_cast<size_t>(column)].length / 2, Qt::Uninitialized);
        }
        addRecord(sums, record);
    }
    return sums;
}

/// The floor of all reading: the file's bytes alone. Their number stands in for the first sum.
Sums readBytes(const std::string& path)
{
    QByteArray block(65536, Qt::Uninitialized);
    QFile file(QString::fromStdString(path));
    file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    qint64 total = 0;
    for (qint64 size = block.size(); size > 0; total += size)
        size = file.read(block.data(), block.size());
    return {static_cast<double>(total)};
}

void addReader(const std::string& name, const Sums& expected, int items, const Reader& read)
{
    const auto seen = std::make_shared<Sums>();
    add({name, items, [=] { *seen = read(); }, [=] { requireSame(name, *seen, expected); }, {}});
}

QStringList dbfreadCommand(const Table& table)
{
    // Debian's own interpreter: that is the one for which its packages are installed.
    return {"/usr/bin/python3", BENCH_DBFREAD_LOOP, QString::fromStdString(table.path)};
}

Sums dbfreadSums(const Table& table)
{
    std::istringstream output(runProcess(dbfreadCommand(table) << "--sums").toStdString());
    const std::vector<double> numbers{std::istream_iterator<double>(output), {}};
    if (numbers.size() != columnCount)
        throw std::runtime_error("dbfread sees other columns");
    Sums sums{};
    std::copy(numbers.cbegin(), numbers.cend(), sums.begin());
    return sums;
}

// The sums are taken outside the measurement, so that the loop there is as plain as can be.
void addDbfread(const Table& table, const Sums& expected)
{
    const std::string name = benchmarkName("dbfread", "readAll", table.records);
    const auto seen = std::make_shared<std::optional<Sums>>();
    add({name,
         table.records,
         [=] { runProcess(dbfreadCommand(table)); },
         [=] {
             if (!*seen)
                 *seen = dbfreadSums(table);
             requireSame(name, **seen, expected);
         },
         {}});
}

Sums sumsOf(const std::vector<int>& indexes)
{
    Sums sums{};
    for (const int index : indexes)
        addRow(sums, makeRow(index), Numeric::AsText);
    return sums;
}

std::vector<int> randomIndexes(int records)
{
    std::mt19937 generator(1);
    std::uniform_int_distribution<int> distribution(0, records - 1);
    std::vector<int> indexes(lookupCount);
    for (int& index : indexes)
        index = distribution(generator);
    return indexes;
}

void addWorkloads(const Table& table)
{
    const std::string& path = table.path;
    const int records = table.records;
    const Sums all = sumsOfRows(records, Numeric::AsText);
    const Sums typed = sumsOfRows(records, Numeric::AsNumber);
    Sums two{};
    two[Name] = all[Name];
    two[Weight] = all[Weight];
    const std::vector<int> indexes = randomIndexes(records);
    const Sums random = sumsOf(indexes);

    const auto addRead = [&](const char* subject, const char* workload, const Sums& expected,
                             int items, const Reader& read) {
        addReader(benchmarkName(subject, workload, records), expected, items, read);
    };
    const auto bytes = static_cast<double>(QFileInfo(QString::fromStdString(path)).size());
    addRead("floor", "readBytes", {bytes}, records, [=] { return readBytes(path); });
    addRead("dbftable", "readRecords", all, records,
            [=] { return readRecords(path, Texts::InPlace); });
    addRead("extra", "readRecordsToString", all, records,
            [=] { return readRecords(path, Texts::Copied); });
    addRead("dbftable", "cursor", all, records, [=] { return readWithCursor(path); });
    addRead("dbftable", "cursorTwoColumns", two, records, [=] { return readTwoColumns(path); });
    addRead("dbftable", "cursorRecord", all, records, [=] { return readRecordByRecord(path); });
    const QIODevice::OpenMode buffered = QIODevice::ReadOnly;
    addRead("dbftable", "readRecordBuffered", random, lookupCount,
            [=] { return readRandomRecords(path, indexes, buffered); });
    addRead("dbftable", "readRecord", random, lookupCount,
            [=] { return readRandomRecords(path, indexes, buffered | QIODevice::Unbuffered); });
    addRead("floor", "makeValues", makeValues(records), records,
            [=] { return makeValues(records); });
    addRead("floor", "readRandom", {double(lookupCount) * recordLength}, lookupCount,
            [=] { return readRandomImages(path, indexes); });
#ifdef BENCH_SHAPELIB
    addRead("shapelib", "readAll", all, records, [=] { return shapelibReadAll(path); });
    addRead("shapelib", "readTwoColumns", two, records,
            [=] { return shapelibReadTwoColumns(path); });
    addRead("shapelib", "readRandom", random, lookupCount,
            [=] { return shapelibReadRandom(path, indexes); });
#endif
#ifdef BENCH_XBASE64
    addRead("xbase64", "readAll", all, records, [=] { return xbase64ReadAll(path); });
#endif
#ifdef BENCH_GDAL
    addRead("gdal", "readAll", typed, records, [=] { return gdalReadAll(path); });
#endif
    addDbfread(table, typed);
}

} // namespace

} // namespace bench

int main(int argc, char** argv)
{
    for (const bench::Table& table : bench::initialize(argc, argv))
        bench::addWorkloads(table);
    return bench::run();
}
