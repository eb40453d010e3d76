// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

// Appending: new tables of as many records as the given one, filled with its first rows over and
// over.

#include "peers.h"
#include "program.h"

#include <unistd.h>

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>

namespace bench
{

namespace
{

constexpr int rowCount = 1000; // different rows; also the records per call of appendRecords

using Writer = std::function<void(const std::string& target)>;

struct Rows {
    dbf::DbfSchema schema;
    QVector<dbf::DbfRecord> records;
};

Rows firstRows(const std::string& path)
{
    OpenTable source(path);
    Rows rows{source.table.schema(), source.table.readRecords(0, rowCount)};
    if (rows.records.size() != rowCount)
        throw std::runtime_error("the table has too few records");
    return rows;
}

/// Makes an empty table and hands it to \a append.
template <typename Append>
void makeTable(const std::string& path, const dbf::DbfSchema& schema, Append append)
{
    QFile file(QString::fromStdString(path));
    dbf::DbfTable table(&file);
    if (!table.create(schema) || !table.open(QIODevice::ReadWrite))
        throw std::runtime_error("the table is not created");
    append(table);
    table.close();
    if (table.hasError())
        throw std::runtime_error("the table is not written");
}

void appendOneByOne(const std::string& target, const Rows& rows, int records)
{
    makeTable(target, rows.schema, [&](dbf::DbfTable& table) {
        for (int i = 0; i < records; ++i)
            table.appendRecord(rows.records.at(i % rowCount));
    });
}

void appendInBulk(const std::string& target, const Rows& rows, int records)
{
    makeTable(target, rows.schema, [&](dbf::DbfTable& table) {
        for (int i = 0; i < records; i += rowCount)
            table.appendRecords(rows.records);
    });
}

/// The floor of appending: two calls to the kernel for each record, which cannot be one.
void makeDeviceCallsOnly(const std::string& target, int records)
{
    QFile file(QString::fromStdString(target));
    file.open(QIODevice::ReadWrite);
    const std::string image(recordLength + 1, ' ');
    for (qint64 i = 0; i < records; ++i) {
        if (::pwrite(file.handle(), image.data(), recordLength + 1, i * recordLength) < 0 ||
            ::pwrite(file.handle(), image.data(), 4, 4) < 0)
            throw std::runtime_error("the file is not written");
    }
}

/// The floor of what writes a whole table: the bytes alone.
void writeBytesOnly(const std::string& target, int records)
{
    QFile file(QString::fromStdString(target));
    file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    const QByteArray block(recordLength * rowCount, ' ');
    for (int i = 0; i < records; i += rowCount)
        file.write(block);
}

void addWriter(const std::string& name, const Table& table, const std::optional<Sums>& expected,
               const Writer& write)
{
    const std::string target = table.path + ".made.dbf";
    const auto remove = [=] { QFile::remove(QString::fromStdString(target)); };
    add({name, table.records, [=] { write(target); },
         [=] {
             if (expected)
                 requireSame(name, sumsInTable(target), *expected);
             remove();
         },
         [=] {
             remove();
             ::sync(); // so that nobody pays for what the one before has written
         }});
}

void addWorkloads(const Table& table)
{
    const int records = table.records;
    if (records % rowCount != 0)
        throw std::runtime_error("the number of records is no multiple of 1000");
    const auto rows = std::make_shared<Rows>(firstRows(table.path));
    Sums expected = sumsOfRows(rowCount, Numeric::AsNumber);
    for (double& sum : expected)
        sum *= records / rowCount;

    const auto addWrite = [&](const char* subject, const char* workload, bool makesTable,
                              const Writer& write) {
        const std::string name = benchmarkName(subject, workload, records);
        addWriter(name, table, makesTable ? std::make_optional(expected) : std::nullopt, write);
    };
    addWrite("floor", "appendDeviceCalls", false,
             [=](const std::string& target) { makeDeviceCallsOnly(target, records); });
    addWrite("floor", "writeBytes", false,
             [=](const std::string& target) { writeBytesOnly(target, records); });
    addWrite("dbftable", "appendRecord", true,
             [=](const std::string& target) { appendOneByOne(target, *rows, records); });
    addWrite("dbftable", "appendRecords", true,
             [=](const std::string& target) { appendInBulk(target, *rows, records); });
#ifdef BENCH_SHAPELIB
    std::vector<Row> texts;
    for (int index = 0; index < rowCount; ++index)
        texts.push_back(makeRow(index));
    addWrite("shapelib", "append", true,
             [=](const std::string& target) mutable { shapelibAppend(target, texts, records); });
#endif
}

} // namespace

} // namespace bench

int main(int argc, char** argv)
{
    for (const bench::Table& table : bench::initialize(argc, argv))
        bench::addWorkloads(table);
    return bench::run();
}
