// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_ENCODING_NUMBERTEXT_P_H
#define DBF_ENCODING_NUMBERTEXT_P_H

#include <dbf/encoding/bytes_p.h>

#include <optional>
#include <string_view>

namespace dbf
{

/// Reads plain fixed-point text (`-12.50`: digits on both sides of a point, no plus, no exponent),
/// or gives nothing. What it reads, QByteArray::toDouble and QString::toDouble read alike: all
/// three round correctly.
std::optional<double> readPlainNumber(std::string_view text);

/// Returns \a digits divided by ten to the power of \a decimals, at most 15. The digits are at most
/// 2^53 unless there are no decimals: then only one step, the division or the conversion of the
/// digits, has to round, and the result is the correct one.
inline double fixedPointNumber(quint64 digits, int decimals, bool negative)
{
    const double magnitude = static_cast<double>(digits) /
                             static_cast<double>(powersOfTen[static_cast<size_t>(decimals)]);
    return negative ? -magnitude : magnitude;
}

/// Returns \a bytes without the ASCII white space at both ends (QByteArray::trimmed).
std::string_view trimmedAscii(std::string_view bytes);

/// Reads a number as most fields have it: a field of 8 to 24 bytes, at whose right end up to 16
/// characters stand as in readPlainNumber(), up to seven of them behind a point, and only spaces
/// before them. The point may be the last, too. Gives nothing for every other field, whether that
/// has a number or not.
std::optional<double> readRightJustifiedNumber(std::string_view bytes);

/// Returns what QByteArray::toDouble reads in \a bytes once they are trimmed; 0.0 for no number.
double readNumber(std::string_view bytes);

/// Writes a field of \a width bytes that holds \a number in fixed-point notation
/// (QByteArray::number), right-justified with spaces or cut to its leftmost \a width characters.
void writeNumberField(double number, int decimals, char* field, int width);

} // namespace dbf

#endif
