// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"
#include "recordingdevice.h"
#include "testtables.h"

#include <QtCore/QBuffer>
#include <QtCore/QPointer>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <functional>
#include <memory>
#include <tuple>

using namespace dbf;
using namespace testtables;
using Device = RecordingDevice;

/// An operation on the opened sample table that cannot succeed.
struct Refusal {
    std::function<bool(DbfTable&)> operation; // False when it gave its failure value.
    DbfTable::DbfTableError code = DbfTable::ReadError;
    QByteArray content = sample().bytes(); // what it leaves on the device
};
Q_DECLARE_METATYPE(Refusal)

/// What an open table finds when it is opened again, and what comes of it.
struct FailedOpen {
    QByteArray content;
    bool headerTaken;
    DbfTable::DbfTableError code = DbfTable::ReadError;
};
Q_DECLARE_METATYPE(FailedOpen)

namespace
{

/// The image of newRecord().
const auto newImage = QByteArrayLiteral(" \xC5\xE2\xE0\0\0F2.50");

/// Five records of two fields, DOS Cyrillic.
Table otherTable()
{
    const QVector<QByteArray> records(5, " abc20240229");
    return {{field("X", 'C', 3), field("Y", 'D', 8)}, records, 0x03, 0x66};
}

DbfSchema schemaOf(int columns, unsigned char length)
{
    const auto column = DbfFieldDescriptor::stringField("A", length);
    return {QVector<DbfFieldDescriptor>(columns, column), codec(2251)};
}

/// Devices that release functions were called with, and by which of them.
QVector<QPair<int, QIODevice*>> released;

template <int Id>
std::unique_ptr<QIODevice, void (*)(QIODevice*)> releasing(QIODevice* device)
{
    return {device, [](QIODevice* gone) { released << qMakePair(Id, gone); }};
}

/// All that a table holds, as far as it shows.
auto state(const DbfTable& table)
{
    return std::make_tuple(table.device(), table.schema().columns.size(), table.schema().codec,
                           table.recordCount(), table.lastError(), table.isOpen());
}

} // namespace

class TestTable : public QObject
{
    Q_OBJECT

private slots:
    void deviceIsReleasedAsChosen_data()
    {
        QTest::addColumn<bool>("ownFunction");
        QTest::addColumn<int>("destroy"); // -1: not said
        QTest::newRow("borrowed") << false << -1;
        QTest::newRow("borrowed, to be deleted") << false << 1;
        QTest::newRow("own function") << true << -1;
        QTest::newRow("own function, kept instead") << true << 0;
    }

    void deviceIsReleasedAsChosen()
    {
        QFETCH(bool, ownFunction);
        QFETCH(int, destroy);
        released.clear();
        const QPointer<Device> device(new Device(sample().bytes()));
        QVERIFY(device->open(QIODevice::ReadOnly));
        {
            DbfTable table = ownFunction ? DbfTable(releasing<1>(device)) : DbfTable(device);
            if (destroy != -1)
                table.destroyDeviceAtExit(destroy == 1);
        }
        QCOMPARE(device.isNull(), destroy == 1);
        QCOMPARE(released.size(), ownFunction && destroy == -1 ? 1 : 0);
        if (device)
            QCOMPARE(device->log(), QStringList("open 1")); // Neither read nor closed.
        delete device.data();
    }

    void tablesChangeHandsWhole()
    {
        released.clear();
        Device firstDevice(sample().bytes());
        Device secondDevice(otherTable().bytes());
        {
            DbfTable first(releasing<1>(&firstDevice));
            DbfTable second(releasing<2>(&secondDevice));
            QVERIFY(first.open(QIODevice::ReadOnly) && second.open(QIODevice::ReadOnly));
            second.close();
            second.error(DbfTable::WriteError);
            const auto firstState = state(first);
            const auto secondState = state(second);
            auto leftBehind = firstState;
            std::get<QIODevice*>(leftBehind) = nullptr;
            std::get<1>(leftBehind) = 0;

            DbfTable moved(std::move(first));
            QVERIFY(state(moved) == firstState && state(first) == leftBehind);
            moved = std::move(second);
            QVERIFY(state(moved) == secondState && state(second) == firstState);
            swap(moved, first);
            QVERIFY(state(moved) == leftBehind && state(first) == secondState);
        }
        const QVector<QPair<int, QIODevice*>> expected{{1, &firstDevice}, {2, &secondDevice}};
        QCOMPARE(released, expected);
    }

    void errorsStickAndOnlyOpeningMinds()
    {
        OpenTable opened(sample().bytes());
        DbfTable& table = opened.table;
        QVERIFY(!table.hasError() && !table.error(DbfTable::HeaderTooLongError));
        QCOMPARE(table.readRecords(0, 3).size(), 3);
        QVERIFY(table.appendRecord(newRecord(-1)));
        QCOMPARE(table.lastError(), DbfTable::HeaderTooLongError);
        opened.device.clearLog();
        QVERIFY(!table.open(QIODevice::ReadWrite) && table.isOpen());
        QVERIFY(!table.reopen() && !table.isOpen());
        QCOMPARE(opened.device.log(), QStringList("close"));
        QVERIFY(table.create({}) && !table.open(QIODevice::ReadWrite));
        QCOMPARE(table.recordCount(), 4);
    }

    void openReadsFromWhereTheDeviceStands()
    {
        Device device("before" + sample().bytes());
        QVERIFY(device.open(QIODevice::ReadOnly) && device.seek(6));
        device.clearLog();
        DbfTable table(&device);
        QVERIFY(table.open(QIODevice::ReadWrite) && table.isOpen());
        QCOMPARE(device.log(), QStringList({"read 32", "read 96"}));
        QCOMPARE(table.recordCount(), 3);
        QCOMPARE(table.schema().columns.size(), 3);
        QCOMPARE(table.schema().columns.at(2).descriptor.name, QStringLiteral("AMOUNT"));
        QVERIFY(device.seek(device.size()) && !table.open(QIODevice::ReadOnly));

        QVERIFY(!OpenTable(sample().bytes().left(80)).table.isOpen());
        const OpenTable withoutColumns(header(0, 33, 1) + '\x0D');
        QVERIFY(withoutColumns.table.isOpen() && withoutColumns.table.schema().columns.isEmpty());
    }

    void failedOpenKeepsWhatItHad_data()
    {
        QTest::addColumn<FailedOpen>("row");
        const auto row = [](const char* name, const FailedOpen& failure) {
            QTest::newRow(name) << failure;
        };
        const QByteArray good = otherTable().bytes();
        row("31 bytes", {good.left(31), false});
        row("version", {'\x83' + good.mid(1), false, DbfTable::UnsupportedVersionError});
        row("end within block", {good.left(95), true});
        row("header length 32", {header(5, 32, 12, 0x03, 0x66) + good, true});
        row("header length 295", {header(5, 295, 12, 0x30, 0x66) + good, true});
    }

    void failedOpenKeepsWhatItHad()
    {
        QFETCH(FailedOpen, row);
        OpenTable opened(sample().bytes(), QIODevice::ReadOnly);
        DbfTable& table = opened.table;
        SpyConverter spy;
        table.setFieldConverter(0, &spy);
        table.overrideTextCodec(nullptr);
        opened.device.content = row.content;
        QVERIFY(opened.device.seek(0));

        QVERIFY(!table.open(QIODevice::ReadOnly));
        QCOMPARE(table.lastError(), row.code);
        QCOMPARE(table.recordCount(), row.headerTaken ? 5 : 3);
        QCOMPARE(table.schema().codec, row.headerTaken ? codec(2086) : nullptr);
        QCOMPARE(table.schema().columns.size(), 3);
        QCOMPARE(table.schema().columns.at(0).converter, &spy);
        QVERIFY(table.isOpen() && opened.device.isOpen());
    }

    void reopenKeepsModeAndCodecOnly()
    {
        OpenTable opened(sample().bytes());
        DbfTable& table = opened.table;
        SpyConverter spy;
        for (const int column : {-1, 0, 3}) // Only the one that exists takes it.
            table.setFieldConverter(column, &spy);
        opened.device.content = otherTable().bytes();
        QVERIFY(table.reopen());
        QCOMPARE(opened.device.log(), QStringList({"close", "open 3", "read 32", "read 64"}));
        QCOMPARE(table.recordCount(), 5);
        QCOMPARE(table.schema().columns.size(), 2);
        QVERIFY(table.schema().columns.at(0).converter == DbfStringConverter::instance());
        QCOMPARE(table.schema().codec, codec(2251));
        table.overrideTextCodec(nullptr);
        QVERIFY(table.reopen());
        QCOMPARE(table.schema().codec, codec(2086));

        opened.device.close(); // Its mode is gone.
        QVERIFY(!table.reopen() && !table.isOpen());
        QCOMPARE(table.lastError(), DbfTable::OpenError);
    }

    void fileIsActualUntilReplaced_data()
    {
        QTest::addColumn<int>("secondsLater");
        QTest::addColumn<int>("count");
        QTest::newRow("longer") << 0 << 4;
        QTest::newRow("later") << 60 << 3;
        QTest::newRow("alike") << 0 << 3;
    }

    void fileIsActualUntilReplaced()
    {
        QFETCH(int, secondsLater);
        QFETCH(int, count);
        const QTemporaryDir folder;
        const QString path = folder.filePath("table.dbf");
        writeFile(path, sample().bytes());
        QFile file(path);
        DbfTable table(&file);
        QVERIFY(table.open(QIODevice::ReadOnly) && table.isActual());
        const QDateTime time = file.fileTime(QFileDevice::FileModificationTime);
        QVERIFY(QFile::remove(path) && table.isActual()); // There is no newer one.

        Table changed = sample();
        changed.version = 0x04;
        changed.records.resize(count);
        changed.records.last() = changed.records.first();
        writeFile(path, changed.bytes());
        QFile newFile(path);
        QVERIFY(newFile.open(QIODevice::ReadWrite));
        QVERIFY(newFile.setFileTime(time.addSecs(secondsLater), QFileDevice::FileModificationTime));
        const bool actual = secondsLater == 0 && count == 3;
        QCOMPARE(table.isActual(), actual);
        QVERIFY(table.actualize() && table.isActual());
        QCOMPARE(int(table.descriptor().version), actual ? 3 : 4);
        QCOMPARE(table.recordCount(), count);
    }

    void rangesTakeOneSeekAndOneRead()
    {
        OpenTable opened(sample().bytes(), QIODevice::ReadOnly);
        DbfTable& table = opened.table;
        const auto records = table.readRecords(1, 2);
        QCOMPARE(records.size(), 2);
        QCOMPARE(records.at(0).index(), 1);
        QVERIFY(records.at(0).isDeleted() && !records.at(1).isDeleted());
        QCOMPARE(records.at(1).values, QVector<QVariant>({"Carl", true, "3"}));
        QCOMPARE(table.readRecord(2).values, records.at(1).values);
        QVERIFY(table.isRecordDeleted(1));
        QCOMPARE(opened.device.log(),
                 QStringList({"seek 140", "read 22", "seek 151", "read 11", "seek 140", "read 1"}));
        QVERIFY(!table.isRecordDeleted(2) && !table.isRecordDeleted(3)); // 3: the end marker
        QVERIFY(table.readRecords(3, 0).isEmpty() && !table.hasError());
        QCOMPARE(table.blankRecord(5).index(), 5);
    }

    void updateTouchesItsSlotAlone()
    {
        OpenTable opened(sample().bytes());
        DbfRecord record = newRecord(1);
        record.setDeleted(true);
        QVERIFY(opened.table.updateRecord(record));
        QCOMPARE(opened.device.content, sample().bytes().replace(140, 11, '*' + newImage.mid(1)));
        record.setDeleted(false);
        QVERIFY(opened.table.updateRecord(record));
        QCOMPARE(opened.device.content, sample().bytes().replace(140, 11, newImage));
        for (const int index : {-1, 3, 4})
            QVERIFY(!opened.table.updateRecord(newRecord(index)));
        QVERIFY(!opened.table.hasError());
        QCOMPARE(opened.device.log(),
                 QStringList({"seek 140", "write 11", "seek 140", "write 11"}));
    }

    void appendWritesRecordMarkerCount()
    {
        OpenTable opened(sample().bytes());
        QVERIFY(opened.table.appendRecord(newRecord(1)));
        QCOMPARE(opened.device.log(),
                 QStringList({"seek 162", "write 11", "write 1", "seek 4", "write 4"}));
        Table expected = sample();
        expected.records << newImage;
        QCOMPARE(opened.device.content, expected.bytes());
        QCOMPARE(opened.table.readRecord(3).values, newRecord(1).values);
    }

    void impossibleRequestsAreRefused_data()
    {
        QTest::addColumn<Refusal>("row");
        const auto row = [](const char* name, const Refusal& refusal) {
            QTest::newRow(name) << refusal;
        };
        for (const int index : {-1, 3, 4}) { // 3: the end marker
            row("record", {[index](DbfTable& table) {
                    const DbfRecord read = table.readRecord(index);
                    return !read.isTransient() || read.values != QVector<QVariant>(3);
                }});
            if (index != 3)
                row("flag", {[index](DbfTable& t) { return !t.isRecordDeleted(index); }});
        }
        const auto rangeRow = [&](const char* name, int first, int count) {
            row(name, {[=](DbfTable& t) { return !t.readRecords(first, count).isEmpty(); }});
        };
        rangeRow("range beyond the end", 2, 2);
        rangeRow("range at the end", 3, 1);
        rangeRow("empty range before the first", -1, 0);
        rangeRow("negative range", 0, -1);
        rangeRow("range wrapping to negative", 0, 195225787);  // Times 11: 2^31 + 9
        rangeRow("range wrapping to few bytes", 0, 390451573); // Times 11: 2^32 + 7

        const auto create = [](int columns, unsigned char length) {
            return [=](DbfTable& table) {
                table.device()->close();
                return table.create(schemaOf(columns, length));
            };
        };
        row("create on an open device",
            {[](DbfTable& t) { return t.create({}); }, DbfTable::OpenError});
        row("create, 2047 columns", {create(2047, 1), DbfTable::HeaderTooLongError, {}});
        row("create, long records", {create(257, 255), DbfTable::HeaderTooLongError, {}});
    }

    void impossibleRequestsAreRefused()
    {
        QFETCH(Refusal, row);
        OpenTable opened(sample().bytes());
        QVERIFY(!row.operation(opened.table));
        QCOMPARE(opened.table.lastError(), row.code);
        QCOMPARE(opened.device.content, row.content);
        QCOMPARE(opened.table.recordCount(), 3);
        QVERIFY(opened.table.isOpen() && opened.device.isOpen());
    }

    void readOnlyDevicesAreReported()
    {
        OpenTable opened(sample().bytes(), QIODevice::ReadOnly);
        QVERIFY(!opened.table.updateRecord(newRecord(0)));
        QCOMPARE(opened.table.lastError(), DbfTable::WriteError);
        opened.table.error(DbfTable::NoError);
        QVERIFY(!opened.table.appendRecord(newRecord(0)));
        QCOMPARE(opened.table.lastError(), DbfTable::WriteError);
        QCOMPARE(opened.table.recordCount(), 3);
    }

    void imagesAreCutButNeverFilledUp()
    {
        OpenTable opened(sample().bytes());
        DbfTable& table = opened.table;
        table.setFieldConverter(0, DbfByteArrayConverter::instance());
        QVERIFY(table.updateRecord({1, {"abcdefg", false, "2.50"}}));
        const QByteArray expected = sample().bytes().replace(140, 11, " abcdefgF2.");
        QCOMPARE(opened.device.content, expected);
        QVERIFY(!table.updateRecord({1, {"ab", false, "2.50"}}));
        QVERIFY(!table.appendRecord({1, {"ab", false, "2.50"}}));
        QVERIFY(!table.appendRecords({{1, {"abcde", false, "2.50"}}, {1, {"ab", false, "2.50"}}}));
        QCOMPARE(table.lastError(), DbfTable::WriteError);
        QCOMPARE(table.recordCount(), 3);
        QCOMPARE(opened.device.content, expected);
    }

    void countsAndOffsetsGoBeyondInt()
    {
        OpenTable opened(header(4294967295U, 33, 65535));
        QCOMPARE(opened.table.recordCount(), 2147483647);
        opened.table.readRecord(2147483646);
        QCOMPARE(opened.device.log().value(0),
                 QStringLiteral("seek %1").arg(33 + 2147483646LL * 65535));

        const QByteArray content = header(4294967295U, 33, 1) + '\x0D';
        OpenTable crowded(content);
        QVERIFY(crowded.table.isRecordDeleted(-1)); // Not the byte before the records.
        crowded.table.error(DbfTable::NoError);
        QVERIFY(!crowded.table.appendRecord({}));
        QCOMPARE(crowded.table.lastError(), DbfTable::ReadError);
        QCOMPARE(crowded.device.content, content);
    }

    void primitivesTakeWhatTheyAreGiven()
    {
        OpenTable opened(sample().bytes());
        QIODevice* const device = &opened.device;
        QCOMPARE(thrownBy([&] { DbfTable::readData(device, -1); }), DbfTable::ReadError);
        QCOMPARE(thrownBy([&] { DbfTable::writeData(device, "ab", 3); }), DbfTable::WriteError);
        QCOMPARE(opened.device.log(), QStringList());
        DbfTable::seekRecord(device, 2, opened.table.descriptor(), 5);
        DbfTable::writeData(device, "abc", 2);
        DbfTable::writeSchemaTerminator(device);
        QCOMPARE(opened.device.content, sample().bytes().replace(156, 3, "ab\x0D"));
    }

    void createWritesAnEmptyTable()
    {
        Device device;
        DbfTable table(&device);
        QVERIFY(table.create(schemaOf(1, 10)));
        QCOMPARE(device.log(),
                 QStringList({"open 2", "write 32", "write 32", "write 1", "write 1", "close"}));
        QCOMPARE(device.content, Table{{field("A", 'C', 10)}}.bytes());
        QVERIFY(state(table) == state(DbfTable(&device)));
        QVERIFY(table.create({}));
        QCOMPARE(device.content, header(0, 33, 1, 0x03, 0) + "\x0D\x1A");
        QVERIFY(table.create(schemaOf(2046, 1)));
        QCOMPARE(device.content.size(), 65506);
    }

    void saveFileIsLeftToItsCommit()
    {
        const QTemporaryDir folder;
        QSaveFile file(folder.filePath("table.dbf"));
        DbfTable table(&file);
        QVERIFY(table.create(schemaOf(1, 10)));
        table.close();
        QVERIFY(file.isOpen() && !QFile::exists(file.fileName()));
        QVERIFY(file.commit());
        QCOMPARE(readFile(file.fileName()), Table{{field("A", 'C', 10)}}.bytes());
    }

    void converterSeesItsFieldOnly()
    {
        OpenTable opened(sample().bytes());
        SpyConverter spy;
        QCOMPARE(opened.table.readRecord(2).values.at(2), QVariant("3"));
        opened.table.setFieldConverter(2, &spy);
        QCOMPARE(opened.table.readRecord(2).values.at(2), QVariant(QByteArray("   3")));
        opened.table.overrideTextCodec(codec(2086));
        QVERIFY(opened.table.updateRecord({0, {"", true, " 4.5"}}));
        QCOMPARE(spy.calls,
                 QByteArrayList({"read <   3> AMOUNT 2251", "write < 4.5> AMOUNT 2086"}));
    }

    void converterMayUseItsTable()
    {
        struct Caller : DbfByteArrayConverter {
            DbfTable* table = nullptr;
            DbfByteArrayConverter* next = nullptr;
            QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                               const DbfFieldDescriptor& field) const override
            {
                if (next) {
                    table->setFieldConverter(0, next);
                    table->readRecord(2);
                    table->updateRecord(table->readRecord(1));
                }
                return DbfByteArrayConverter::toVariant(bytes, schema, field);
            }
        } last, first;
        OpenTable opened(sample().bytes());
        first.table = &opened.table;
        first.next = &last;
        opened.table.setFieldConverter(0, &first);
        QCOMPARE(opened.table.readRecord(0).values.at(0),
                 QVariant(QByteArray("\xC0\xED\xED\xE0 ")));
        QCOMPARE(opened.table.schema().columns.at(0).converter, &last);
        QCOMPARE(opened.device.content, sample().bytes().replace(147, 4, hex("32300000")));
    }

    void foreignExceptionsPassThrough()
    {
        OpenTable opened(sample().bytes());
        DbfTable& table = opened.table;
        SpyConverter spy;
        spy.throwing = true;
        table.setFieldConverter(1, &spy);
        QVERIFY_EXCEPTION_THROWN(table.readRecord(0), std::runtime_error);
        QVERIFY_EXCEPTION_THROWN(table.readRecords(0, 3), std::runtime_error);
        QVERIFY_EXCEPTION_THROWN(table.updateRecord(newRecord(0)), std::runtime_error);
        QVERIFY_EXCEPTION_THROWN(table.appendRecord(newRecord(0)), std::runtime_error);
        opened.device.close();
        opened.device.setFault({Device::Open, 1, Device::Throw});
        QVERIFY_EXCEPTION_THROWN(table.open(QIODevice::ReadOnly), std::runtime_error);
        opened.device.setFault({Device::Write, 2, Device::Throw});
        QVERIFY_EXCEPTION_THROWN(table.create({}), std::runtime_error);
        QVERIFY(!table.hasError());
    }
};

QTEST_GUILESS_MAIN(TestTable)

#include "tst_table.moc"
