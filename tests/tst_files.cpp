// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "columns.h"
#include "testtables.h"

#include <QtCore/QBuffer>
#include <QtCore/QTemporaryDir>

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

/// A device of a caller's own that reads more than it was asked for, or tells no size.
class OddDevice : public RecordingDevice
{
public:
    using RecordingDevice::RecordingDevice;
    qint64 size() const override { return hidesSize ? 0 : RecordingDevice::size(); }

    bool isOverfull = false;
    bool hidesSize = false;
    qint64 largestRead = 0;

protected:
    qint64 readData(char* data, qint64 size) override
    {
        largestRead = qMax(largestRead, size);
        return RecordingDevice::readData(data, size) + (isOverfull ? 1000 : 0);
    }
};

} // namespace

/// Files that other processes change while a table is open, that end too early, and devices that
/// answer oddly.
class TestFiles : public QObject
{
    Q_OBJECT

private slots:
    void init() { writeFile(path(), tableOf(100, 'a').bytes()); }

    void everyReadSeesTheFileAsItIs()
    {
        const auto textOf = [](const DbfRecord& record) {
            return record.isDeleted() ? QString("deleted") : record.values.value(0).toString();
        };
        using Read = std::function<QString(DbfTable&, int)>;
        const Read reads[] = {
            [=](DbfTable& table, int index) { return textOf(table.readRecord(index)); },
            [=](DbfTable& table, int index) {
                return textOf(table.readRecords(index, 1).value(0));
            },
            [=](DbfTable& table, int index) {
                DbfRecordCursor cursor(table, index, 1);
                return cursor.next() ? textOf(cursor.record()) : QString();
            },
            [=](DbfTable& table, int index) {
                QBuffer target;
                return table.copyAndTransform(&target, identityOf(table))
                           ? QString(target.data().mid(recordsStart + index * recordLength + 1, 10))
                           : QString();
            }};
        for (const Read& read : reads) {
            init();
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
    }

    // A hole in a file reads as records.
    void nothingIsWrittenBehindTheEndOfACutFile_data()
    {
        addColumns<bool, int>({"inBuffer", "slot"});
        for (const bool inBuffer : {false, true})
            for (const int slot : {0, 3, 4, 99, 100, 101}) // 101 for a bulk append, behind the last
                QTest::addRow("%s %d", inBuffer ? "buffer" : "file", slot) << inBuffer << slot;
    }

    void nothingIsWrittenBehindTheEndOfACutFile()
    {
        QFETCH(bool, inBuffer);
        QFETCH(int, slot);
        for (const int size : {0, 3 * recordLength, 3 * recordLength + 1, 100 * recordLength}) {
            const QByteArray bytes = tableOf(100, 'a').bytes().left(recordsStart + size);
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
        OddDevice device(tableOf(100, 'a').bytes());
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
        OddDevice device(header(0x7FFFFFFF, 33, 65535));
        device.hidesSize = true;
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
