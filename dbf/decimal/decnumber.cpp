// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/decimal/decnumber.h>

#include <limits>

QDecNumber* decNumberZero(QDecNumber* number)
{
    *number = QDecNumber();
    return number;
}

QDecNumber* decNumberCopy(QDecNumber* target, const QDecNumber* source)
{
    *target = *source;
    return target;
}

QDecNumber* decNumberFromInt32(QDecNumber* number, qint32 value)
{
    *number = QDecNumber(value);
    return number;
}

QDecNumber* decNumberRescale(QDecNumber* result, const QDecNumber* number,
                             const QDecNumber* exponent, QDecContext* context)
{
    *result = number->rescaled(*exponent, context->digits());
    return result;
}

qint32 decNumberToInt32(const QDecNumber* number, QDecContext*)
{
    using Int32 = std::numeric_limits<qint32>;

    const qint64 value = number->m_exponent == 0 ? number->toInteger().value_or(0) : 0;
    return value < Int32::min() || value > Int32::max() ? 0 : static_cast<qint32>(value);
}

char* decNumberToString(const QDecNumber* number, char* text)
{
    number->write(text);
    return text;
}
