// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/decimal/decnumber.h>

#include <QtCore/QVariant>
#include <QtTest/QtTest>

#include <limits>
#include <memory>

namespace
{

constexpr qint32 minimum = std::numeric_limits<qint32>::min();
constexpr qint32 maximum = std::numeric_limits<qint32>::max();

QString repeated(char character, int count)
{
    return QString(count, QLatin1Char(character));
}

} // namespace

class TestDecimal : public QObject
{
    Q_OBJECT

private slots:
    void textComesBackAsScientificString_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");

        const auto row = [](const QString& text) -> QTestData& {
            return QTest::newRow(qPrintable(text)) << text;
        };
        row("-0.00") << "-0.00";
        row("+007.50") << "7.50";
        row(".5") << "0.5";
        row("5.") << "5";
        row("-12.5e10") << "-1.25E+11";
        row("0.000001") << "0.000001";
        row("0.00000010") << "1.0E-7";
        row("-0E+2") << "-0E+2";
        row("-iNF") << "-Infinity";
        row("Infinity") << "Infinity";
        row("-nan") << "-NaN";
        row("sNaN") << "sNaN";

        // Trailing zeros count as digits, leading zeros do not.
        row("1." + repeated('0', 33) + "49") << "1." + repeated('0', 33);
        row("-1." + repeated('0', 33) + "5") << "-1." + repeated('0', 32) + "1";
        row(repeated('9', 34) + ".5") << "1." + repeated('0', 33) + "E+34";
        row("1" + repeated('0', 34)) << "1." + repeated('0', 33) + "E+34";
        row("0.00" + repeated('7', 34)) << "0.00" + repeated('7', 34);

        row("0.1E+1000000000") << "1E+999999999";
        row("-10E+999999999") << "-Infinity";
        row(repeated('9', 35) + "E+999999965") << "Infinity";
        row("1.5E-999999999") << "1.5E-999999999";
        row("-5E-1000000033") << "-1E-1000000032";
        row("4.9E-1000000033") << "0E-1000000032";
        row("1." + repeated('4', 32) + "49E-1000000000")
            << "1." + repeated('4', 32) + "E-1000000000";
        row("-0E-99999999999") << "-0E-1000000032";
        row("0E+99999999999") << "0E+999999999";
        row("1E+4294967296") << "Infinity";
        row("1E+18446744073709551616") << "Infinity";

        const QString zeros = repeated('0', 1'000'000);
        const QString nines = repeated('9', 1'000'000);
        const auto named = [](const char* name, const QString& text, const QString& expected) {
            QTest::newRow(name) << text << expected;
        };
        named("million digits", nines, "1." + repeated('0', 33) + "E+1000000");
        named("million zeros after the point", "0." + zeros + "1E+1000001", "1");
        named("million zeros in the exponent", "1E-" + zeros + "3", "0.001");
        named("million digits of exponent", "-1E+" + nines, "-Infinity");
        named("million digits of negative exponent", "-1E-" + nines, "-0E-1000000032");
        named("million digits and a letter", nines + "x", "NaN");
    }

    void textComesBackAsScientificString()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);

        QCOMPARE(QDecNumber(text).toString(), expected);
        QCOMPARE(QDecNumber(qPrintable(text)).toString(), expected);
        QCOMPARE(QDecNumber(expected).toString(), expected);
    }

    void textThatIsNoNumberGivesNaN()
    {
        for (const char* text :
             {"",      "-",    ".",    "E5",    ".E5",     "1E",        "1E+",
              "1E+-5", "1E5.", "1..2", "1.2.3", "--1",     "+-1",       " 1",
              "1 ",    "1,5",  "0x10", "12a",   "infinit", "infinityy", "nan 1"}) {
            QVERIFY2(QDecNumber(text).isNaN(), text);
            QVERIFY2(QDecNumber(QString(text)).isNaN(), text);
        }
        QVERIFY(QDecNumber(static_cast<const char*>(nullptr)).isNaN());
        QVERIFY(QDecNumber(QString()).isNaN());
        QVERIFY(QDecNumber(QString::fromLatin1("1\0", 2)).isNaN());
        QVERIFY(QDecNumber(QString(QChar(0x0131))).isNaN()); // ends in the byte of "1"
    }

    void longestTextFitsTextSize()
    {
        const QString longest = "-1." + repeated('3', 33) + "E-999999999";
        QCOMPARE(longest.size() + 1, QDecNumber::TextSize);

        // On the heap, so that a memory checker sees one character too many.
        const auto text = std::make_unique<char[]>(QDecNumber::TextSize);
        const QDecNumber number(longest);
        QCOMPARE(QString(decNumberToString(&number, text.get())), longest);
    }

    void queriesTellKindAndSign()
    {
        const QDecNumber zero("-0.00");
        QVERIFY(zero.isZero() && zero.isNegative() && !zero.isNaN() && !zero.isInfinite());
        const QDecNumber infinity("-inf");
        QVERIFY(infinity.isInfinite() && infinity.isNegative() && !infinity.isZero());
        const QDecNumber nan("sNaN");
        QVERIFY(nan.isNaN() && !nan.isNegative() && !nan.isZero() && !nan.isInfinite());
        QVERIFY(!QDecNumber(10).isZero());
    }

    void rescaleSetsTheExponent_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("exponent");
        QTest::addColumn<QString>("expected");

        const auto row = [](const char* text, const char* exponent, const char* expected) {
            QTest::addRow("%s to %s", text, exponent) << text << exponent << expected;
        };
        row("41.6", "-2", "41.60");
        row("-2.5", "0", "-3");
        row("99.95", "-1", "100.0");
        row("0.5", "0", "1");
        row("-0.49", "0", "-0");
        row("0.099", "0", "0");
        row("1234", "2", "1.2E+3");
        row("0E-1000000032", "9", "0E+9");
        row("1E-999999999", "0", "0");
        row("1", "999999999", "0E+999999999");
        row("1.5", "-1.0", "1.5");
        row("15", "1E+1", "0E+10");

        row("999999999.4", "0", "999999999");
        row("999999999.5", "0", "NaN");
        row("1", "-9", "NaN");
        row("1E+999999999", "-999999999", "NaN");
        row("9.5E+999999999", "999999999", "NaN");
        row("0", "0.5", "NaN");
        row("0", "10.5", "NaN");
        row("0", "-1000000000", "NaN");
        row("0", "1E+999999999", "NaN");
        row("0", "inf", "NaN");
        row("0", "NaN", "NaN");
        row("-inf", "0", "NaN");
        row("-sNaN", "0", "NaN");
    }

    void rescaleSetsTheExponent()
    {
        QFETCH(QString, text);
        QFETCH(QString, exponent);
        QFETCH(QString, expected);

        QDecContext context(0);
        const QDecNumber number(text);
        const QDecNumber exponentNumber(exponent);
        QDecNumber result(-77);
        QCOMPARE(decNumberRescale(&result, &number, &exponentNumber, &context), &result);
        QCOMPARE(result.toString(), expected);
    }

    void rescaleMayWriteOverItsOperands()
    {
        QDecNumber zero("NaN");
        QCOMPARE(decNumberZero(&zero)->toString(), QString("0"));
        QDecContext context(0);
        QDecNumber number("12.345");
        QDecNumber exponent(-1);
        QCOMPARE(decNumberRescale(&number, &number, &exponent, &context)->toString(),
                 QString("12.3"));
        QCOMPARE(decNumberRescale(&exponent, &number, &exponent, &context)->toString(),
                 QString("12.3"));
    }

    // Qt compares them by memory, unused bytes included.
    void variantsOfTheSameNumberAreEqual()
    {
        QDecContext context(0);
        for (const char* text : {"1.5", "-0", "9.99", "1E+5", "Infinity", "NaN", "0.0000001"}) {
            alignas(QDecNumber) char memory[2][sizeof(QDecNumber)];
            memset(memory, '#', sizeof memory);
            const auto* const one = new (memory[0]) QDecNumber(text);
            auto* const other = new (memory[1]) QDecNumber("7777777777777777777777777777777777");
            decNumberCopy(other, one);
            QVERIFY(*one == *other && !(*one != *other));
            QCOMPARE(QVariant::fromValue(*one), QVariant::fromValue(*other));
        }
        const QDecNumber tenths(-1);
        QDecNumber rounded("9.96");
        decNumberRescale(&rounded, &rounded, &tenths, &context);
        QCOMPARE(QVariant::fromValue(rounded), QVariant::fromValue(QDecNumber("10.0")));
        QVERIFY(QDecNumber("1.5") != QDecNumber("1.50") && QDecNumber("0") != QDecNumber("-0"));
    }

    void integersComeOutExactlyOrAsZero()
    {
        QDecContext context(0);
        QDecNumber number;
        for (const qint32 value : {0, 7, -100, maximum, minimum}) {
            QCOMPARE(decNumberFromInt32(&number, value)->toString(), QString::number(value));
            QCOMPARE(decNumberToInt32(&number, &context), value);
        }
        for (const char* text : {"-0", "2147483648", "-2147483649", "4294967297",
                                 "18446744073709551617", "1E+2", "5.0", "inf", "NaN"}) {
            number = QDecNumber(text);
            QVERIFY2(decNumberToInt32(&number, &context) == 0, text);
        }
    }
};

QTEST_APPLESS_MAIN(TestDecimal)
#include "tst_decimal.moc"
