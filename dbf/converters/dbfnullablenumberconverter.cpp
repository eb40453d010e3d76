// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfNullableNumberConverter* DbfNullableNumberConverter::instance()
{
    return sharedInstance<DbfNullableNumberConverter>();
}

QByteArray DbfNullableNumberConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                                   const DbfFieldDescriptor& field) const
{
    return bytesByRule<NullableNumberRule>(value, schema, field);
}

QVariant DbfNullableNumberConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                               const DbfFieldDescriptor& field) const
{
    return valueByRule<NullableNumberRule>(bytes, schema, field);
}

bool DbfNullableNumberConverter::convertVariant(QVariant& value) const
{
    return NullableNumberRule::convert(value);
}

QByteArray DbfNullableNumberConverter::defaultBytes(int length) const
{
    return NullableNumberRule::blank(length);
}

} // namespace dbf
