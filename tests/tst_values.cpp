// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "testtables.h"

#include <QtTest/QtTest>

#include <cmath>
#include <random>
#include <stdexcept>

using namespace dbf;
using namespace testtables;

namespace
{

/// A value of a type that Qt knows nothing of.
struct Opaque {
    QString text;
};

/// Reads and writes Opaque values, spaces for blank ones.
class OpaqueConverter : public DbfFieldConverter
{
public:
    QByteArray toByteArray(const QVariant& value, const DbfSchema&,
                           const DbfFieldDescriptor& field) const override
    {
        return value.value<Opaque>().text.toLatin1().leftJustified(field.length, ' ');
    }
    QVariant toVariant(const QByteArray& bytes, const DbfSchema&,
                       const DbfFieldDescriptor&) const override
    {
        return QVariant::fromValue(Opaque{QString::fromLatin1(bytes.trimmed())});
    }
    bool convertVariant(QVariant& value) const override { return value.canConvert<Opaque>(); }
};

} // namespace

Q_DECLARE_METATYPE(Opaque)

/// Records written value by value, and converters chosen beforehand.
class TestValues : public QObject
{
    Q_OBJECT

private slots:
    void recordWrittenBackChangesNoByte()
    {
        OpaqueConverter own;
        // From the seventh column on with converters of their own.
        const QByteArrayList fields{
            field("TEXT", 'C', 6),  field("NUMBER", 'N', 6, 2), field("FLOAT", 'F', 6, 2),
            field("DATE", 'D', 8),  field("SURE", 'L', 1),      field("RAW", 'M', 4),
            field("INT2", 'I', 2),  field("INT4", 'I', 4),      field("INT8", 'I', 8),
            field("REAL8", 'B', 8), field("REAL4", 'B', 4),     field("OWN", 'X', 5)};
        const QVector<DbfFieldConverter*> converters{
            DbfSmallIntConverter::instance(),    DbfIntConverter::instance(),
            DbfLargeIntConverter::instance(),    DbfBinaryDoubleConverter::instance(),
            DbfBinaryFloatConverter::instance(), &own};
        constexpr int length = 62 + 3; // three bytes behind the last column
        constexpr int count = 300;
        std::mt19937 random(1);
        const QByteArray fillers(" 0.-*FT\0\xFFx", 10);
        QByteArray bytes =
            header(count, int(33 + 32 * fields.size()), length) + fields.join() + '\x0D';
        for (int i = 0; i < count * length; ++i)
            bytes += random() % 2 ? char(random()) : fillers.at(int(random() % 10));
        OpenTable open(bytes);
        for (int i = 0; i < converters.size(); ++i)
            open.table.setFieldConverter(6 + i, converters.at(i));
        for (int i = 0; i < count; ++i)
            QVERIFY(open.table.updateValues(open.table.readRecord(i)));
        QVERIFY(open.device.writes().isEmpty());
        QCOMPARE(open.device.content, bytes);
    }

    void onlyWhatChangedIsWritten()
    {
        QByteArray bytes = sample().bytes();
        bytes[140] = 'x'; // no usual deletion flag
        OpenTable open(bytes);
        QVERIFY(open.table.updateValues(DbfRecord(1, {"Rob"})));
        QCOMPARE(open.device.log(), (QStringList{"seek 140", "read 11", "seek 140", "write 11"}));
        bytes.replace(141, 5, QByteArray("Rob\0\0", 5));
        QCOMPARE(open.device.content, bytes);

        DbfRecord deleted = open.table.readRecord(1);
        deleted.setDeleted(true);
        QVERIFY(open.table.updateValues(deleted));
        bytes[140] = '*';
        QCOMPARE(open.device.content, bytes);
        for (const int index : {-1, 3})
            QVERIFY(!open.table.updateValues(DbfRecord(index, {"x"})) && !open.table.hasError());
    }

    void valueOfAnotherSizeIsRefused()
    {
        Table table{{field("RAW", 'M', 4), field("SURE", 'L', 2)}, {" abcdTT"}};
        for (const DbfRecord& record :
             {DbfRecord(0, {"abc"}), DbfRecord(0, {"abcde"}), DbfRecord(0, {"abcd", false})}) {
            OpenTable open(table.bytes());
            QVERIFY(!open.table.updateValues(record));
            QCOMPARE(open.table.lastError(), DbfTable::WriteError);
            QVERIFY(open.device.writes().isEmpty());
        }
    }

    void equalMeansEqualInTheFile()
    {
        Table table{{field("OWN", 'C', 5), field("REAL", 'B', 8)},
                    {" Ann  " + QByteArray::fromHex("000000000000F87F")}};
        OpaqueConverter own;
        OpenTable open(table.bytes());
        open.table.setFieldConverter(0, &own);
        open.table.setFieldConverter(1, DbfBinaryDoubleConverter::instance());
        QVERIFY(std::isnan(open.table.readRecord(0).values.at(1).toDouble()));
        QVERIFY(open.table.updateValues(open.table.readRecord(0)));
        QVERIFY(open.table.updateValues(DbfRecord(0, {QVariant::fromValue(Opaque{"Ann"})})));
        QVERIFY(open.device.writes().isEmpty());
        QVERIFY(open.table.updateValues(DbfRecord(0, {QVariant::fromValue(Opaque{"Bob"})})));
        QCOMPARE(open.device.content.mid(97, 6), QByteArray(" Bob  "));
    }

    void timesAreWhatTheirClocksShow()
    {
        const QByteArray noon = QByteArray::fromHex("858A250080EE6502"); // 2024-02-29 11:10
        Table table{{field("WHEN", 'T', 8)}, {' ' + noon}, 0x30, 0xC9, QByteArray(263, 0)};
        OpenTable open(table.bytes());
        open.table.setConverterChoice(nullableConverter);
        QVERIFY(open.table.reopen());
        QDateTime when = open.table.readRecord(0).values.first().toDateTime();
        QVERIFY(when.isValid());
        when.setOffsetFromUtc(3600); // the same clock elsewhere
        QVERIFY(open.table.updateValues(DbfRecord(0, {when})));
        QVERIFY(open.device.writes().isEmpty());
        QVERIFY(open.table.updateValues(DbfRecord(0, {when.addSecs(60)})));
        QVERIFY(open.table.updateValues(DbfRecord(0, {when.addDays(1)})));
        QCOMPARE(open.device.writes().size(), 2);
    }

    void flagAloneIsWritten()
    {
        OpenTable open(sample().bytes());
        for (const bool deleted : {true, false}) {
            open.device.clearLog();
            QVERIFY(open.table.setRecordDeleted(2, deleted));
            QCOMPARE(open.device.log(), (QStringList{"seek 151", "write 1"}));
            QCOMPARE(open.device.content.at(151), deleted ? '*' : ' ');
        }
        open.device.clearLog();
        for (const int index : {-1, 3, std::numeric_limits<int>::max()})
            QVERIFY(!open.table.setRecordDeleted(index, true) && !open.table.hasError());
        QVERIFY(open.device.log().isEmpty());
    }

    void chosenConvertersAreInstalledByEveryOpening()
    {
        OpenTable open(sample().bytes());
        open.table.setConverterChoice(
            [](const DbfFieldDescriptor& field, const DbfTableDescriptor& table) {
                return field.type == DbfFieldType::Numeric && table.version == 3
                           ? DbfDoubleConverter::instance()
                           : nullptr;
            });
        const auto amount = [](DbfTable& table) {
            return table.reopen() ? table.readRecord(0).values.at(2) : QVariant();
        };
        QCOMPARE(amount(open.table), QVariant(1.5));
        QCOMPARE(open.table.readRecord(0).values.at(1), QVariant(true));
        DbfTable moved(std::move(open.table));
        open.table.close(); // as harmless as on any table without a device
        QCOMPARE(amount(moved), QVariant(1.5));
        DbfTable other(nullptr);
        swap(moved, other);
        QCOMPARE(amount(other), QVariant(1.5));
        other.setConverterChoice({});
        QCOMPARE(amount(other), QVariant("1.5"));
    }

    void choiceThatThrowsLeavesAFailedOpening()
    {
        RecordingDevice device(sample().bytes());
        DbfTable table(&device);
        table.setConverterChoice([](const auto&, const auto&) -> DbfFieldConverter* {
            throw std::runtime_error("no converter");
        });
        QVERIFY_EXCEPTION_THROWN(table.open(QIODevice::ReadOnly), std::runtime_error);
        QVERIFY(!table.isOpen() && !table.hasError() && device.isOpen());
        QVERIFY(table.schema().columns.isEmpty());
        QCOMPARE(table.recordCount(), 3);
    }
};

QTEST_APPLESS_MAIN(TestValues)

#include "tst_values.moc"
