// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/encoding/qt5values_p.h>

#include <QtCore/QDateTime>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

// Only for builds with a later Qt.
namespace dbf::qt5
{

namespace
{

template <typename Type>
const Type& held(const QVariant& value)
{
    return *static_cast<const Type*>(value.constData());
}

/// Returns \a number without its decimals; what has no room, and NaN, is the least integer.
template <typename Floating>
qint64 truncated(Floating number)
{
    using Limits = std::numeric_limits<qint64>;
    const auto bound = static_cast<Floating>(Limits::min()); // exact, as 2^63 is not in reach
    return number >= bound && number < -bound ? static_cast<qint64>(number) : Limits::min();
}

/// Returns \a number rounded, ties upwards. Below zero the way goes through the next integer but
/// one, which shows in what is out of range or has no decimals left.
template <typename Floating>
qint64 rounded(Floating number)
{
    constexpr auto half = static_cast<Floating>(0.5);
    if (number >= 0)
        return truncated(number + half);
    const qint64 below = truncated(number - 1);
    const qint64 rest = truncated(number - static_cast<Floating>(below) + half);
    return static_cast<qint64>(static_cast<quint64>(rest) + static_cast<quint64>(below));
}

/// Returns what a floating number rounds to, nothing for other types.
std::optional<qint64> roundedFloating(const QVariant& value)
{
    if (value.userType() == QMetaType::Double)
        return rounded(held<double>(value));
    if (value.userType() == QMetaType::Float)
        return rounded(held<float>(value));
    return std::nullopt;
}

/// Returns the shortest text of a number, plain where that takes as many places as an exponent; Qt
/// 6 then prefers the exponent, with one digit before it.
QString floatingText(const QString& text)
{
    const bool isNegative = text.startsWith(QLatin1Char('-'));
    const QString digits = text.mid(isNegative ? 1 : 0);
    if (digits.size() != 5)
        return text;
    const QString sign = text.left(isNegative ? 1 : 0);
    if (digits.endsWith(QLatin1String("e+05")))
        return sign + digits.front() + QLatin1String("00000");
    if (digits.endsWith(QLatin1String("e-04")))
        return sign + QLatin1String("0.000") + digits.front();
    return text;
}

/// Returns \a text as a later Qt reads the integer that an earlier one read in it.
QString integerText(const QString& text)
{
    constexpr char16_t minusSign = 0x2212;
    if (text.contains(QChar(0)))
        return {};
    return text.trimmed().replace(QChar(minusSign), QLatin1Char('-'));
}

bool isFloating(int type)
{
    return type == QMetaType::Double || type == QMetaType::Float;
}

bool isCharacter(int type)
{
    return type == QMetaType::Char || type == QMetaType::SChar || type == QMetaType::UChar;
}

bool isMoment(int type)
{
    return type == QMetaType::QDate || type == QMetaType::QTime || type == QMetaType::QDateTime;
}

bool isNumber(int type)
{
    switch (type) {
    case QMetaType::Bool:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return isFloating(type) || isCharacter(type);
    }
}

/// Whether there is no conversion from \a source to \a target. Qt 6 knows more of them, and looks
/// for those that it does not know in a register that is gone when the program ends.
bool isUnknown(int source, int target)
{
    // Of a variant that holds one of these the integer can be had and nothing else.
    const bool isLimited =
        source == QMetaType::Long || source == QMetaType::ULong || source == QMetaType::UChar;
    if (source == QMetaType::UnknownType)
        return true;
    switch (target) {
    case QMetaType::QDate:
        return isNumber(source) || source == QMetaType::QByteArray;
    case QMetaType::QString:
        return isLimited;
    case QMetaType::QByteArray:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Bool:
        return isLimited || isMoment(source);
    default:
        return isNumber(target) && isMoment(source);
    }
}

/// Whether conversions from that type are those that somebody has registered.
bool isOfCaller(int type)
{
    return type >= QMetaType::User;
}

bool convertByQt(QVariant& value, int type)
{
    return value.convert(QMetaType(type));
}

/// Puts a number into a variant that holds a null one, and leaves it null: so is what a conversion
/// leaves that has failed, and then nothing else is made of it.
void setNull(QVariant& value, double number)
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): data() would end its being null
    *static_cast<double*>(const_cast<void*>(value.constData())) = number;
}

/// Makes text or bytes a double, and returns whether they are one.
bool convertToDouble(QVariant& value)
{
    const QVariant text = value;
    if (convertByQt(value, QMetaType::Double))
        return true;
    if (text.userType() == QMetaType::QByteArray)
        setNull(value, toDouble(held<QByteArray>(text)));
    return false;
}

/// Does the same with a float, which what has no room in one is not.
bool convertToFloat(QVariant& value)
{
    const bool isNumber = convertToDouble(value);
    const double number = held<double>(value);
    const auto narrow = static_cast<float>(number);
    value = QVariant(narrow);
    return isNumber && (std::isinf(number) || !std::isinf(narrow)) &&
           (number == 0.0 || narrow != 0.0F);
}

template <typename Integer>
bool convertToInteger(QVariant& value, int type)
{
    if (const std::optional<qint64> integer = roundedFloating(value)) {
        value = QVariant::fromValue(static_cast<Integer>(*integer));
        return true;
    }
    if (value.userType() == QMetaType::QString)
        value = integerText(held<QString>(value));
    return convertByQt(value, type);
}

} // namespace

QString toText(const QVariant& value)
{
    if (value.userType() == QMetaType::QByteArray)
        return fromUtf8(held<QByteArray>(value));
    return isFloating(value.userType()) ? floatingText(value.toString()) : value.toString();
}

QByteArray toBytes(const QVariant& value)
{
    if (isFloating(value.userType()))
        return toText(value).toLatin1();
    return isCharacter(value.userType()) ? QByteArray(1, static_cast<char>(value.toInt()))
                                         : value.toByteArray();
}

bool toBool(const QVariant& value)
{
    const std::optional<qint64> integer = roundedFloating(value);
    return integer ? *integer != 0 : !isMoment(value.userType()) && value.toBool();
}

int toInt(const QVariant& value)
{
    const int type = value.userType();
    if (type == QMetaType::QString || isFloating(type))
        return static_cast<int>(toLongLong(value));
    return isMoment(type) ? 0 : value.toInt();
}

qlonglong toLongLong(const QVariant& value)
{
    if (const std::optional<qint64> integer = roundedFloating(value))
        return *integer;
    if (value.userType() == QMetaType::QString)
        return integerText(held<QString>(value)).toLongLong();
    return isMoment(value.userType()) ? 0 : value.toLongLong();
}

QDate toDate(const QVariant& value)
{
    return isUnknown(value.userType(), QMetaType::QDate) ? QDate() : value.toDate();
}

double toDouble(const QByteArray& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (isNumber || text.contains('\0'))
        return number;
    const double asText = QString::fromLatin1(text).toDouble();
    const bool hasDigits = std::any_of(text.begin(), text.end(), isDigit);
    return std::isinf(asText) && hasDigits ? asText : number;
}

QString fromUtf8(const QByteArray& bytes)
{
    const qsizetype end = bytes.indexOf('\0');
    return QString::fromUtf8(bytes.constData(), end < 0 ? bytes.size() : end);
}

bool isNull(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::QString:
        return held<QString>(value).isNull();
    case QMetaType::QByteArray:
        return held<QByteArray>(value).isNull();
    case QMetaType::QDate:
        return held<QDate>(value).isNull();
    case QMetaType::QTime:
        return held<QTime>(value).isNull();
    case QMetaType::QDateTime:
        return held<QDateTime>(value).isNull();
    default:
        return value.isNull();
    }
}

bool convert(QVariant& value, int type)
{
    const int source = value.userType();
    if (source == type)
        return true;
    if (isUnknown(source, type) || (isOfCaller(source) && !value.canConvert(QMetaType(type)))) {
        value = QVariant();
        return false;
    }
    if (value.isNull()) {
        convertByQt(value, type);
        return false;
    }
    const bool isBytes = source == QMetaType::QByteArray;
    switch (type) {
    case QMetaType::QString:
        return isBytes || isFloating(source) ? (value = toText(value), true)
                                             : convertByQt(value, type);
    case QMetaType::QByteArray:
        return isFloating(source) || isCharacter(source) ? (value = toBytes(value), true)
                                                         : convertByQt(value, type);
    case QMetaType::Double:
        return convertToDouble(value);
    case QMetaType::Float:
        return isBytes || source == QMetaType::QString ? convertToFloat(value)
                                                       : convertByQt(value, type);
    case QMetaType::Short:
        return convertToInteger<short>(value, type);
    case QMetaType::Int:
        return convertToInteger<int>(value, type);
    case QMetaType::LongLong:
        return convertToInteger<qlonglong>(value, type);
    case QMetaType::Bool:
        return isFloating(source) ? (value = toBool(value), true) : convertByQt(value, type);
    case QMetaType::QDate:
        return convertByQt(value, type) && !held<QDate>(value).isNull();
    default:
        return convertByQt(value, type);
    }
}

} // namespace dbf::qt5
