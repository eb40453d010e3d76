// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "testtables.h"

#include <QtTest/QtTest>

#include <array>
#include <numeric>

using namespace dbf;
using namespace testtables;

namespace
{

Table numbered(int count)
{
    Table table{{field("ID", 'N', 7), field("TEXT", 'C', 92)}};
    for (int i = 0; i < count; ++i)
        table.records.append((i % 3 ? ' ' : '*') + QByteArray::number(i).rightJustified(7) +
                             QByteArray(92, ' '));
    return table;
}

/// Visits what is left, and returns the numbers that the first column shows.
QVector<int> visit(DbfRecordCursor& cursor)
{
    QVector<int> numbers;
    while (cursor.next())
        numbers << cursor.text(0).toString().toInt();
    return numbers;
}

QVector<int> sequence(int first, int count)
{
    QVector<int> numbers(count);
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

} // namespace

/// The cursor, and the bulk append that feeds it.
class TestRecordCursor : public QObject
{
    Q_OBJECT

private slots:
    void showsEachRecordInEveryForm()
    {
        OpenTable open(sample().bytes());
        SpyConverter spy;
        open.table.setFieldConverter(2, &spy);
        DbfRecordCursor cursor(open.table);
        QCOMPARE(cursor.index(), -1);
        QVERIFY(cursor.bytes(0).empty() && cursor.text(0).isEmpty() && !cursor.value(0).isValid());
        QVERIFY(cursor.record().isTransient() && cursor.record().values == QVector<QVariant>(3));

        QVERIFY(cursor.next());
        DbfRecordCursor moved(std::move(cursor));
        QVERIFY(moved.next());
        cursor = std::move(moved);
        QCOMPARE(cursor.index(), 1);
        QVERIFY(cursor.isDeleted());
        QCOMPARE(QByteArray(cursor.bytes(0).data(), int(cursor.bytes(0).size())),
                 QByteArray("Bob  "));
        QCOMPARE(cursor.text(2).toString(), QString("20"));
        QCOMPARE(spy.calls.size(), 0);
        QCOMPARE(cursor.value(2), QVariant(QByteArray("  20")));
        QCOMPARE(spy.calls, QByteArrayList{"read <  20> AMOUNT 2251"});
        QCOMPARE(cursor.value(1), QVariant(false));
        QCOMPARE(cursor.record().values, open.table.readRecord(1).values);
        QVERIFY(cursor.record().isDeleted() && cursor.record().index() == 1);
        open.table.overrideTextCodec(codec(106));
        DbfRecordCursor unicode(open.table);
        QVERIFY(unicode.next() && !unicode.isDeleted() && unicode.text(2).toString() == "1.5");
        for (int column : {-1, 3})
            QVERIFY(cursor.bytes(column).empty() && cursor.text(column).isEmpty() &&
                    !cursor.value(column).isValid());

        QVERIFY(cursor.next() && !cursor.isDeleted() && !cursor.next() && !cursor.next());
        QVERIFY(cursor.index() == -1 && !cursor.hasError() && !open.table.hasError());
    }

    void readsBlocksOfWholeRecords()
    {
        OpenTable open(numbered(2000).bytes());
        DbfRecordCursor cursor(open.table);
        QCOMPARE(open.device.log(), QStringList());
        QCOMPARE(visit(cursor), sequence(0, 2000));
        // 1310 records of 100 bytes fit 128 KiB; the header has 97 bytes.
        QCOMPARE(open.device.log(),
                 (QStringList{"seek 97", "read 131000", "seek 131097", "read 69000"}));
    }

    void visitsTheRangeAskedFor()
    {
        using Range = std::array<int, 3>; // first, count, and how many of five are visited
        for (const auto& [first, count, visited] : {Range{0, 5, 5},
                                                    {1, 3, 3},
                                                    {5, 0, 0},
                                                    {3, 9, 2},
                                                    {-1, 1, 0},
                                                    {6, 0, 0},
                                                    {0, -1, 0},
                                                    {5, INT_MAX, 0}}) {
            OpenTable open(numbered(5).bytes());
            DbfRecordCursor cursor(open.table, first, count);
            QCOMPARE(visit(cursor), sequence(first, visited));
            QCOMPARE(cursor.hasError(), count != visited || first > 5);
            QCOMPARE(open.table.hasError(), cursor.hasError());

            OpenTable rest(numbered(5).bytes());
            DbfRecordCursor toTheEnd(rest.table, first);
            const bool isPossible = first >= 0 && first <= 5;
            QCOMPARE(visit(toTheEnd), sequence(first, isPossible ? 5 - first : 0));
            QCOMPARE(toTheEnd.hasError(), !isPossible);
        }
    }

    void goesOnBesideOtherOperations()
    {
        OpenTable open(numbered(2000).bytes());
        DbfRecordCursor cursor(open.table);
        QVERIFY(cursor.next());
        DbfRecord update = open.table.readRecord(1999);
        update.values[0] = 7000;
        QVERIFY(open.table.updateRecord(update));
        QVERIFY(open.table.appendRecord(update));
        open.table.setFieldConverter(0, DbfDoubleConverter::instance());
        open.table.overrideTextCodec(codec(2086));
        QCOMPARE(cursor.value(0), QVariant("0"));
        QVector<int> rest = sequence(1, 1998);
        QCOMPARE(visit(cursor), rest << 7000);
        QVERIFY(!cursor.hasError());
    }

    void followsAReopenedTableOfTheSameLayoutOnly()
    {
        // A byte of the header length, of the record length, of the first column's name, its type;
        // none, and a table that is closed.
        for (const int place : {8, 10, 32, 43, 0, -1}) {
            OpenTable open(numbered(2000).bytes());
            DbfRecordCursor cursor(open.table);
            QVERIFY(cursor.next());
            if (place > 0)
                open.device.content[place] = place < 32 ? char(97 + 32) : 'X';
            open.table.close();
            QVERIFY(place < 0 || (open.device.open(QIODevice::ReadOnly), open.table.reopen()));
            QCOMPARE(int(visit(cursor).size()), place == 0 ? 1999 : 1309);
            QCOMPARE(cursor.hasError(), place != 0);
        }
    }

    void bulkAppendWritesBlocksMarkerAndCount()
    {
        OpenTable single(numbered(2).bytes());
        OpenTable bulk(numbered(2).bytes());
        QVERIFY(bulk.table.appendRecords({}));
        QCOMPARE(bulk.device.log(), QStringList());

        QVector<DbfRecord> records;
        for (int i = 0; i < 1000; ++i)
            records << DbfRecord(i, {i, "text"});
        records[5].setDeleted(true);
        for (const DbfRecord& record : std::as_const(records))
            QVERIFY(single.table.appendRecord(record));
        QVERIFY(bulk.table.appendRecords(records));
        QCOMPARE(bulk.device.content, single.device.content);
        QCOMPARE(bulk.table.recordCount(), 1002);
        QCOMPARE(bulk.device.log(), (QStringList{"seek 297", "write 65600", "write 34400",
                                                 "write 1", "seek 4", "write 4"}));
    }
};

QTEST_APPLESS_MAIN(TestRecordCursor)

#include "tst_recordcursor.moc"
