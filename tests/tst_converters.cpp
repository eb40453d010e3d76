// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "values.h"

#include <QTextCodec>
#include <QtCore/QDate>

using namespace dbf;
using namespace testvalues;

namespace
{

DbfFieldConverter* const text = DbfStringConverter::instance();
DbfFieldConverter* const truth = DbfBoolConverter::instance();
DbfFieldConverter* const raw = DbfByteArrayConverter::instance();
DbfFieldConverter* const number = DbfDoubleConverter::instance();
DbfFieldConverter* const date = DbfDateConverter::instance();
DbfFieldConverter* const int16 = DbfSmallIntConverter::instance();
DbfFieldConverter* const int32 = DbfIntConverter::instance();
DbfFieldConverter* const int64 = DbfLargeIntConverter::instance();
DbfFieldConverter* const binary64 = DbfBinaryDoubleConverter::instance();
DbfFieldConverter* const binary32 = DbfBinaryFloatConverter::instance();

/// Saves a value when the program ends, after everything made later is gone.
struct LateWriter {
    ~LateWriter()
    {
        for (DbfFieldConverter* converter :
             {text, truth, raw, number, date, int16, int32, int64, binary64, binary32})
            converter->toByteArray(1, {}, {});
    }
} const lateWriter;

} // namespace

/// The converters that a column has by default and those of binary numbers. What numbers, dates
/// and texts look like is compared with Qt elsewhere.
class TestConverters : public QObject
{
    Q_OBJECT

private slots:
    void typeLettersChooseTheConverter()
    {
        const QMap<char, DbfFieldConverter*> named = {
            {'C', text}, {'N', text}, {'D', date}, {'F', number}, {'L', truth}};
        for (int letter = 0; letter < 256; ++letter)
            QCOMPARE(DbfFieldConverter::defaultConverter(DbfFieldType(letter)),
                     named.value(static_cast<char>(letter), raw));
    }

    void bytesBecomeValues_data()
    {
        addColumns();
        const auto rows = [](DbfFieldConverter* converter, const QVariantList& pairs) {
            addRows(converter, {}, pairs);
        };
        rows(text, {hex("a0 09 41 20 42 0d a0"), "A B", "", ""});
        rows(truth, {"Y", true, hex("54 00"), true, "", false, "1T", false, hex("d4"), false,
                     hex("14"), false});
        rows(raw, {hex("00 41 00 20 00"), hex("00 41 00 20 00")});
        rows(number, {"1e400", infinity, "", 0.0});
        rows(date, {"20240229 x", QDate(2024, 2, 29), "2024013", QDate(2024, 1, 3), "", QDate()});
        rows(int16, {hex("ffff"), -1, hex("3412 ff"), 4660, hex("ff"), none});
        rows(int32, {hex("00000080 ff"), -2147483647 - 1, hex("ffffff"), none});
        rows(int64, {hex("feffffffffffffff ff"), -2ll, hex("ffffffffffffff"), none});
        rows(binary64, {hex("000000000000f03f ff"), 1.0, hex("00000000000000"), none});
        rows(binary32, {hex("0000803f ff"), 1.0f, hex("000080"), none});
    }

    void bytesBecomeValues() { checkRow(Check::Read); }

    void valuesBecomeBytes_data()
    {
        addColumns();
        const auto rows = [](DbfFieldConverter* converter, int length, int decimals,
                             const QVariantList& pairs) {
            addRows(converter, described('N', length, decimals), pairs);
        };
        rows(text, 4, 0, {"  ho  ", hex("686f 0000"), -2.5, "-2.5", "Ц", hex("d6 000000")});
        rows(truth, 2, 0, {"true", "T", "0", "F"});
        rows(raw, 4, 0, {hex("00 01 00"), hex("00 01 00"), "abcdef", "abcdef", none, ""});
        rows(number, 7, 2, {"2.5", "   2.50", -0.0, "   0.00"});
        rows(number, 32, 30, {0.1, "0.100000000000000005551115123126"});
        rows(date, 10, 0, {"2021-03-05", "20210305  ", none, "          "});
        rows(int16, 3, 0, {40000, hex("409c"), -1, hex("ffff")});
        rows(int32, 1, 0, {"12", hex("0c000000"), 3.6, hex("04000000"), none, hex("00000000")});
        rows(int64, 1, 0, {9007199254740993ll, hex("0100000000002000"), "abc", QByteArray(8, 0)});
        rows(binary64, 1, 0, {"1", hex("000000000000f03f"), "abc", QByteArray(8, 0)});
        rows(binary32, 9, 0, {0.1, hex("cdcccc3d"), none, QByteArray(4, 0)});
    }

    void valuesBecomeBytes() { checkRow(Check::Write); }

    void callersValuesAreConverted_data()
    {
        addColumns();
        const auto rows = [](DbfFieldConverter* converter, bool done, const QVariantList& pairs) {
            addRows(converter, described(done ? 'Y' : 'N', 0), pairs);
        };
        rows(text, true, {42, "42"});
        rows(raw, true, {"AB", QByteArray("AB")});
        rows(truth, true,
             {"T", true, "0", false, decimal("0E+9"), false, decimal("0.1"), true, decimal("NaN"),
              true});
        rows(date, true, {"2024-02-29", QDate(2024, 2, 29)});
        rows(number, true, {"2.5", 2.5});
        rows(int16, true,
             {"12", QVariant::fromValue<short>(12), decimal("40000"), -25536, decimal("-32769"),
              32767});
        rows(int32, true,
             {"12", 12, decimal("-41.6"), -42, decimal("2.5"), 3, decimal("999999999.4"), 999999999,
              decimal("999999999.5"), 0});
        rows(int64, true, {"12", 12ll, decimal("1234.6"), 1235ll, decimal("1234567890"), 0ll});
        rows(binary64, true, {"1.5", 1.5});
        rows(binary32, true, {0.5f, 0.5});

        rows(date, false, {"abc", nullOf(QMetaType::QDate), 1.5, none});
        rows(number, false, {"abc", nullOf(QMetaType::Double), decimal("1"), none});
        rows(int32, false, {"abc", nullOf(QMetaType::Int), QDate(2024, 1, 1), none});
        rows(binary32, false, {decimal("1"), none});
        rows(truth, false, {none, none});
    }

    void callersValuesAreConverted() { checkRow(Check::Convert); }

    void blankFieldsHaveTheDefaultValue()
    {
        for (DbfFieldConverter* const converter : {text, truth, raw})
            QCOMPARE(converter->defaultBytes(3), QByteArray("   "));
        for (DbfFieldConverter* const converter : {int16, int32, int64, binary64, binary32})
            QCOMPARE(converter->defaultBytes(10), QByteArray(10, '\0'));
        QCOMPARE(number->defaultBytes(5), QByteArray("  0.0"));
        QCOMPARE(number->defaultBytes(2), QByteArray("0."));
        QCOMPARE(date->defaultBytes(10), QByteArray("19000101  "));
        QCOMPARE(date->defaultBytes(4), QByteArray("1900"));
    }

    void encodingTellsWhatWasCut()
    {
        const auto encoded = [](const char* string, int maxLength, const char* codec) {
            bool fits = false;
            const QByteArray bytes = DbfStringConverter::fromUnicode(
                string, maxLength, QTextCodec::codecForName(codec), &fits);
            return bytes.toHex() + (fits ? " fits" : " cut");
        };
        QCOMPARE(encoded("日本A", 5, "Shift_JIS"), QByteArray("93fa967b41 fits"));
        QCOMPARE(encoded("яя", 1, ""), QByteArray("ff cut"));
        QCOMPARE(encoded("яЯ", 3, "UTF-8"), QByteArray("d18fd0 cut"));
        QCOMPARE(encoded("a", -1, "UTF-8"), QByteArray(" cut"));
        QCOMPARE(DbfStringConverter::fromUnicode("ab", 1, nullptr, nullptr), QByteArray("a"));
    }
};

QTEST_APPLESS_MAIN(TestConverters)

#include "tst_converters.moc"
