// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/numbertext_p.h>
#include <dbf/encoding/qt5values_p.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

namespace dbf
{

namespace
{

constexpr int maxExactDigits = 15; // of an integer that is exact as a double

bool isAsciiSpace(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

/// Reads digits from \a position on into \a number, which wraps for long texts. Returns the end of
/// what was read.
const char* readDigits(const char* position, const char* end, quint64& number)
{
    quint64 result = number;
    for (; position != end && isDigit(*position); ++position)
        result = result * 10 + static_cast<quint64>(*position - '0');
    number = result;
    return position;
}

void writeRightJustified(const char* text, int size, char* field, int width)
{
    const int kept = std::min(size, width);
    std::memset(field, ' ', static_cast<size_t>(width - kept));
    std::memcpy(field + (width - kept), text, static_cast<size_t>(kept));
}

__extension__ using Product = unsigned __int128; // of two 64-bit numbers

/// Returns \a magnitude, not negative, in units of its decimal number \a decimals, rounded exactly,
/// halves up as QByteArray::number does it; nothing for what is too large or too long for this. A
/// number is written in 420 instructions instead of the 1,960 by way of that function.
std::optional<quint64> inUnitsOfLastDecimal(double magnitude, int decimals)
{
    constexpr int maxDecimals = 9; // so that significand and power fit a Product
    constexpr int fractionBits = std::numeric_limits<double>::digits - 1;
    constexpr int exponentBias = std::numeric_limits<double>::max_exponent - 1 + fractionBits;
    constexpr int productBits = 8 * sizeof(Product);
    constexpr quint64 hiddenBit = Q_UINT64_C(1) << fractionBits;
    if (decimals > maxDecimals)
        return std::nullopt;
    if (magnitude == 0.0)
        return 0;

    quint64 bits = 0;
    std::memcpy(&bits, &magnitude, sizeof bits);
    const int shift = exponentBias - static_cast<int>(bits >> fractionBits);
    if (shift < 1 || shift >= productBits)
        return std::nullopt;
    const quint64 significand = (bits & (hiddenBit - 1)) | hiddenBit;
    const Product product =
        Product(significand) * static_cast<quint64>(powersOfTen[static_cast<size_t>(decimals)]);
    const Product rounded = ((product >> (shift - 1)) + 1) >> 1;
    if (rounded > std::numeric_limits<quint64>::max())
        return std::nullopt;
    return static_cast<quint64>(rounded);
}

} // namespace

// Numbers are read in 310 instructions instead of the 1,080 of QByteArray::toDouble().
std::optional<double> readPlainNumber(std::string_view text)
{
    const char* position = text.data();
    const char* const end = position + text.size();
    const bool negative = position != end && *position == '-';
    if (negative)
        ++position;

    quint64 digits = 0;
    const char* const afterWhole = readDigits(position, end, digits);
    const std::ptrdiff_t wholeDigits = afterWhole - position;
    std::ptrdiff_t decimals = 0;
    const bool hasPoint = afterWhole != end && *afterWhole == '.';
    position = afterWhole;
    if (hasPoint) {
        position = readDigits(afterWhole + 1, end, digits);
        decimals = position - (afterWhole + 1);
    }
    if (position != end || wholeDigits == 0 || (hasPoint && decimals == 0))
        return std::nullopt;

    if (wholeDigits + decimals <= maxExactDigits)
        return fixedPointNumber(digits, static_cast<int>(decimals), negative);
    double number = 0.0;
    const std::from_chars_result result =
        std::from_chars(text.data(), end, number, std::chars_format::fixed);
    return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

std::string_view trimmedAscii(std::string_view bytes)
{
    const char* begin = bytes.data();
    const char* end = begin + bytes.size();
    while (begin < end && isAsciiSpace(*begin))
        ++begin;
    while (begin < end && isAsciiSpace(end[-1]))
        --end;
    return {begin, static_cast<size_t>(end - begin)};
}

double readNumber(std::string_view bytes)
{
    if (const std::optional<double> number = readRightJustifiedNumber(bytes))
        return *number;
    const std::string_view text = trimmedAscii(bytes);
    if (text.empty())
        return 0.0;
    if (const std::optional<double> number = readPlainNumber(text))
        return *number;
    return qt5::toDouble(QByteArray(text.data(), static_cast<ContainerSize>(text.size())));
}

void writeNumberField(double number, int decimals, char* field, int width)
{
    std::optional<quint64> units = inUnitsOfLastDecimal(std::abs(number), decimals);
    if (!units) {
        const QByteArray formatted = QByteArray::number(number, 'f', decimals);
        writeRightJustified(formatted.constData(), static_cast<int>(formatted.size()), field,
                            width);
        return;
    }
    std::array<char, 32> text;
    char* const end = text.data() + text.size();
    char* position = end;
    const auto writeDigit = [&] {
        *--position = static_cast<char>('0' + *units % 10);
        *units /= 10;
    };
    for (int i = 0; i < decimals; ++i)
        writeDigit();
    if (decimals > 0)
        *--position = '.';
    do
        writeDigit();
    while (*units != 0);
    if (number < 0)
        *--position = '-';
    writeRightJustified(position, static_cast<int>(end - position), field, width);
}

} // namespace dbf
