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

    const auto value = number->m_exponent == 0 ? number->toInteger() : std::nullopt;
    if (!value || *value < Int32::min() || *value > Int32::max())
        return 0;
    return static_cast<qint32>(*value);
}

char* decNumberToString(const QDecNumber* number, char* text)
{
    number->write(text);
    return text;
}
