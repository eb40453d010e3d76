// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "values.h"

#include <QTextCodec>
#include <QtCore/QDateTime>
#include <QtCore/QRandomGenerator>

#include <array>
#include <cmath>

using namespace dbf;
using namespace testvalues;

namespace
{

DbfFieldConverter* const text = DbfNullableStringConverter::instance();
DbfFieldConverter* const number = DbfNullableNumberConverter::instance();
DbfFieldConverter* const truth = DbfNullableBoolConverter::instance();
DbfFieldConverter* const date = DbfNullableDateConverter::instance();
DbfFieldConverter* const instant = DbfNullableDateTimeConverter::instance();
DbfFieldConverter* const money = DbfNullableCurrencyConverter::instance();

QDateTime utc(int year, int month, int day, int hour = 0, int minute = 0, int milliseconds = 0)
{
    return {QDate(year, month, day), QTime(hour, minute).addMSecs(milliseconds), Qt::UTC};
}

} // namespace

class TestNullable : public QObject
{
    Q_OBJECT

private slots:
    void bytesBecomeValues_data()
    {
        addColumns();
        addRows(text, described('C', 9),
                {"  a b    ", "  a b", "ab\t ", "ab\t", hex("6120 00 63"), "a", hex("00 41"), "",
                 hex("6162 00 6363636363 20"), "ab", "", "", hex("c0 20202020202020 a0"),
                 QString::fromUtf8("А       \u00a0")});
        addRows(number, described('N', 20),
                {"        -9007199254740993", -9007199254740993ll, "9223372036854775807", most,
                 "-9223372036854775808 ", least, "9223372036854775808", 9223372036854775808.0, "-0",
                 0ll, "\t+7 \n", 7ll, hex("20 37 00 37"), 7ll});
        addRows(
            number, described('N', 20),
            {"7.", 7.0, "1e5x", none, "1 5", none, "--1", none, "-", none, "0x10", none, "", none});
        addRows(number, described('F', 20, 2),
                {"   -0.00", 0.0, ",5", 0.5, "1.5E-3", 0.0015, "1e400", none, "-1e-400", 0.0});
        addRows(number, described('F', 20, 2),
                {"+1.5", 1.5, ".", none, "1,234.5", none, "inf", none, "1e", none,
                 "123456789012345.67", 123456789012345.67, "          - 1.50", none});
        addRows(truth, described('L', 1),
                {"tt", true, "YF", true, "f", false, "NT", false, "?", none, "", none});
        addRows(date, described('D', 8),
                {"00010101", QDate(1, 1, 1), "99991231", QDate(9999, 12, 31), "20230229", none,
                 "2024 101", none, "00000101", none, "2024010", none});
        addRows(instant, described('T', 8),
                {hex("d28a2500 952cb302"), utc(2024, 2, 29, 12, 34, 56789),
                 hex("52441a00 00000000"), utc(1, 1, 1), hex("2cfe5100 ff5b2605"),
                 utc(9999, 12, 31, 23, 59, 59999), hex("51441a00 00000000"), none,
                 hex("2dfe5100 00000000"), none, hex("d28a2500 005c2605"), none,
                 hex("d28a2500 ffffffff"), none, hex("d28a2500 952cb3"), none});
        addRows(money, described('Y', 8),
                {hex("d204000000000000"), 0.1234, hex("0080c6a47e8d0300"), 1e11,
                 hex("1581e97df4102211"), "123456789012345.6789", hex("ffffffffffffffff"), -0.0001,
                 hex("ffffffffffffff7f"), "922337203685477.5807", hex("0000000000000080"),
                 "-922337203685477.5808", hex("00000000000000"), none});
    }

    void bytesBecomeValues() { checkRow(Check::Read); }

    void valuesBecomeBytes_data()
    {
        addColumns();
        addRows(text, described('C', 6),
                {" ab", " ab   ", "abcdefg", "abcdef", 0.5f, "0.5   ", 1e300, "1e+300", 123456.78,
                 "123457", 1234567, "******"});
        addRows(text, described('C', 6),
                {-0.0, "0     ", decimal("1.50"), "1.50  ", QChar('x'), "x     ", QByteArray("by"),
                 "by    ", 0.001, "0.001 ", QVariantMap(), "      ", -infinity, "-inf  "});
        addRows(text, described('C', 23),
                {QDate(2024, 2, 9), "2024-02-09             ", utc(2024, 2, 9, 1, 2, 3004),
                 "2024-02-09T01:02:03.004", utc(2024, 2, 9), "2024-02-09T00:00:00    ",
                 QDate(10000, 1, 1), QByteArray(23, ' '), 1e15, "1e+15                  ",
                 notANumber, "nan                    "});
        addRows(text, described('C', 17), {utc(2024, 2, 9, 1, 2, 3004), "2024-02-09T01:02 "});
        addRows(number, described('N', 6, 2),
                {8.345f, "  8.35", 1234.56, "1234.6", 99999.96, "100000", 999999.4, "999999",
                 999999.5, "******", -99999.5, "******", infinity, "******", decimal("-Infinity"),
                 "******", decimal("NaN"), "      "});
        addRows(number, described('N', 6, 2),
                {QString(" "), "      ", QString("1\u0662"), "      ", QByteArray("+2e1"), " 20.00",
                 "inf", "      ", "1.2.3", "      ", "1e18446744073709551617", "******",
                 "1e-99999999999999999999", "  0.00", "0e999999999", "  0.00", QDate(2024, 1, 1),
                 "      "});
        addRows(number, described('N', 6, 2),
                {nullOf(QMetaType::Double), "      ", nullOf(QMetaType::Int), "      ",
                 nullOf(QMetaType::LongLong), "      ", QVariant::fromValue<short>(-7), " -7.00",
                 7u, "  7.00", decimal("1E+2"), "100.00",
                 QString("0").repeated(400) + '.' + QString("9").repeated(400), "  1.00"});
        addRows(number, described('N', 3, 2),
                {0.05, ".05", -0.05, "-.1", 0, ".00", 0.996, "1.0", 9.96, " 10"});
        addRows(number, described('N', 1, 4), {0.4, "0", 0.5, "1", -0.4, "0", 9.5, "*"});
        addRows(number, described('N', 20, 20), {1e-20, ".0" + QByteArray(17, '0') + '0'});
        addRows(number, described('N', 255, 253), {0.5, "0.5" + QByteArray(252, '0')});
        addRows(number, described('N', 21, 18), {7, " 7." + QByteArray(18, '0')});
        addRows(number, described('N', 20),
                {least, "-9223372036854775808", std::numeric_limits<qulonglong>::max(),
                 "18446744073709551615", 1e20, QByteArray(20, '*'), 9007199254740993.0,
                 "    9007199254740992", 2.5, QByteArray(19, ' ') + '3'});
        addRows(truth, described('L', 3),
                {0.5, "T  ", -0.0, "F  ", notANumber, "?  ", infinity, "T  ", QDate(2024, 1, 1),
                 "?  ", decimal("0.00"), "F  "});
        addRows(truth, described('L', 3),
                {" YES", "T  ", "1", "T  ", QByteArray("f"), "F  ", "2", "?  ", "", "?  "});
        const QByteArray noDate(10, ' ');
        addRows(date, described('D', 10),
                {QDate(2024, 2, 9), "20240209  ", utc(2024, 2, 9, 23, 59), "20240209  ",
                 " 20240209", "20240209  ", "2024-02-09", "20240209  ", "2023-02-29", noDate,
                 "2024-0209", noDate, QDate(10000, 1, 1), noDate, 20240209, noDate});
        addRows(date, described('D', 10),
                {"soon", noDate, "2024", noDate, "2024-02", noDate, "00000101", noDate});
        addRows(date, described('D', 7), {QDate(2024, 2, 9), "       "});
        const QByteArray noClock(8, '\0');
        const QByteArray noon = hex("d28a2500 952cb302");
        QDateTime inZone(QDate(2024, 2, 29), QTime(12, 34, 56, 789), Qt::OffsetFromUTC, 3600);
        const QByteArray midnight = hex("d28a2500 00000000");
        addRows(instant, described('T', 8),
                {inZone, noon, "2024-02-29T12:34:56.789", noon, " 20240229 12:34:56,7894+05:30",
                 noon, "2024-02-29T12:34:56.7885Z", noon, QDate(2024, 2, 29), midnight,
                 "2024-02-28T24:00", midnight});
        addRows(instant, described('T', 8),
                {"2024-02-29T24:01", noClock, "2024-02-29T12:60", noClock, "2024-02-29T1234",
                 noClock, "2024-02-29T12:34:56+x", noClock, "2024-02-29X12:34", noClock, "12:34",
                 noClock, "2024-02-29Tx", noClock, utc(10000, 1, 1), noClock,
                 "2024-02-29T12:34:56.9999 Z", hex("d28a2500 672db302")});
        addRows(instant, described('T', 9), {QDate(1, 1, 1), hex("52441a00 00000000 00")});
        addRows(instant, described('T', 7), {QDate(1, 1, 1), hex("00000000000000")});
        const QByteArray largest = hex("ffffffffffffff7f");
        const QByteArray smallest = hex("0000000000000080");
        addRows(money, described('Y', 8),
                {0.12345, hex("d304000000000000"), "-0,00005", hex("ffffffffffffffff"),
                 decimal("922337203685477.5807"), largest, "922337203685477.58075", largest,
                 notANumber, noClock, "abc", noClock});
        addRows(money, described('Y', 8),
                {"-922337203685477.5808", smallest, -1e300, smallest, -infinity, smallest, most,
                 largest});
        addRows(money, described('Y', 9), {1, hex("102700000000000000")});
        addRows(money, described('Y', 4), {1, hex("00000000")});
    }

    void valuesBecomeBytes() { checkRow(Check::Write); }

    void onlyWhatIsTakenIsKept_data()
    {
        addColumns();
        const auto rows = [](DbfFieldConverter* converter, const QVariantList& kept,
                             const QVariantList& refused) {
            for (const QVariant& value : kept)
                addRows(converter, described('Y', 0), {value, value});
            for (const QVariant& value : refused)
                addRows(converter, described('N', 0), {value, none});
            addRows(converter, described('Y', 0), {none, none, nullOf(QMetaType::Int), none});
            addRows(converter, described('Y', 0), {QString(), none, QDate(), none});
        };
        const QString digits = "123456789012345678901234567890.5";
        const QDateTime noon = utc(2024, 1, 1, 12);
        rows(text, {digits, 1.5, true, noon, decimal("1.50"), ""},
             {QVariantMap(), utc(10000, 1, 1)});
        rows(number, {digits, "1,5", 7ll, infinity, decimal("1.50")},
             {"abc", "1 2", noon, decimal("NaN")});
        rows(truth, {"yes", 0, true, decimal("0")}, {"maybe", noon, notANumber});
        rows(date, {QDate(2024, 1, 1), noon, "20240101"}, {"20240230", 1, "abc"});
        addRows(date, described('Y', 0), {" ", none});
        rows(instant, {QDate(2024, 1, 1), noon, "2024-01-01T12:00Z"}, {"noon", 1});
        rows(money, {digits, 1.5}, {"abc", noon});
    }

    void onlyWhatIsTakenIsKept() { checkRow(Check::Convert); }

    void blanksAreNoValue()
    {
        for (const int length : {0, 1, 8, 255}) {
            for (DbfFieldConverter* converter : {text, number, truth, date, instant, money}) {
                const auto field = described('?', length);
                const QByteArray blank = converter->defaultBytes(length);
                QCOMPARE(blank, converter->toByteArray(none, {}, field));
                QCOMPARE(int(blank.size()), length);
                const QVariant value = converter->toVariant(blank, {}, field);
                QCOMPARE(value, converter == text                   ? QVariant("")
                                : converter == money && length >= 8 ? QVariant(0.0)
                                                                    : none);
            }
        }
    }

    void textIsKeptAndCutBetweenCharacters()
    {
        QByteArray all(255, 'x');
        for (int byte = 1; byte < 255; ++byte)
            all[byte] = byte == 0x98 ? 'x' : char(byte); // which has no character
        const QVariant kept = text->toVariant(all, {}, described('C', 255));
        QCOMPARE(kept.toString(), QTextCodec::codecForMib(2251)->toUnicode(all));
        QCOMPARE(text->toByteArray(kept, {}, described('C', 255)), all);

        const auto written = [](const char* string, int length, int mib) {
            return text->toByteArray(QString::fromUtf8(string),
                                     DbfSchema({}, QTextCodec::codecForMib(mib)),
                                     described('C', length));
        };
        constexpr int utf8 = 106;
        constexpr int shiftJis = 17;
        constexpr int iso2022Jp = 39;
        QCOMPARE(written("яЯяЯ", 5, utf8), QByteArray("яЯ "));
        QCOMPARE(written("a😀", 4, utf8), QByteArray("a   "));
        QCOMPARE(written("a😀b", 5, utf8), QByteArray("a😀"));
        QCOMPARE(written("日本語", 5, shiftJis), hex("93fa 967b 20"));
        QCOMPARE(written("日本語", 11, iso2022Jp), hex("1b2442 467c 4b5c 1b2842 20"));
        QCOMPARE(written("a日", 8, iso2022Jp), QByteArray("a       "));
        QCOMPARE(written("😀", 1, 114), QByteArray(" ")); // GB 18030
        QCOMPARE(written("日本", 0, utf8), QByteArray());

        const DbfSchema ebcdic({}, QTextCodec::codecForName("IBM037")); // whose space is no 0x20
        QCOMPARE(text->toVariant(hex("c1 40 c2 40 40"), ebcdic, described('C', 5)),
                 QVariant("A B"));
    }

    void clocksThatLocalTimeLeavesOutAreKept()
    {
        const QByteArray zone = qgetenv("TZ");
        qputenv("TZ", "Europe/Berlin");
        const auto field = described('T', 8);
        const QDateTime leftOut(QDate(2024, 3, 31), QTime(2, 30));
        for (const QVariant& given : {QVariant(leftOut), QVariant("2024-03-31T02:30")})
            QCOMPARE(instant->toVariant(instant->toByteArray(given, {}, field), {}, field),
                     QVariant(utc(2024, 3, 31, 2, 30)));
        zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
    }

    void restructuringKeepsMeaning()
    {
        using Field = std::pair<DbfFieldDescriptor, QByteArray>;
        const QVector<QPair<Field, Field>> pairs{
            {{described('C', 8), "-12.5   "}, {described('N', 8, 2), "  -12.50"}},
            {{described('C', 8), "        "}, {described('N', 4, 1), "    "}},
            {{described('C', 10), "2024-02-29"}, {described('D', 8), "20240229"}},
            {{described('T', 8), hex("d28a2500 00000000")}, {described('D', 8), "20240229"}},
            {{described('Y', 8), hex("ffffffffffffff7f")},
             {described('C', 20), "922337203685477.5807"}},
            {{described('I', 4), hex("90eefeff")}, {described('N', 6), "-70000"}},
            {{described('L', 1), "T"}, {described('C', 2), "T "}}};
        for (const auto& [one, other] : pairs) {
            const DbfColumn first = nullableColumn(one.first);
            const DbfColumn second = nullableColumn(other.first);
            QCOMPARE(transformField(one.second, {}, first, {}, second), other.second);
            QCOMPARE(transformField(other.second, {}, second, {}, first), one.second);
        }
    }

    void fieldsGetTheirConverter()
    {
        DbfFieldConverter* const raw = DbfByteArrayConverter::instance();
        const QMap<QPair<char, int>, DbfFieldConverter*> named{
            {{'L', 1}, truth},
            {{'D', 8}, date},
            {{'T', 8}, instant},
            {{'Y', 8}, money},
            {{'I', 4}, DbfIntConverter::instance()},
            {{'B', 8}, DbfBinaryDoubleConverter::instance()}};
        for (const int version : {0x2F, 0x30, 0x32, 0x33}) {
            DbfTableDescriptor table;
            table.version = static_cast<quint8>(version);
            for (int i = 0; i < 256 * 5; ++i) {
                const auto letter = static_cast<char>(i / 5);
                const int length = std::array{0, 1, 4, 8, 255}.at(size_t(i % 5));
                const bool isBinary = letter != 'B' || version == 0x30 || version == 0x32;
                QCOMPARE(nullableColumn(described(letter, length), table).converter,
                         letter == 'C'                    ? text
                         : letter == 'N' || letter == 'F' ? number
                         : isBinary                       ? named.value({letter, length}, raw)
                                                          : raw);
            }
        }
    }

    void columnsAreResizedInPlace()
    {
        DbfSchema schema;
        schema.columns = {nullableColumn(described('N', 5, 1)), nullableColumn(described('C', 3))};
        DbfSchemaTransform transform = DbfSchemaTransform::identity(schema);
        transform.resizeColumn(0, 8, 3);
        transform.insertNewColumn(1, nullableColumn(described('D', 8)));
        transform.updateColumn(2, nullableColumn(described('N', 2)));
        for (const auto& [index, length, decimals] :
             {std::array{-1, 1, 1}, {3, 1, 1}, {0, -1, 1}, {0, 256, 1}, {0, 1, -1}, {0, 1, 256}})
            transform.resizeColumn(index, length, decimals);
        QCOMPARE(DbfTable::transformRecord("  -1.57  ", schema, transform),
                 QByteArray("   -1.500         7"));
        QCOMPARE(DbfTable::transformRecord("*        ", schema, transform),
                 '*' + QByteArray(18, ' '));
    }

    // The ways of integers and doubles are faster than that of digits.
    void numbersAreWrittenAsTheirDigitsAre()
    {
        QRandomGenerator random(11);
        for (int i = 0; i < 100000; ++i) {
            const auto field = described('N', random.bounded(22), random.bounded(10));
            const auto written = [&field](const QVariant& value) {
                return number->toByteArray(value, {}, field);
            };
            const auto integer = static_cast<qlonglong>(random.generate64()) >> random.bounded(64);
            QCOMPARE(written(integer), written(QString::number(integer)));
            QCOMPARE(written(int(integer)), written(QString::number(int(integer))));
            const double real = static_cast<double>(integer) / std::pow(10, random.bounded(18)) *
                                (random.bounded(2) == 1 ? 1 : 1.1);
            QCOMPARE(written(real),
                     written(QString::number(real, 'f', QLocale::FloatingPointShortest)));
        }
    }
};

QTEST_APPLESS_MAIN(TestNullable)

#include "tst_nullable.moc"
