// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfDateConverter* DbfDateConverter::instance()
{
    return sharedInstance<DbfDateConverter>();
}

QByteArray DbfDateConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                         const DbfFieldDescriptor& field) const
{
    return bytesByRule<DateRule>(value, schema, field);
}

QVariant DbfDateConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                     const DbfFieldDescriptor& field) const
{
    return valueByRule<DateRule>(bytes, schema, field);
}

bool DbfDateConverter::convertVariant(QVariant& value) const
{
    return DateRule::convert(value);
}

QByteArray DbfDateConverter::defaultBytes(int length) const
{
    return DateRule::blank(length);
}

} // namespace dbf
