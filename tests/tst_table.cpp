// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"
#include "recordingdevice.h"
#include "testtables.h"

#include <QtCore/QPointer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <functional>
#include <memory>
#include <tuple>

using namespace dbf;
using namespace testtables;
using Device = RecordingDevice;

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
    void deviceIsReleasedAsChosen()
    {
        using Case = std::pair<bool, int>; // own function, destroyDeviceAtExit() or -1
        for (const auto& [ownFunction, destroy] :
             {Case{false, -1}, {false, 1}, {true, -1}, {true, 0}}) {
            released.clear();
            const QPointer<Device> device(new Device(sample().bytes()));
            QVERIFY(device->open(QIODevice::ReadOnly));
            {
                DbfTable table = ownFunction ? DbfTable(releasing<1>(device)) : DbfTable(device);
                if (destroy != -1)
                    table.destroyDeviceAtExit(destroy == 1);
            }
            QCOMPARE(device.isNull(), destroy == 1);
            QCOMPARE(int(released.size()), ownFunction && destroy == -1 ? 1 : 0);
            if (device)
                QCOMPARE(device->log(), QStringList("open 1")); // Neither read nor closed.
            delete device.data();
        }
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

    void onlyOpeningMindsARecordedError()
    {
        OpenTable opened(sample().bytes());
        DbfTable& table = opened.table;
        QVERIFY(!table.error(DbfTable::HeaderTooLongError) && table.appendRecord(newRecord(-1)));
        QVERIFY(!table.open(QIODevice::ReadWrite) && table.isOpen());
        QVERIFY(!table.reopen() && !opened.device.isOpen());
        QVERIFY(table.create({}) && !table.open(QIODevice::ReadWrite));
        QCOMPARE(table.lastError(), DbfTable::HeaderTooLongError);
    }

    void openReadsFromWhereTheDeviceStands()
    {
        OpenTable opened("before" + sample().bytes());
        DbfTable& table = opened.table;
        QCOMPARE(table.lastError(), DbfTable::UnsupportedVersionError);
        table.error(DbfTable::NoError);
        QVERIFY(opened.device.seek(6) && table.open(QIODevice::ReadWrite) && table.isOpen());
        QCOMPARE(opened.device.log(), QStringList({"seek 6", "read 32", "read 96"}));
        QCOMPARE(table.schema().columns.at(2).descriptor.name, QStringLiteral("AMOUNT"));
        QVERIFY(opened.device.seek(opened.device.size()) && !table.open(QIODevice::ReadOnly));
    }

    // Of what the device finds itself; failing reads are among the faults.
    void failedOpenKeepsWhatItHad()
    {
        const QByteArray good = otherTable().bytes();
        for (const QByteArray& content :
             {'\x83' + good.mid(1), header(5, 32, 12, 0x03, 0x66) + good,
              header(5, 295, 12, 0x30, 0x66) + good}) {
            OpenTable opened(sample().bytes(), QIODevice::ReadOnly);
            DbfTable& table = opened.table;
            SpyConverter spy;
            table.setFieldConverter(0, &spy);
            table.overrideTextCodec(nullptr);
            opened.device.content = content;
            QVERIFY(opened.device.seek(0) && !table.open(QIODevice::ReadOnly));
            const bool headerTaken = content.at(0) != '\x83';
            QCOMPARE(table.lastError(),
                     headerTaken ? DbfTable::ReadError : DbfTable::UnsupportedVersionError);
            QCOMPARE(table.recordCount(), headerTaken ? 5 : 3);
            QCOMPARE(table.schema().codec, headerTaken ? codec(2086) : nullptr);
            QCOMPARE(table.schema().columns.at(0).converter, &spy);
            QVERIFY(table.isOpen() && opened.device.isOpen());
        }
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

    void fileIsActualUntilReplaced()
    {
        using Case = std::pair<int, int>; // seconds later, records
        for (const auto& [seconds, count] : {Case{0, 4}, {60, 3}, {0, 3}}) {
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
            QVERIFY(newFile.setFileTime(time.addSecs(seconds), QFileDevice::FileModificationTime));
            const bool actual = seconds == 0 && count == 3;
            QCOMPARE(table.isActual(), actual);
            QVERIFY(table.actualize() && table.isActual());
            QCOMPARE(int(table.descriptor().version), actual ? 3 : 4);
            QCOMPARE(table.recordCount(), count);
        }
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

    void writesTouchNoMoreThanTheyMust()
    {
        OpenTable opened(sample().bytes());
        DbfTable& table = opened.table;
        Table expected = sample();
        DbfRecord record = newRecord(1);
        for (const bool deleted : {true, false}) {
            record.setDeleted(deleted);
            opened.device.clearLog();
            QVERIFY(table.updateRecord(record));
            QCOMPARE(opened.device.log(), QStringList({"seek 140", "write 11"}));
            expected.records[1] = (deleted ? '*' : ' ') + newImage.mid(1);
            QCOMPARE(opened.device.content, expected.bytes());
        }
        opened.device.clearLog();
        for (const int index : {-1, 3, 4})
            QVERIFY(!table.updateRecord(newRecord(index)) && !table.hasError());
        QVERIFY(table.appendRecord(record));
        QCOMPARE(opened.device.log(),
                 QStringList({"seek 162", "write 11", "write 1", "seek 4", "write 4"}));
        expected.records << newImage;
        QCOMPARE(opened.device.content, expected.bytes());
        QCOMPARE(table.readRecord(3).values, record.values);
    }

    void impossibleRequestsAreRefused()
    {
        const auto isRefused = [](const std::function<bool(DbfTable&)>& givesNothing) {
            OpenTable opened(sample().bytes());
            return givesNothing(opened.table) && opened.table.isOpen() &&
                   opened.table.lastError() == DbfTable::ReadError;
        };
        for (const int index : {-1, 3, 4}) { // 3: the end marker
            QVERIFY(isRefused([&](DbfTable& table) {
                const DbfRecord read = table.readRecord(index);
                return read.isTransient() && read.values == QVector<QVariant>(3);
            }));
            QVERIFY(index == 3 ||
                    isRefused([&](DbfTable& table) { return table.isRecordDeleted(index); }));
        }
        // Those of the last two ranges come to 2^31 + 9 and 2^32 + 7 bytes.
        using Range = std::pair<int, int>;
        for (const Range& range :
             {Range{2, 2}, {3, 1}, {-1, 0}, {0, -1}, {0, 195225787}, {0, 390451573}})
            QVERIFY(isRefused([&](DbfTable& table) {
                return table.readRecords(range.first, range.second).isEmpty();
            }));
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
        OpenTable opened(header(4294967295U, 33, 3) + '\x0D');
        QCOMPARE(opened.table.recordCount(), 2147483647);
        opened.table.readRecord(2147483646);
        QCOMPARE(opened.device.log().value(0),
                 QStringLiteral("seek %1").arg(33 + 2147483646LL * 3));
        QVERIFY(opened.table.isRecordDeleted(-1)); // Not the bytes before the records.
        opened.table.error(DbfTable::NoError);
        QVERIFY(!opened.table.appendRecord({}));
        QCOMPARE(opened.table.lastError(), DbfTable::ReadError);
        QVERIFY(opened.device.writes().isEmpty());
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
        QVERIFY(table.open(QIODevice::ReadOnly) && table.schema().columns.isEmpty());
        QVERIFY(!table.create({})); // The device is open.
        QCOMPARE(table.lastError(), DbfTable::OpenError);
        device.close();
        QVERIFY(!table.create(schemaOf(257, 255)) && device.isOpen() && device.content.isEmpty());
        QCOMPARE(table.lastError(), DbfTable::HeaderTooLongError);
    }

    void foreignExceptionsPassThrough()
    {
        OpenTable opened(sample().bytes());
        DbfTable& table = opened.table;
        SpyConverter spy;
        spy.throwing = true;
        table.setFieldConverter(1, &spy);
        QVERIFY_EXCEPTION_THROWN(table.readRecord(0), std::runtime_error);
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
