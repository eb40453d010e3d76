// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_DECIMAL_DECIMALVALUE_P_H
#define DBF_DECIMAL_DECIMALVALUE_P_H

#include <dbf/decimal/qdecnumber.h>

#include <optional>

class QVariant;

namespace dbf
{

/// Returns the decimal number that \a value holds, nothing when it holds another type. Registers
/// the meta type "QDecNumber" on first use.
std::optional<QDecNumber> decimalValue(const QVariant& value);

/// Returns \a number rounded to an integer (exponent 0), or NaN when that is impossible.
QDecNumber roundedToInteger(const QDecNumber& number);

/// Returns \a number rounded to an integer, 0 when that is impossible or outside 32 bits.
int decimalToInt(const QDecNumber& number);

/// Returns \a number rounded to an integer, 0 when that is impossible or outside 64 bits.
qlonglong decimalToLongLong(const QDecNumber& number);

} // namespace dbf

#endif
