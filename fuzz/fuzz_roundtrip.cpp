// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"

#include <algorithm>

using namespace dbf;
using namespace fuzzing;

/// Makes a schema and records from the bytes, writes them, and demands the same values back, as far
/// as the field's converter keeps them.
namespace
{

/// A field, and how a value for it comes about together with what it must read back as.
struct Field {
    DbfFieldDescriptor descriptor;
    DbfFieldConverter* converter = nullptr;
    QVariant (*draw)(FuzzedDataProvider& choices, const Field& field, QTextCodec* codec,
                     QVariant& expected) = nullptr;
};

/// Draws text of characters that the codec encodes and decodes back, no longer than the field.
QVariant drawText(FuzzedDataProvider& choices, const Field& field, QTextCodec* codec,
                  QVariant& expected)
{
    const QString drawn = codec->toUnicode(drawBytes(choices, field.descriptor.length + 10U));
    QString text;
    for (const QChar character : drawn) {
        if (!character.isNull() && codec->toUnicode(codec->fromUnicode(character)) == character)
            text += character;
    }
    if (codec->fromUnicode(text.trimmed()).size() > field.descriptor.length)
        text = text.trimmed().left(field.descriptor.length / 4);
    expected = text.trimmed();
    return text;
}

QVariant drawDigits(FuzzedDataProvider& choices, const Field& field, QTextCodec* /*codec*/,
                    QVariant& expected)
{
    const auto number = choices.ConsumeIntegral<qlonglong>();
    expected = QString::number(number).left(field.descriptor.length);
    return number;
}

QDate drawStorableDate(FuzzedDataProvider& choices)
{
    return QDate::fromJulianDay(choices.ConsumeIntegralInRange(QDate(1, 1, 1).toJulianDay(),
                                                               QDate(9999, 12, 31).toJulianDay()));
}

QVariant drawDate(FuzzedDataProvider& choices, const Field& field, QTextCodec* /*codec*/,
                  QVariant& expected)
{
    const QDate date = choices.ConsumeBool() ? QDate() : drawStorableDate(choices);
    expected = field.descriptor.length >= 8 ? date : QDate();
    return field.descriptor.length >= 8 ? date : QDate();
}

/// Demands no more of a number than half a unit of its last decimal, where its text fits.
QVariant drawNumber(FuzzedDataProvider& choices, const Field& field, QTextCodec* /*codec*/,
                    QVariant& expected)
{
    const double number = choices.ConsumeBool()
                              ? choices.ConsumeIntegralInRange(-2000000, 2000000) / 128.0
                              : choices.ConsumeFloatingPoint<double>();
    const QByteArray text = QByteArray::number(number, 'f', field.descriptor.decimals);
    expected = text.left(field.descriptor.length).toDouble();
    if (text.size() <= field.descriptor.length && std::isfinite(number))
        demand(std::abs(expected.toDouble() - number) <=
                   0.5 * std::pow(10, -field.descriptor.decimals) * (1 + 1e-9) +
                       std::abs(number) * 1e-15,
               "a number that fits is kept to its last decimal");
    return number;
}

QVariant drawLogical(FuzzedDataProvider& choices, const Field& /*field*/, QTextCodec* /*codec*/,
                     QVariant& expected)
{
    return expected = choices.ConsumeBool();
}

QVariant drawRaw(FuzzedDataProvider& choices, const Field& field, QTextCodec* /*codec*/,
                 QVariant& expected)
{
    return expected = drawBytes(choices, field.descriptor.length)
                          .leftJustified(field.descriptor.length, '\0', true);
}

/// An integer of the field's width, handed in as it is or as a decimal with a fraction, which is
/// rounded half away from zero.
template <typename Integer, typename Value>
QVariant drawInteger(FuzzedDataProvider& choices, const Field& field, QTextCodec* /*codec*/,
                     QVariant& expected)
{
    const auto integer = choices.ConsumeIntegral<Integer>();
    expected = Value(integer);
    if (integer < -99999999 || integer > 99999999 || choices.ConsumeBool())
        return expected;
    const int tenths = choices.ConsumeIntegralInRange(0, 9);
    const Value rounded = Value(integer + (tenths < 5 ? 0 : integer < 0 ? -1 : 1));
    QVariant value =
        QVariant::fromValue(QDecNumber(QStringLiteral("%1.%2").arg(integer).arg(tenths)));
    demand(field.converter->convertVariant(value), "decimals become integers");
    expected = Value(static_cast<Integer>(rounded));
    return value;
}

QVariant drawDouble(FuzzedDataProvider& choices, const Field& /*field*/, QTextCodec* /*codec*/,
                    QVariant& expected)
{
    return expected = choices.ConsumeFloatingPoint<double>();
}

QVariant drawFloat(FuzzedDataProvider& choices, const Field& /*field*/, QTextCodec* /*codec*/,
                   QVariant& expected)
{
    return expected = choices.ConsumeFloatingPoint<float>();
}

/// As drawText(), but leading spaces count.
QVariant drawWholeText(FuzzedDataProvider& choices, const Field& field, QTextCodec* codec,
                       QVariant& expected)
{
    drawText(choices, field, codec, expected);
    QString text = expected.toString();
    if (!text.isEmpty() && codec->fromUnicode(text).size() < field.descriptor.length)
        text.prepend(QLatin1Char(' '));
    return expected = text;
}

/// A number that has as many decimals as its column, none included, or no value.
QVariant drawExactNumber(FuzzedDataProvider& choices, const Field& field, QTextCodec* /*codec*/,
                         QVariant& expected)
{
    if (choices.ConsumeBool())
        return expected = QVariant();
    if (field.descriptor.decimals == 0)
        return expected = choices.ConsumeIntegral<qlonglong>();
    const auto units = choices.ConsumeIntegralInRange(-999999999999999, 999999999999999);
    return expected = static_cast<double>(units) / std::pow(10.0, field.descriptor.decimals);
}

QVariant drawDateOrNone(FuzzedDataProvider& choices, const Field& /*field*/, QTextCodec* /*codec*/,
                        QVariant& expected)
{
    return expected = choices.ConsumeBool() ? QVariant() : drawStorableDate(choices);
}

QVariant drawClockOrNone(FuzzedDataProvider& choices, const Field& /*field*/, QTextCodec* /*codec*/,
                         QVariant& expected)
{
    if (choices.ConsumeBool())
        return expected = QVariant();
    const QTime time =
        QTime::fromMSecsSinceStartOfDay(choices.ConsumeIntegralInRange(0, 86'399'999));
    return expected = QDateTime(drawStorableDate(choices), time, Qt::UTC);
}

QVariant drawTruthOrNone(FuzzedDataProvider& choices, const Field& /*field*/, QTextCodec* /*codec*/,
                         QVariant& expected)
{
    return expected = choices.ConsumeBool() ? QVariant() : choices.ConsumeBool();
}

/// A field of the set in which blank means blank: what goes in comes out, no value included.
Field drawNullableField(FuzzedDataProvider& choices)
{
    constexpr quint8 longestNumber = 20; // in digits, its sign among them
    const auto length = choices.ConsumeIntegral<quint8>();
    const auto field = [](char type, quint8 size, quint8 decimals = 0) {
        return DbfFieldDescriptor(QStringLiteral("FIELD"), static_cast<DbfFieldType>(type), size,
                                  decimals);
    };
    const auto made = [](const DbfFieldDescriptor& descriptor, decltype(Field::draw) draw) {
        return Field{descriptor, nullableConverter(descriptor, {}), draw};
    };
    switch (choices.ConsumeIntegralInRange(0, 4)) {
    case 0:
        return made(field('C', length), drawWholeText);
    case 1:
        return made(field('N', std::max(length, longestNumber),
                          choices.ConsumeIntegralInRange<quint8>(0, 15)),
                    drawExactNumber);
    case 2:
        return made(field('D', 8), drawDateOrNone);
    case 3:
        return made(field('T', 8), drawClockOrNone);
    default:
        return made(field('L', 1), drawTruthOrNone);
    }
}

Field drawField(FuzzedDataProvider& choices)
{
    if (choices.ConsumeBool())
        return drawNullableField(choices);
    const auto length = choices.ConsumeIntegral<quint8>();
    const auto field = [](DbfFieldType type, int size, int decimals = 0) {
        return DbfFieldDescriptor(QStringLiteral("FIELD"), type, static_cast<quint8>(size),
                                  static_cast<quint8>(decimals));
    };
    constexpr auto raw = static_cast<DbfFieldType>('B');
    switch (choices.ConsumeIntegralInRange(0, 10)) {
    case 0:
        return {field(DbfFieldType::Character, length), DbfStringConverter::instance(), drawText};
    case 1:
        return {field(DbfFieldType::Numeric, length), DbfStringConverter::instance(), drawDigits};
    case 2:
        return {field(DbfFieldType::Date, length), DbfDateConverter::instance(), drawDate};
    case 3:
        return {field(DbfFieldType::Float, length, choices.ConsumeIntegralInRange(0, 30)),
                DbfDoubleConverter::instance(), drawNumber};
    case 4:
        return {field(DbfFieldType::Logical, 1), DbfBoolConverter::instance(), drawLogical};
    case 5:
        return {field(raw, length), DbfByteArrayConverter::instance(), drawRaw};
    case 6:
        return {field(raw, 2), DbfSmallIntConverter::instance(), drawInteger<qint16, int>};
    case 7:
        return {field(raw, 4), DbfIntConverter::instance(), drawInteger<qint32, int>};
    case 8:
        return {field(raw, 8), DbfLargeIntConverter::instance(), drawInteger<qint64, qlonglong>};
    case 9:
        return {field(raw, 8), DbfBinaryDoubleConverter::instance(), drawDouble};
    default:
        return {field(raw, 4), DbfBinaryFloatConverter::instance(), drawFloat};
    }
}

void installConverters(DbfTable& table, const QVector<Field>& fields)
{
    for (int i = 0; i < fields.size(); ++i)
        table.setFieldConverter(i, fields.at(i).converter);
}

/// A record to write, its values made what it must read back as in \a expected.
DbfRecord drawRecord(FuzzedDataProvider& choices, const QVector<Field>& fields, QTextCodec* codec,
                     DbfRecord& expected)
{
    const bool isDeleted = choices.ConsumeBool();
    DbfRecord record(expected.index(), {});
    record.setDeleted(isDeleted);
    expected.setDeleted(isDeleted);
    for (const Field& field : fields) {
        expected.values.append(QVariant());
        record.values.append(field.draw(choices, field, codec, expected.values.last()));
    }
    return record;
}

void identicalCopyIsIdentical(DbfTable& table, const MemoryFile& file)
{
    MemoryFile target;
    demand(table.copyAndTransform(&target, DbfSchemaTransform::identity(table.schema())),
           "a copy succeeds");
    demand(target.content == file.content, "an identity copy is byte for byte the same");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    forbidMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider choices(data, size);
    constexpr int mibs[] = {2251, 2086, 2084, 4, 106, 17};
    QTextCodec* const codec = QTextCodec::codecForMib(choices.PickValueInArray(mibs));
    QVector<Field> fields;
    QVector<DbfFieldDescriptor> descriptors;
    for (int i = choices.ConsumeIntegralInRange(0, 8); i > 0; --i) {
        fields << drawField(choices);
        descriptors << fields.last().descriptor;
    }

    MemoryFile file;
    DbfTable table(&file);
    demand(table.create({descriptors, codec}), "creating succeeds");
    table.overrideTextCodec(codec);
    demand(table.open(QIODevice::ReadWrite), "a created table opens");
    demand(table.schema().columns.size() == fields.size(), "the columns are there");
    installConverters(table, fields);

    QVector<DbfRecord> records;
    QVector<DbfRecord> expected;
    for (int i = choices.ConsumeIntegralInRange(0, 6); i > 0; --i) {
        expected << DbfRecord(static_cast<int>(expected.size()), {});
        records << drawRecord(choices, fields, codec, expected.last());
    }
    const auto count = static_cast<int>(records.size());
    const int singles = choices.ConsumeIntegralInRange(0, count);
    for (int i = 0; i < singles; ++i)
        demand(table.appendRecord(records.at(i)), "appending succeeds");
    demand(table.appendRecords(records.mid(singles)), "bulk appending succeeds");
    for (const DbfRecord& record : std::as_const(records)) {
        if (choices.ConsumeBool())
            demand(table.updateRecord(record), "updating in place changes nothing");
    }

    demand(table.reopen() && table.recordCount() == records.size(), "the table opens again");
    installConverters(table, fields);
    const QVector<DbfRecord> read = table.readRecords(0, count);
    demand(std::equal(read.cbegin(), read.cend(), expected.cbegin(), expected.cend(),
                      [](const DbfRecord& a, const DbfRecord& b) { return isSame(a, b); }),
           "the values come back");
    identicalCopyIsIdentical(table, file);
    return 0;
}
