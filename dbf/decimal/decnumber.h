// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_DECIMAL_DECNUMBER_H
#define DBF_DECIMAL_DECNUMBER_H

#include <dbf/decimal/qdeccontext.h>
#include <dbf/decimal/qdecnumber.h>

/// \file
/// Decimal operations in C shape: the result comes first and is returned. No pointer may be null;
/// the result may be one of the operands. None of them fails but by giving NaN or 0, and none takes
/// longer for a larger exponent.

/// Sets `number` to a positive zero with exponent 0 and returns `number`.
DBFTABLE_EXPORT QDecNumber* decNumberZero(QDecNumber* number);

/// Sets `target` to `source`, sign, exponent and kind of NaN included, and returns `target`.
DBFTABLE_EXPORT QDecNumber* decNumberCopy(QDecNumber* target, const QDecNumber* source);

/// Sets `number` to `value` with exponent 0 and returns `number`.
DBFTABLE_EXPORT QDecNumber* decNumberFromInt32(QDecNumber* number, qint32 value);

/// Sets `result` to `number` with the exponent that the value of `exponent` says, and returns
/// `result`: "41.6" rescaled to -2 is "41.60", to 0 is "42".
///
/// Digits that fall away are rounded half up, ties away from zero; the sign stays, on a zero too.
/// The result is NaN when
/// - `number` is a NaN or an infinity,
/// - `exponent` is not a finite integer from -999,999,999 to 999,999,999 ("2.0" and "1E+1" are
///   integers),
/// - the coefficient, after rounding, has more digits than `context` allows,
/// - rounding raises the adjusted exponent above 999,999,999.
DBFTABLE_EXPORT QDecNumber* decNumberRescale(QDecNumber* result, const QDecNumber* number,
                                             const QDecNumber* exponent, QDecContext* context);

/// Returns the value of a `number` with exponent 0, and 0 for a NaN, an infinity, any other
/// exponent, and values outside -2,147,483,648 to 2,147,483,647.
DBFTABLE_EXPORT qint32 decNumberToInt32(const QDecNumber* number, QDecContext* context);

/// Writes what QDecNumber::toString() gives, terminated by a NUL, and returns `text`, which must
/// have room for QDecNumber::TextSize characters.
DBFTABLE_EXPORT char* decNumberToString(const QDecNumber* number, char* text);

#endif
