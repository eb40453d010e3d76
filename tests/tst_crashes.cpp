// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "recordingdevice.h"
#include "testtables.h"

#include <QtTest/QtTest>

#include <functional>

using namespace dbf;
using namespace testtables;

namespace
{

constexpr int recordsStart = 129;
constexpr int recordLength = 11;

/// An operation on a table, and the records that it may write over.
struct Operation {
    int recordCount; ///< Before it.
    std::function<bool(DbfTable&)> run;
    int added = 0;
    int updated = -1;
};

QByteArray tableOf(int recordCount)
{
    Table table{sample().fields};
    for (int i = 0; i < recordCount; ++i)
        table.records << sample().records.at(i % 3);
    return table.bytes();
}

QByteArray imageAt(const QByteArray& file, int index)
{
    return file.mid(recordsStart + index * recordLength, recordLength);
}

} // namespace

Q_DECLARE_METATYPE(Operation)

/// A crash leaves some first writes of an operation, and the first bytes of the next.
class TestCrashes : public QObject
{
    Q_OBJECT

    static void forEveryCrash(const QByteArray& start,
                              const QVector<RecordingDevice::WriteCall>& writes,
                              const std::function<void(const QByteArray&)>& check)
    {
        QByteArray written = start;
        for (const RecordingDevice::WriteCall& write : writes) {
            const int step = write.bytes.size() > 1000 ? 97 : 1; // A block tears alike everywhere.
            for (int size = 0; size < write.bytes.size(); size += step) {
                QByteArray left = written;
                RecordingDevice::place(left, write.position, write.bytes.left(size));
                check(left);
            }
            RecordingDevice::place(written, write.position, write.bytes);
        }
        check(written);
    }

private slots:
    void recordsOutliveCrash_data()
    {
        QTest::addColumn<Operation>("operation");
        const auto append = [](DbfTable& t) { return t.appendRecord(newRecord(0)); };
        const auto appendMany = [](int count) {
            return [records = QVector<DbfRecord>(count, newRecord(0))](DbfTable& table) {
                return table.appendRecords(records);
            };
        };
        const auto row = [](const char* name, const Operation& operation) {
            QTest::newRow(name) << operation;
        };
        row("update", {3, [](DbfTable& t) { return t.updateRecord(newRecord(1)); }, 0, 1});
        row("append to none", {0, append, 1});
        row("append, count carries", {255, append, 1});
        row("bulk append, count carries", {250, appendMany(20), 20});
        row("bulk append of blocks", {3, appendMany(7000), 7000});
    }

    void recordsOutliveCrash()
    {
        QFETCH(Operation, operation);
        const QByteArray start = tableOf(operation.recordCount);
        OpenTable opened(start);
        QCOMPARE(opened.table.recordCount(), operation.recordCount);
        QVERIFY(operation.run(opened.table));

        const int newCount = operation.recordCount + operation.added;
        const bool carries = operation.recordCount / 256 != newCount / 256;
        const QByteArray& finished = opened.device.content;
        int crashes = 0;
        forEveryCrash(start, opened.device.writes(), [&](const QByteArray& left) {
            ++crashes;
            OpenTable found(left, QIODevice::ReadOnly);
            QVERIFY(found.table.isOpen());
            const int count = found.table.recordCount();
            // A count that carries from byte to byte may be torn to a lower one, never to a higher.
            QVERIFY(count == operation.recordCount || count == newCount ||
                    (carries && count < newCount));
            QCOMPARE(found.table.readRecords(0, count).size(), count);
            for (int i = 0; i < operation.recordCount; ++i) {
                if (i != operation.updated)
                    QCOMPARE(imageAt(left, i), imageAt(start, i));
            }
            for (int i = operation.recordCount; i < count; ++i)
                QCOMPARE(imageAt(left, i), imageAt(finished, i));
        });
        QVERIFY(crashes > recordLength);
    }

    void halfCreatedTableIsRefusedOrEmpty()
    {
        RecordingDevice device;
        const DbfSchema schema = OpenTable(sample().bytes()).table.schema();
        QVERIFY(DbfTable(&device).create(schema));
        const int columnsEnd = 32 + 3 * 32;
        int opened = 0;
        forEveryCrash({}, device.writes(), [&](const QByteArray& left) {
            OpenTable found(left, QIODevice::ReadOnly);
            QCOMPARE(found.table.isOpen(), left.size() >= columnsEnd);
            QCOMPARE(found.table.recordCount(), 0);
            QCOMPARE(found.table.schema().columns.size(), found.table.isOpen() ? 3 : 0);
            opened += found.table.isOpen() ? 1 : 0;
        });
        QVERIFY(opened > 0);
    }
};

QTEST_GUILESS_MAIN(TestCrashes)
#include "tst_crashes.moc"
