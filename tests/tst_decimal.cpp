// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/decimal/decnumber.h>

#include <QtCore/QVariant>
#include <QtTest/QtTest>

#include <limits>
#include <memory>

namespace
{

QString repeated(char character, int count)
{
    return QString(count, QLatin1Char(character));
}

} // namespace

class TestDecimal : public QObject
{
    Q_OBJECT

private slots:
    // Trailing zeros count as digits, leading zeros do not.
    void textComesBackAsScientificString()
    {
        const QString zeros = repeated('0', 33);
        const QString fours = "1." + repeated('4', 32);
        const QString million = repeated('0', 1'000'000);
        const QString nines = repeated('9', 1'000'000);
        const QString rows =
            QString("-0.00=-0.00 +007.50=7.50 .5=0.5 5.=5 -12.5e10=-1.25E+11 "
                    "0.000001=0.000001 0.00000010=1.0E-7 -0E+2=-0E+2 "
                    "-iNF=-Infinity Infinity=Infinity -nan=-NaN sNaN=sNaN "
                    "0.1E+1000000000=1E+999999999 -10E+999999999=-Infinity "
                    "1.5E-999999999=1.5E-999999999 -5E-1000000033=-1E-1000000032 "
                    "4.9E-1000000033=0E-1000000032 -0E-99999999999=-0E-1000000032 "
                    "0E+99999999999=0E+999999999 1E+18446744073709551616=Infinity ") +
            "1." + zeros + "49=1." + zeros + " -1." + zeros + "5=-1." + zeros.left(32) + "1 " +
            repeated('9', 34) + ".5=1." + zeros + "E+34 0.00" + fours.mid(2) + "=0.00" +
            fours.mid(2) + ' ' + repeated('9', 35) + "E+999999965=Infinity " + fours +
            "49E-1000000000=" + fours + "E-1000000000 " + nines + "=1." + zeros + "E+1000000 0." +
            million + "1E+1000001=1 1E-" + million + "3=0.001 -1E+" + nines + "=-Infinity -1E-" +
            nines + "=-0E-1000000032 " + nines + "x=NaN";
        for (const QString& row : rows.split(' ')) {
            const QString text = row.section('=', 0, 0);
            const QString expected = row.section('=', 1);
            QCOMPARE(QDecNumber(text).toString(), expected);
            QCOMPARE(QDecNumber(qPrintable(text)).toString(), expected);
            QCOMPARE(QDecNumber(expected).toString(), expected);
        }
    }

    void textThatIsNoNumberGivesNaN()
    {
        const QString texts = "|1 | 1|nan 1|-|.|E5|.E5|1E|1E+|1E+-5|1E5.|1..2|1.2.3|--1|1,5|12a|"
                              "infinit|infinityy";
        for (const QString& text : texts.split('|'))
            QVERIFY2(QDecNumber(text).isNaN() && QDecNumber(qPrintable(text)).isNaN(),
                     qPrintable(text));
        QVERIFY(QDecNumber(static_cast<const char*>(nullptr)).isNaN());
        QVERIFY(QDecNumber(QString()).isNaN());
        QVERIFY(QDecNumber(QString::fromLatin1("1\0", 2)).isNaN());
        QVERIFY(QDecNumber(QString(QChar(0x0131))).isNaN()); // ends in the byte of "1"
    }

    void longestTextFitsTextSize()
    {
        const QString longest = "-1." + repeated('3', 33) + "E-999999999";
        // On the heap, so that a memory checker sees one character too many.
        const auto text = std::make_unique<char[]>(QDecNumber::TextSize);
        const QDecNumber number(longest);
        QCOMPARE(QString(decNumberToString(&number, text.get())), longest);
        QCOMPARE(int(longest.size()) + 1, int(QDecNumber::TextSize));
    }

    void queriesTellKindAndSign()
    {
        const auto kind = [](const char* text) {
            const QDecNumber number(text);
            return QString::asprintf("%d%d%d%d", number.isNegative(), number.isZero(),
                                     number.isInfinite(), number.isNaN());
        };
        QCOMPARE(kind("-0.00"), QString("1100"));
        QCOMPARE(kind("-inf"), QString("1010"));
        QCOMPARE(kind("sNaN"), QString("0001"));
        QCOMPARE(kind("10"), QString("0000"));
    }

    // A number, an exponent, and the number with that exponent. Both may be written over.
    void rescaleSetsTheExponent()
    {
        QDecContext context(0);
        const QString rows =
            "41.6 -2 41.60|-2.5 0 -3|99.95 -1 100.0|-0.49 0 -0|0.099 0 0|1234 2 1.2E+3|"
            "0E-1000000032 9 0E+9|1 999999999 0E+999999999|1.5 -1.0 1.5|"
            "15 1E+1 0E+10|999999999.4 0 999999999|999999999.5 0 NaN|1 -9 NaN|"
            "1E+999999999 -999999999 NaN|9.5E+999999999 999999999 NaN|0 0.5 NaN|0 10.5 NaN|"
            "0 -1000000000 NaN|0 1E+999999999 NaN|0 inf NaN|0 NaN NaN|-inf 0 NaN";
        for (const QString& row : rows.split('|')) {
            const QStringList words = row.split(' ');
            for (const int overwritten : {0, 1, 2}) {
                QDecNumber numbers[] = {QDecNumber(words[0]), QDecNumber(words[1]),
                                        QDecNumber(-77)};
                QDecNumber* const result = &numbers[overwritten];
                QCOMPARE(decNumberRescale(result, &numbers[0], &numbers[1], &context), result);
                QCOMPARE(result->toString(), words[2]);
            }
        }
        QDecNumber number(1);
        QCOMPARE(decNumberZero(&number)->toString(), QString("0"));
    }

    // Qt compares them by memory, unused bytes included.
    void variantsOfTheSameNumberAreEqual()
    {
        for (const char* text : {"1.5", "-0", "1E+5", "Infinity", "NaN"}) {
            alignas(QDecNumber) char memory[2][sizeof(QDecNumber)];
            memset(memory, '#', sizeof memory);
            const auto* const one = new (memory[0]) QDecNumber(text);
            auto* const other = new (memory[1]) QDecNumber("7777777777777777777777777777777777");
            decNumberCopy(other, one);
            QVERIFY(*one == *other && !(*one != *other));
            QCOMPARE(QVariant::fromValue(*one), QVariant::fromValue(*other));
        }
        QDecContext context(0);
        const QDecNumber tenths(-1);
        QDecNumber rounded("9.96");
        decNumberRescale(&rounded, &rounded, &tenths, &context);
        QCOMPARE(QVariant::fromValue(rounded), QVariant::fromValue(QDecNumber("10.0")));
        QVERIFY(QDecNumber("1.5") != QDecNumber("1.50") && QDecNumber("0") != QDecNumber("-0"));
    }

    void integersComeOutExactlyOrAsZero()
    {
        using Limits = std::numeric_limits<qint32>;
        QDecContext context(0);
        QDecNumber number;
        for (const qint32 value : {0, 7, -100, Limits::max(), Limits::min()}) {
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
