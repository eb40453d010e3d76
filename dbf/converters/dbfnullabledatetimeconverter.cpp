// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfNullableDateTimeConverter* DbfNullableDateTimeConverter::instance()
{
    return sharedInstance<DbfNullableDateTimeConverter>();
}

QByteArray DbfNullableDateTimeConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                                     const DbfFieldDescriptor& field) const
{
    return bytesByRule<NullableDateTimeRule>(value, schema, field);
}

QVariant DbfNullableDateTimeConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                                 const DbfFieldDescriptor& field) const
{
    return valueByRule<NullableDateTimeRule>(bytes, schema, field);
}

bool DbfNullableDateTimeConverter::convertVariant(QVariant& value) const
{
    return NullableDateTimeRule::convert(value);
}

QByteArray DbfNullableDateTimeConverter::defaultBytes(int length) const
{
    return NullableDateTimeRule::blank(length);
}

} // namespace dbf
