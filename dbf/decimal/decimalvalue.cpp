// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/decimal/decimalvalue_p.h>
#include <dbf/decimal/decnumber.h>
#include <dbf/decimal/qdeccontext.h>

#include <QtCore/QVariant>

#include <array>

namespace dbf
{

std::optional<QDecNumber> decimalValue(const QVariant& value)
{
    if (value.userType() != qMetaTypeId<QDecNumber>())
        return std::nullopt;
    QDecNumber number;
    decNumberCopy(&number, static_cast<const QDecNumber*>(value.constData()));
    return number;
}

QDecNumber roundedToInteger(const QDecNumber& number)
{
    QDecNumber noExponent;
    decNumberFromInt32(&noExponent, 0);
    QDecContext context(0);
    QDecNumber result;
    decNumberRescale(&result, &number, &noExponent, &context);
    return result;
}

int decimalToInt(const QDecNumber& number)
{
    const QDecNumber integer = roundedToInteger(number);
    QDecContext context(0);
    return decNumberToInt32(&integer, &context);
}

// Through text, since the decimal layer converts to 32 bits only.
qlonglong decimalToLongLong(const QDecNumber& number)
{
    std::array<char, QDecNumber::TextSize> text{};
    const QDecNumber integer = roundedToInteger(number);
    return QByteArray(decNumberToString(&integer, text.data())).toLongLong();
}

} // namespace dbf
