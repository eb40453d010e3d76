// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/givenvalue_p.h>
#include <dbf/decimal/decimalvalue_p.h>
#include <dbf/encoding/bytes_p.h>
#include <dbf/encoding/datetext_p.h>
#include <dbf/encoding/qt5values_p.h>

#include <QtCore/QDateTime>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace dbf
{

namespace
{

constexpr int isoDateSize = 10;
constexpr int plainDateSize = 8;
constexpr int millisecondsPerDay = 86400000;

/// Returns the text of a value that holds text or bytes, trimmed; nothing for other types.
std::optional<QString> heldText(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::QString:
        return held<QString>(value).trimmed();
    case QMetaType::QByteArray:
        return qt5::fromUtf8(held<QByteArray>(value)).trimmed();
    case QMetaType::QChar:
        return QString(held<QChar>(value)).trimmed();
    default:
        return std::nullopt;
    }
}

using Ascii = QVarLengthArray<char, 48>;

/// Makes each character that is not ASCII one that no number or date has.
Ascii asciiOf(const QString& text)
{
    Ascii ascii;
    for (const QChar character : text)
        ascii.append(character.unicode() < 0x80 ? static_cast<char>(character.unicode()) : '#');
    return ascii;
}

std::string_view viewOf(const Ascii& text)
{
    return {text.constData(), static_cast<size_t>(text.size())};
}

/// Takes the parts of a text from its start.
class Parts
{
public:
    explicit Parts(std::string_view text) : m_rest(text) {}

    bool atEnd() const { return m_rest.empty(); }

    bool take(std::string_view oneOf)
    {
        if (atEnd() || oneOf.find(m_rest.front()) == std::string_view::npos)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    std::optional<int> digits(size_t count)
    {
        if (m_rest.size() < count || !std::all_of(m_rest.begin(), m_rest.begin() + count, isDigit))
            return std::nullopt;
        int number = 0;
        for (const char digit : m_rest.substr(0, count))
            number = number * 10 + (digit - '0');
        m_rest.remove_prefix(count);
        return number;
    }

private:
    std::string_view m_rest;
};

/// Takes a date of eight digits, or with a hyphen before month and day; invalid if there is none.
QDate takeDate(Parts& text)
{
    const std::optional<int> year = text.digits(4);
    const bool hasHyphens = text.take("-");
    const std::optional<int> month = text.digits(2);
    if (hasHyphens != text.take("-"))
        return {};
    const std::optional<int> day = text.digits(2);
    return year && month && day && *year > 0 ? QDate(*year, *month, *day) : QDate();
}

/// Takes what stands behind the seconds' point, rounded to milliseconds that are still this
/// second's.
int takeMilliseconds(Parts& text)
{
    int milliseconds = 0;
    int unit = 1000;
    for (std::optional<int> digit = text.digits(1); digit; digit = text.digits(1)) {
        milliseconds += unit >= 10 ? *digit * (unit / 10) : 0;
        if (unit == 1 && *digit >= 5 && milliseconds < 999)
            ++milliseconds;
        unit /= 10;
    }
    return milliseconds;
}

/// Takes a time, at least hours and minutes, in milliseconds; at most a day's.
std::optional<int> takeTime(Parts& text)
{
    const std::optional<int> hours = text.digits(2);
    const bool hasColon = text.take(":");
    const std::optional<int> minutes = text.digits(2);
    if (!hours || !hasColon || !minutes)
        return std::nullopt;
    int seconds = 0;
    int milliseconds = 0;
    if (text.take(":")) {
        seconds = text.digits(2).value_or(60);
        if (text.take(".,"))
            milliseconds = takeMilliseconds(text);
    }
    const int time = ((*hours * 60 + *minutes) * 60 + seconds) * 1000 + milliseconds;
    if (*minutes > 59 || seconds > 59 || time > millisecondsPerDay)
        return std::nullopt;
    return time;
}

/// Takes a time zone, and returns whether nothing follows.
bool takeZone(Parts& text)
{
    text.take(" ");
    if (text.take("+-")) {
        const bool hasHours = text.digits(2).has_value();
        text.take(":");
        return hasHours && (text.digits(2), text.atEnd());
    }
    text.take("Zz");
    return text.atEnd();
}

GivenClock clockOfText(const QString& trimmed, bool hasTime)
{
    if (trimmed.isEmpty())
        return {Given::Nothing, {}, 0};
    const Ascii ascii = asciiOf(trimmed);
    Parts text(viewOf(ascii));
    GivenClock clock;
    clock.date = takeDate(text);
    bool isClock = text.atEnd();
    if (hasTime && text.take("Tt ")) {
        const std::optional<int> time = takeTime(text);
        isClock = time && takeZone(text);
        clock.milliseconds = time.value_or(0) % millisecondsPerDay;
        if (time == millisecondsPerDay)
            clock.date = clock.date.addDays(1);
    }
    if (!isClock || !isStorable(clock.date))
        return {Given::Other, {}, 0};
    return clock;
}

GivenClock clockOf(const QVariant& value, bool hasTime)
{
    if (qt5::isNull(value))
        return {Given::Nothing, {}, 0};
    if (const std::optional<QString> text = heldText(value))
        return clockOfText(*text, hasTime);
    GivenClock clock;
    if (value.userType() == QMetaType::QDate) {
        clock.date = held<QDate>(value);
    } else if (value.userType() == QMetaType::QDateTime) {
        clock.date = held<QDateTime>(value).date();
        clock.milliseconds = held<QDateTime>(value).time().msecsSinceStartOfDay();
    }
    if (!isStorable(clock.date))
        return {Given::Other, {}, 0};
    return clock;
}

QString twoDigits(int number)
{
    return QString::number(number).rightJustified(2, QLatin1Char('0'));
}

/// Returns the longest form of date and time that \a length places have room for.
QString clockText(const GivenClock& clock, bool hasTime, int length)
{
    std::array<char, plainDateSize> digits;
    writeDateField(clock.date, digits.data(), plainDateSize);
    QString text = QString::fromLatin1(digits.data(), plainDateSize);
    if (length < isoDateSize)
        return text;
    text.insert(6, QLatin1Char('-')).insert(4, QLatin1Char('-'));
    if (!hasTime)
        return text;
    const int seconds = clock.milliseconds / 1000;
    const int milliseconds = clock.milliseconds % 1000;
    const QString minutes = QLatin1Char('T') + twoDigits(seconds / 3600) + QLatin1Char(':') +
                            twoDigits(seconds / 60 % 60);
    QStringList more{minutes, QLatin1Char(':') + twoDigits(seconds % 60)};
    if (milliseconds > 0)
        more << QLatin1Char('.') +
                    QString::number(milliseconds).rightJustified(3, QLatin1Char('0'));
    for (const QString& part : std::as_const(more)) {
        if (text.size() + part.size() > length)
            break;
        text += part;
    }
    return text;
}

/// Returns the shortest text of a number, plain where that needs no zeros for unknown digits.
template <typename Number>
QString floatingText(Number number)
{
    constexpr double firstLarge = 1e15;
    constexpr double lastSmall = 1e-5;
    if (!std::isfinite(number))
        return QLatin1String(std::isnan(number) ? "nan" : number < 0 ? "-inf" : "inf");
    const auto magnitude = static_cast<double>(std::abs(number));
    const bool isPlain = magnitude == 0 || (magnitude >= lastSmall && magnitude < firstLarge);
    std::array<char, 40> text;
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), magnitude == 0 ? Number(0) : number,
                      isPlain ? std::chars_format::fixed : std::chars_format::scientific);
    return QString::fromLatin1(text.data(), static_cast<int>(end.ptr - text.data()));
}

/// Returns the text of a number, nothing for other types.
std::optional<QString> numberText(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::Double:
        return floatingText(held<double>(value));
    case QMetaType::Float:
        return floatingText(held<float>(value));
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Char:
    case QMetaType::SChar:
        return QString::number(value.toLongLong());
    case QMetaType::UInt:
    case QMetaType::UShort:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UChar:
        return QString::number(value.toULongLong());
    default:
        break;
    }
    const std::optional<QDecNumber> decimal = decimalValue(value);
    return decimal ? std::optional(decimal->toString()) : std::nullopt;
}

/// Returns the number that \a text is, brought into \a length places, with as many of its decimals
/// as these have room for.
QString fittedNumber(const QString& text, int length)
{
    const Ascii ascii = asciiOf(text);
    const std::optional<DecimalText> digits = DecimalText::read(viewOf(ascii));
    if (text.size() <= length || !digits)
        return text;
    QByteArray field(length, Qt::Uninitialized);
    writeDecimalField(*digits, length, field.data(), length);
    return QString::fromLatin1(field.trimmed());
}

} // namespace

GivenNumber::GivenNumber(const QVariant& value)
{
    if (qt5::isNull(value)) {
        m_given = Given::Nothing;
        return;
    }
    switch (value.userType()) {
    case QMetaType::Double:
        setFloating(held<double>(value));
        break;
    case QMetaType::Float:
        setFloating(held<float>(value));
        break;
    case QMetaType::Bool:
        setDigits(value.toBool() ? "1" : "0");
        break;
    default:
        setText(value);
    }
}

void GivenNumber::setText(const QVariant& value)
{
    std::optional<QString> text = heldText(value);
    if (text && text->isEmpty()) {
        m_given = Given::Nothing;
        return;
    }
    if (const std::optional<QDecNumber> decimal = decimalValue(value);
        decimal && decimal->isInfinite()) {
        m_negative = decimal->isNegative();
        return;
    }
    if (!text)
        text = numberText(value);
    setDigits(viewOf(asciiOf(text.value_or(QString()))));
}

template <typename Number>
void GivenNumber::setFloating(Number number)
{
    if (std::isinf(number))
        m_negative = number < 0;
    else if (std::isnan(number))
        m_given = Given::Other;
    else
        setDigits(ShortestText(number).text());
}

void GivenNumber::setDigits(std::string_view text)
{
    m_text.append(text.data(), static_cast<ContainerSize>(text.size()));
    m_digits = DecimalText::read(viewOf(m_text));
    if (!m_digits)
        m_given = Given::Other;
    else
        m_negative = m_digits->isNegative();
}

GivenClock givenDate(const QVariant& value)
{
    return clockOf(value, false);
}

GivenClock givenClock(const QVariant& value)
{
    return clockOf(value, true);
}

GivenTruth givenTruth(const QVariant& value)
{
    if (value.userType() == QMetaType::Bool && held<bool>(value)) // A null one holds false.
        return {Given::Value, true};
    if (qt5::isNull(value))
        return {Given::Nothing, false};
    if (value.userType() == QMetaType::Bool)
        return {Given::Value, false};
    if (const std::optional<QString> text = heldText(value)) {
        const QString lower = text->toLower();
        static constexpr std::array truths{"t", "y", "true", "yes", "1"};
        static constexpr std::array falsehoods{"f", "n", "false", "no", "0"};
        const auto isWord = [&lower](const char* word) { return lower == QLatin1String(word); };
        if (std::any_of(truths.begin(), truths.end(), isWord))
            return {Given::Value, true};
        if (std::any_of(falsehoods.begin(), falsehoods.end(), isWord))
            return {Given::Value, false};
        return {lower.isEmpty() ? Given::Nothing : Given::Other, false};
    }
    const GivenNumber number(value);
    if (number.given() != Given::Value)
        return {number.given(), false};
    return {Given::Value, number.isInfinite() || !number.digits().isZero()};
}

GivenText givenText(const QVariant& value, int length)
{
    if (qt5::isNull(value))
        return {Given::Nothing, {}};
    const int type = value.userType();
    if (type == QMetaType::QString)
        return {Given::Value, held<QString>(value)};
    if (type == QMetaType::Bool)
        return {Given::Value, QLatin1String(held<bool>(value) ? "T" : "F")};
    if (type == QMetaType::QDate || type == QMetaType::QDateTime) {
        const GivenClock clock = givenClock(value);
        if (clock.given != Given::Value)
            return {clock.given, {}};
        return {Given::Value, clockText(clock, type == QMetaType::QDateTime, length)};
    }
    if (const std::optional<QString> number = numberText(value))
        return {Given::Value, fittedNumber(*number, length)};
    QVariant copy = value;
    if (!qt5::convert(copy, QMetaType::QString))
        return {Given::Other, {}};
    return {Given::Value, held<QString>(copy)};
}

} // namespace dbf
