// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "testtables.h"

#include <QtCore/QBuffer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <functional>

using namespace dbf;
using namespace testtables;

namespace
{

constexpr int recordLength = 11;
constexpr int recordsStart = 65;

Table tableOf(int count, char letter)
{
    return {{field("TEXT", 'C', 10)}, QVector<QByteArray>(count, ' ' + QByteArray(10, letter))};
}

/// Opened as Qt opens files by default: with 16 KiB read ahead.
struct FileTable {
    explicit FileTable(const QString& path) : file(path), table(&file)
    {
        table.open(QIODevice::ReadWrite);
    }
    QFile file;
    DbfTable table;
};

/// A device of a caller's own that reads more than it was asked for.
class OverfullDevice : public RecordingDevice
{
public:
    using RecordingDevice::RecordingDevice;
    bool isOverfull = false;

protected:
    qint64 readData(char* data, qint64 size) override
    {
        const qint64 read = RecordingDevice::readData(data, size);
        return isOverfull ? read + 1000 : read;
    }
};

/// A device that never ends and does not tell how much it holds.
class EndlessDevice : public RecordingDevice
{
public:
    using RecordingDevice::RecordingDevice;
    qint64 size() const override { return 0; }
    qint64 largestRead = 0;

protected:
    qint64 readData(char* data, qint64 size) override
    {
        largestRead = qMax(largestRead, size);
        return RecordingDevice::readData(data, size);
    }
};

using Read = std::function<QString(DbfTable&, int)>;

} // namespace

Q_DECLARE_METATYPE(Read)

/// Files that other processes change while a table is open, that end too early, and devices that
/// answer oddly.
class TestFiles : public QObject
{
    Q_OBJECT

private slots:
    void init() { writeFile(path(), tableOf(100, 'a').bytes()); }

    void everyReadSeesTheFileAsItIs_data()
    {
        QTest::addColumn<Read>("read");
        const auto textOf = [](const DbfRecord& record) {
            return record.isDeleted() ? QString("deleted") : record.values.value(0).toString();
        };
        QTest::newRow("readRecord")
            << Read([=](DbfTable& table, int index) { return textOf(table.readRecord(index)); });
        QTest::newRow("readRecords") << Read([=](DbfTable& table, int index) {
            return textOf(table.readRecords(index, 1).value(0));
        });
        QTest::newRow("cursor") << Read([=](DbfTable& table, int index) {
            DbfRecordCursor cursor(table, index, 1);
            return cursor.next() ? textOf(cursor.record()) : QString();
        });
        QTest::newRow("copy") << Read([=](DbfTable& table, int index) {
            QBuffer target;
            return table.copyAndTransform(&target, identityOf(table))
                       ? QString(target.data().mid(recordsStart + index * recordLength + 1, 10))
                       : QString();
        });
    }

    void everyReadSeesTheFileAsItIs()
    {
        QFETCH(Read, read);
        FileTable t(path());
        QVERIFY(!t.table.isRecordDeleted(2));
        QCOMPARE(read(t.table, 1), QString(10, 'a'));
        const qint64 position = t.file.pos();
        QVERIFY(t.table.readRecord(-1).isTransient());
        QCOMPARE(t.file.pos(), position);
        QFile other(path());
        QVERIFY(other.open(QIODevice::ReadWrite));
        other.write(tableOf(100, 'b').bytes());
        other.flush();
        for (const int index : {2, 1, 99})
            QCOMPARE(read(t.table, index), QString(10, 'b'));
        QVERIFY(other.seek(recordsStart + 3 * recordLength) && other.putChar('*'));
        other.close();
        QVERIFY(t.table.isRecordDeleted(3));
        QVERIFY(QFile::resize(path(), recordsStart + 3 * recordLength));
        QCOMPARE(read(t.table, 3), QString());
    }

    // A hole in a file reads as records.
    void nothingIsWrittenBehindTheEndOfACutFile_data()
    {
        QTest::addColumn<bool>("inBuffer");
        QTest::addColumn<int>("size");
        for (const bool inBuffer : {false, true})
            for (const int size : {0, 3 * recordLength, 3 * recordLength + 1, 100 * recordLength})
                QTest::addRow("%s of %d", inBuffer ? "buffer" : "file", size) << inBuffer << size;
    }

    void nothingIsWrittenBehindTheEndOfACutFile()
    {
        QFETCH(bool, inBuffer);
        QFETCH(int, size);
        const QByteArray bytes = tableOf(100, 'a').bytes().left(recordsStart + size);
        for (const int slot : {0, 3, 4, 99, 100, 101}) { // 101 for a bulk append, behind the last
            QByteArray content = bytes;
            writeFile(path(), bytes);
            QFile file(path());
            QBuffer buffer(&content);
            DbfTable table(inBuffer ? static_cast<QIODevice*>(&buffer) : &file);
            QVERIFY(table.open(QIODevice::ReadWrite));
            const DbfRecord record(slot, {"new"});
            const bool written = slot < 100    ? table.updateRecord(record)
                                 : slot == 100 ? table.appendRecord(record)
                                               : table.appendRecords({record, record});
            QCOMPARE(written, qMin(slot, 100) * recordLength <= size);
            QCOMPARE(table.lastError(), written ? DbfTable::NoError : DbfTable::ReadError);
            table.close();
            if (!written)
                QCOMPARE(inBuffer ? content : readFile(path()), bytes);
        }
    }

    void ownAppendsMoveTheEnd()
    {
        FileTable t(path());
        for (int i = 100; i < 110; ++i) {
            QVERIFY(t.table.appendRecord(DbfRecord(-1, {"new"})));
            QVERIFY(t.table.updateRecord(DbfRecord(i, {"newer"})));
        }
        QVERIFY(t.table.appendRecords({{-1, {"new"}}, {-1, {"new"}}}));
        QVERIFY(t.table.updateRecord(DbfRecord(111, {"newer"})));

        QVERIFY(QFile::resize(path(), recordsStart)); // seen by the first write after an opening
        QVERIFY(t.table.reopen());
        QVERIFY(!t.table.updateRecord(DbfRecord(111, {"newest"})));
        QCOMPARE(t.table.lastError(), DbfTable::ReadError);
    }

    // In text mode, open for writing alone, and with a device that gives more than it was asked
    // for.
    void devicesThatMisreadGiveNoRecords()
    {
        FileTable text(path());
        text.file.setTextModeEnabled(true);
        FileTable writing(path());
        writing.file.close();
        QVERIFY(writing.file.open(QIODevice::Append));
        OverfullDevice device(tableOf(100, 'a').bytes());
        DbfTable overfull(&device);
        QVERIFY(overfull.open(QIODevice::ReadWrite));
        device.isOverfull = true;
        for (DbfTable* const table : {&text.table, &writing.table, &overfull}) {
            QVERIFY(table->readRecord(0).isTransient() && table->isRecordDeleted(0));
            QVERIFY(table->readRecords(0, 2).isEmpty());
            QCOMPARE(table->lastError(), DbfTable::ReadError);
            DbfRecordCursor cursor(*table);
            QVERIFY(!cursor.next() && cursor.hasError());
        }
    }

    void deviceOfUnknownSizeIsReadPieceByPiece()
    {
        EndlessDevice device(header(0x7FFFFFFF, 33, 65535));
        DbfTable table(&device);
        QVERIFY(table.open(QIODevice::ReadOnly));
        QVERIFY(table.readRecords(0, 32767).isEmpty()); // of 2 GB
        QCOMPARE(device.largestRead, qint64(8 * 1024 * 1024));
        device.content += QByteArray(1 + 300 * 65535, ' ');
        QCOMPARE(table.readRecords(0, 300).size(), 300);
    }

    // Version 0x30 has 263 bytes before its records, which this file lacks.
    void noRecordIsNeverAnError()
    {
        QByteArray bytes = header(3, 33 + 263, 1, 0x30) + '\x0D';
        QBuffer buffer(&bytes);
        DbfTable table(&buffer);
        QVERIFY(table.open(QIODevice::ReadWrite));
        for (const int first : {0, 3})
            QVERIFY(table.readRecords(first, 0).isEmpty() && !table.hasError());
        QVERIFY(table.readRecords(4, 0).isEmpty() && table.hasError());

        OpenTable open(sample().bytes());
        open.device.setFault({RecordingDevice::Seek, 1});
        QVERIFY(open.table.readRecords(1, 0).isEmpty() && !open.table.hasError());
        QCOMPARE(open.device.log(), QStringList("seek 140"));
    }

private:
    QString path() const { return m_folder.filePath("a.dbf"); }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestFiles)

#include "tst_files.moc"
