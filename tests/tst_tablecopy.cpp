// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"
#include "recordingdevice.h"
#include "testtables.h"

#include <QtTest/QtTest>

#include <stdexcept>

using namespace dbf;
using namespace testtables;
using Device = RecordingDevice;

using Calls = QVector<QPair<int, int>>; ///< Of a progress callback.

class TestTableCopy : public QObject
{
    Q_OBJECT

private slots:
    void identityCopyIsByteForByte()
    {
        using Case = std::pair<int, int>; // version, records
        for (const auto& [version, records] : {Case{0x03, 3}, {0x03, 0}, {0x31, 3}}) {
            Table original = sample();
            original.version = version;
            original.backLink = QByteArray(version == 0x31 ? 263 : 0, 'x');
            original.records[2] = QByteArray("D\x00\xFFzz?y ,x\x1A", 11);
            original.records.resize(records);
            OpenTable source(original.bytes().replace(1, 3, "\x18\x0C\x1F"), QIODevice::ReadOnly);
            Device target("old");
            Calls calls;
            const auto note = [&](int done, int total) {
                return calls.append({done, total}), true;
            };
            QVERIFY(source.table.copyAndTransform(&target, identityOf(source.table), note));

            const int backLink = int(original.backLink.size());
            original.backLink.fill('\0');
            QCOMPARE(target.content, original.bytes());
            QStringList writes{"open 2", "write 32", "write 96", "write 1"};
            if (backLink)
                writes << "write 263";
            for (int i = 0; i < records; ++i)
                writes << "write 11";
            QCOMPARE(target.log(), writes + QStringList({"write 1", "close"}));
            const auto reads =
                QStringList{QStringLiteral("seek %1").arg(129 + backLink), "read 33"};
            QCOMPARE(source.device.log(), records ? reads : QStringList());
            QCOMPARE(calls, (Calls{{records, records}}));
        }
    }

    void restructuredCopyKeepsFlagsCountAndCodePage()
    {
        OpenTable source(sample().bytes());
        source.table.error(DbfTable::ReadError); // A recorded error is no obstacle.
        DbfSchemaTransform transform = identityOf(source.table);
        transform.deleteColumn(1);
        transform.moveColumn(1, 0);
        transform.updateColumn(1, DbfFieldDescriptor::stringField("LONGNAME", 7));
        transform.insertNewColumn(2, {"BORN", DbfFieldType::Date, 8, 0});
        struct : DbfByteArrayConverter { // asked for each record's blank
            mutable char next = '1';
            QByteArray defaultBytes(int length) const override
            {
                return QByteArray(length, next++);
            }
        } numbering;
        transform.insertNewColumn(3, DbfFieldDescriptor::stringField("ID", 2));
        transform.schema.columns[3].setConverter(&numbering);
        transform.schema.setCodec(codec(2086));
        const auto image = [](const char* fields, const char* id) {
            return QByteArray(fields, 12) + "19000101" + id;
        };
        const Table expected{{field("AMOUNT", 'N', 4, 1), field("LONGNAME", 'C', 7),
                              field("BORN", 'D', 8), field("ID", 'C', 2)},
                             {image(" 1.5\0\x80\xAD\xAD\xA0\0\0\0", "11"),
                              image("*20\0\0Bob\0\0\0\0", "22"),
                              image(" 3\0\0\0Carl\0\0\0", "33")}};
        Device target;
        QVERIFY(source.table.copyAndTransform(&target, transform));
        QCOMPARE(target.content, expected.bytes());
        QCOMPARE(source.table.lastError(), DbfTable::ReadError);
        QCOMPARE(source.device.content, sample().bytes());
    }

    void batchesFollowTheRecordLengthAndProgressIsObeyed()
    {
        constexpr int batch = 83886; // 8388608 / 100
        constexpr int count = batch + 1;
        Table original{{field("A", 'C', 99)}};
        for (int i = 0; i < count; ++i)
            original.records << ' ' + QByteArray(99, char('A' + i % 57));
        OpenTable source(original.bytes());
        Calls calls;
        const auto stopFirst = [&](int done, int total) {
            calls.append({done, total});
            return calls.size() > 1;
        };
        Device stopped;
        QVERIFY(!source.table.copyAndTransform(&stopped, identityOf(source.table), stopFirst));
        QVERIFY(stopped.isOpen());
        source.device.clearLog();
        Device target;
        QVERIFY(source.table.copyAndTransform(&target, identityOf(source.table), stopFirst));
        QVERIFY(target.content == source.device.content);
        QCOMPARE(source.device.log(),
                 QStringList({"seek 65", "read 8388600", "seek 8388665", "read 100"}));
        QCOMPARE(target.log().count("write 100"), count);
        QCOMPARE(calls, (Calls{{batch, count}, {batch, count}, {count, count}}));
    }

    void refusedCopyTouchesNothing()
    {
        Device target("old");
        OpenTable plain(sample().bytes());
        OpenTable deviceTaken(sample().bytes());
        const DbfTable owner(std::move(deviceTaken.table));
        OpenTable lengthless(header(3, 33, 0));
        OpenTable crowded(header(2147483648U, 33, 1));
        const auto isRefused = [](OpenTable& source, QIODevice* device) {
            return !source.table.copyAndTransform(device, identityOf(source.table)) &&
                   !source.table.hasError();
        };
        QVERIFY(isRefused(plain, nullptr) && isRefused(plain, &plain.device));
        plain.device.close(); // It would open again, and lose what it holds.
        QVERIFY(isRefused(plain, &plain.device));
        plain.table.close();
        for (OpenTable* const source : {&plain, &deviceTaken, &lengthless, &crowded})
            QVERIFY(isRefused(*source, &target));
        QCOMPARE(plain.device.content, sample().bytes());
        QCOMPARE(target.log(), QStringList());
    }

    void imagesAreCutButNeverFilledUp()
    {
        OpenTable source(sample().bytes());
        SpyConverter spy;
        source.table.setFieldConverter(0, &spy);
        Device target;
        DbfSchemaTransform narrow = identityOf(source.table);
        narrow.updateColumn(0, DbfFieldDescriptor::stringField("SHORT", 3));
        narrow.schema.columns[0].setConverter(&spy); // Gives five bytes nevertheless.
        narrow.schema.setCodec(codec(2086));
        QVERIFY(source.table.copyAndTransform(&target, narrow));
        QCOMPARE(target.content.mid(129),
                 QByteArray(" \xC0\xED\xED\xE0 T1.*Bob  F20 Carl T3\0\x1A", 28));
        QCOMPARE(spy.calls.mid(6), QByteArrayList({"read <Carl > NAME 2251", "convert <Carl >",
                                                   "write <Carl > SHORT 2086"}));

        DbfSchemaTransform wide = identityOf(source.table);
        wide.updateColumn(1, {"SURE", DbfFieldType::Logical, 2, 0}); // Still written as one byte.
        QVERIFY(!source.table.copyAndTransform(&target, wide));      // Still open.
        target.close();
        QVERIFY(!source.table.copyAndTransform(&target, wide));
        QCOMPARE(target.content.size(), 129);
        QVERIFY(!source.table.hasError());
    }

    // A header that is too long is one of them, and told by the result.
    void failuresLeaveTheTargetOpenAsFarAsItGot()
    {
        OpenTable source(sample().bytes());
        const DbfSchemaTransform identity = identityOf(source.table);
        Device target;
        const auto copy = [&](const DbfSchemaTransform& transform) {
            target.close();
            return source.table.copyAndTransform(&target, transform);
        };
        for (const QList<int>& indexes : {QList<int>{0, 3, 2}, {0, -2, 2}, {0, 1}}) {
            QVERIFY_EXCEPTION_THROWN(copy({identity.schema, indexes}), std::out_of_range);
            QVERIFY(target.isOpen());
            QCOMPARE(target.content.size(), 129);
        }
        OpenTable empty(Table{sample().fields}.bytes()); // Has no record to map.
        target.close();
        QVERIFY(empty.table.copyAndTransform(&target, {identity.schema, {0, 3, 2}}));

        SpyConverter spy;
        spy.throwing = true;
        DbfSchemaTransform transform = identity;
        transform.schema.columns[2].setConverter(&spy);
        QVERIFY_EXCEPTION_THROWN(copy(transform), std::runtime_error);
        transform.schema.columns.fill(DbfColumn(), 2047);
        QVERIFY(!copy(transform) && target.isOpen() && target.content.isEmpty());
        QVERIFY(!source.table.hasError());
    }

    void deletedRecordsAreLeftOut()
    {
        OpenTable source(sample().bytes());
        Table expected = sample();
        expected.records.remove(1);
        for (const int stopAt : {0, 1, 2}) {
            Calls calls;
            DbfCopyOptions options;
            options.skipDeleted = true;
            options.progress = [&](int done, int total) {
                calls.append({done, total});
                return calls.size() != stopAt;
            };
            Device target;
            QCOMPARE(source.table.copyAndTransform(&target, identityOf(source.table), options),
                     stopAt == 0);
            QCOMPARE(calls, (Calls{{0, 3}, {3, 3}}.mid(0, stopAt ? stopAt : 2)));
            QCOMPARE(target.log().isEmpty(), stopAt == 1); // the counting pass opens no target
            QCOMPARE(target.content == expected.bytes(), stopAt == 0);
        }
    }

    void copyThatFindsOtherThanItCountedOrNoMetadataFails()
    {
        OpenTable source(sample().bytes());
        Device target;
        DbfCopyOptions options;
        options.keepMetadata = true;
        source.device.setFault({Device::Seek, 1});
        QVERIFY(!source.table.copyAndTransform(&target, identityOf(source.table), options));
        QCOMPARE(target.content.size(), 0);
        target.close();

        options.skipDeleted = true;
        options.progress = [&](int, int) { return source.table.setRecordDeleted(0, true); };
        QVERIFY(!source.table.copyAndTransform(&target, identityOf(source.table), options));
        QVERIFY(!source.table.hasError() && target.isOpen());
    }

    // AMOUNT stays what it is, NAME gets longer, SURE of another type, and one without a name and
    // a length has no source; all change places.
    void metadataIsKept()
    {
        const auto placed = [](QByteArray field, int place, char flags) {
            field[12] = char(place);
            return field.replace(18, 14, QByteArray(14, flags));
        };
        const auto bytesOf = [](const Table& table) {
            return table.bytes().replace(1, 3, hex("7B0A1F")).replace(28, 1, hex("03"));
        };
        for (const int rightPlace : {1, 0}) {
            Table table = sample();
            table.version = 0x30;
            table.backLink = QByteArray("goods.dbc").leftJustified(263, '\0');
            table.fields = {placed(table.fields[0], 1, 'a'),
                            placed(table.fields[1], rightPlace ? 6 : 7, 'b'),
                            placed(table.fields[2], 7, 'c')};
            OpenTable source(bytesOf(table));
            DbfSchemaTransform transform = identityOf(source.table);
            transform.updateColumn(0, DbfFieldDescriptor::stringField("NAME", 7));
            transform.updateColumn(1, DbfFieldDescriptor::stringField("SURE", 1));
            transform.moveColumn(2, 0);
            transform.insertNewColumn(1, DbfFieldDescriptor::stringField({}, 0));
            DbfCopyOptions options;
            options.keepMetadata = true;
            options.codePage = DbfCodePage::IBM866;
            Device target;
            QVERIFY(source.table.copyAndTransform(&target, transform, options));
            table.codePage = 0x66;
            table.fields = {placed(sample().fields[2], rightPlace, 'c'),
                            placed(field({}, 'C', 0), 5 * rightPlace, '\0'),
                            placed(field("NAME", 'C', 7), 5 * rightPlace, '\0'),
                            placed(field("SURE", 'C', 1), 12 * rightPlace, '\0')};
            constexpr int headerLength = 33 + 4 * 32 + 263;
            QCOMPARE(target.content.left(headerLength), bytesOf(table).left(headerLength));
        }
    }
};

QTEST_GUILESS_MAIN(TestTableCopy)

#include "tst_tablecopy.moc"
