// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/decimal/qdecnumber.h>

#include <QtCore/QStringView>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<QDecNumber> &&
                  std::is_trivially_destructible_v<QDecNumber>,
              "callers copy numbers as plain memory and never destroy them");

namespace
{

/// Takes a text apart from its start, letters without regard to case.
template <typename Character>
class TextReader
{
public:
    explicit TextReader(std::basic_string_view<Character> text) : m_rest(text) {}

    bool atEnd() const { return m_rest.empty(); }

    bool restIs(std::string_view word) const
    {
        return std::equal(
            m_rest.begin(), m_rest.end(), word.begin(), word.end(),
            [](Character character, char letter) { return lower(character) == letter; });
    }

    bool take(char letter)
    {
        if (atEnd() || lower(m_rest.front()) != letter)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    /// Takes an optional sign and returns whether it is a minus.
    bool takeSign()
    {
        const bool isNegative = take('-');
        if (!isNegative)
            take('+');
        return isNegative;
    }

    std::optional<quint8> takeDigit()
    {
        if (atEnd() || m_rest.front() < '0' || m_rest.front() > '9')
            return std::nullopt;
        const auto digit = static_cast<quint8>(m_rest.front() - '0');
        m_rest.remove_prefix(1);
        return digit;
    }

private:
    static int lower(Character character)
    {
        return character >= 'A' && character <= 'Z' ? character - 'A' + 'a' : character;
    }

    std::basic_string_view<Character> m_rest;
};

/// The leading digits of an unsigned decimal text and the exponent of the last one kept.
/// Rounding half up asks for one digit more than a number holds and never for the rest.
struct Decimal {
    std::array<quint8, QDecNumber::MaxDigits + 1> digits = {};
    int digitCount = 0;
    qint64 exponent = 0;

    void append(quint8 digit)
    {
        const bool isLeadingZero = digitCount == 0 && digit == 0;
        if (isLeadingZero)
            return;
        if (digitCount <= QDecNumber::MaxDigits)
            digits[static_cast<size_t>(digitCount++)] = digit;
        else
            ++exponent;
    }
};

/// Reads digits around at most one point; gives nothing when there is no digit.
template <typename Character>
std::optional<Decimal> readSignificand(TextReader<Character>& text)
{
    Decimal decimal;
    bool hasDigits = false;
    bool hasPoint = false;
    for (;;) {
        if (const auto digit = text.takeDigit()) {
            hasDigits = true;
            decimal.append(*digit);
            if (hasPoint)
                --decimal.exponent;
        } else if (!hasPoint && text.take('.')) {
            hasPoint = true;
        } else {
            break;
        }
    }
    if (!hasDigits)
        return std::nullopt;
    return decimal;
}

/// Reads a signed integer of any length; gives nothing when there is no digit.
template <typename Character>
std::optional<qint64> readExponent(TextReader<Character>& text)
{
    // Beyond this no significand that fits in memory brings the number back into range, and sums
    // with the significand's own exponent still fit in 64 bits.
    constexpr qint64 saturation = 100'000'000'000'000'000;

    const bool isNegative = text.takeSign();
    auto digit = text.takeDigit();
    if (!digit)
        return std::nullopt;
    qint64 magnitude = 0;
    for (; digit; digit = text.takeDigit()) {
        if (magnitude < saturation)
            magnitude = magnitude * 10 + *digit;
    }
    return isNegative ? -magnitude : magnitude;
}

template <typename Character>
std::optional<Decimal> readDecimal(TextReader<Character>& text)
{
    auto decimal = readSignificand(text);
    if (decimal && text.take('e')) {
        const auto exponent = readExponent(text);
        if (!exponent)
            return std::nullopt;
        decimal->exponent += *exponent;
    }
    if (!text.atEnd())
        return std::nullopt;
    return decimal;
}

} // namespace

QDecNumber::QDecNumber(int value)
{
    std::array<char, 12> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    *this = read(TextReader(std::string_view(text.data(), static_cast<size_t>(end - text.data()))));
}

QDecNumber::QDecNumber(const char* text)
    : QDecNumber(read(TextReader(text ? std::string_view(text) : std::string_view())))
{
}

QDecNumber::QDecNumber(const QString& text)
    : QDecNumber(read(TextReader(
          std::u16string_view(QStringView(text).utf16(), static_cast<size_t>(text.size())))))
{
}

template <typename Reader>
QDecNumber QDecNumber::read(Reader text)
{
    const bool isNegative = text.takeSign();
    if (text.restIs("inf") || text.restIs("infinity"))
        return QDecNumber(Kind::Infinity, isNegative);
    if (text.restIs("nan"))
        return QDecNumber(Kind::QuietNaN, isNegative);
    if (text.restIs("snan"))
        return QDecNumber(Kind::SignalingNaN, isNegative);

    const auto decimal = readDecimal(text);
    if (!decimal)
        return QDecNumber(Kind::QuietNaN);

    QDecNumber number(Kind::Finite, isNegative);
    const int digitCount = decimal->digitCount;
    const qint64 lastExponent = decimal->exponent;
    if (digitCount == 0) {
        number.m_exponent =
            static_cast<qint32>(std::clamp<qint64>(lastExponent, MinExponent, MaxExponent));
        return number;
    }
    if (lastExponent + digitCount - 1 > MaxExponent)
        return QDecNumber(Kind::Infinity, isNegative);

    // One rounding to the place that both limits allow: rounding twice could round up twice.
    const int surplus = qMax(digitCount - MaxDigits, 0);
    const qint64 exponent = qMax<qint64>(lastExponent + surplus, MinExponent);
    number.setRounded(decimal->digits.data(), digitCount, lastExponent + digitCount - exponent,
                      static_cast<qint32>(exponent));
    if (number.adjustedExponent() > MaxExponent)
        return QDecNumber(Kind::Infinity, isNegative);
    return number;
}

/// Makes the coefficient from the first `keptCount` of `digits`, rounded half up by the digit that
/// follows, or with zeros behind when there are fewer; `exponent` is that of the last one kept.
/// `keptCount` is at most MaxDigits; when negative the rounding digit is one of the zeros in front.
/// The coefficient must be zero before. A carry out of MaxDigits nines raises the exponent.
void QDecNumber::setRounded(const quint8* digits, int digitCount, qint64 keptCount, qint32 exponent)
{
    m_exponent = exponent;
    if (keptCount < 0)
        return;
    const auto kept = static_cast<size_t>(keptCount);
    std::copy_n(digits, qMin<qint64>(digitCount, keptCount), m_digits.begin());
    m_digitCount = static_cast<quint8>(qMax<size_t>(kept, 1));
    const bool roundsUp = keptCount < digitCount && digits[kept] >= 5;
    if (!roundsUp)
        return;

    size_t position = kept;
    while (position > 0 && m_digits[position - 1] == 9)
        m_digits[--position] = 0;
    if (position > 0) {
        ++m_digits[position - 1];
        return;
    }
    m_digits[0] = 1;
    if (kept < MaxDigits)
        m_digitCount = static_cast<quint8>(kept + 1);
    else
        ++m_exponent;
}

/// Returns the number with the exponent that `exponent` is the integer of; the contract is that of
/// decNumberRescale().
QDecNumber QDecNumber::rescaled(const QDecNumber& exponent, int maxDigits) const
{
    const QDecNumber invalid(Kind::QuietNaN);
    const auto target = exponent.toInteger();
    if (m_kind != Kind::Finite || !target || qAbs(*target) > MaxExponent)
        return invalid;

    QDecNumber result(Kind::Finite, m_negative);
    result.m_exponent = static_cast<qint32>(*target);
    if (isZero())
        return result;
    const qint64 keptCount = m_digitCount + m_exponent - *target;
    if (keptCount > maxDigits)
        return invalid;
    result.setRounded(m_digits.data(), m_digitCount, keptCount, result.m_exponent);
    if (result.m_digitCount > maxDigits || result.adjustedExponent() > MaxExponent)
        return invalid;
    return result;
}

/// Returns the number's value when it is an integer of at most ten digits.
std::optional<qint64> QDecNumber::toInteger() const
{
    constexpr int maxIntegerDigits = 10;

    if (isZero())
        return 0;
    const int integerDigits = m_digitCount + m_exponent;
    if (m_kind != Kind::Finite || integerDigits < 1 || integerDigits > maxIntegerDigits)
        return std::nullopt;
    const auto end = m_digits.begin() + m_digitCount;
    const auto point = m_digits.begin() + qMin<int>(integerDigits, m_digitCount);
    if (std::any_of(point, end, [](quint8 digit) { return digit != 0; }))
        return std::nullopt;

    qint64 magnitude = 0;
    for (int i = 0; i < integerDigits; ++i)
        magnitude = magnitude * 10 + (i < m_digitCount ? m_digits[static_cast<size_t>(i)] : 0);
    return m_negative ? -magnitude : magnitude;
}

QString QDecNumber::toString() const
{
    std::array<char, TextSize> text;
    write(text.data());
    return QString::fromLatin1(text.data());
}

/// Writes the number's text and a NUL into `text`, which has room for TextSize characters.
void QDecNumber::write(char* text) const
{
    constexpr int lowestPlainExponent = -6;

    char* const end = text + TextSize;
    if (m_negative)
        *text++ = '-';
    if (m_kind != Kind::Finite) {
        std::strcpy(text, isInfinite() ? "Infinity" : m_kind == Kind::QuietNaN ? "NaN" : "sNaN");
        return;
    }

    const bool isPlain = m_exponent <= 0 && adjustedExponent() >= lowestPlainExponent;
    const int integerDigits = isPlain ? m_digitCount + m_exponent : 1;
    for (int i = qMin(integerDigits - 1, 0); i < m_digitCount; ++i) {
        if (i == integerDigits)
            *text++ = '.';
        *text++ = static_cast<char>('0' + (i < 0 ? 0 : m_digits[static_cast<size_t>(i)]));
    }
    if (!isPlain) {
        *text++ = 'E';
        if (adjustedExponent() > 0)
            *text++ = '+';
        text = std::to_chars(text, end, adjustedExponent()).ptr;
    }
    *text = '\0';
}
