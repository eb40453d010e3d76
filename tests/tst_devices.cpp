// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"
#include "filesizelimit.h"
#include "testtables.h"

#include <QtCore/QBuffer>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <unistd.h>

#include <optional>

using namespace dbf;
using namespace testtables;

namespace
{

/// A pipe: no positions, no size.
class Pipe : public QIODevice
{
public:
    QByteArray content;

    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        const QByteArray bytes = content.left(static_cast<int>(size));
        content.remove(0, bytes.size());
        std::copy(bytes.begin(), bytes.end(), data);
        return bytes.size();
    }

    qint64 writeData(const char* data, qint64 size) override
    {
        content.append(data, static_cast<int>(size));
        return size;
    }
};

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
        QVERIFY(QDir(m_folder->path()).mkdir("nothing"));
        QVERIFY(QFile::link("a.dbf", path("symbolic.dbf")));
        QCOMPARE(::link(QFile::encodeName(path("a.dbf")).constData(),
                        QFile::encodeName(path("hard.dbf")).constData()),
                 0);
        writeFile(path("b.dbf"), "old");
        QFile source(path("a.dbf"));
        DbfTable table(&source);
        QVERIFY(table.open(QIODevice::ReadOnly));
        for (const char* name :
             {"a.dbf", "./nothing/../a.dbf", "symbolic.dbf", "hard.dbf", "b.dbf"}) {
            QFile target(path(name));
            QCOMPARE(table.copyAndTransform(&target, identityOf(table)), name[0] == 'b');
            QVERIFY(!target.isOpen());
            QCOMPARE(readFile(path("a.dbf")), sample().bytes());
        }
        QByteArray bytes = sample().bytes();
        QBuffer buffer(&bytes);
        QBuffer other(&bytes);
        DbfTable inBuffer(&buffer);
        QVERIFY(inBuffer.open(QIODevice::ReadOnly));
        QVERIFY(!inBuffer.copyAndTransform(&other, identityOf(inBuffer)) && !other.isOpen());
        QCOMPARE(bytes, sample().bytes());
    }

    void saveFileRestructuresInPlace()
    {
        for (const bool mayFallBack : {false, true}) {
            QFile source(path("a.dbf"));
            DbfTable table(&source);
            QVERIFY(table.open(QIODevice::ReadOnly));
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

    void pipeIsATargetButNoTable()
    {
        OpenTable open(sample().bytes());
        Pipe pipe;
        QVERIFY(open.table.copyAndTransform(&pipe, identityOf(open.table)));
        QCOMPARE(pipe.content, sample().bytes());

        DbfTable table(&pipe);
        QVERIFY(table.open(QIODevice::ReadWrite));
        QVERIFY(table.readRecords(0, 1).isEmpty());
        QCOMPARE(table.lastError(), DbfTable::ReadError);
        QVERIFY(!table.appendRecord(table.blankRecord(0)));
        QVERIFY(pipe.content.isEmpty()); // all was read ahead, nothing written
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
        QVERIFY(!open.table.copyAndTransform(nullptr, identityOf(open.table)));
        QCOMPARE(open.device.content, sample().bytes());
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

    void whatAFullDiskRefusedIsNeverWrittenElsewhere_data()
    {
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("bulk");
        QTest::addColumn<int>("room");
        QTest::newRow("one record, many before") << 1000 << 0 << 20;
        QTest::newRow("three at once, many before") << 1000 << 3 << 20;
        QTest::newRow("no room for the old marker") << 10 << 3 << -1;
        QTest::newRow("no room for the marker") << 10 << 0 << 50;
        QTest::newRow("no room for the marker of three") << 10 << 3 << 152;
    }

    void whatAFullDiskRefusedIsNeverWrittenElsewhere()
    {
        QFETCH(int, rows);
        QFETCH(int, bulk);
        QFETCH(int, room);
        Table large{{field("TEXT", 'C', 50)}};
        large.records.fill(' ' + QByteArray(50, 'x'), rows);
        const QByteArray bytes = large.bytes();
        writeFile(path("full.dbf"), bytes);
        QFile file(path("full.dbf"));
        DbfTable table(&file);
        QVERIFY(table.open(QIODevice::ReadWrite));

        std::optional<FileSizeLimit> limit(bytes.size() + room);
        const DbfRecord blank(-1, {QString()});
        const bool appended =
            bulk ? table.appendRecords(QVector<DbfRecord>(bulk, blank)) : table.appendRecord(blank);
        const auto readable = int(table.readRecords(0, rows).size());
        const bool updated = table.updateRecord(DbfRecord(5, {"updated"}));
        table.readRecord(0);
        file.close();
        limit.reset();

        QVERIFY(!appended && updated);
        QCOMPARE(int(readable), rows);
        QByteArray expected = bytes;
        expected.replace(65 + 5 * 51, 51, " updated" + QByteArray(43, '\0'));
        const auto size = int(bytes.size()) - (bulk ? 0 : 1); // A bulk append puts its marker back.
        QCOMPARE(readFile(path("full.dbf")).left(size), expected.left(size));
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
        const QByteArray before = sample().bytes();
        const QByteArray after = readFile(path("a.dbf"));
        QCOMPARE(after.size(), before.size() + 11);
        QCOMPARE(after.left(before.size() - 1), before.left(before.size() - 1));
    }

    void fileThatCannotBeOpenedAgainStaysClosed()
    {
        QFile replaced(path("a.dbf"));
        DbfTable table(&replaced);
        QVERIFY(table.open(QIODevice::ReadWrite));
        QVERIFY(QFile::rename(path("a.dbf"), path("b.dbf")));
        writeFile(path("a.dbf"), "another");
        QFile writeOnly(path("c.dbf"));
        QSaveFile saved(path("a.dbf"));
        QVERIFY(writeOnly.open(QIODevice::WriteOnly) && saved.open(QIODevice::WriteOnly));
        DbfTable neverOpened(&writeOnly);
        DbfTable neverCommitted(&saved);
        for (DbfTable* const one : {&table, &neverOpened, &neverCommitted}) {
            const FileSizeLimit limit(0);
            QVERIFY(!one->appendRecord({}));
            QCOMPARE(one->lastError(), DbfTable::WriteError);
            QCOMPARE(one->device()->isOpen(), one == &neverCommitted);
        }
        QVERIFY(!saved.commit());
        QCOMPARE(readFile(path("a.dbf")), QByteArray("another"));
        QCOMPARE(readFile(path("b.dbf")), sample().bytes());
    }

    void ownWritesAreSeenAndLeaveTheFileActual()
    {
        QFile file(path("a.dbf"));
        DbfTable table(&file);
        QVERIFY(table.open(QIODevice::ReadWrite));
        const DbfRecord record(0, {"new", true, "1"});
        QTest::qSleep(20);
        QVERIFY(table.appendRecord(record) && table.appendRecords({record}));
        QTest::qSleep(20); // what is written later than this would show in the file's time
        QVERIFY(table.isActual() && table.isActual());
        QVERIFY(table.updateRecord(record));
        QVERIFY(readFile(path("a.dbf")).mid(129).startsWith(QByteArray(" new\0\0T1", 8)));
        QVERIFY(table.isActual());
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
        QByteArray bytes = sample().bytes();
        bytes[4] = 100;
        const QByteArray before = bytes;
        QBuffer buffer(&bytes);
        DbfTable table(&buffer);
        QVERIFY(table.open(QIODevice::ReadWrite));
        QVERIFY(table.readRecord(90).isTransient() && table.isRecordDeleted(90));
        QVERIFY(!table.appendRecord(table.blankRecord(0)));
        QCOMPARE(table.lastError(), DbfTable::ReadError);
        QCOMPARE(bytes, before);
    }

    void progressIsToldAndObeyed()
    {
        Table large{{field("TEXT", 'C', 255)}};
        OpenTable empty(large.bytes());
        large.records.fill(QByteArray(256, ' '), 40000); // 32768 of them make a batch
        OpenTable open(large.bytes());
        using Calls = QVector<QPair<int, int>>;
        const auto callsOf = [](OpenTable& source, bool stop) {
            Calls calls;
            RecordingDevice target;
            const auto note = [&](int done, int total) {
                calls.append({done, total});
                return !stop;
            };
            const bool copied =
                source.table.copyAndTransform(&target, identityOf(source.table), note);
            return copied == stop || target.isOpen() != stop ? Calls() : calls;
        };
        QCOMPARE(callsOf(open, false), (Calls{{32768, 40000}, {40000, 40000}}));
        QCOMPARE(callsOf(open, true), (Calls{{32768, 40000}}));
        QCOMPARE(callsOf(empty, false), (Calls{{0, 0}}));
    }

    void hostileHeadersCostNothing()
    {
        RecordingDevice largeHeader(header(1, 65535, 10));
        DbfTable headerOnly(&largeHeader);
        QVERIFY(!headerOnly.open(QIODevice::ReadOnly));
        QCOMPARE(headerOnly.lastError(), DbfTable::ReadError);
        // Four billion records, records without bytes, many records of a byte.
        for (const QByteArray& bytes : {header(0xFFFFFFFF, 33, 65535), header(0x7FFFFFFF, 33, 0),
                                        header(0x7FFFFFFF, 33, 1)}) {
            RecordingDevice device(bytes);
            DbfTable table(&device);
            QVERIFY(table.open(QIODevice::ReadOnly));
            QVERIFY(table.readRecords(0, table.recordCount()).isEmpty());
            QCOMPARE(table.lastError(), DbfTable::ReadError);
            DbfRecordCursor cursor(table);
            QVERIFY(!cursor.next() && cursor.hasError() && !cursor.next());
            RecordingDevice target;
            QVERIFY(!table.copyAndTransform(&target, identityOf(table)));
        }
    }

private:
    QString path(const char* name) const { return m_folder->filePath(QLatin1String(name)); }

    QScopedPointer<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestDevices)

#include "tst_devices.moc"
