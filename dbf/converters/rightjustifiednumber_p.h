// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_RIGHTJUSTIFIEDNUMBER_P_H
#define DBF_CONVERTERS_RIGHTJUSTIFIEDNUMBER_P_H

#include <QtCore/QtGlobal>

#include <array>
#include <optional>
#include <string_view>

namespace dbf
{

/// Returns \a digits divided by ten to the power of \a decimals, at most 15. The digits are at most
/// 2^53 unless there are no decimals: then only one step, the division or the conversion of the
/// digits, has to round, and the result is the correct one.
inline double fixedPointNumber(quint64 digits, int decimals, bool negative)
{
    // Static, or it is built anew for each number.
    static constexpr std::array powersOfTen{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                            1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const double magnitude =
        static_cast<double>(digits) / powersOfTen[static_cast<size_t>(decimals)];
    return negative ? -magnitude : magnitude;
}

/// Reads a number as most fields have it: a field of 8 to 24 bytes, at whose right end up to 16
/// characters stand as in readPlainNumber(), up to seven of them behind a point, and only spaces
/// before them. The point may be the last, too. Gives nothing for every other field, whether that
/// has a number or not.
std::optional<double> readRightJustifiedNumber(std::string_view bytes);

} // namespace dbf

#endif
