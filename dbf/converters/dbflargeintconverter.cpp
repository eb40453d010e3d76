// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/binarynumber_p.h>
#include <dbf/converters/dbflargeintconverter.h>
#include <dbf/converters/decimalvalue_p.h>
#include <dbf/converters/fieldtext_p.h>
#include <dbf/converters/sharedinstance_p.h>
#include <dbf/decimal/decnumber.h>

#include <array>

namespace dbf
{

namespace
{

// Through text, since the decimal layer converts to 32 bits only.
qlonglong decimalToLongLong(const QDecNumber& number)
{
    std::array<char, 512> text{};
    const QDecNumber integer = roundedToInteger(number);
    return QByteArray(decNumberToString(&integer, text.data())).toLongLong();
}

} // namespace

DbfLargeIntConverter* DbfLargeIntConverter::instance()
{
    return sharedInstance<DbfLargeIntConverter>();
}

QByteArray DbfLargeIntConverter::toByteArray(const QVariant& value, const DbfSchema& /*schema*/,
                                             const DbfFieldDescriptor& /*field*/) const
{
    return binaryBytes(static_cast<qint64>(value.toLongLong()));
}

QVariant DbfLargeIntConverter::toVariant(const QByteArray& bytes, const DbfSchema& /*schema*/,
                                         const DbfFieldDescriptor& /*field*/) const
{
    const std::optional<qint64> number = readBinary<qint64>(viewOf(bytes));
    return number ? QVariant(*number) : QVariant();
}

bool DbfLargeIntConverter::convertVariant(QVariant& value) const
{
    if (const std::optional<QDecNumber> number = decimalValue(value)) {
        value = decimalToLongLong(*number);
        return true;
    }
    return value.convert(QMetaType::LongLong);
}

QByteArray DbfLargeIntConverter::defaultBytes(int length) const
{
    return QByteArray(length, '\0');
}

} // namespace dbf
