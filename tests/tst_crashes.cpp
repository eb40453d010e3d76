// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "columns.h"
#include "testtables.h"

#include <functional>

using namespace dbf;
using namespace testtables;

namespace
{

constexpr int recordsStart = 129;
constexpr int recordLength = 11;

QByteArray tableOf(int recordCount)
{
    Table table{sample().fields};
    for (int i = 0; i < recordCount; ++i)
        table.records << sample().records.at(i % 3);
    return table.bytes();
}

} // namespace

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
        addColumns<int, int>({"before", "added"});
        QTest::newRow("update") << 3 << 0;
        QTest::newRow("append to none") << 0 << 1;
        QTest::newRow("append, count carries") << 255 << 1;
        QTest::newRow("bulk append, count carries") << 250 << 20;
        QTest::newRow("bulk append of blocks") << 3 << 7000;
    }

    void recordsOutliveCrash()
    {
        QFETCH(int, before);
        QFETCH(int, added);
        const QByteArray start = tableOf(before);
        OpenTable opened(start);
        QVERIFY(added == 0   ? opened.table.updateRecord(newRecord(1))
                : added == 1 ? opened.table.appendRecord(newRecord(0))
                             : opened.table.appendRecords(QVector<DbfRecord>(added, newRecord(0))));

        const int newCount = before + added;
        const bool carries = before / 256 != newCount / 256;
        const QByteArray& finished = opened.device.content;
        int crashes = 0;
        forEveryCrash(start, opened.device.writes(), [&](const QByteArray& left) {
            ++crashes;
            OpenTable found(left, QIODevice::ReadOnly);
            const int count = found.table.recordCount();
            // A count that carries from byte to byte may be torn to a lower one, never to a higher.
            QVERIFY(count == before || count == newCount || (carries && count < newCount));
            QCOMPARE(found.table.readRecords(0, count).size(), count);
            for (int i = 0; i < qMax(before, count); ++i) {
                const int place = recordsStart + i * recordLength;
                const QByteArray& whole = i < before ? start : finished;
                if (added > 0 || i != 1)
                    QCOMPARE(left.mid(place, recordLength), whole.mid(place, recordLength));
            }
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
