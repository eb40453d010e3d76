// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/numbertext_p.h>
#include <dbf/converters/rightjustifiednumber_p.h>
#include <dbf/converters/spaces_p.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace dbf
{

namespace
{

constexpr int maxExactDigits = 15; // of an integer that is exact as a double

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

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

void appendRightJustified(const char* text, int size, int width, QByteArray& image)
{
    const int kept = std::min(size, width);
    const int start = image.size();
    image.resize(start + width);
    char* const field = image.data() + start;
    std::memset(field, ' ', static_cast<size_t>(width - kept));
    std::memcpy(field + (width - kept), text, static_cast<size_t>(kept));
}

// Exactly half way between two neighbours of the given precision, std::to_chars rounds to even and
// Qt away from zero. Such a number is a whole multiple of 1 / 2^(decimals + 1), but not of
// 1 / 2^decimals.
bool mayBeTie(double number, int decimals)
{
    const double scaled = std::ldexp(number, decimals);
    return scaled != std::floor(scaled) && 2 * scaled == std::floor(2 * scaled);
}

} // namespace

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
    begin = withoutLeadingSpaces(begin, end);
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
    return QByteArray(text.data(), static_cast<int>(text.size())).toDouble();
}

void appendNumberField(double number, int decimals, int width, QByteArray& image)
{
    // Longer texts are rare, and Qt formats them as well.
    std::array<char, 64> text;
    if (std::isfinite(number) && number != 0.0 && !mayBeTie(number, decimals)) {
        const std::to_chars_result result = std::to_chars(
            text.data(), text.data() + text.size(), number, std::chars_format::fixed, decimals);
        if (result.ec == std::errc()) {
            appendRightJustified(text.data(), static_cast<int>(result.ptr - text.data()), width,
                                 image);
            return;
        }
    }
    const QByteArray formatted = QByteArray::number(number, 'f', decimals);
    appendRightJustified(formatted.constData(), formatted.size(), width, image);
}

} // namespace dbf
