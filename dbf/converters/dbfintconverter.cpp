// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/binarynumber_p.h>
#include <dbf/converters/dbfintconverter.h>
#include <dbf/converters/decimalvalue_p.h>
#include <dbf/converters/fieldtext_p.h>
#include <dbf/converters/sharedinstance_p.h>

namespace dbf
{

DbfIntConverter* DbfIntConverter::instance()
{
    return sharedInstance<DbfIntConverter>();
}

QByteArray DbfIntConverter::toByteArray(const QVariant& value, const DbfSchema& /*schema*/,
                                        const DbfFieldDescriptor& /*field*/) const
{
    return binaryBytes(static_cast<qint32>(value.toInt()));
}

QVariant DbfIntConverter::toVariant(const QByteArray& bytes, const DbfSchema& /*schema*/,
                                    const DbfFieldDescriptor& /*field*/) const
{
    const std::optional<qint32> number = readBinary<qint32>(viewOf(bytes));
    return number ? QVariant(*number) : QVariant();
}

bool DbfIntConverter::convertVariant(QVariant& value) const
{
    if (const std::optional<QDecNumber> number = decimalValue(value)) {
        value = decimalToInt(*number);
        return true;
    }
    return value.convert(QMetaType::Int);
}

QByteArray DbfIntConverter::defaultBytes(int length) const
{
    return QByteArray(length, '\0');
}

} // namespace dbf
