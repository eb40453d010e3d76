// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"
#include "filesizelimit.h"
#include "testtables.h"

#include <QtCore/QBuffer>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <array>
#include <optional>

#include <unistd.h>

using namespace dbf;
using namespace testtables;

namespace
{

/// A file on a disk that fills up when somebody goes for the record count.
class FillingFile : public QFile
{
public:
    using QFile::QFile;
    bool seek(qint64 position) override
    {
        if (position == 4)
            m_limit.emplace(0);
        return QFile::seek(position);
    }

private:
    std::optional<FileSizeLimit> m_limit;
};

} // namespace

/// Devices that lose data when they are treated like any other, and devices that cannot do it all.
class TestDevices : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new QTemporaryDir);
        writeFile(path("a.dbf"), sample().bytes());
    }

    void copyOntoItsOwnSourceIsRefused()
    {
        QVERIFY(QFile::link("a.dbf", path("symbolic.dbf")));
        QCOMPARE(::link(qPrintable(path("a.dbf")), qPrintable(path("hard.dbf"))), 0);
        writeFile(path("b.dbf"), "old");
        OpenFile source(path("a.dbf"), QIODevice::ReadOnly);
        for (const char* name : {"a.dbf", "symbolic.dbf", "hard.dbf", "b.dbf"}) {
            QFile target(path(name));
            QCOMPARE(source.table.copyAndTransform(&target, identityOf(source.table)),
                     name[0] == 'b');
            QVERIFY(!target.isOpen());
            QCOMPARE(readFile(path("a.dbf")), sample().bytes());
        }
        QByteArray bytes = sample().bytes();
        QBuffer buffer(&bytes);
        QBuffer other(&bytes);
        DbfTable table(&buffer);
        QVERIFY(table.open(QIODevice::ReadOnly));
        QVERIFY(!table.copyAndTransform(&other, identityOf(table)) && !other.isOpen());
        QCOMPARE(bytes, sample().bytes());
    }

    void saveFileRestructuresInPlace()
    {
        for (const bool mayFallBack : {false, true}) {
            OpenFile source(path("a.dbf"), QIODevice::ReadOnly);
            DbfTable& table = source.table;
            QSaveFile file(path("a.dbf"));
            file.setDirectWriteFallback(mayFallBack);
            DbfSchemaTransform transform = identityOf(table);
            transform.deleteColumn(0);
            QVERIFY(table.copyAndTransform(&file, transform));
            QVERIFY(file.commit() && table.actualize());
            QCOMPARE(table.schema().columns.size(), mayFallBack ? 1 : 2);
            QCOMPARE(table.readRecords(0, 3).size(), 3);
        }
    }

    // A null device, and one that was closed behind the table's back, fail without a word from Qt.
    void deviceThatIsGoneFails()
    {
        OpenTable open(sample().bytes());
        open.device.close();
        DbfTable none(nullptr);
        for (DbfTable* table : {&open.table, &none}) {
            const DbfTableDescriptor descriptor = open.table.descriptor();
            QIODevice* const device = table->device();
            QCOMPARE(thrownBy([&] { DbfTable::seekRecord(device, 0, descriptor, 0); }),
                     DbfTable::ReadError);
            QCOMPARE(thrownBy([&] { DbfTable::readData(device, 1); }), DbfTable::ReadError);
            QCOMPARE(thrownBy([&] { DbfTable::writeData(device, "x", 1); }), DbfTable::WriteError);
            QCOMPARE(thrownBy([&] { DbfTable::writeEndMarker(device); }), DbfTable::WriteError);
            DbfTable::updateRecordCount(device, 1);
            QVERIFY(table->isRecordDeleted(0) && table->readRecords(0, 0).isEmpty());
            QVERIFY(!table->appendRecord({}) && !table->appendRecords({{}}));
            QCOMPARE(table->lastError(), DbfTable::ReadError);
            RecordingDevice target;
            QVERIFY(!table->copyAndTransform(&target, identityOf(*table)));
        }
        QCOMPARE(open.device.content, sample().bytes());

        QBuffer buffer;
        QFile file(path("a.dbf"));
        DbfTable unopenedBuffer(&buffer);
        DbfTable unopenedFile(&file);
        QVERIFY(none.isActual() && none.actualize());
        for (DbfTable* table : {&none, &unopenedBuffer, &unopenedFile}) {
            table->error(DbfTable::NoError);
            QVERIFY(!table->reopen());
            QCOMPARE(table->lastError(), DbfTable::OpenError);
        }
        none.error(DbfTable::NoError);
        QVERIFY(!none.create({}));
        QCOMPARE(none.lastError(), DbfTable::OpenError);
    }

    // Read-only devices, and modes that bring bytes elsewhere.
    void misplacingModesAreRefused()
    {
        for (const QIODevice::OpenMode mode :
             {QIODevice::OpenMode(QIODevice::ReadOnly), QIODevice::ReadWrite | QIODevice::Append,
              QIODevice::ReadWrite | QIODevice::Text}) {
            const bool isText = mode & QIODevice::Text;
            QFile file(path("a.dbf"));
            QVERIFY(file.open(mode) && file.seek(0));
            DbfTable table(&file);
            QCOMPARE(table.open(QIODevice::ReadWrite), !isText);
            const DbfRecord record(0, {"new", true, "1"});
            QCOMPARE(table.lastError(), isText ? DbfTable::ReadError : DbfTable::NoError);
            QVERIFY(!table.appendRecord(record) && !table.appendRecords({record}));
            QCOMPARE(table.lastError(), DbfTable::WriteError);
            for (const bool updates : {true, false}) {
                table.error(DbfTable::NoError);
                QVERIFY(!(updates ? table.updateRecord(record) : table.setRecordDeleted(0, true)));
                QCOMPARE(table.lastError(), isText ? DbfTable::NoError : DbfTable::WriteError);
            }
            QFile target(path("b.dbf"));
            QCOMPARE(table.copyAndTransform(&target, identityOf(table)), !isText);
            file.close();
            QCOMPARE(readFile(path("a.dbf")), sample().bytes());
        }
    }

    // A disk that is full after some records, before or after one record or three, for the old end
    // marker or for the new one.
    void whatAFullDiskRefusedIsNeverWrittenElsewhere()
    {
        using Case = std::array<int, 3>; // records before, records at once, bytes of room
        for (const auto& [rows, bulk, room] :
             {Case{1000, 1, 20}, {1000, 3, 20}, {10, 3, -1}, {10, 1, 50}, {10, 3, 152}}) {
            Table large{{field("TEXT", 'C', 50)}};
            large.records.fill(' ' + QByteArray(50, 'x'), rows);
            QByteArray expected = large.bytes();
            writeFile(path("full.dbf"), expected);
            OpenFile open(path("full.dbf"));
            std::optional<FileSizeLimit> limit(expected.size() + room);
            const DbfRecord blank(-1, {QString()});
            QVERIFY(!(bulk == 1 ? open.table.appendRecord(blank)
                                : open.table.appendRecords(QVector<DbfRecord>(bulk, blank))));
            QCOMPARE(int(open.table.readRecords(0, rows).size()), rows);
            QVERIFY(open.table.updateRecord(DbfRecord(5, {"updated"})));
            open.table.readRecord(0);
            open.file.close();
            limit.reset();

            expected.replace(65 + 5 * 51, 51, " updated" + QByteArray(43, '\0'));
            expected.chop(bulk == 1 ? 1 : 0); // A bulk append puts its marker back.
            QVERIFY(readFile(path("full.dbf")).startsWith(expected));
        }
    }

    void countThatAFullDiskRefusesIsNoError()
    {
        {
            FillingFile file(path("a.dbf"));
            DbfTable table(&file);
            QVERIFY(table.open(QIODevice::ReadWrite));
            QVERIFY(table.appendRecord(DbfRecord(-1, {"new", true, "1"})) && !table.hasError());
            QCOMPARE(table.recordCount(), 4);
            QCOMPARE(table.readRecord(3).values.at(0), QVariant("new"));
        }
        const QByteArray before = sample().bytes().chopped(1);
        const QByteArray after = readFile(path("a.dbf"));
        QCOMPARE(after.size(), before.size() + 11 + 1);
        QVERIFY(after.startsWith(before));
    }

    void fileThatCannotBeOpenedAgainStaysClosed()
    {
        OpenFile replaced(path("a.dbf"));
        QVERIFY(QFile::rename(path("a.dbf"), path("b.dbf")));
        writeFile(path("a.dbf"), "another");
        QFile writeOnly(path("c.dbf"));
        QSaveFile saved(path("a.dbf"));
        QVERIFY(writeOnly.open(QIODevice::WriteOnly) && saved.open(QIODevice::WriteOnly));
        DbfTable neverOpened(&writeOnly);
        DbfTable neverCommitted(&saved);
        for (DbfTable* const table : {&replaced.table, &neverOpened, &neverCommitted}) {
            const FileSizeLimit limit(0);
            QVERIFY(!table->appendRecord({}));
            QCOMPARE(table->lastError(), DbfTable::WriteError);
            QCOMPARE(table->device()->isOpen(), table == &neverCommitted);
        }
        QVERIFY(!saved.commit());
        QCOMPARE(readFile(path("a.dbf")), QByteArray("another"));
        QCOMPARE(readFile(path("b.dbf")), sample().bytes());
    }

    void ownWritesAreSeenAndLeaveTheFileActual()
    {
        OpenFile open(path("a.dbf"));
        const DbfRecord record(0, {"new", true, "1"});
        QTest::qSleep(20);
        QVERIFY(open.table.appendRecord(record) && open.table.appendRecords({record}));
        QTest::qSleep(20); // what is written later than this would show in the file's time
        QVERIFY(open.table.isActual() && open.table.isActual());
        QVERIFY(open.table.updateRecord(record));
        QVERIFY(readFile(path("a.dbf")).mid(129).startsWith(QByteArray(" new\0\0T1", 8)));
        QVERIFY(open.table.isActual());
    }

    void reopeningEmptiesNoFile()
    {
        for (const QIODevice::OpenMode mode : {QIODevice::OpenMode(QIODevice::WriteOnly),
                                               QIODevice::ReadWrite | QIODevice::Truncate}) {
            QFile file(path("a.dbf"));
            QVERIFY(file.open(mode));
            QCOMPARE(file.write(sample().bytes()), qint64(sample().bytes().size()));
            DbfTable table(&file);
            QCOMPARE(table.reopen(), mode != QIODevice::WriteOnly);
            QCOMPARE(table.lastError(), table.isOpen() ? DbfTable::NoError : DbfTable::ReadError);
            QCOMPARE(readFile(path("a.dbf")), sample().bytes());
        }
    }

    void bufferDoesNotGrowByReading()
    {
        const QByteArray before = sample().bytes().replace(4, 1, "d");
        QByteArray bytes = before;
        QBuffer buffer(&bytes);
        DbfTable table(&buffer);
        QVERIFY(table.open(QIODevice::ReadWrite));
        QVERIFY(table.readRecord(90).isTransient() && table.isRecordDeleted(90));
        QVERIFY(!table.appendRecord(table.blankRecord(0)));
        QCOMPARE(table.lastError(), DbfTable::ReadError);
        QCOMPARE(bytes, before);
    }

    void hostileHeadersCostNothing()
    {
        QCOMPARE(OpenTable(header(1, 65535, 10)).table.lastError(), DbfTable::ReadError);
        // Four billion records, records without bytes, many records of a byte.
        for (const QByteArray& bytes : {header(0xFFFFFFFF, 33, 65535), header(0x7FFFFFFF, 33, 0),
                                        header(0x7FFFFFFF, 33, 1)}) {
            OpenTable open(bytes, QIODevice::ReadOnly);
            QVERIFY(open.table.readRecords(0, open.table.recordCount()).isEmpty());
            QCOMPARE(open.table.lastError(), DbfTable::ReadError);
            DbfRecordCursor cursor(open.table);
            QVERIFY(!cursor.next() && cursor.hasError() && !cursor.next());
            RecordingDevice target;
            QVERIFY(open.table.isOpen());
            QVERIFY(!open.table.copyAndTransform(&target, identityOf(open.table)));
        }
    }

private:
    QString path(const char* name) const { return m_folder->filePath(QLatin1String(name)); }

    QScopedPointer<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestDevices)

#include "tst_devices.moc"
