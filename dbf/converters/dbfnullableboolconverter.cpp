// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfNullableBoolConverter* DbfNullableBoolConverter::instance()
{
    return sharedInstance<DbfNullableBoolConverter>();
}

QByteArray DbfNullableBoolConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                                 const DbfFieldDescriptor& field) const
{
    return bytesByRule<NullableLogicalRule>(value, schema, field);
}

QVariant DbfNullableBoolConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                             const DbfFieldDescriptor& field) const
{
    return valueByRule<NullableLogicalRule>(bytes, schema, field);
}

bool DbfNullableBoolConverter::convertVariant(QVariant& value) const
{
    return NullableLogicalRule::convert(value);
}

QByteArray DbfNullableBoolConverter::defaultBytes(int length) const
{
    return NullableLogicalRule::blank(length);
}

} // namespace dbf
