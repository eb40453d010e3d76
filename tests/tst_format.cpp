// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"
#include "columns.h"

#include <dbf/dbf.h>

#include <QTextCodec>

#include <array>
#include <limits>

using namespace dbf;

namespace
{

DbfTableDescriptor descriptorOf(int version, int headerLength, int recordLength)
{
    return {static_cast<quint16>(headerLength), static_cast<quint8>(version), DbfCodePage(0x65),
            3000000000u, static_cast<quint16>(recordLength)};
}

/// A text, a truth value, raw bytes without a converter, and a binary integer.
DbfSchema recordSchema()
{
    DbfSchema schema(
        {DbfFieldDescriptor::stringField("C", 5), DbfFieldDescriptor::logicalField("L"),
         DbfFieldDescriptor::stringField("M", 3), DbfFieldDescriptor::stringField("I", 4)},
        QTextCodec::codecForName("Windows-1251"));
    schema.columns[2].setConverter(nullptr);
    schema.columns[3].setConverter(DbfIntConverter::instance());
    return schema;
}

} // namespace

class TestFormat : public QObject
{
    Q_OBJECT

private slots:
    void headerIsReadAndWritten()
    {
        const QByteArray stored =
            hex("31 7b0a1f feffffff 12f1 34f2 eeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeee c9 eeee");
        const QByteArray written =
            hex("31 000000 feffffff 12f1 34f2 0000000000000000000000000000000000 c9 0000");
        const DbfTableDescriptor descriptor = DbfTable::parseTableDescriptor(stored);
        QCOMPARE(QString::asprintf("%x %u %x %x %x", descriptor.version, descriptor.recordCount,
                                   descriptor.headerLength, descriptor.recordLength,
                                   static_cast<unsigned>(descriptor.codePage)),
                 QString("31 4294967294 f112 f234 c9"));
        QCOMPARE(DbfTable::serializeTableDescriptor(descriptor), written);
        const ExactBytes cut(stored.left(31));
        QCOMPARE(thrownBy([&] { DbfTable::parseTableDescriptor(cut.view()); }),
                 DbfTable::ReadError);
        for (int version = 0; version < 256; ++version) {
            const auto letter = static_cast<char>(version);
            const bool known = hex("02 03 04 05 06 07 30 31").contains(letter);
            QCOMPARE(DbfTable::supportVersion(letter), known);
            QCOMPARE(thrownBy([&] { DbfTable::parseTableDescriptor(letter + stored.mid(1)); }),
                     known ? DbfTable::NoError : DbfTable::UnsupportedVersionError);
            QCOMPARE(DbfTable::hasDbc(descriptorOf(version, 0, 0)), known && version > 7);
        }
    }

    void headerLengthGivesTheFieldCount()
    {
        using Case = std::array<int, 4>; // version, header length, bytes of the fields, fields
        for (const auto& [version, headerLength, length, count] : {Case{0x03, 129, 96, 3},
                                                                   {0x30, 392, 96, 3},
                                                                   {0x03, 103, 70, 2},
                                                                   {0x03, 65535, 65502, 2046},
                                                                   {0x31, 33, -263, 0}}) {
            const DbfTableDescriptor descriptor = descriptorOf(version, headerLength, 1);
            QCOMPARE(DbfTable::schemaLength(descriptor), length);
            const ExactBytes block(QByteArray(32 * count, 'x'));
            QCOMPARE(int(DbfTable::parseFieldDescriptors(block.view(), descriptor, nullptr).size()),
                     count);
            const ExactBytes less(QByteArray(qMax(0, 32 * count - 1), 'x'));
            const auto parse = [&] {
                DbfTable::parseFieldDescriptors(less.view(), descriptor, nullptr);
            };
            QCOMPARE(thrownBy(parse), count ? DbfTable::ReadError : DbfTable::NoError);
        }
    }

    void newHeadersFitTheSchema()
    {
        const auto header = [](int version, int columnCount, int fieldLength) -> QString {
            const auto field = DbfFieldDescriptor::stringField("C", quint8(fieldLength));
            const DbfSchema schema(QVector<DbfFieldDescriptor>(columnCount, field), nullptr);
            try {
                const DbfTableDescriptor made =
                    version ? DbfTable::transformDescriptor(descriptorOf(version, 9, 9), schema)
                            : DbfTable::emptyTableDescriptor(DbfCodePage::IBM866, schema);
                return QString::asprintf("%02x: %u, %02x, %d + %d", made.version, made.recordCount,
                                         static_cast<unsigned>(made.codePage), made.headerLength,
                                         made.recordLength);
            } catch (DbfTable::DbfTableError code) {
                return code == DbfTable::HeaderTooLongError ? "too long" : "another error";
            }
        };
        QCOMPARE(header(0, 3, 20), QString("03: 0, 66, 129 + 61"));
        QCOMPARE(header(0, 1057, 62), QString("03: 0, 66, 33857 + 65535"));
        QCOMPARE(header(0, 2046, 1), QString("03: 0, 66, 65505 + 2047"));
        QCOMPARE(header(0x30, 3, 20), QString("30: 3000000000, 65, 392 + 61"));
        QCOMPARE(header(0, 2047, 1), QString("too long"));
        QCOMPARE(header(5, 257, 255), QString("too long"));
        QCOMPARE(header(0x31, 2039, 1), QString("too long"));
        QCOMPARE(DbfTable::headerLength(DbfSchema()), 33);
    }

    void fieldDescriptorsAreReadAndWritten_data()
    {
        addColumns<QByteArray, QByteArray, QString, QByteArray>(
            {"codec", "stored", "name", "written"});
        const auto row = [](const char* codec, const char* stored, const char* name,
                            const char* written) {
            QTest::newRow(stored) << QByteArray(codec) << hex(stored) << name << hex(written);
        };
        const char* const cyrillic = "c0c1c2c3c4c5c6c7c8c9 00";
        row("KOI8-R", "4142202020202020202000", "AB", "4142000000000000000000");
        row("KOI8-R", "4100424242424242424242", "A", "4100000000000000000000");
        row("KOI8-R", "412042434445464748494a", "A BCDEFGHIJ", "4120424344454647484900");
        row("", cyrillic, "АБВГДЕЖЗИЙ", cyrillic); // as in the Windows code page
        row("UTF-8", "41d091d092d093d094d095", "AБВГДЕ", "41d091d092d093d094d000");
    }

    void fieldDescriptorsAreReadAndWritten()
    {
        QFETCH(QByteArray, codec);
        QFETCH(QByteArray, stored);
        QFETCH(QByteArray, written);
        QTextCodec* const textCodec = QTextCodec::codecForName(codec);
        stored += hex("fe eeeeeeee ff fd eeeeeeee eeeeeeee eeeeeeee eeee");
        written += hex("fe 00000000 ff fd 00000000 00000000 00000000 0000");
        const DbfFieldDescriptor field = DbfTable::parseFieldDescriptor(stored, textCodec);
        QTEST(field.name, "name");
        QVERIFY(field.type == DbfFieldType(0xFE) && field.length == 255 && field.decimals == 253);
        QCOMPARE(DbfTable::serializeFieldDescriptor(field, textCodec), written);

        const QByteArray block =
            DbfTable::serializeSchema(DbfSchema(QVector<DbfFieldDescriptor>{{}, field}, textCodec));
        QCOMPARE(block, QByteArray(11, '\0') + 'C' + QByteArray(20, '\0') + written);
        QCOMPARE(DbfTable::parseFieldDescriptors(block, descriptorOf(3, 97, 1), textCodec)[1].name,
                 DbfTable::parseFieldDescriptor(written, textCodec).name);
    }

    void lengthsOfMillionsOfColumnsSaturate()
    {
        constexpr int count = 8500000;
        DbfSchema schema;
        schema.columns.fill(DbfColumn(DbfFieldDescriptor::stringField({}, 255)), count);
        QCOMPARE(DbfTable::calcRecordLength(schema), std::numeric_limits<int>::max());
        QCOMPARE(DbfTable::calcSchemaLength(schema), 32 * count + 1);
    }

    void codePagesNameTheirCodecs()
    {
        QTextCodec* const windows = QTextCodec::codecForName("Windows-1251");
        QTextCodec* const dos = QTextCodec::codecForName("IBM 866");
        QTextCodec* const koi8 = QTextCodec::codecForName("KOI8-R");
        QVERIFY(windows && dos && koi8);
        for (int byte = 0; byte < 256; ++byte)
            QCOMPARE(DbfTable::codecByCodePage(DbfCodePage(byte)),
                     byte == 0x66 ? dos : (byte == 0xC9 || byte == 0 ? windows : koi8));
        QCOMPARE(DbfTable::codePageByCodec(windows), DbfCodePage::Windows1251);
        QCOMPARE(DbfTable::codePageByCodec(dos), DbfCodePage::IBM866);
        QCOMPARE(DbfTable::codePageByCodec(koi8), DbfCodePage::NotSet);
        QCOMPARE(DbfTable::codePageByCodec(nullptr), DbfCodePage::NotSet);
    }

    void languageIdsHaveTheirCharacterSet()
    {
        QMap<int, QByteArray> idsByMib;
        for (int id = 0; id < 256; ++id)
            idsByMib[DbfTable::languageIdToMIB(id)] += static_cast<char>(id);
        idsByMib.remove(0);
        QStringList shown;
        for (auto it = idsByMib.cbegin(); it != idsByMib.cend(); ++it)
            shown += QString::number(it.key()) + ": " + it.value().toHex(' ');
        QCOMPARE(shown.join(", "),
                 QString("17: 13 7b, 36: 4e, 38: 79, 77: 96, 113: 4d 7a, "
                         "2009: 02 0a 0e 10 12 14 16 1a 25 37, 2010: 1f 22 23 40 64 87, "
                         "2011: 01 09 0b 0d 0f 11 15 18 19 1b, 2026: 4f 78, 2027: 04, "
                         "2047: 6b 88, 2048: 24, 2049: 67, 2050: 1c 1d 6c, 2052: 08 17 65, "
                         "2054: 6a 86, 2086: 26 66, 2250: c8, 2251: c9, 2252: 03 57 58 59, "
                         "2253: cb, 2254: ca, 2259: 50 7c"));
        for (const int id : {-1, 256 + 0xC9, 2147483647, -2147483647 - 1})
            QCOMPARE(DbfTable::languageIdToMIB(id), 0);
    }

    void imagesBecomeRecordsAndImagesAgain_data()
    {
        addColumns<QByteArray, bool, QVariantList, QByteArray>(
            {"image", "deleted", "values", "written"});
        const auto row = [](const char* image, bool deleted, const QVariantList& values,
                            const char* written) {
            QTest::newRow(image) << hex(image) << deleted << values << hex(written);
        };
        const QByteArray raw = hex("010002");
        const QVariant none;
        row("2a cfe0f0e0ec 3f 010002 00010000", true, {"Парам", false, raw, 256},
            "2a cfe0f0e0ec 46 010002 00010000");
        row("00 2020202020 79 010002 ffffffff 2a", false, {"", true, raw, -1},
            "20 0000000000 54 010002 ffffffff");
        row("2a 4142202020 54 010002 010000", true, {"AB", true, raw, none},
            "2a 4142000000 54 010002 00000000");
        row("44 4142202020 54 01", false, {"AB", true, hex("01"), none},
            "20 4142000000 54 01 00000000");
        row("", false, {"", false, QByteArray(), none}, "20 0000000000 46 00000000");
    }

    void imagesBecomeRecordsAndImagesAgain()
    {
        QFETCH(QByteArray, image);
        QFETCH(QVariantList, values);
        ExactBytes bytes(image);
        const DbfRecord record = DbfTable::parseRecord(bytes.view(), 7, recordSchema());
        QVERIFY(!DbfTable::parseRecord(bytes.view(), -1, DbfSchema()).isDeleted());
        bytes.overwrite();
        QCOMPARE(record.index(), 7);
        QTEST(record.isDeleted(), "deleted");
        QCOMPARE(record.values.toList(), values);
        QCOMPARE(record.values.last().isValid(), values.last().isValid());
        QTEST(DbfTable::serializeRecord(record, DbfTableDescriptor(), recordSchema()), "written");
    }

    void fieldsOfEveryFixedSizeFillTheImage()
    {
        const QVector<QPair<DbfFieldConverter*, quint8>> kinds{
            {DbfSmallIntConverter::instance(), 2},    {DbfIntConverter::instance(), 4},
            {DbfLargeIntConverter::instance(), 8},    {DbfBinaryDoubleConverter::instance(), 8},
            {DbfBinaryFloatConverter::instance(), 4}, {DbfDateConverter::instance(), 8},
            {DbfDoubleConverter::instance(), 6},      {DbfBoolConverter::instance(), 1}};
        DbfSchema schema;
        for (const auto& [converter, length] : kinds) {
            schema.columns << DbfFieldDescriptor::numberField("F", length, 1);
            schema.columns.last().setConverter(converter);
        }
        const QByteArray image =
            hex("2a feff 03000000 0400000001000000 000000000000f83f 00002040") + "20240229  -2.5T";
        QCOMPARE(DbfTable::serializeRecord(DbfTable::parseRecord(image, 0, schema), {}, schema),
                 image);
    }

    void missingValuesAreBlankAndOthersGoUnpadded()
    {
        const auto image = [](const QVariantList& values) {
            const DbfRecord record(0, values.toVector());
            return DbfTable::serializeRecord(record, descriptorOf(3, 161, 14), recordSchema());
        };
        QCOMPARE(image({}), hex("20 2020202020 20 202020 00000000"));
        QCOMPARE(image({"AB", true}), hex("20 4142000000 54 202020 00000000"));
        QCOMPARE(image({"", 0, "abcd", 1, "x"}), hex("20 0000000000 46 61626364 01000000"));
    }

    void converterMayReadAnEmptySliceLikeAnyOther()
    {
        struct : DbfByteArrayConverter {
            QVariant toVariant(const QByteArray& bytes, const DbfSchema&,
                               const DbfFieldDescriptor&) const override
            {
                return bytes.toInt();
            }
        } number;
        DbfSchema schema;
        schema.columns.fill(DbfFieldDescriptor::stringField("A", 3), 2);
        for (DbfColumn& column : schema.columns)
            column.setConverter(&number);
        QCOMPARE(DbfTable::parseRecord(" 123", 0, schema).values, (QVector<QVariant>{123, 0}));
    }
};

QTEST_APPLESS_MAIN(TestFormat)

#include "tst_format.moc"
