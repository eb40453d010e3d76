// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/binarynumber_p.h>
#include <dbf/converters/dbfsmallintconverter.h>
#include <dbf/converters/decimalvalue_p.h>
#include <dbf/converters/fieldtext_p.h>
#include <dbf/converters/sharedinstance_p.h>

namespace dbf
{

DbfSmallIntConverter* DbfSmallIntConverter::instance()
{
    return sharedInstance<DbfSmallIntConverter>();
}

QByteArray DbfSmallIntConverter::toByteArray(const QVariant& value, const DbfSchema& /*schema*/,
                                             const DbfFieldDescriptor& /*field*/) const
{
    return binaryBytes(static_cast<qint16>(value.toInt()));
}

QVariant DbfSmallIntConverter::toVariant(const QByteArray& bytes, const DbfSchema& /*schema*/,
                                         const DbfFieldDescriptor& /*field*/) const
{
    const std::optional<qint16> number = readBinary<qint16>(viewOf(bytes));
    return number ? QVariant(int(*number)) : QVariant();
}

bool DbfSmallIntConverter::convertVariant(QVariant& value) const
{
    if (const std::optional<QDecNumber> number = decimalValue(value)) {
        value = int(static_cast<qint16>(decimalToInt(*number)));
        return true;
    }
    return value.convert(QMetaType::Short);
}

QByteArray DbfSmallIntConverter::defaultBytes(int length) const
{
    return QByteArray(length, '\0');
}

} // namespace dbf
