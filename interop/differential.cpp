// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

// Prints what the library stores of many values, and what it reads in many fields. Programs built
// with different versions of Qt must print the same.

#include <dbf/dbf.h>

#include <QTextCodec>
#include <QtCore/QBuffer>
#include <QtCore/QDateTime>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

using namespace dbf;

namespace
{

// The standard library's generators give the same everywhere, its distributions need not.
std::mt19937_64 source(1);

int below(int limit)
{
    return int(source() % quint64(limit));
}

template <typename Type>
Type oneOf(std::initializer_list<Type> choices)
{
    return choices.begin()[below(int(choices.size()))];
}

template <typename Number>
Number anyBits()
{
    const quint64 bits = source();
    Number number;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

double anyDouble()
{
    switch (below(6)) {
    case 0:
        return anyBits<double>();
    case 1: // ties, and what has no decimals left
        return std::ldexp(double(below(4001) - 2000) + 0.5, below(60) - 4);
    case 2: // one digit, anywhere
        return (below(19) - 9) * std::pow(10.0, below(40) - 12);
    case 3: // about the limits of integers
        return std::ldexp(oneOf({1.0, -1.0}), oneOf({15, 16, 31, 32, 52, 53, 62, 63, 64})) +
               double(below(9) - 4) / 2;
    case 4:
        return oneOf({0.0, -0.0, HUGE_VAL, -HUGE_VAL, std::nan(""), 1e300, -1e300, 5e-324, 0.1,
                      0.49999999999999994, -0.5, -2.5, 100000.0, 0.0001, 1e15, 1e16, 1e22});
    default:
        return double(below(2000001) - 1000000) / std::pow(10.0, below(10));
    }
}

QByteArray anyOf(const char* alphabet, int size, int longest)
{
    QByteArray bytes(below(longest + 1), '\0');
    for (char& byte : bytes)
        byte = alphabet[below(size)];
    return bytes;
}

/// Qt's own function ends at a zero byte or does not, by its version.
QString fromLatin1(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.constData(), bytes.size());
}

QByteArray numberText()
{
    static const char alphabet[] = "0123456789.-+eE ,\0ix\t";
    QByteArray text = anyOf(alphabet, oneOf({11, 13, 16, int(sizeof alphabet) - 1}), 14);
    if (below(4) == 0)
        text = text.left(4).trimmed() + 'e' + QByteArray::number(below(900) - 450);
    if (below(20) == 0)
        text = oneOf({"inf", "-inf", "nan", "INF", "true", "false", "T", "no", "1.5e400x"});
    return oneOf({"", "", " ", "\t"}) + text + oneOf({"", "", " ", "\n"});
}

QByteArray dateText()
{
    QByteArray text = oneOf({"2024-02-29T12:34:56.789+01:00", "20240229", "2024-02-29 23:59",
                             "1999-12-31T24:00:00Z", "0001-01-01", "29.02.2024"});
    for (int i = below(3); i > 0; --i)
        text[below(int(text.size()))] = "0123456789-T:. Z\0"[below(17)];
    return text.left(oneOf({4, 8, 10, 16, 19, 40}));
}

/// Any characters of one unit: two may be cut apart, and UTF-8 has no bytes for a half.
QString anyText()
{
    QString text;
    for (int i = below(12); i > 0; --i) {
        switch (below(4)) {
        case 0:
            text += QChar(ushort(below(0x80)));
            break;
        case 1:
            text += QChar(ushort(0x400 + below(0x60)));
            break;
        case 2:
            text += QChar(ushort(below(0xD800)));
            break;
        default:
            text += QChar(oneOf<ushort>({0, ' ', 0xA0, 0x2003, 0x2212, 0x3000}));
        }
    }
    return below(3) ? text : text + fromLatin1(numberText());
}

QDateTime anyMoment()
{
    const QDate date = QDate::fromJulianDay(below(4) ? 2415021 + below(50000) : below(6000000));
    const QTime time =
        QTime::fromMSecsSinceStartOfDay(below(3) ? below(86400000) : 1000 * below(86400));
    switch (below(4)) {
    case 0:
        return {date, time, Qt::LocalTime};
    case 1:
        return {date, time, Qt::OffsetFromUTC, 60 * (below(1440) - 720)};
    default:
        return {date, time, Qt::UTC};
    }
}

QVariant anyInteger()
{
    const quint64 bits = below(2) ? source() : quint64(below(300) - 150);
    switch (below(9)) {
    case 0:
        return QVariant::fromValue(short(bits));
    case 1:
        return QVariant::fromValue(ushort(bits));
    case 2:
        return int(bits);
    case 3:
        return uint(bits);
    case 4:
        return qulonglong(bits);
    case 5:
        return QVariant::fromValue(long(bits));
    case 6:
        return QVariant::fromValue(ulong(bits));
    case 7:
        return QVariant::fromValue(uchar(bits));
    default:
        return qlonglong(bits);
    }
}

QVariant anyValue()
{
    switch (below(16)) {
    case 0:
        return oneOf<QVariant>({QVariant(), QString(), QString(""), QByteArray(), QByteArray(""),
                                QDate(), QDateTime(), QVariant::fromValue(QDecNumber())});
    case 1:
        return below(2) == 1;
    case 2:
    case 3:
        return anyDouble();
    case 4:
        return below(2) ? float(anyDouble()) : anyBits<float>();
    case 5:
    case 6:
        return anyInteger();
    case 7:
        return QDate::fromJulianDay(below(4) ? 2415021 + below(50000) : below(6000000));
    case 8:
        return anyMoment();
    case 9:
        return QVariant::fromValue(QDecNumber(numberText().trimmed().constData()));
    case 10:
        return numberText();
    case 11:
        return below(2) ? dateText() : QByteArray(anyOf("ab\0\xC3\xA4\xE2\x82\xAC\xFF ", 10, 12));
    case 12:
        return fromLatin1(dateText());
    case 13:
        return fromLatin1(numberText());
    default:
        return anyText();
    }
}

/// Returns the type of \a value and all that it holds.
QByteArray shown(const QVariant& value)
{
    if (value.userType() == qMetaTypeId<QDecNumber>())
        return "decimal " + value.value<QDecNumber>().toString().toLatin1();
    const QByteArray type = QByteArray::number(value.userType()) + ' ';
    quint64 bits = 0;
    switch (value.userType()) {
    case QMetaType::Double:
    case QMetaType::Float: {
        const double number = value.toDouble();
        std::memcpy(&bits, &number, sizeof bits);
        return type + (std::isnan(number) ? "nan" : QByteArray::number(bits, 16));
    }
    case QMetaType::QByteArray:
        return type + value.toByteArray().toHex();
    case QMetaType::QDate:
        return type + QByteArray::number(value.toDate().toJulianDay());
    case QMetaType::QDateTime:
        return type + QByteArray::number(value.toDateTime().date().toJulianDay()) + ' ' +
               QByteArray::number(value.toDateTime().time().msecsSinceStartOfDay());
    default: {
        const QString text = value.toString();
        return type + QByteArray(reinterpret_cast<const char*>(text.utf16()), int(2 * text.size()))
                          .toHex();
    }
    }
}

DbfFieldConverter* const converters[] = {
    DbfStringConverter::instance(),
    DbfByteArrayConverter::instance(),
    DbfBoolConverter::instance(),
    DbfDateConverter::instance(),
    DbfDoubleConverter::instance(),
    DbfSmallIntConverter::instance(),
    DbfIntConverter::instance(),
    DbfLargeIntConverter::instance(),
    DbfBinaryDoubleConverter::instance(),
    DbfBinaryFloatConverter::instance(),
    DbfNullableStringConverter::instance(),
    DbfNullableNumberConverter::instance(),
    DbfNullableBoolConverter::instance(),
    DbfNullableDateConverter::instance(),
    DbfNullableDateTimeConverter::instance(),
    DbfNullableCurrencyConverter::instance(),
};

DbfSchema anySchema()
{
    DbfSchema schema({}, QTextCodec::codecForName(oneOf(
                             {"windows-1251", "IBM 866", "UTF-8", "Shift_JIS", "KOI8-R", "none"})));
    for (DbfFieldConverter* const converter : converters) {
        const auto length = static_cast<unsigned char>(oneOf({1, 4, 8, 10, 12, 20, 40, 255}));
        const auto decimals = static_cast<unsigned char>(below(2) ? 0 : below(8));
        DbfColumn column(
            {"F", DbfFieldType(oneOf({'C', 'N', 'F', 'D', 'L', 'I'})), length, decimals});
        column.setConverter(converter);
        schema.columns.append(column);
    }
    return schema;
}

void printStored(const DbfSchema& schema)
{
    const QVariant value = anyValue();
    std::printf("%s\n", shown(value).constData());
    for (const DbfColumn& column : schema.columns) {
        const QByteArray bytes = column.converter->toByteArray(value, schema, column.descriptor);
        QVariant converted = value;
        const bool converts = column.converter->convertVariant(converted);
        const QByteArray copied =
            column.converter->toByteArray(converted, schema, column.descriptor);
        std::printf(" %s %d %s %s\n", bytes.toHex().constData(), converts,
                    copied.toHex().constData(), converts ? shown(converted).constData() : "");
    }
    DbfRecord record(-1, QVector<QVariant>(schema.columns.size(), value));
    for (const DbfValueProblem& problem : checkValues(record, schema))
        std::printf(" problem %d %d\n", problem.columnIndex, int(problem.reason));
}

void printRead(const DbfSchema& schema)
{
    QByteArray bytes;
    switch (below(4)) {
    case 0:
        bytes = numberText();
        break;
    case 1:
        bytes = dateText();
        break;
    case 2:
        bytes = anyText().toUtf8();
        break;
    default:
        for (int i = below(20); i > 0; --i)
            bytes += char(source());
    }
    std::printf("%s\n", bytes.toHex().constData());
    for (const DbfColumn& column : schema.columns)
        std::printf(
            " %s\n",
            shown(column.converter->toVariant(bytes, schema, column.descriptor)).constData());
}

/// Makes a table, changes it, and copies it into columns of other types.
void printTable()
{
    const QVector<DbfFieldDescriptor> fields{{"C", DbfFieldType::Character, 20, 0},
                                             {"N", DbfFieldType::Numeric, 12, 3},
                                             {"F", DbfFieldType::Float, 20, 4},
                                             {"D", DbfFieldType::Date, 8, 0},
                                             {"L", DbfFieldType::Logical, 1, 0}};
    QByteArray bytes;
    QBuffer device(&bytes);
    DbfTable table(&device);
    bool isWritten = table.create({fields, DbfTable::codecByCodePage(DbfCodePage(0xC9))}) &&
                     table.open(QIODevice::ReadWrite);
    QVector<DbfRecord> records;
    for (int i = 0; i < 20; ++i)
        records << DbfRecord(-1, {anyValue(), anyValue(), anyValue(), anyValue(), anyValue()});
    isWritten = table.appendRecords(records) && isWritten;
    isWritten = table.updateValues(DbfRecord(3, records.at(7).values)) && isWritten;
    DbfSchemaTransform transform = DbfSchemaTransform::identity(table.schema());
    for (int column = 0; column < fields.size(); ++column) {
        DbfColumn target(fields.at(below(int(fields.size()))));
        target.setConverter(converters[below(int(std::size(converters)))]);
        transform.updateColumn(column, target);
    }
    QByteArray copy;
    QBuffer copyDevice(&copy);
    copyDevice.open(QIODevice::WriteOnly);
    const bool isCopied = table.copyAndTransform(&copyDevice, transform);
    std::printf("table %d %d %s\ncopy %s\n", isWritten, isCopied, bytes.toHex().constData(),
                copy.toHex().constData());
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc > 1)
        source.seed(std::strtoull(argv[1], nullptr, 10));
    qputenv("TZ", "Europe/Berlin");
    for (int i = 0; i < 20000; ++i) {
        const DbfSchema schema = anySchema();
        printStored(schema);
        printRead(schema);
    }
    for (int i = 0; i < 2000; ++i)
        printTable();
    return std::ferror(stdout) == 0 ? 0 : 1;
}
