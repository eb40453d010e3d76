// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "values.h"

#include <QTextCodec>
#include <QtCore/QDateTime>
#include <QtCore/QRandomGenerator>

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

/// A decimal number for comparison: whole units and how many of its digits stand behind the point.
struct Units {
    __extension__ using Integer = unsigned __int128;

    explicit Units(const QByteArray& written)
        : scale(written.contains('.') ? int(written.size() - written.indexOf('.')) - 1 : 0)
        , isNegative(written.startsWith('-'))
    {
        for (const char character : written) {
            if (character >= '0') // neither sign nor point
                units = units * 10 + Integer(character - '0');
        }
    }

    /// Returns the digits after rounding to \a decimals, half away from zero.
    QByteArray rounded(int decimals) const
    {
        Integer result = units;
        Integer divisor = 1;
        for (int excess = scale - decimals; excess != 0; excess += excess < 0 ? 1 : -1)
            (excess < 0 ? result : divisor) *= 10;
        result = (result + divisor / 2) / divisor;
        const bool isZero = result == 0;
        QByteArray digits;
        for (; result > 0 || digits.size() <= decimals; result /= 10)
            digits.prepend(static_cast<char>('0' + int(result % 10)));
        if (decimals > 0)
            digits.insert(digits.size() - decimals, '.');
        return (isNegative && !isZero ? "-" : "") + digits;
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

    Integer units = 0;
    int scale;
    bool isNegative;
};

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
                 "", "", hex("c0 20202020202020 a0"), QString::fromUtf8("А       \u00a0")});
        addRows(number, described('N', 20),
                {"        -9007199254740993", -9007199254740993ll, "9223372036854775807", most,
                 "-9223372036854775808 ", least, "9223372036854775808", 9223372036854775808.0, "-0",
                 0ll, "\t+7 \n", 7ll, hex("20 37 00 37"), 7ll});
        addRows(number, described('N', 20),
                {"1e3", 1000.0, "7.", 7.0, "1,5", 1.5, "1 5", none, "--1", none, "-", none, "0x10",
                 none, "", none, "        ", none});
        addRows(number, described('F', 20, 2),
                {"       12.50", 12.5, "   -0.00", 0.0, "12", 12.0, ",5", 0.5, "1.5E-3", 0.0015,
                 "1e400", none, "-1e-400", 0.0});
        addRows(number, described('F', 20, 2),
                {"******", none, ".", none, "1,234.5", none, "inf", none, "nan", none, "1e", none,
                 "123456789012345.67", 123456789012345.67, "          - 1.50", none});
        for (const char* letters : {"TtYy", "FfNn", "? 1"})
            for (const char letter : QByteArray(letters))
                addRows(truth, described('L', 1),
                        {QByteArray(2, letter), *letters == 'T'   ? QVariant(true)
                                                : *letters == 'F' ? QVariant(false)
                                                                  : none});
        addRows(date, described('D', 8),
                {"20240229", QDate(2024, 2, 29), "00010101", QDate(1, 1, 1), "99991231",
                 QDate(9999, 12, 31), "20230229", none, "2024 101", none, "00000101", none,
                 "2024010", none});
        addRows(instant, described('T', 8),
                {hex("d28a2500 952cb302"), utc(2024, 2, 29, 12, 34, 56789),
                 hex("52441a00 00000000"), utc(1, 1, 1), hex("2cfe5100 ff5b2605"),
                 utc(9999, 12, 31, 23, 59, 59999), hex("51441a00 00000000"), none,
                 hex("2dfe5100 00000000"), none, hex("d28a2500 005c2605"), none,
                 hex("d28a2500 ffffffff"), none, hex("d28a2500 952cb3"), none});
        addRows(money, described('Y', 8),
                {hex("d204000000000000"), 0.1234, hex("ffffffffffffffff"), -0.0001,
                 hex("ffffffffffffff7f"), "922337203685477.5807", hex("0000000000000080"),
                 "-922337203685477.5808", hex("00000000000000"), none});
    }

    void bytesBecomeValues() { checkRow(Check::Read); }

    void valuesBecomeBytes_data()
    {
        addColumns();
        addRows(text, described('C', 6),
                {" ab", " ab   ", "abcdefg", "abcdef", none, "      ", true, "T     ", 0.5f,
                 "0.5   ", 1e300, "1e+300", 123456.78, "123457", 1234567, "******"});
        addRows(text, described('C', 6),
                {-0.0, "0     ", decimal("1.50"), "1.50  ", QChar('x'), "x     ", QByteArray("by"),
                 "by    ", 0.001, "0.001 ", QVariantMap(), "      ", -infinity, "-inf  "});
        addRows(text, described('C', 23),
                {QDate(2024, 2, 9), "2024-02-09             ", utc(2024, 2, 9, 1, 2, 3004),
                 "2024-02-09T01:02:03.004", utc(2024, 2, 9), "2024-02-09T00:00:00    ",
                 QDate(10000, 1, 1), QByteArray(23, ' '), 1e15, "1e+15                  ",
                 notANumber, "nan                    "});
        addRows(text, described('C', 17), {utc(2024, 2, 9, 1, 2, 3004), "2024-02-09T01:02 "});
        addRows(text, described('C', 9), {QDate(2024, 2, 9), "20240209 "});
        addRows(number, described('N', 6, 2),
                {1.005, "  1.01", "1.005", "  1.01", decimal("1.005"), "  1.01", 1.0049999f,
                 "  1.00", 8.345f, "  8.35", -0.004, "  0.00", 1234.56, "1234.6"});
        addRows(number, described('N', 6, 2),
                {12345.6, " 12346", 99999.96, "100000", 999999.4, "999999", 999999.5, "******",
                 -99999.5, "******", infinity, "******", decimal("-Infinity"), "******"});
        addRows(number, described('N', 6, 2),
                {notANumber, "      ", decimal("NaN"), "      ", none, "      ", QString(" "),
                 "      ", "1,5 ", "  1.50", QByteArray("+2e1"), " 20.00", "inf", "      "});
        addRows(number, described('N', 6, 2),
                {"1.2.3", "      ", "1e18446744073709551617", "******", "1e-99999999999999999999",
                 "  0.00", "0e999999999", "  0.00", true, "  1.00", QVariant(QVariant::Double),
                 "      ", QVariant(QVariant::Int), "      ", QVariant(QVariant::LongLong),
                 "      "});
        addRows(number, described('N', 6, 2),
                {QDate(2024, 1, 1), "      ", QVariant::fromValue<short>(-7), " -7.00", 7u,
                 "  7.00", decimal("1E+2"), "100.00",
                 QString("0").repeated(400) + '.' + QString("9").repeated(400), "  1.00"});
        addRows(number, described('N', 3, 2),
                {0.05, ".05", -0.05, "-.1", 0, ".00", 0.996, "1.0", 9.96, " 10"});
        addRows(number, described('N', 1, 4), {0.4, "0", 0.5, "1", -0.4, "0", 9.5, "*"});
        addRows(number, described('N', 20, 20), {1e-20, ".0" + QByteArray(17, '0') + '0'});
        addRows(number, described('N', 21, 18), {7, " 7." + QByteArray(18, '0')});
        addRows(number, described('N', 20),
                {least, "-9223372036854775808", std::numeric_limits<qulonglong>::max(),
                 "18446744073709551615", 1e20, QByteArray(20, '*'), 9007199254740993.0,
                 "    9007199254740992", 2.5, QByteArray(19, ' ') + '3'});
        addRows(truth, described('L', 3),
                {true, "T  ", false, "F  ", none, "?  ", 0.5, "T  ", -0.0, "F  ", notANumber, "?  ",
                 infinity, "T  ", QDate(2024, 1, 1), "?  "});
        addRows(truth, described('L', 3),
                {decimal("0.00"), "F  ", " YES", "T  ", "no", "F  ", "1", "T  ", QByteArray("f"),
                 "F  ", "2", "?  ", "", "?  "});
        const QByteArray noDate(10, ' ');
        addRows(date, described('D', 10),
                {QDate(2024, 2, 9), "20240209  ", utc(2024, 2, 9, 23, 59), "20240209  ",
                 " 20240209", "20240209  ", "2024-02-09", "20240209  ", "2023-02-29", noDate,
                 "2024-0209", noDate, QDate(10000, 1, 1), noDate, 20240209, noDate});
        addRows(date, described('D', 7), {QDate(2024, 2, 9), "       "});
        const QByteArray noClock(8, '\0');
        const QByteArray noon = hex("d28a2500 952cb302");
        QDateTime inZone(QDate(2024, 2, 29), QTime(12, 34, 56, 789), Qt::OffsetFromUTC, 3600);
        addRows(instant, described('T', 8),
                {inZone, noon, "2024-02-29T12:34:56.789", noon, " 20240229 12:34:56,7894+05:30",
                 noon, "2024-02-29T12:34:56.7885Z", noon, QDate(2024, 2, 29),
                 hex("d28a2500 00000000"), "2024-02-28T24:00", hex("d28a2500 00000000")});
        addRows(instant, described('T', 8),
                {"2024-02-29T24:01", noClock, "2024-02-29T12:60", noClock, "2024-02-29T12:34:56+x",
                 noClock, "2024-02-29X12:34", noClock, "12:34", noClock, none, noClock, 45000.5,
                 noClock, utc(10000, 1, 1), noClock});
        addRows(instant, described('T', 8),
                {"2024-02-29T12:34:56.9999 Z", hex("d28a2500 672db302")});
        addRows(instant, described('T', 9), {QDate(1, 1, 1), hex("52441a00 00000000 00")});
        addRows(instant, described('T', 7), {QDate(1, 1, 1), hex("00000000000000")});
        const QByteArray largest = hex("ffffffffffffff7f");
        const QByteArray smallest = hex("0000000000000080");
        addRows(money, described('Y', 8),
                {0.12345, hex("d304000000000000"), "-0,00005", hex("ffffffffffffffff"),
                 decimal("922337203685477.5807"), largest, "922337203685477.58075", largest,
                 "-922337203685477.5808", smallest, -1e300, smallest, -infinity, smallest});
        addRows(
            money, described('Y', 8),
            {most, largest, true, hex("1027000000000000"), notANumber, noClock, "abc", noClock});
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
            addRows(converter, described('Y', 0), {none, none, QVariant(QVariant::Int), none});
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

    void textIsCutBetweenCharacters()
    {
        const auto written = [](const char* string, int length, int mib) {
            return text->toByteArray(QString::fromUtf8(string),
                                     DbfSchema({}, QTextCodec::codecForMib(mib)),
                                     described('C', length));
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
        const auto check = [](const DbfFieldDescriptor& from, const DbfFieldDescriptor& to,
                              const QByteArray& before, const QByteArray& after,
                              bool isBack = true) {
            const DbfColumn source = nullableColumn(from);
            const DbfColumn target = nullableColumn(to);
            QCOMPARE(transformField(before, {}, source, {}, target), after);
            if (isBack)
                QCOMPARE(transformField(after, {}, target, {}, source), before);
        };
        const auto text8 = described('C', 8);
        const auto text20 = described('C', 20);
        const auto day = described('D', 8);
        const auto clock = described('T', 8);
        const auto amount = described('Y', 8);
        const auto number4 = described('N', 4, 1);
        const auto number20 = described('N', 20, 4);
        const auto integer = described('I', 4);
        check(text8, described('N', 8, 2), "-12.5   ", "  -12.50");
        check(text8, number4, "1,25    ", " 1.3", false);
        check(described('N', 4), described('N', 6, 2), "  42", " 42.00");
        check(number4, text8, "    ", "        ");
        check(described('C', 10), day, "2024-02-29", "20240229");
        check(day, clock, "20240229", hex("d28a2500 00000000"));
        check(clock, day, hex("d28a2500 952cb302"), "20240229", false);
        check(clock, described('C', 23), hex("d28a2500 952cb302"), "2024-02-29T12:34:56.789");
        check(number20, amount, " 922337203685.0001", hex("5141e3a59bc42000"), false);
        check(amount, number20, hex("ffffffffffffff7f"), "922337203685477.5807", false);
        check(amount, text20, hex("ffffffffffffff7f"), "922337203685477.5807");
        check(described('N', 6), integer, "-70000", hex("90eefeff"));
        check(described('C', 6), integer, "-70000", hex("90eefeff"));
        check(described('L', 1), described('C', 2), "T", "T ");
        check(described('C', 2), described('L', 1), "no", "F", false);
        check(described('L', 1), described('C', 1), "?", " ");
    }

    void fieldsGetTheirConverter()
    {
        DbfFieldConverter* const raw = DbfByteArrayConverter::instance();
        const auto chosen = [raw](char letter, int length, bool hasBinary) -> DbfFieldConverter* {
            const QMap<QPair<char, int>, DbfFieldConverter*> named{
                {{'L', 1}, truth},
                {{'D', 8}, date},
                {{'T', 8}, instant},
                {{'Y', 8}, money},
                {{'I', 4}, DbfIntConverter::instance()},
                {{'B', 8}, hasBinary ? DbfBinaryDoubleConverter::instance() : raw}};
            return letter == 'C'                    ? text
                   : letter == 'N' || letter == 'F' ? number
                                                    : named.value({letter, length}, raw);
        };
        for (const int version : {0x03, 0x2F, 0x30, 0x31, 0x32}) {
            DbfTableDescriptor table;
            table.version = static_cast<quint8>(version);
            for (int letter = 0; letter < 256; ++letter) {
                for (const int length : {0, 1, 4, 8, 255}) {
                    const auto field = described(static_cast<char>(letter), length);
                    DbfFieldConverter* const expected = chosen(static_cast<char>(letter), length,
                                                               version >= 0x30 && version <= 0x32);
                    QCOMPARE(nullableConverter(field, table), expected);
                    QCOMPARE(nullableColumn(field, table).converter, expected);
                }
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

    void writtenValuesAreReadAgain()
    {
        QRandomGenerator random(7);
        DbfSchema schema({}, QTextCodec::codecForMib(2251));
        for (const auto& field :
             {described('N', 20), described('N', 19, 2), described('F', 24, 9), described('D', 8),
              described('T', 8), described('L', 1), described('C', 12), described('Y', 8)})
            schema.columns << nullableColumn(field);
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
        for (int i = 0; i < 50000; ++i) {
            const auto field = described('N', random.bounded(22), random.bounded(10));
            const auto check = [&field](const QVariant& value, const QByteArray& digits) {
                const Units units(digits);
                QCOMPARE(number->toByteArray(value, {}, field),
                         units.inField(field.length, field.decimals));
            };
            QByteArray exact = QByteArray::number(random.generate64() >> random.bounded(64));
            const int scale = random.bounded(18);
            exact = exact.rightJustified(scale + 1, '0')
                        .insert(qMax(int(exact.size()), scale + 1) - scale, '.');
            exact.prepend(random.bounded(2) == 1 ? "-" : "");
            check(QString(exact), exact);
            check(decimal(exact), exact);
            const double real = exact.toDouble() * (random.bounded(2) == 1 ? 1 : 1.1);
            const QByteArray shortest =
                QByteArray::number(real, 'f', QLocale::FloatingPointShortest);
            if (shortest.size() <= 27) // or the digits are too many to compare with
                check(real, shortest);
        }
    }

    void anyBytesAndValuesAreSafe()
    {
        QRandomGenerator random(13);
        const QByteArray characters(" 0123456789.,-+eE*TF?\0\xff", 23);
        for (int i = 0; i < 30000; ++i) {
            QByteArray bytes(random.bounded(24), '\0');
            for (char& byte : bytes)
                byte = characters.at(random.bounded(characters.size()));
            const auto descriptor = described('?', random.bounded(256), random.bounded(256));
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
