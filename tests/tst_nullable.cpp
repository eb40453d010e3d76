// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"

#include <dbf/dbf.h>

#include <QTextCodec>
#include <QtCore/QDateTime>
#include <QtCore/QRandomGenerator>
#include <QtCore/QTimeZone>
#include <QtTest/QtTest>

#include <cmath>
#include <functional>
#include <limits>

using namespace dbf;

Q_DECLARE_METATYPE(dbf::DbfFieldConverter*)
Q_DECLARE_METATYPE(dbf::DbfFieldDescriptor)

namespace
{

DbfFieldConverter* const text = DbfNullableStringConverter::instance();
DbfFieldConverter* const number = DbfNullableNumberConverter::instance();
DbfFieldConverter* const truth = DbfNullableBoolConverter::instance();
DbfFieldConverter* const date = DbfNullableDateConverter::instance();
DbfFieldConverter* const instant = DbfNullableDateTimeConverter::instance();
DbfFieldConverter* const money = DbfNullableCurrencyConverter::instance();

const QVariant none;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr qlonglong least = std::numeric_limits<qlonglong>::min();
constexpr qlonglong most = std::numeric_limits<qlonglong>::max();

QVariant decimal(const char* digits)
{
    return QVariant::fromValue(QDecNumber(digits));
}

/// Returns the null variant that \a converter makes of what is none of its values.
QVariant nullOf(const DbfFieldConverter* converter)
{
    QVariant value = "x";
    converter->convertVariant(value);
    return value;
}

QDateTime utc(int year, int month, int day, int hour = 0, int minute = 0, int milliseconds = 0)
{
    return {QDate(year, month, day), QTime(hour, minute).addMSecs(milliseconds), Qt::UTC};
}

DbfFieldDescriptor field(char type, int length, int decimals = 0)
{
    return {"FIELD", DbfFieldType(type), static_cast<unsigned char>(length),
            static_cast<unsigned char>(decimals)};
}

QByteArray shown(const QVariant& value)
{
    const QByteArray start = QByteArray(value.isValid() ? value.typeName() : "none") + ' ';
    return value.canConvert<QDecNumber>() ? start + value.value<QDecNumber>().toString().toUtf8()
                                          : start + value.toString().toUtf8();
}

void compareVariants(const QVariant& actual, const QVariant& expected)
{
    QCOMPARE(shown(actual), shown(expected));
    QCOMPARE(actual, expected);
}

/// Adds a row for each pair of what is given and what comes of it.
void addRows(DbfFieldConverter* converter, const DbfFieldDescriptor& field,
             const QVariantList& pairs)
{
    for (int i = 0; i < pairs.size(); i += 2)
        QTest::addRow("%s %d,%d %s #%d", typeid(*converter).name(), field.length, field.decimals,
                      shown(pairs[i]).constData(), i)
            << converter << field << pairs[i] << pairs[i + 1];
}

void addColumns()
{
    QTest::addColumn<DbfFieldConverter*>("converter");
    QTest::addColumn<DbfFieldDescriptor>("field");
    QTest::addColumn<QVariant>("given");
    QTest::addColumn<QVariant>("expected");
}

/// A decimal number for comparison: whole units and where the point stands among their digits.
struct Units {
    __extension__ using Integer = unsigned __int128;
    Integer units = 0;
    int scale = 0;
    bool negative = false;

    /// Returns the digits after rounding to \a decimals, half away from zero.
    QByteArray rounded(int decimals) const
    {
        Integer result = units;
        int excess = scale - decimals;
        for (; excess < 0; ++excess)
            result *= 10;
        Integer divisor = 1;
        for (; excess > 0; --excess)
            divisor *= 10;
        result = (result + divisor / 2) / divisor;
        QByteArray digits;
        for (; result > 0 || digits.size() <= decimals; result /= 10)
            digits.prepend(static_cast<char>('0' + int(result % 10)));
        if (decimals > 0)
            digits.insert(digits.size() - decimals, '.');
        const bool isZero = digits.count('0') + digits.count('.') == digits.size();
        return (negative && !isZero ? "-" : "") + digits;
    }

    QByteArray inField(int width, int decimals) const
    {
        for (; decimals >= 0; --decimals) {
            const QByteArray full = rounded(decimals);
            const int zero = full.startsWith('-') ? 1 : 0;
            const QByteArray shorter =
                full.mid(zero, 2) == "0." ? full.left(zero) + full.mid(zero + 1) : full;
            for (const QByteArray& digits : {full, shorter}) {
                if (digits.size() <= width)
                    return digits.rightJustified(width, ' ');
            }
        }
        return QByteArray(width, '*');
    }
};

} // namespace

class TestNullable : public QObject
{
    Q_OBJECT

private slots:
    void bytesBecomeValues_data()
    {
        addColumns();
        addRows(text, field('C', 9),
                {"  a b    ", "  a b", "ab\t ", "ab\t", hex("6162 00 63"), "ab", hex("6120 00 63"),
                 "a", "         ", "", hex("00 41"), "", "", ""});
        addRows(text, field('C', 9),
                {hex("c0 20202020202020 a0"), QString::fromUtf8("А       \u00a0")});
        addRows(number, field('N', 20),
                {"        -9007199254740993", -9007199254740993ll, "9223372036854775807", most,
                 "-9223372036854775808 ", least, "9223372036854775808", 9223372036854775808.0, "-0",
                 0ll, "\t+7 \n", 7ll, hex("20 37 00 37"), 7ll});
        addRows(number, field('N', 20),
                {"1e3", 1000.0, "7.", 7.0, "1,5", 1.5, "1 5", none, "--1", none, "-", none, "0x10",
                 none});
        addRows(number, field('N', 20), {"", none, "        ", none});
        addRows(number, field('F', 20, 2),
                {"       12.50", 12.5, "   -0.00", 0.0, "12", 12.0, ".5", 0.5, ",5", 0.5, "1.5E-3",
                 0.0015, "1e400", none});
        addRows(number, field('F', 20, 2),
                {"-1e-400", 0.0, "******", none, ".", none, "1,234.5", none, "  .  ", none, "inf",
                 none, "nan", none});
        addRows(number, field('F', 20, 2),
                {"1e", none, "e5", none, "123456789012345.67", 123456789012345.67,
                 "          - 1.50", none});
        addRows(truth, field('L', 1),
                {"T", true, "t", true, "Y", true, "y", true, "F", false, "f", false, "N", false});
        addRows(
            truth, field('L', 1),
            {"n", false, "?", none, " ", none, hex("00"), none, "1", none, "", none, "Tx", true});
        addRows(date, field('D', 8),
                {"20240229", QDate(2024, 2, 29), "00010101", QDate(1, 1, 1), "99991231",
                 QDate(9999, 12, 31), "20230229", none, "2024 101", none, "00000101", none,
                 "        ", none});
        addRows(date, field('D', 8), {"2024010", none, hex("00 00 00 00 00 00 00 00"), none});
        addRows(instant, field('T', 8),
                {hex("d28a2500 952cb302"), utc(2024, 2, 29, 12, 34, 56789),
                 hex("52441a00 00000000"), utc(1, 1, 1), hex("2cfe5100 ff5b2605"),
                 utc(9999, 12, 31, 23, 59, 59999), hex("51441a00 00000000"), none,
                 hex("2dfe5100 00000000"), none, hex("d28a2500 005c2605"), none,
                 hex("d28a2500 ffffffff"), none});
        addRows(instant, field('T', 8),
                {hex("0000000000000000"), none, "        ", none, hex("d28a2500 952cb3"), none});
        addRows(money, field('Y', 8),
                {hex("d204000000000000"), 0.1234, hex("ffffffffffffffff"), -0.0001,
                 hex("0000000000000000"), 0.0, hex("ffffffffffffff7f"), "922337203685477.5807",
                 hex("0000000000000080"), "-922337203685477.5808", hex("00000000000000"), none});
    }

    void bytesBecomeValues()
    {
        QFETCH(DbfFieldConverter*, converter);
        QFETCH(DbfFieldDescriptor, field);
        QFETCH(QVariant, given);
        QFETCH(QVariant, expected);
        ExactBytes slice(given.toByteArray());
        const QVariant result = converter->toVariant(slice.view(), DbfSchema(), field);
        slice.overwrite();
        compareVariants(result, expected);
    }

    void valuesBecomeBytes_data()
    {
        addColumns();
        addRows(text, field('C', 6),
                {" ab", " ab   ", "abcdefg", "abcdef", QString(), "      ", none, "      ", true,
                 "T     ", false, "F     ", 0.5f, "0.5   "});
        addRows(text, field('C', 6),
                {100000.0, "100000", 1e300, "1e+300", 123456.78, "123457", 1234567, "******", -0.0,
                 "0     ", decimal("1.50"), "1.50  ", QChar('x'), "x     "});
        addRows(text, field('C', 6), {QByteArray("by"), "by    ", QVariantMap(), "      "});
        addRows(text, field('C', 23),
                {QDate(2024, 2, 9), "2024-02-09             ", utc(2024, 2, 9, 1, 2, 3004),
                 "2024-02-09T01:02:03.004", utc(2024, 2, 9), "2024-02-09T00:00:00    ",
                 QDate(10000, 1, 1), QByteArray(23, ' '), 1e15, "1e+15                  ",
                 notANumber, "nan                    "});
        addRows(text, field('C', 17), {utc(2024, 2, 9, 1, 2, 3004), "2024-02-09T01:02 "});
        addRows(text, field('C', 9), {QDate(2024, 2, 9), "20240209 "});
        addRows(number, field('N', 6, 2),
                {1.005, "  1.01", "1.005", "  1.01", decimal("1.005"), "  1.01", -1.005, " -1.01",
                 1.0049999f, "  1.00", 8.345f, "  8.35", -0.004, "  0.00"});
        addRows(number, field('N', 6, 2),
                {"-0", "  0.00", 1234.56, "1234.6", 12345.6, " 12346", 99999.96, "100000", 999999.4,
                 "999999", 999999.5, "******", -99999.5, "******"});
        addRows(number, field('N', 6, 2),
                {infinity, "******", decimal("-Infinity"), "******", notANumber, "      ",
                 decimal("NaN"), "      ", none, "      ", QString(" "), "      ", "1,5 ",
                 "  1.50"});
        addRows(number, field('N', 6, 2),
                {QByteArray("+2e1"), " 20.00", "inf", "      ", "1.2.3", "      ",
                 "1e99999999999999999999", "******", "1e-99999999999999999999", "  0.00",
                 "0e999999999", "  0.00", true, "  1.00"});
        addRows(number, field('N', 6, 2),
                {false, "  0.00", nullOf(DbfDoubleConverter::instance()), "      ",
                 QDate(2024, 1, 1), "      ", QVariant::fromValue<short>(-7), " -7.00", 7u,
                 "  7.00", decimal("1E+2"), "100.00",
                 QString("0").repeated(400) + '.' + QString("9").repeated(400), "  1.00"});
        addRows(number, field('N', 3, 2),
                {0.05, ".05", -0.05, "-.1", 0, ".00", 0.996, "1.0", 9.96, " 10"});
        addRows(number, field('N', 1, 4), {0.4, "0", 0.5, "1", -0.4, "0", 9.5, "*"});
        addRows(number, field('N', 20, 20), {1e-20, ".0" + QByteArray(17, '0') + '0'});
        addRows(number, field('N', 20),
                {least, "-9223372036854775808", std::numeric_limits<qulonglong>::max(),
                 "18446744073709551615", 1e19, "10000000000000000000", 1e20, QByteArray(20, '*'),
                 9007199254740993.0, "    9007199254740992", 2.5, QByteArray(19, ' ') + '3'});
        addRows(truth, field('L', 3),
                {true, "T  ", false, "F  ", none, "?  ", 0.5, "T  ", -0.0, "F  ", notANumber, "?  ",
                 infinity, "T  "});
        addRows(truth, field('L', 3),
                {decimal("0.00"), "F  ", " YES", "T  ", "no", "F  ", "1", "T  ", QByteArray("f"),
                 "F  ", "2", "?  ", "", "?  "});
        addRows(truth, field('L', 3), {QDate(2024, 1, 1), "?  "});
        addRows(date, field('D', 10),
                {QDate(2024, 2, 9), "20240209  ", utc(2024, 2, 9, 23, 59), "20240209  ",
                 " 20240209", "20240209  ", "2024-02-09", "20240209  ", "2023-02-29",
                 QByteArray(10, ' '), "2024-0209", QByteArray(10, ' '), QDate(10000, 1, 1),
                 QByteArray(10, ' ')});
        addRows(date, field('D', 10),
                {QDate(-1, 1, 1), QByteArray(10, ' '), 20240209, QByteArray(10, ' '), none,
                 QByteArray(10, ' ')});
        addRows(date, field('D', 7), {QDate(2024, 2, 9), "       "});
        const QByteArray noClock(8, '\0');
        const QByteArray noon = hex("d28a2500 952cb302");
        QDateTime inZone(QDate(2024, 2, 29), QTime(12, 34, 56, 789), Qt::OffsetFromUTC, 3600);
        addRows(instant, field('T', 8),
                {utc(2024, 2, 29, 12, 34, 56789), noon, inZone, noon, "2024-02-29T12:34:56.789",
                 noon, " 20240229 12:34:56,7894+05:30", noon, "2024-02-29T12:34:56.7885Z", noon,
                 QDate(2024, 2, 29), hex("d28a2500 00000000"), "2024-02-28T24:00",
                 hex("d28a2500 00000000")});
        addRows(instant, field('T', 8),
                {"2024-02-29T24:01", noClock, "2024-02-29T12:60", noClock, "2024-02-29T12:34:56+x",
                 noClock, "2024-02-29X12:34", noClock, "12:34", noClock, none, noClock, 45000.5,
                 noClock});
        addRows(instant, field('T', 8), {utc(10000, 1, 1), noClock});
        addRows(instant, field('T', 9), {QDate(1, 1, 1), hex("52441a00 00000000 00")});
        addRows(instant, field('T', 7), {QDate(1, 1, 1), hex("00000000000000")});
        const QByteArray largest = hex("ffffffffffffff7f");
        const QByteArray smallest = hex("0000000000000080");
        addRows(money, field('Y', 8),
                {0.12345, hex("d304000000000000"), "-0,00005", hex("ffffffffffffffff"), "-0.00004",
                 noClock, decimal("922337203685477.5807"), largest, "922337203685477.58075",
                 largest, "-922337203685477.5808", smallest, -1e300, smallest});
        addRows(money, field('Y', 8),
                {infinity, largest, most, largest, true, hex("1027000000000000"), notANumber,
                 noClock, "abc", noClock, none, noClock});
        addRows(money, field('Y', 9), {1, hex("102700000000000000")});
        addRows(money, field('Y', 4), {1, hex("00000000")});
    }

    void valuesBecomeBytes()
    {
        QFETCH(DbfFieldConverter*, converter);
        QFETCH(DbfFieldDescriptor, field);
        QFETCH(QVariant, given);
        QFETCH(QVariant, expected);
        QCOMPARE(converter->toByteArray(given, DbfSchema(), field), expected.toByteArray());
    }

    void onlyWhatIsTakenIsKept_data()
    {
        QTest::addColumn<DbfFieldConverter*>("converter");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("isKept");
        QTest::addColumn<bool>("isDone");

        const auto rows = [](DbfFieldConverter* converter, const QVariantList& kept,
                             const QVariantList& refused) {
            const auto add = [converter](const QVariantList& values, bool isKept, bool isDone) {
                for (const QVariant& value : values)
                    QTest::addRow("%s %s", typeid(*converter).name(), shown(value).constData())
                        << converter << value << isKept << isDone;
            };
            add(kept, true, true);
            add(refused, false, false);
            add({none, nullOf(DbfIntConverter::instance()), QString(), QDate()}, false, true);
        };
        const QString digits = "123456789012345678901234567890.5";
        const QDateTime noon = utc(2024, 1, 1, 12);
        rows(text, {digits, 1.5, true, noon, decimal("1.50"), ""},
             {QVariantMap(), utc(10000, 1, 1)});
        rows(number, {digits, "1,5", 7ll, 1.5f, true, infinity, decimal("1.50")},
             {"abc", "1 2", noon, decimal("NaN")});
        rows(truth, {"yes", 0, true, decimal("0")}, {"maybe", noon, notANumber});
        rows(date, {QDate(2024, 1, 1), noon, "20240101"}, {"20240230", 1, "abc"});
        rows(instant, {QDate(2024, 1, 1), noon, "2024-01-01T12:00Z"}, {"noon", 1});
        rows(money, {digits, 1.5, decimal("0.00005")}, {"abc", noon});
    }

    void onlyWhatIsTakenIsKept()
    {
        QFETCH(DbfFieldConverter*, converter);
        QFETCH(QVariant, value);
        QFETCH(bool, isKept);
        const QVariant before = value;
        QTEST(converter->convertVariant(value), "isDone");
        compareVariants(value, isKept ? before : none);
    }

    void blanksAreNoValue()
    {
        for (const int length : {0, 1, 8, 255}) {
            for (DbfFieldConverter* converter : {text, number, truth, date, instant, money}) {
                const auto descriptor = field('?', length);
                const QByteArray blank = converter->defaultBytes(length);
                QCOMPARE(blank, converter->toByteArray(none, DbfSchema(), descriptor));
                QCOMPARE(blank.size(), length);
                const QVariant value = converter->toVariant(blank, DbfSchema(), descriptor);
                if (converter == text)
                    QVERIFY(value.toString().isEmpty() && !value.toString().isNull());
                else
                    QVERIFY(!value.isValid() || (converter == money && value == 0.0));
            }
        }
    }

    void textIsCutBetweenCharacters()
    {
        const auto written = [](const char* string, int length, int mib) {
            return text->toByteArray(QString::fromUtf8(string),
                                     DbfSchema({}, QTextCodec::codecForMib(mib)),
                                     field('C', length));
        };
        constexpr int utf8 = 106;
        constexpr int shiftJis = 17;
        constexpr int iso2022Jp = 39;
        QCOMPARE(written("яЯ", 3, utf8), QByteArray("я "));
        QCOMPARE(written("a😀", 4, utf8), QByteArray("a   "));
        QCOMPARE(written("a😀b", 5, utf8), QByteArray("a😀"));
        QCOMPARE(written("日本語", 5, shiftJis), hex("93fa 967b 20"));
        QCOMPARE(written("日本語", 11, iso2022Jp), hex("1b2442 467c 4b5c 1b2842 20"));
        QCOMPARE(written("a日", 8, iso2022Jp), QByteArray("a       "));
        QCOMPARE(written("я", 1, utf8), QByteArray(" "));
        QCOMPARE(written("日本", 0, utf8), QByteArray());
    }

    void clocksThatLocalTimeLeavesOutAreKept()
    {
        const QByteArray zone = qgetenv("TZ");
        qputenv("TZ", "Europe/Berlin");
        const QDateTime leftOut(QDate(2024, 3, 31), QTime(2, 30));
        const auto descriptor = field('T', 8);
        const QVariant read =
            instant->toVariant(instant->toByteArray(leftOut, {}, descriptor), {}, descriptor);
        const QByteArray text = instant->toByteArray("2024-03-31T02:30", {}, descriptor);
        zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
        QCOMPARE(read.toDateTime(), utc(2024, 3, 31, 2, 30));
        QCOMPARE(instant->toVariant(text, {}, descriptor), read);
    }

    void restructuringKeepsMeaning_data()
    {
        QTest::addColumn<DbfFieldDescriptor>("from");
        QTest::addColumn<DbfFieldDescriptor>("to");
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        const auto row = [](const DbfFieldDescriptor& from, const DbfFieldDescriptor& to,
                            const QByteArray& before, const QByteArray& after, bool isBack = true) {
            QTest::addRow("%c to %c %s", char(from.type), char(to.type), before.toHex().constData())
                << from << to << before << after;
            if (isBack)
                QTest::addRow("%c to %c %s", char(to.type), char(from.type),
                              after.toHex().constData())
                    << to << from << after << before;
        };
        row(field('C', 8), field('N', 8, 2), "-12.5   ", "  -12.50");
        row(field('C', 6), field('N', 4, 1), "1,25  ", " 1.3", false);
        row(field('N', 4), field('N', 6, 2), "  42", " 42.00");
        row(field('N', 4), field('N', 6, 2), "    ", "      ");
        row(field('N', 4, 1), field('C', 4), "    ", "    ");
        row(field('C', 10), field('D', 8), "2024-02-29", "20240229");
        row(field('C', 8), field('D', 8), "20240229", "20240229");
        row(field('D', 8), field('T', 8), "20240229", hex("d28a2500 00000000"));
        row(field('T', 8), field('D', 8), hex("d28a2500 952cb302"), "20240229", false);
        row(field('T', 8), field('C', 23), hex("d28a2500 952cb302"), "2024-02-29T12:34:56.789");
        row(field('N', 20, 4), field('Y', 8), " 922337203685.0001", hex("5141e3a59bc42000"), false);
        row(field('Y', 8), field('N', 20, 4), hex("ffffffffffffff7f"), "922337203685477.5807",
            false);
        row(field('Y', 8), field('C', 20), hex("ffffffffffffff7f"), "922337203685477.5807");
        row(field('N', 6), field('I', 4), "-70000", hex("90eefeff"));
        row(field('C', 6), field('I', 4), "-70000", hex("90eefeff"));
        row(field('L', 1), field('C', 2), "T", "T ");
        row(field('C', 2), field('L', 1), "no", "F", false);
        row(field('L', 1), field('C', 1), "?", " ");
    }

    void restructuringKeepsMeaning()
    {
        QFETCH(DbfFieldDescriptor, from);
        QFETCH(DbfFieldDescriptor, to);
        QFETCH(QByteArray, before);
        const DbfSchema schema;
        QTEST(transformField(before, schema, nullableColumn(from), schema, nullableColumn(to)),
              "after");
    }

    void fieldsGetTheirConverter()
    {
        const std::function<DbfFieldConverter*(const DbfFieldDescriptor&,
                                               const DbfTableDescriptor&)>
            choice = nullableConverter;
        DbfFieldConverter* const raw = DbfByteArrayConverter::instance();
        DbfFieldConverter* const integer = DbfIntConverter::instance();
        DbfFieldConverter* const binary = DbfBinaryDoubleConverter::instance();
        for (const int version : {0x03, 0x2F, 0x30, 0x31, 0x32}) {
            DbfTableDescriptor table;
            table.version = static_cast<quint8>(version);
            const bool hasBinary = version == 0x30 || version == 0x31;
            for (int letter = 0; letter < 256; ++letter) {
                for (const int length : {0, 1, 4, 8, 255}) {
                    const QMap<char, DbfFieldConverter*> named{
                        {'C', text},
                        {'N', number},
                        {'F', number},
                        {'L', length == 1 ? truth : raw},
                        {'D', length == 8 ? date : raw},
                        {'T', length == 8 ? instant : raw},
                        {'Y', length == 8 ? money : raw},
                        {'I', length == 4 ? integer : raw},
                        {'B', length == 8 && hasBinary ? binary : raw}};
                    const auto descriptor = field(static_cast<char>(letter), length);
                    DbfFieldConverter* const expected = named.value(static_cast<char>(letter), raw);
                    QCOMPARE(choice(descriptor, table), expected);
                    QCOMPARE(nullableColumn(descriptor, table).converter, expected);
                }
            }
        }
    }

    void columnsAreResizedInPlace()
    {
        DbfSchema schema;
        schema.columns = {nullableColumn(field('N', 5, 1)), nullableColumn(field('C', 3))};
        DbfSchemaTransform transform = DbfSchemaTransform::identity(schema);
        transform.resizeColumn(0, 8, 3);
        transform.insertNewColumn(1, nullableColumn(field('D', 8)));
        transform.updateColumn(2, nullableColumn(field('N', 2)));
        for (const auto& [index, length, decimals] :
             {std::array{-1, 1, 1}, {3, 1, 1}, {0, -1, 1}, {0, 256, 1}, {0, 1, -1}, {0, 1, 256}})
            transform.resizeColumn(index, length, decimals);
        QCOMPARE(DbfTable::transformRecord("  -1.57  ", schema, transform),
                 QByteArray("   -1.500         7"));
        QCOMPARE(DbfTable::transformRecord("*        ", schema, transform),
                 '*' + QByteArray(18, ' '));
    }

    void writtenValuesAreReadAgain()
    {
        QRandomGenerator random(7);
        DbfSchema schema({}, QTextCodec::codecForMib(2251));
        schema.columns = {nullableColumn(field('N', 20)),    nullableColumn(field('N', 19, 2)),
                          nullableColumn(field('F', 24, 9)), nullableColumn(field('D', 8)),
                          nullableColumn(field('T', 8)),     nullableColumn(field('L', 1)),
                          nullableColumn(field('C', 12)),    nullableColumn(field('Y', 8))};
        for (int i = 0; i < 20000; ++i) {
            const auto bits = static_cast<qint64>(random.generate64());
            const qint64 digits = bits % 1000000000000000;
            const QDate day = QDate(1, 1, 1).addDays(random.bounded(3652059));
            QByteArray letters(random.bounded(13), '\0');
            for (char& letter : letters)
                letter = static_cast<char>(1 + random.bounded(255));
            while (letters.endsWith(' '))
                letters.chop(1);
            letters.replace('\x98', 'x'); // has no character
            const DbfRecord record(
                0,
                {qlonglong(bits >> random.bounded(64)), static_cast<double>(digits) / 100,
                 static_cast<double>(digits) / 1e9, day,
                 QDateTime(day, QTime::fromMSecsSinceStartOfDay(random.bounded(86400000)), Qt::UTC),
                 random.bounded(2) == 1, schema.codec->toUnicode(letters),
                 static_cast<double>(digits) / 10000});
            const QByteArray image = DbfTable::serializeRecord(record, {}, schema);
            QCOMPARE(image.size(), 101);
            QCOMPARE(DbfTable::parseRecord(image, 0, schema).values, record.values);
        }
    }

    void numbersAreRoundedInDecimal()
    {
        QRandomGenerator random(11);
        const auto check = [](const QVariant& value, const Units& units, int width, int decimals) {
            const QByteArray bytes = number->toByteArray(value, {}, field('N', width, decimals));
            if (bytes != units.inField(width, decimals))
                qWarning() << value << width << decimals;
            QCOMPARE(bytes, units.inField(width, decimals));
        };
        for (int i = 0; i < 50000; ++i) {
            const int width = random.bounded(22);
            const int decimals = random.bounded(10);
            Units units;
            units.units = random.generate64() >> random.bounded(64);
            units.scale = random.bounded(18);
            units.negative = random.bounded(2) == 1;
            const QByteArray exact = units.rounded(units.scale);
            check(QString(exact), units, width, decimals);
            check(decimal(exact), units, width, decimals);

            const double real = exact.toDouble() * (random.bounded(2) == 1 ? 1 : 1.1);
            const QByteArray shortest =
                QByteArray::number(real, 'f', QLocale::FloatingPointShortest);
            const auto point = int((shortest + '.').indexOf('.'));
            const QByteArray digits = QByteArray(shortest).replace('.', "").replace('-', "");
            if (digits.size() > 26)
                continue;
            units.units = 0;
            for (const char digit : digits)
                units.units = units.units * 10 + Units::Integer(digit - '0');
            units.scale = std::max(int(shortest.size()) - point - 1, 0);
            check(real, units, width, decimals);
        }
    }

    void anyBytesAndValuesAreSafe()
    {
        QRandomGenerator random(13);
        const QByteArray characters(" 0123456789.,-+eE*TF?\0\xff", 25);
        for (int i = 0; i < 30000; ++i) {
            QByteArray bytes(random.bounded(24), '\0');
            for (char& byte : bytes)
                byte = characters.at(random.bounded(characters.size()));
            const auto descriptor = field('?', random.bounded(256), random.bounded(256));
            DbfSchema schema({}, QTextCodec::codecForMib(random.bounded(2) == 1 ? 17 : 2251));
            for (DbfFieldConverter* converter : {text, number, truth, date, instant, money}) {
                const ExactBytes slice(bytes);
                const QVariant value = converter->toVariant(slice.view(), schema, descriptor);
                for (const QVariant& given : {value, QVariant(bytes), QVariant(QString(bytes))})
                    QCOMPARE(converter->toByteArray(given, schema, descriptor).size(),
                             int(descriptor.length));
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestNullable)

#include "tst_nullable.moc"
