// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"
#include "recordingdevice.h"
#include "testtables.h"

#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <stdexcept>

using namespace dbf;
using namespace testtables;
using Device = RecordingDevice;

class TestTableCopy : public QObject
{
    Q_OBJECT

private slots:
    void identityCopyIsByteForByte_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<int>("backLinkSize");
        QTest::addColumn<int>("records");
        QTest::newRow("plain") << 0x03 << 0 << 3;
        QTest::newRow("without records") << 0x03 << 0 << 0;
        QTest::newRow("back-link version") << 0x30 << 263 << 3;
        QTest::newRow("other back-link version") << 0x31 << 263 << 3;
    }

    void identityCopyIsByteForByte()
    {
        QFETCH(int, version);
        QFETCH(int, backLinkSize);
        QFETCH(int, records);
        Table original = sample();
        original.version = version;
        original.records = original.records.mid(0, records);
        if (records)
            original.records[2] = QByteArray("D\x00\xFFzz?y ,x\x1A", 11);
        original.backLink = QByteArray(backLinkSize, 'x');
        OpenTable source(original.bytes().replace(1, 3, "\x18\x0C\x1F"), QIODevice::ReadOnly);
        Device target("old");
        QVERIFY(source.table.copyAndTransform(&target, identityOf(source.table)));

        original.backLink.fill('\0');
        QCOMPARE(target.content, original.bytes());
        QStringList writes{"open 2", "write 32", "write 96", "write 1"};
        if (backLinkSize)
            writes << "write 263";
        for (int i = 0; i < records; ++i)
            writes << "write 11";
        QCOMPARE(target.log(), writes << "write 1"
                                      << "close");
        const auto reads =
            QStringList{QStringLiteral("seek %1").arg(129 + backLinkSize), "read 33"};
        QCOMPARE(source.device.log(), records ? reads : QStringList());
        QVERIFY(source.table.isOpen() && !source.table.hasError());
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
        transform.schema.setCodec(codec(2086));
        const auto image = [](const char* fields) { return QByteArray(fields, 12) + "19000101"; };
        const Table expected{
            {field("AMOUNT", 'N', 4, 1), field("LONGNAME", 'C', 7), field("BORN", 'D', 8)},
            {image(" 1.5\0\x80\xAD\xAD\xA0\0\0\0"), image("*20\0\0Bob\0\0\0\0"),
             image(" 3\0\0\0Carl\0\0\0")}};
        Device target;
        QVERIFY(source.table.copyAndTransform(&target, transform));
        QCOMPARE(target.content, expected.bytes());
        QCOMPARE(source.table.lastError(), DbfTable::ReadError);
        QCOMPARE(source.device.content, sample().bytes());
    }

    void batchesFollowTheRecordLength()
    {
        constexpr int batch = 83886; // 8388608 / 100
        Table original{{field("A", 'C', 99)}};
        for (int i = 0; i <= batch; ++i)
            original.records << ' ' + QByteArray(99, char('A' + i % 57));
        OpenTable source(original.bytes());
        Device target;
        QVERIFY(source.table.copyAndTransform(&target, identityOf(source.table)));
        QVERIFY(target.content == source.device.content);
        QCOMPARE(source.device.log(),
                 QStringList({"seek 65", "read 8388600", "seek 8388665", "read 100"}));
        QCOMPARE(target.log().count("write 100"), batch + 1);
        QCOMPARE(target.log().size(), batch + 1 + 6);
    }

    void refusedCopyTouchesNothing()
    {
        Device target("old");
        OpenTable plain(sample().bytes());
        QVERIFY(!plain.table.copyAndTransform(nullptr, identityOf(plain.table)));
        QVERIFY(!plain.table.copyAndTransform(&plain.device, identityOf(plain.table)));
        plain.device.close(); // Would open again, and lose what it holds.
        QVERIFY(!plain.table.copyAndTransform(&plain.device, identityOf(plain.table)));
        plain.table.close();
        QVERIFY(!plain.table.copyAndTransform(&target, identityOf(plain.table)));
        QCOMPARE(plain.device.content, sample().bytes());

        OpenTable deviceTaken(sample().bytes());
        const DbfTable owner(std::move(deviceTaken.table));
        QVERIFY(!deviceTaken.table.copyAndTransform(&target, identityOf(owner)));
        OpenTable lengthless(header(3, 33, 0));
        QVERIFY(!lengthless.table.copyAndTransform(&target, identityOf(lengthless.table)));
        OpenTable crowded(header(2147483648U, 33, 1));
        QVERIFY(!crowded.table.copyAndTransform(&target, identityOf(crowded.table)));
        QCOMPARE(target.log(), QStringList());
        for (const OpenTable* source : {&plain, &deviceTaken, &lengthless, &crowded})
            QVERIFY(!source->table.hasError());
    }

    void headerThatIsTooLongIsNotWritten()
    {
        OpenTable source(sample().bytes());
        Device target;
        DbfSchemaTransform transform = identityOf(source.table);
        while (transform.schema.columns.size() < 2047)
            transform.insertNewColumn(0, DbfFieldDescriptor::logicalField("A"));
        QVERIFY(!source.table.copyAndTransform(&target, transform));
        QVERIFY(target.isOpen() && target.content.isEmpty() && !source.table.hasError());
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

    void foreignExceptionsPassThrough()
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
        DbfSchemaTransform throwing = identity;
        throwing.schema.columns[2].setConverter(&spy);
        QVERIFY_EXCEPTION_THROWN(copy(throwing), std::runtime_error);
        target.setFault({Device::Write, 5, Device::Throw});
        QVERIFY_EXCEPTION_THROWN(copy(identity), std::runtime_error);
        QVERIFY(target.isOpen() && !source.table.hasError());
    }

    void deletedRecordsAreLeftOut()
    {
        OpenTable source(sample().bytes());
        Table expected = sample();
        expected.records.remove(1);
        for (const int stopAt : {0, 1, 2}) {
            QVector<QPair<int, int>> calls;
            DbfCopyOptions options;
            options.skipDeleted = true;
            options.progress = [&](int done, int total) {
                calls.append({done, total});
                return calls.size() != stopAt;
            };
            Device target;
            QCOMPARE(source.table.copyAndTransform(&target, identityOf(source.table), options),
                     stopAt == 0);
            QCOMPARE(calls, (QVector<QPair<int, int>>{{0, 3}, {3, 3}}).mid(0, stopAt ? stopAt : 2));
            QCOMPARE(target.log().isEmpty(), stopAt == 1); // the counting pass opens no target
            if (stopAt == 0)
                QCOMPARE(target.content, expected.bytes());
        }
    }

    void copyFailsWhenOtherRecordsAreDeletedThanWereCounted()
    {
        OpenTable source(sample().bytes());
        DbfCopyOptions options;
        options.skipDeleted = true;
        options.progress = [&](int, int) { return source.table.setRecordDeleted(0, true); };
        QSaveFile target(m_folder.filePath("copy.dbf"));
        QVERIFY(!source.table.copyAndTransform(&target, identityOf(source.table), options));
        QVERIFY(!source.table.hasError() && !target.commit());
    }

    void copyThatCannotReadTheMetadataFails()
    {
        OpenTable source(sample().bytes());
        DbfCopyOptions options;
        options.keepMetadata = true;
        source.device.setFault({Device::Seek, 1});
        Device target;
        QVERIFY(!source.table.copyAndTransform(&target, identityOf(source.table), options));
        QCOMPARE(target.content.size(), 0);
    }

    void metadataIsKept_data()
    {
        QTest::addColumn<int>("place"); // of the second field, as the source says
        QTest::addColumn<QByteArray>("places");
        QTest::newRow("right places") << 6 << hex("01 00 00 00 05 00 00 00 06 00 00 00");
        QTest::newRow("wrong places") << 7 << hex("00 00 00 00 00 00 00 00 00 00 00 00");
    }

    // SURE and AMOUNT stay what they are and change places; NAME gets longer.
    void metadataIsKept()
    {
        QFETCH(int, place);
        QFETCH(QByteArray, places);
        Table table = sample();
        table.version = 0x30;
        table.backLink = QByteArray("goods.dbc").leftJustified(263, '\0');
        const int starts[] = {1, place, 7};
        for (int i = 0; i < 3; ++i) {
            table.fields[i][12] = char(starts[i]);
            table.fields[i].replace(18, 14, QByteArray(14, char('a' + i)));
        }
        QByteArray bytes = table.bytes();
        bytes.replace(1, 3, hex("7B0A1F")).replace(28, 1, hex("03"));
        OpenTable source(bytes);
        DbfSchemaTransform transform = identityOf(source.table);
        transform.updateColumn(0, DbfFieldDescriptor::stringField("NAME", 7));
        transform.moveColumn(2, 0);
        transform.moveColumn(2, 1);
        DbfCopyOptions options;
        options.keepMetadata = true;
        options.codePage = DbfCodePage::IBM866;
        Device target;
        QVERIFY(source.table.copyAndTransform(&target, transform, options));
        const QByteArray& copy = target.content;
        QCOMPARE(copy.mid(1, 3) + copy.mid(28, 2), hex("7B0A1F 03 66"));
        QCOMPARE(copy.mid(44, 4) + copy.mid(76, 4) + copy.mid(108, 4), places);
        QCOMPARE(copy.mid(50, 14) + copy.mid(82, 14) + copy.mid(114, 14),
                 QByteArray(14, 'c') + QByteArray(14, 'b') + QByteArray(14, '\0'));
        QCOMPARE(copy.mid(129, 263), table.backLink);
    }

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestTableCopy)

#include "tst_tablecopy.moc"
