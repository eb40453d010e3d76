// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfNullableDateConverter* DbfNullableDateConverter::instance()
{
    return sharedInstance<DbfNullableDateConverter>();
}

QByteArray DbfNullableDateConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                                 const DbfFieldDescriptor& field) const
{
    return bytesByRule<NullableDateRule>(value, schema, field);
}

QVariant DbfNullableDateConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                             const DbfFieldDescriptor& field) const
{
    return valueByRule<NullableDateRule>(bytes, schema, field);
}

bool DbfNullableDateConverter::convertVariant(QVariant& value) const
{
    return NullableDateRule::convert(value);
}

QByteArray DbfNullableDateConverter::defaultBytes(int length) const
{
    return NullableDateRule::blank(length);
}

} // namespace dbf
