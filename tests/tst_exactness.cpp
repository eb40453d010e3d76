// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/dbf.h>

#include <QTextCodec>
#include <QtTest/QtTest>

#include <algorithm>
#include <cmath>
#include <random>

Q_DECLARE_METATYPE(QTextCodec*)

using namespace dbf;

namespace
{

using Random = std::mt19937_64;

int below(Random& random, int limit)
{
    return static_cast<int>(random() % static_cast<unsigned>(limit));
}

QByteArray randomBytes(Random& random, const QByteArray& alphabet, int maxSize)
{
    QByteArray bytes(below(random, maxSize + 1), '\0');
    for (char& byte : bytes)
        byte = alphabet.isEmpty() ? static_cast<char>(random())
                                  : alphabet.at(below(random, int(alphabet.size())));
    return bytes;
}

double anyDouble(Random& random)
{
    const quint64 bits = random();
    double number = 0;
    memcpy(&number, &bits, sizeof number);
    return number;
}

bool isSameDouble(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

/// A caller's own codec under a name and number of Qt's: every character stands a place further.
class CallersCodec : public QTextCodec
{
public:
    explicit CallersCodec(int shift) : m_shift(shift) {}

    mutable QByteArrayList calls;

    QByteArray name() const override
    {
        return calls << "name", m_shift == 1 ? "windows-1251" : "IBM 866";
    }
    int mibEnum() const override { return calls << "number", 2251; }

protected:
    QString convertToUnicode(const char* bytes, int size, ConverterState*) const override
    {
        note("decode ", bytes, size);
        QString text = QString::fromLatin1(bytes, size);
        for (QChar& character : text)
            character = QChar(character.unicode() + m_shift);
        return text;
    }

    QByteArray convertFromUnicode(const QChar* units, int size, ConverterState*) const override
    {
        const QByteArray bytes = QString(units, size).toLatin1();
        note("encode ", bytes.constData(), size);
        return bytes;
    }

private:
    // Whether a codec is asked about no text at all is Qt's to say.
    void note(const char* call, const char* bytes, int size) const
    {
        if (size > 0 || !bytes)
            calls << call + QByteArray(bytes ? bytes : "null", bytes ? size : 4);
    }

    int m_shift;
};

} // namespace

/// What goes a faster way must come out exactly as Qt's own calls give it.
class TestExactness : public QObject
{
    Q_OBJECT

private slots:
    void textIsWhatTheCodecGives_data()
    {
        QTest::addColumn<QTextCodec*>("codec");
        QSet<QTextCodec*> codecs;
        for (int id = 0; id < 256; ++id)
            codecs.insert(QTextCodec::codecForMib(DbfTable::languageIdToMIB(id)));
        // ISO 8859, ASCII, UTF-8, UTF-16, KOI8 and those of Windows.
        for (int mib : {3, 4, 7, 13, 106, 1015, 2084, 2088, 2255, 2256, 2257, 2258})
            codecs.insert(QTextCodec::codecForMib(mib));
        codecs.remove(nullptr);
        for (QTextCodec* codec : std::as_const(codecs))
            QTest::newRow(codec->name().constData()) << codec;
    }

    void textIsWhatTheCodecGives()
    {
        QFETCH(QTextCodec*, codec);
        const DbfSchema schema({}, codec);
        const DbfStringConverter* const converter = DbfStringConverter::instance();
        Random random(1);
        for (int i = 0; i < 3000; ++i) {
            // Every byte alone first, then mixtures with runs of spaces, then texts the codec
            // lacks.
            QByteArray bytes = i < 256 ? QByteArray(1, static_cast<char>(i))
                                       : randomBytes(random, {}, i % 50 ? 40 : 400) +
                                             QByteArray(below(random, 20), ' ') +
                                             randomBytes(random, " \t\xA0", 3);
            const auto size = int(bytes.contains('\0') ? bytes.indexOf('\0') : bytes.size());
            QString text = codec->toUnicode(bytes.constData(), size, nullptr);
            const QVariant value = converter->toVariant(bytes, schema, {});
            QCOMPARE(value.toString(), text.trimmed());
            QVERIFY(!value.isNull() && !value.toString().isNull());

            if (i % 3 == 0 && !text.isEmpty())
                text[below(random, int(text.size()))] = QChar(static_cast<ushort>(random()));
            if (i % 7 == 0)
                text += QChar(static_cast<ushort>(0xD800 + below(random, 0x800)));
            QCOMPARE(DbfStringConverter::fromUnicode(text, 1000, codec, nullptr),
                     codec->fromUnicode(text));
            const DbfFieldDescriptor field = DbfFieldDescriptor::stringField({}, 20);
            QCOMPARE(converter->toByteArray(text, schema, field),
                     codec->fromUnicode(text.trimmed().left(20)).leftJustified(20, '\0', true));
        }
    }

    // Also when it stands where another one stood before.
    void callersCodecIsCalledOncePerTextAndNeverOtherwise()
    {
        alignas(CallersCodec) char storage[sizeof(CallersCodec)];
        for (const int shift : {1, 2}) {
            auto* const codec = new (storage) CallersCodec(shift);
            const DbfSchema schema({DbfFieldDescriptor::stringField("A", 2),
                                    DbfFieldDescriptor::stringField("B", 1),
                                    DbfFieldDescriptor::stringField("C", 0)},
                                   codec);
            codec->calls.clear();
            const QVector<QVariant> read = DbfTable::parseRecord(" abc", 0, schema).values;
            QCOMPARE(codec->calls, (QByteArrayList{"decode ab", "decode c"}));
            QCOMPARE(read.at(1).toString(), QString(QChar('c' + shift)));
            codec->calls.clear();
            QCOMPARE(DbfTable::serializeRecord({-1, {"xyz", "", "x"}}, {}, schema),
                     QByteArray(" xy\0", 4));
            QCOMPARE(codec->calls, (QByteArrayList{"encode xy"}));
            QCOMPARE(DbfTable::codePageByCodec(codec), // by its number, or else by its name
                     shift == 1 ? DbfCodePage::Windows1251 : DbfCodePage::IBM866);
            codec->~CallersCodec();
        }
    }

    void numbersReadAsQtReadsThem()
    {
        Random random(2);
        for (int i = 0; i < 100000; ++i) {
            QByteArray text;
            if (i % 3 == 0) {
                text = randomBytes(random, "0123456789.-+ eE,", 12);
            } else if (i % 3 == 1) { // digits enough to lie half way between two doubles
                text =
                    QByteArray::number(std::fmod(anyDouble(random), 1e15), 'f', below(random, 50));
            } else { // whole fields of the usual look, some with one character gone wrong
                text = (below(random, 3) ? "" : "-") + randomBytes(random, "0123456789", 9) +
                       (below(random, 4) ? "." : "") + randomBytes(random, "0123456789", 9);
                text = text.rightJustified(1 + below(random, 27), ' ', true);
                if (i % 4 == 0)
                    text[below(random, int(text.size()))] = static_cast<char>(random());
                if (i % 5 == 0)
                    text += randomBytes(random, " \t\n", 2);
            }
            const QByteArray trimmed = text.trimmed();
            double expected = trimmed.toDouble();
            char* end = nullptr; // What is too large is infinite, which Qt 6 has as 0.
            const double known = strtod(trimmed.constData(), &end);
            if (std::isinf(known) && *end == '\0')
                expected = known;
            const double read = DbfDoubleConverter::instance()->toVariant(text, {}, {}).toDouble();
            QVERIFY2(isSameDouble(read, expected), text.constData());
        }
    }

    void numbersAreWrittenAsQtWritesThem()
    {
        Random random(3);
        for (int i = 0; i < 50000; ++i) {
            const double number =
                i % 3 == 0   ? anyDouble(random)
                : i % 3 == 1 ? std::ldexp(below(random, 4000) - 2000, -below(random, 12)) // ties
                             : (below(random, 2000001) - 1000000) / 1000.0;
            const auto decimals = static_cast<unsigned char>(below(random, i % 5 == 0 ? 256 : 8));
            const auto length = static_cast<unsigned char>(below(random, i % 5 == 0 ? 256 : 40));
            const QByteArray expected =
                QByteArray::number(number, 'f', decimals).rightJustified(length, ' ', true);
            QCOMPARE(DbfDoubleConverter::instance()->toByteArray(
                         number, {}, DbfFieldDescriptor::numberField({}, length, decimals)),
                     expected);
        }
    }

    void datesReadAsQtReadsThem()
    {
        Random random(4);
        for (int i = 0; i < 200000; ++i) {
            const QByteArray text =
                i % 4 == 0 ? randomBytes(random, "0123456789 -+", 10)
                           : QByteArray::number(100000000 + below(random, 9999) * 10000 +
                                                below(random, 14) * 100 + below(random, 34))
                                 .mid(1);
            const QDate expected(text.mid(0, 4).toInt(), text.mid(4, 2).toInt(),
                                 text.mid(6, 2).toInt());
            const QVariant read = DbfDateConverter::instance()->toVariant(text, {}, {});
            QVERIFY2(read.toDate() == expected && read.userType() == QMetaType::QDate,
                     text.constData());
        }
    }

    void datesAreWrittenAsQtWritesThem()
    {
        Random random(5);
        for (int i = 0; i < 50000; ++i) {
            const QDate date = QDate::fromJulianDay(below(random, i % 8 == 0 ? 10000000 : 5000000));
            const DbfFieldDescriptor field({}, DbfFieldType::Date,
                                           static_cast<unsigned char>(below(random, 12)), 0);
            QCOMPARE(DbfDateConverter::instance()->toByteArray(date, {}, field),
                     date.toString("yyyyMMdd").leftJustified(field.length, ' ', true).toLatin1());
        }
    }

    // UTF-16 text ends at its first zero byte, in the middle of a digit.
    void copiedNumbersAreThoseOfTheConverters()
    {
        Random random(6);
        for (const char* codec : {"Windows-1251", "UTF-16LE"}) {
            const DbfSchema source({DbfFieldDescriptor::numberField("N", 14, 3)},
                                   QTextCodec::codecForName(codec));
            DbfSchemaTransform transform = DbfSchemaTransform::identity(source);
            transform.updateColumn(0, DbfFieldDescriptor::floatField("N", 3));
            for (int i = 0; i < 20000; ++i) {
                const QByteArray alphabet("0123456789. -+eE,\0\xA0", i % 2 ? 13 : 19);
                const QByteArray field = randomBytes(random, alphabet, 14).rightJustified(14, ' ');
                QCOMPARE(DbfTable::transformRecord(' ' + field, source, transform),
                         ' ' + transformField(field, source, source.columns.at(0), transform.schema,
                                              transform.schema.columns.at(0)));
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestExactness)

#include "tst_exactness.moc"
