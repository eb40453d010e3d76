// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/fieldrules_p.h>
#include <dbf/converters/givenvalue_p.h>
#include <dbf/converters/nullablerules_p.h>

#include <QtCore/QDateTime>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace dbf
{

namespace
{

constexpr int dateTimeSize = 8; // day and milliseconds, 4 bytes each
constexpr int currencySize = 8;
constexpr int currencyDecimals = 4;
constexpr char unknownLetter = '?';

/// Keeps \a value if it is one of the type; the rest of what convertVariant() does.
bool keepIfGiven(QVariant& value, Given given)
{
    if (given != Given::Value)
        value = QVariant();
    return given != Given::Other;
}

/// Reads the plain integer of most columns without decimals: digits at the right end of the field,
/// at most so many that they always fit, with spaces before them.
std::optional<qint64> readPlainInteger(std::string_view bytes)
{
    constexpr std::ptrdiff_t mostDigits = std::numeric_limits<qint64>::digits10;
    const char* const end = bytes.data() + bytes.size();
    const char* position = bytes.data();
    while (position != end && *position == ' ')
        ++position;
    const bool isNegative = position != end && *position == '-';
    position += isNegative ? 1 : 0;
    if (position == end || end - position > mostDigits)
        return std::nullopt;
    qint64 number = 0;
    for (; position != end; ++position) {
        if (!isDigit(*position))
            return std::nullopt;
        number = number * 10 + (*position - '0');
    }
    return isNegative ? -number : number;
}

/// Reads everything that is a number.
QVariant readAnyNumber(std::string_view bytes, int decimals)
{
    const std::string_view text = trimmedAscii(untilZero(bytes));
    if (!DecimalText::read(text))
        return {};
    if (decimals == 0) {
        const std::string_view unsignedText = text.substr(text.front() == '+' ? 1 : 0);
        const char* const end = unsignedText.data() + unsignedText.size();
        qlonglong integer = 0;
        const auto result = std::from_chars(unsignedText.data(), end, integer);
        if (result.ec == std::errc() && result.ptr == end)
            return integer;
    }
    const std::optional<double> number = nearestDouble(text);
    return number ? QVariant(*number) : QVariant();
}

void writeNumber(const GivenNumber& number, const FieldContext& field, char* bytes)
{
    const auto length = static_cast<size_t>(field.length);
    if (number.given() != Given::Value)
        std::memset(bytes, ' ', length);
    else if (number.isInfinite())
        std::memset(bytes, '*', length);
    else
        writeDecimalField(number.digits(), field.decimals, bytes, field.length);
}

void writeInteger(qint64 number, const FieldContext& field, char* bytes)
{
    const auto bits = static_cast<quint64>(number);
    writeIntegerField(number < 0 ? ~bits + 1 : bits, number < 0, field.decimals, bytes,
                      field.length);
}

qint64 currencyUnits(const GivenNumber& number)
{
    using Limits = std::numeric_limits<qint64>;
    if (number.given() != Given::Value)
        return 0;
    if (number.isInfinite())
        return number.isNegative() ? Limits::min() : Limits::max();
    return unitsOfDecimal(number.digits(), currencyDecimals);
}

bool isLimit(qint64 units)
{
    using Limits = std::numeric_limits<qint64>;
    return units == Limits::min() || units == Limits::max();
}

/// Returns the decimal of an amount with all of its digits.
QByteArray currencyText(qint64 units)
{
    const bool isNegative = units < 0;
    QByteArray text = QByteArray::number(units).mid(isNegative ? 1 : 0);
    text = text.rightJustified(currencyDecimals + 1, '0');
    text.insert(text.size() - currencyDecimals, '.');
    return isNegative ? '-' + text : text;
}

} // namespace

QVariant NullableTextRule::read(std::string_view bytes, const FieldContext& field)
{
    return textVariant(field.codec->decodePadded(bytes));
}

void NullableTextRule::write(const QVariant& value, const FieldContext& field, char* bytes)
{
    if (value.userType() == QMetaType::QString) {
        field.codec->writePadded(held<QString>(value), bytes, field.length);
        return;
    }
    field.codec->writePadded(givenText(value, field.length).text, bytes, field.length);
}

bool NullableTextRule::convert(QVariant& value)
{
    return keepIfGiven(value, givenText(value, TextScratch::size).given);
}

QVariant NullableNumberRule::read(std::string_view bytes, const FieldContext& field)
{
    if (field.decimals == 0) {
        if (const std::optional<qint64> integer = readPlainInteger(bytes))
            return static_cast<qlonglong>(*integer);
    } else if (const std::optional<double> number = readRightJustifiedNumber(bytes)) {
        return *number + 0.0; // A zero has no sign.
    }
    return readAnyNumber(bytes, field.decimals);
}

// A null variant holds zero: asking each one costs more than to write it.
void NullableNumberRule::write(const QVariant& value, const FieldContext& field, char* bytes)
{
    const void* const data = value.constData();
    switch (value.userType()) {
    case QMetaType::LongLong:
        if (const auto number = *static_cast<const qlonglong*>(data); number != 0)
            return writeInteger(number, field, bytes);
        break;
    case QMetaType::Int:
        if (const auto number = *static_cast<const int*>(data); number != 0)
            return writeInteger(number, field, bytes);
        break;
    case QMetaType::Double:
        if (const auto number = *static_cast<const double*>(data);
            number != 0 && std::isfinite(number))
            return writeShortestField(number, field.decimals, bytes, field.length);
        break;
    default:
        break;
    }
    writeNumber(GivenNumber(value), field, bytes);
}

bool NullableNumberRule::convert(QVariant& value)
{
    return keepIfGiven(value, GivenNumber(value).given());
}

QVariant NullableLogicalRule::read(std::string_view bytes, const FieldContext& /*field*/)
{
    switch (bytes.empty() ? unknownLetter : bytes.front()) {
    case 'T':
    case 't':
    case 'Y':
    case 'y':
        return true;
    case 'F':
    case 'f':
    case 'N':
    case 'n':
        return false;
    default:
        return {};
    }
}

void NullableLogicalRule::write(const QVariant& value, const FieldContext& field, char* bytes)
{
    if (field.length == 0)
        return;
    std::memset(bytes + 1, ' ', static_cast<size_t>(field.length - 1));
    const GivenTruth truth = givenTruth(value);
    *bytes = truth.given != Given::Value ? unknownLetter : truth.truth ? 'T' : 'F';
}

bool NullableLogicalRule::convert(QVariant& value)
{
    return keepIfGiven(value, givenTruth(value).given);
}

QByteArray NullableLogicalRule::blank(int length)
{
    return QByteArray(1, unknownLetter).leftJustified(length, ' ', true);
}

QVariant NullableDateRule::read(std::string_view bytes, const FieldContext& /*field*/)
{
    const std::string_view digits = bytes.substr(0, dateSize);
    if (digits.size() < dateSize || !std::all_of(digits.begin(), digits.end(), isDigit))
        return {};
    const QDate date = readDate(digits);
    return date.isValid() ? QVariant(date) : QVariant();
}

void NullableDateRule::write(const QVariant& value, const FieldContext& field, char* bytes)
{
    const QDate date =
        value.userType() == QMetaType::QDate ? held<QDate>(value) : givenDate(value).date;
    const bool hasDate = isStorable(date) && field.length >= dateSize;
    writeDateField(hasDate ? date : QDate(), bytes, field.length);
}

bool NullableDateRule::convert(QVariant& value)
{
    return keepIfGiven(value, givenDate(value).given);
}

QVariant NullableDateTimeRule::read(std::string_view bytes, const FieldContext& /*field*/)
{
    constexpr qint32 millisecondsPerDay = 86400000;
    if (bytes.size() < dateTimeSize)
        return {};
    const QDate date = QDate::fromJulianDay(qFromLittleEndian<qint32>(bytes.data()));
    const auto milliseconds = qFromLittleEndian<qint32>(bytes.data() + sizeof(qint32));
    if (!isStorable(date) || milliseconds < 0 || milliseconds >= millisecondsPerDay)
        return {};
    return QDateTime(date, QTime::fromMSecsSinceStartOfDay(milliseconds), Qt::UTC);
}

void NullableDateTimeRule::write(const QVariant& value, const FieldContext& field, char* bytes)
{
    const GivenClock clock = givenClock(value);
    std::memset(bytes, 0, static_cast<size_t>(field.length));
    if (clock.given != Given::Value || field.length < dateTimeSize)
        return;
    qToLittleEndian(static_cast<qint32>(clock.date.toJulianDay()), bytes);
    qToLittleEndian(static_cast<qint32>(clock.milliseconds), bytes + sizeof(qint32));
}

bool NullableDateTimeRule::convert(QVariant& value)
{
    return keepIfGiven(value, givenClock(value).given);
}

QVariant NullableCurrencyRule::read(std::string_view bytes, const FieldContext& /*field*/)
{
    constexpr qint64 surelyExact = 1'000'000'000'000'000; // 15 digits
    const std::optional<qint64> units = readBinary<qint64>(bytes);
    if (!units)
        return {};
    if (*units > -surelyExact && *units < surelyExact)
        return static_cast<double>(*units) / static_cast<double>(powersOfTen[currencyDecimals]);
    const QByteArray text = currencyText(*units);
    const double number = nearestDouble(viewOf(text)).value_or(0.0);
    const ShortestText shortest(number);
    const auto digits = DecimalText::read(shortest.text());
    const qint64 writtenAgain = unitsOfDecimal(*digits, currencyDecimals);
    // What lies beyond the range becomes a limit, too.
    if (writtenAgain == *units && !isLimit(*units))
        return number;
    return QString::fromLatin1(text);
}

void NullableCurrencyRule::write(const QVariant& value, const FieldContext& field, char* bytes)
{
    std::memset(bytes, 0, static_cast<size_t>(field.length));
    if (field.length >= currencySize)
        qToLittleEndian(currencyUnits(GivenNumber(value)), bytes);
}

bool NullableCurrencyRule::convert(QVariant& value)
{
    return keepIfGiven(value, GivenNumber(value).given());
}

} // namespace dbf
