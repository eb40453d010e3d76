// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

// What safety costs: the set in which blank means blank, writing only what changed, and values
// checked before they are written, each beside the plain way to do the same.

#include "peers.h"
#include "program.h"

#include <QtCore/QDate>

#include <unistd.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <numeric>
#include <optional>
#include <random>
#include <stdexcept>
#include <utility>

namespace bench
{

namespace
{

constexpr int rowCount = 1000;   // different rows; also the records per call of appendRecords
constexpr int rangeLength = 400; // records per call of readRecords: 64 KiB, as in the cache

struct Way {
    const char* name;
    bool nullable;
    bool checking;
};

constexpr Way plain{"plain", false, false};
constexpr Way nullable{"nullable", true, false};
constexpr Way checkedPlain{"checkedPlain", false, true};
constexpr Way checkedNullable{"checkedNullable", true, true};

void choose(dbf::DbfTable& table, const Way& way)
{
    if (way.nullable)
        table.setConverterChoice(dbf::nullableConverter);
    table.setCheckingValues(way.checking);
}

void require(bool done)
{
    if (!done)
        throw std::runtime_error("the table is not written");
}

/// A table in a file, opened the way that is measured.
struct WayTable {
    WayTable(const std::string& path, const Way& way, QIODevice::OpenMode mode)
        : file(QString::fromStdString(path)), table(&file)
    {
        choose(table, way);
        require(table.open(mode));
    }

    QFile file;
    dbf::DbfTable table;
};

double contribution(const QVariant& value, char type)
{
    switch (type) {
    case 'N':
    case 'F':
        return value.toDouble();
    case 'D':
        return value.toDate().isValid() ? 1 : 0;
    case 'L':
        return value.toBool() ? 1 : 0;
    default:
        return static_cast<double>(static_cast<const QString*>(value.constData())->size());
    }
}

// Texts of numbers count by their characters, so that nobody pays here for making them numbers.
double plainContribution(const QVariant& value, char type)
{
    return contribution(value, type == 'N' ? 'C' : type);
}

Sums readRecords(const std::string& path, const Way& way)
{
    WayTable source(path, way, QIODevice::ReadOnly);
    dbf::DbfTable& table = source.table;
    const auto add = way.nullable ? contribution : plainContribution;
    Sums sums{};
    for (int first = 0; first < table.recordCount(); first += rangeLength) {
        const QVector<dbf::DbfRecord> records =
            table.readRecords(first, std::min(rangeLength, table.recordCount() - first));
        for (const dbf::DbfRecord& record : records) {
            for (int column = 0; column < columnCount; ++column) {
                const auto place = static_cast<size_t>(column);
                sums[place] += add(record.values.at(column), columns[place].type);
            }
        }
    }
    return sums;
}

struct Rows {
    dbf::DbfSchema schema;
    QVector<dbf::DbfRecord> records;
};

Rows firstRows(const std::string& path, const Way& way)
{
    WayTable source(path, way, QIODevice::ReadOnly);
    Rows rows{source.table.schema(), source.table.readRecords(0, rowCount)};
    require(rows.records.size() == rowCount);
    return rows;
}

void append(const std::string& target, const Way& way, const Rows& rows, int records, bool inBulk)
{
    QFile file(QString::fromStdString(target));
    dbf::DbfTable table(&file);
    choose(table, way);
    require(table.create(rows.schema) && table.open(QIODevice::ReadWrite));
    for (int i = 0; i < records; i += rowCount) {
        if (inBulk) {
            require(table.appendRecords(rows.records));
            continue;
        }
        for (const dbf::DbfRecord& record : rows.records)
            require(table.appendRecord(record));
    }
    table.close();
    require(!table.hasError());
}

/// Every tenth record of the table in random order. The k-th gets the values of row k % rowCount.
std::vector<int> updatedIndexes(int records)
{
    std::vector<int> indexes(static_cast<size_t>(std::max(records / 10, 1)));
    for (size_t k = 0; k < indexes.size(); ++k)
        indexes[k] = static_cast<int>(k) * 10;
    std::shuffle(indexes.begin(), indexes.end(), std::mt19937(1));
    return indexes;
}

Sums sumsAfterUpdate(int records)
{
    std::vector<int> rowOf(static_cast<size_t>(records));
    std::iota(rowOf.begin(), rowOf.end(), 0);
    const std::vector<int> indexes = updatedIndexes(records);
    for (size_t k = 0; k < indexes.size(); ++k)
        rowOf[static_cast<size_t>(indexes[k])] = static_cast<int>(k % rowCount);
    Sums sums{};
    for (const int row : rowOf)
        addRow(sums, makeRow(row), Numeric::AsNumber);
    return sums;
}

using Update = bool (dbf::DbfTable::*)(const dbf::DbfRecord&);

void update(const std::string& target, const Way& way, const Rows& rows,
            const std::vector<int>& indexes, Update write)
{
    WayTable opened(target, way, QIODevice::ReadWrite);
    for (size_t k = 0; k < indexes.size(); ++k) {
        const auto row = static_cast<int>(k % rowCount);
        dbf::DbfRecord record(indexes[k], rows.records.at(row).values);
        require((opened.table.*write)(record));
    }
    opened.table.close();
    require(!opened.table.hasError());
}

/// The floor of updating: one call to the kernel for each record.
void updateImagesOnly(const std::string& target, const std::vector<int>& indexes)
{
    QFile file(QString::fromStdString(target));
    require(file.open(QIODevice::ReadWrite));
    const std::string image(recordLength, ' ');
    for (const qint64 index : indexes)
        require(::pwrite(file.handle(), image.data(), recordLength,
                         headerLength + index * recordLength) == recordLength);
}

using Writer = std::function<void(const std::string& target)>;

/// Measures \a write on a file of its own, which is a copy of the table first where \a onCopy says
/// so, and compares what it holds afterwards with what is \a expected, if anything is.
void addWriter(const std::string& name, const Table& table, int items,
               const std::optional<Sums>& expected, bool onCopy, const Writer& write)
{
    const QString source = QString::fromStdString(table.path);
    const QString target = source + ".made.dbf";
    add({name, items, [=] { write(target.toStdString()); },
         [=] {
             if (expected)
                 requireSame(name, sumsInTable(target.toStdString()), *expected);
             QFile::remove(target);
         },
         [=] {
             QFile::remove(target);
             if (onCopy)
                 require(QFile::copy(source, target));
             ::sync(); // so that nobody pays for what the one before has written
         }});
}

void addReaders(const Table& table)
{
    for (const Way& way : {plain, nullable}) {
        const Sums expected =
            sumsOfRows(table.records, way.nullable ? Numeric::AsNumber : Numeric::AsText);
        const std::string name = benchmarkName(way.name, "readRecords", table.records);
        const auto seen = std::make_shared<Sums>();
        add({name,
             table.records,
             [=] { *seen = readRecords(table.path, way); },
             [=] { requireSame(name, *seen, expected); },
             {}});
    }
}

void addAppends(const Table& table)
{
    Sums expected = sumsOfRows(rowCount, Numeric::AsNumber);
    for (double& sum : expected)
        sum *= table.records / rowCount;
    for (const Way& way : {plain, nullable, checkedPlain, checkedNullable}) {
        const auto rows = std::make_shared<Rows>(firstRows(table.path, way));
        for (const bool inBulk : {false, true}) {
            addWriter(
                benchmarkName(way.name, inBulk ? "appendRecords" : "appendRecord", table.records),
                table, table.records, expected, false, [=](const std::string& target) {
                    append(target, way, *rows, table.records, inBulk);
                });
        }
    }
}

void addUpdates(const Table& table)
{
    const std::vector<int> indexes = updatedIndexes(table.records);
    const auto items = static_cast<int>(indexes.size());
    const Sums expected = sumsAfterUpdate(table.records);
    for (const Way& way : {plain, nullable}) {
        const auto rows = std::make_shared<Rows>(firstRows(table.path, way));
        const std::pair<const char*, Update> updates[] = {
            {"updateRecord", &dbf::DbfTable::updateRecord},
            {"updateValues", &dbf::DbfTable::updateValues}};
        for (const auto& [workload, write] : updates)
            addWriter(benchmarkName(way.name, workload, table.records), table, items, expected,
                      true, [=, write = write](const std::string& target) {
                          update(target, way, *rows, indexes, write);
                      });
    }
    addWriter(benchmarkName("floor", "updateDeviceCalls", table.records), table, items, {}, true,
              [=](const std::string& target) { updateImagesOnly(target, indexes); });
#ifdef BENCH_SHAPELIB
    std::vector<Row> texts;
    for (int index = 0; index < rowCount; ++index)
        texts.push_back(makeRow(index));
    addWriter(benchmarkName("shapelib", "update", table.records), table, items, expected, true,
              [=](const std::string& target) mutable { shapelibUpdate(target, texts, indexes); });
#endif
}

} // namespace

} // namespace bench

int main(int argc, char** argv)
{
    for (const bench::Table& table : bench::initialize(argc, argv)) {
        if (table.records % bench::rowCount != 0)
            throw std::runtime_error("the number of records is no multiple of 1000");
        bench::addReaders(table);
        bench::addAppends(table);
        bench::addUpdates(table);
    }
    return bench::run();
}
