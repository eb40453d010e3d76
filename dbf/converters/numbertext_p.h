// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_NUMBERTEXT_P_H
#define DBF_CONVERTERS_NUMBERTEXT_P_H

#include <QtCore/QByteArray>

#include <optional>
#include <string_view>

namespace dbf
{

/// Reads plain fixed-point text (`-12.50`: digits on both sides of a point, no plus, no exponent),
/// or gives nothing. What it reads, QByteArray::toDouble and QString::toDouble read alike: all
/// three round correctly.
std::optional<double> readPlainNumber(std::string_view text);

/// Returns \a bytes without the ASCII white space at both ends (QByteArray::trimmed).
std::string_view trimmedAscii(std::string_view bytes);

/// Returns what QByteArray::toDouble reads in \a bytes once they are trimmed; 0.0 for no number.
double readNumber(std::string_view bytes);

/// Writes a field of \a width bytes that holds \a number in fixed-point notation
/// (QByteArray::number), right-justified with spaces or cut to its leftmost \a width characters.
void writeNumberField(double number, int decimals, char* field, int width);

} // namespace dbf

#endif
