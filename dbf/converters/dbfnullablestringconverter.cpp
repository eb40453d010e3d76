// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfNullableStringConverter* DbfNullableStringConverter::instance()
{
    return sharedInstance<DbfNullableStringConverter>();
}

QByteArray DbfNullableStringConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                                   const DbfFieldDescriptor& field) const
{
    return bytesByRule<NullableTextRule>(value, schema, field);
}

QVariant DbfNullableStringConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                               const DbfFieldDescriptor& field) const
{
    return valueByRule<NullableTextRule>(bytes, schema, field);
}

bool DbfNullableStringConverter::convertVariant(QVariant& value) const
{
    return NullableTextRule::convert(value);
}

QByteArray DbfNullableStringConverter::defaultBytes(int length) const
{
    return NullableTextRule::blank(length);
}

} // namespace dbf
