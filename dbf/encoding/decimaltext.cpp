// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/encoding/decimaltext_p.h>

#include <QtCore/QVarLengthArray>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace dbf
{

namespace
{

constexpr int longestField = 255;

std::string_view takeDigits(std::string_view& text)
{
    const auto* const end = std::find_if_not(text.begin(), text.end(), isDigit);
    const std::string_view digits = text.substr(0, static_cast<size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    return digits;
}

bool takeOneOf(std::string_view characters, std::string_view& text)
{
    if (text.empty() || characters.find(text.front()) == std::string_view::npos)
        return false;
    text.remove_prefix(1);
    return true;
}

std::optional<qint64> takeExponent(std::string_view& text)
{
    // No text that fits in memory brings a number back from here, and sums with its size fit.
    constexpr qint64 saturation = 100'000'000'000'000'000;

    if (text.empty())
        return 0;
    if (!takeOneOf("eE", text))
        return std::nullopt;
    const bool isNegative = !text.empty() && text.front() == '-';
    takeOneOf("+-", text);
    const std::string_view digits = takeDigits(text);
    if (digits.empty())
        return std::nullopt;
    qint64 magnitude = 0;
    for (const char digit : digits)
        magnitude = std::min(magnitude * 10 + (digit - '0'), saturation);
    return isNegative ? -magnitude : magnitude;
}

/// The digits of a number rounded to some decimals.
struct Rounded {
    std::array<char, 2 * longestField + 2> digits; // room for a carry, then all without a point
    int size;                                      // of the digits, the carry not counted
    bool isZero;

    bool hasCarry() const { return digits[0] != '0'; }
};

/// Rounds a number of at most longestField whole digits to at most as many decimals.
Rounded rounded(const DecimalText& number, int decimals)
{
    Rounded result;
    const auto whole = static_cast<int>(number.wholeDigits());
    result.size = whole + decimals;
    char* const first = result.digits.data() + 1;
    result.digits[0] = '0';
    for (int i = 0; i < result.size; ++i)
        first[i] = number.digit(whole - 1 - i);
    if (number.digit(-decimals - 1) >= '5') {
        char* last = first + result.size - 1;
        while (*last == '9')
            *last-- = '0';
        ++*last;
    }
    const auto isZero = [](char digit) { return digit == '0'; };
    result.isZero = std::all_of(result.digits.data(), first + result.size, isZero);
    return result;
}

/// Writes \a number with just so many decimals; returns false when the field is too narrow.
bool writeWithDecimals(const DecimalText& number, int decimals, char* field, int width)
{
    const Rounded digits = rounded(number, decimals);
    const char* const first = digits.digits.data() + (digits.hasCarry() ? 0 : 1);
    const int whole = digits.size - decimals + (digits.hasCarry() ? 1 : 0);
    const bool isNegative = number.isNegative() && !digits.isZero;
    const int size = (isNegative ? 1 : 0) + whole + (decimals > 0 ? 1 + decimals : 0);
    const bool hasZero = whole == 0 && (decimals == 0 || size < width);
    const int spaces = width - size - (hasZero ? 1 : 0);
    if (spaces < 0)
        return false;

    std::memset(field, ' ', static_cast<size_t>(spaces));
    field += spaces;
    if (isNegative)
        *field++ = '-';
    if (hasZero)
        *field++ = '0';
    field = std::copy_n(first, whole, field);
    if (decimals > 0)
        *field++ = '.';
    std::copy_n(first + whole, decimals, field);
    return true;
}

constexpr size_t base = 100; // digits are made in pairs

constexpr std::array<char, 200> makeDigitPairs()
{
    std::array<char, 200> pairs{};
    for (size_t i = 0; i < base; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

constexpr std::array<char, 200> digitPairs = makeDigitPairs();

/// Takes the last two digits off \a number and writes them before \a position.
char* writePair(quint64& number, char* position)
{
    position -= 2;
    std::memcpy(position, digitPairs.data() + 2 * (number % base), 2);
    number /= base;
    return position;
}

char* writeDigit(quint64& number, char* position)
{
    *--position = static_cast<char>('0' + number % 10);
    number /= 10;
    return position;
}

/// Writes a number in units of its last decimal, as most values and fields are: without a look at
/// its digits one by one. Returns false, the field in any state, when they have no room.
bool writeUnits(quint64 units, bool negative, int decimals, char* field, int width)
{
    std::memset(field, ' ', static_cast<size_t>(width));
    const bool isNegative = negative && units != 0;
    const char* const begin = field + (isNegative ? 1 : 0);
    char* position = field + width;
    if (decimals > 0) {
        if (position - begin < decimals + 2)
            return false;
        for (int left = decimals; left > 1; left -= 2)
            position = writePair(units, position);
        if (decimals % 2 != 0)
            position = writeDigit(units, position);
        *--position = '.';
    }
    for (; units >= base; position = writePair(units, position)) {
        if (position - begin < 3) // another digit comes
            return false;
    }
    if (position - begin < (units >= 10 ? 2 : 1))
        return false;
    position = units >= 10 ? writePair(units, position) : writeDigit(units, position);
    if (isNegative)
        *--position = '-';
    return true;
}

/// Does the same with an integer.
bool writeWholeUnits(quint64 magnitude, bool negative, int decimals, char* field, int width)
{
    if (decimals >= static_cast<int>(powersOfTen.size()))
        return false;
    const auto power = static_cast<quint64>(powersOfTen[static_cast<size_t>(decimals)]);
    return magnitude <= std::numeric_limits<quint64>::max() / power &&
           writeUnits(magnitude * power, negative, decimals, field, width);
}

/// Returns \a magnitude in units of its decimal number \a decimals where one multiplication tells.
///
/// The product and the way from the number to its shortest text are each off by at most a part in
/// 2^53 of it; what is further from a tie than both rounds alike. This saves the shortest text: a
/// number is written in 450 instructions instead of 1,680.
std::optional<quint64> unitsByProduct(double magnitude, int decimals)
{
    constexpr double largest = 281474976710656.0;                        // 2^48
    constexpr double doubt = 4 * std::numeric_limits<double>::epsilon(); // of the product
    if (decimals >= static_cast<int>(powersOfTen.size()))
        return std::nullopt;
    const double product =
        magnitude * static_cast<double>(powersOfTen[static_cast<size_t>(decimals)]);
    if (!(product < largest))
        return std::nullopt;
    const auto whole = static_cast<qint64>(product);
    const double fraction = product - static_cast<double>(whole); // which is exact
    if (std::abs(fraction - 0.5) <= product * doubt)
        return std::nullopt;
    return static_cast<quint64>(whole + (fraction > 0.5 ? 1 : 0));
}

} // namespace

std::optional<DecimalText> DecimalText::read(std::string_view text)
{
    DecimalText number;
    number.m_negative = !text.empty() && text.front() == '-';
    takeOneOf("+-", text);
    number.m_whole = takeDigits(text);
    if (takeOneOf(".,", text))
        number.m_fraction = takeDigits(text);
    if (number.m_whole.empty() && number.m_fraction.empty())
        return std::nullopt;
    const std::optional<qint64> exponent = takeExponent(text);
    if (!exponent || !text.empty())
        return std::nullopt;

    number.m_firstPower = static_cast<qint64>(number.m_whole.size()) + *exponent - 1;
    size_t zeros = std::min(number.m_whole.find_first_not_of('0'), number.m_whole.size());
    if (zeros == number.m_whole.size())
        zeros += std::min(number.m_fraction.find_first_not_of('0'), number.m_fraction.size());
    number.m_isZero = zeros == number.m_whole.size() + number.m_fraction.size();
    if (!number.m_isZero)
        number.m_wholeDigits =
            std::max<qint64>(number.m_firstPower + 1 - static_cast<qint64>(zeros), 0);
    return number;
}

char DecimalText::digit(qint64 power) const
{
    if (power > m_firstPower)
        return '0';
    const auto index = static_cast<quint64>(m_firstPower - power);
    if (index < m_whole.size())
        return m_whole[index];
    return index - m_whole.size() < m_fraction.size() ? m_fraction[index - m_whole.size()] : '0';
}

ShortestText::ShortestText(double number)
    : m_size(static_cast<size_t>(std::to_chars(m_text.data(), m_text.data() + m_text.size(), number,
                                               std::chars_format::scientific)
                                     .ptr -
                                 m_text.data()))
{
}

ShortestText::ShortestText(float number)
    : m_size(static_cast<size_t>(std::to_chars(m_text.data(), m_text.data() + m_text.size(), number,
                                               std::chars_format::scientific)
                                     .ptr -
                                 m_text.data()))
{
}

void writeDecimalField(const DecimalText& number, int decimals, char* field, int width)
{
    if (number.wholeDigits() <= width) {
        const int whole = static_cast<int>(number.wholeDigits());
        int kept = std::min(decimals, std::max(width - whole - 1, 0));
        for (; kept >= 0; --kept) {
            if (writeWithDecimals(number, kept, field, width))
                return;
        }
    }
    std::memset(field, '*', static_cast<size_t>(width));
}

void writeIntegerField(quint64 magnitude, bool negative, int decimals, char* field, int width)
{
    if (decimals == 0 ? writeUnits(magnitude, negative, 0, field, width)
                      : writeWholeUnits(magnitude, negative, decimals, field, width))
        return;
    std::array<char, 24> text;
    text[0] = negative ? '-' : '+';
    const char* const end =
        std::to_chars(text.data() + 1, text.data() + text.size(), magnitude).ptr;
    const auto number = DecimalText::read({text.data(), static_cast<size_t>(end - text.data())});
    writeDecimalField(*number, decimals, field, width);
}

void writeShortestField(double number, int decimals, char* field, int width)
{
    const std::optional<quint64> units = unitsByProduct(std::abs(number), decimals);
    if (units && writeUnits(*units, number < 0, decimals, field, width))
        return;
    const ShortestText shortest(number);
    writeDecimalField(*DecimalText::read(shortest.text()), decimals, field, width);
}

qint64 unitsOfDecimal(const DecimalText& number, int decimals)
{
    using Limits = std::numeric_limits<qint64>;
    const quint64 limit = static_cast<quint64>(Limits::max()) + (number.isNegative() ? 1 : 0);
    quint64 units = 0;
    bool fits = number.wholeDigits() <= Limits::digits10 + 1;
    for (qint64 power = number.wholeDigits() - 1; fits && power >= -decimals; --power) {
        const auto digit = static_cast<quint64>(number.digit(power) - '0');
        fits = units <= (limit - digit) / 10;
        units = units * 10 + digit;
    }
    if (fits && number.digit(-decimals - 1) >= '5')
        fits = ++units <= limit;
    if (!fits)
        return number.isNegative() ? Limits::min() : Limits::max();
    return static_cast<qint64>(number.isNegative() ? ~units + 1 : units);
}

std::optional<double> nearestDouble(std::string_view text)
{
    QVarLengthArray<char, longestField> characters;
    const size_t sign = !text.empty() && text.front() == '+' ? 1 : 0; // which is not taken
    characters.append(text.data() + sign, static_cast<ContainerSize>(text.size() - sign));
    std::replace(characters.begin(), characters.end(), ',', '.');
    double number = 0.0;
    const auto result =
        std::from_chars(characters.constData(), characters.constData() + characters.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        const auto decimal = DecimalText::read(text);
        if (decimal && decimal->wholeDigits() > 0)
            return std::nullopt;
        number = 0.0; // too small
    }
    return std::isfinite(number) ? std::optional(number + 0.0) : std::nullopt; // a zero has no sign
}

} // namespace dbf
