// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfDoubleConverter* DbfDoubleConverter::instance()
{
    return sharedInstance<DbfDoubleConverter>();
}

QByteArray DbfDoubleConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                           const DbfFieldDescriptor& field) const
{
    return bytesByRule<NumberRule>(value, schema, field);
}

QVariant DbfDoubleConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                       const DbfFieldDescriptor& field) const
{
    return valueByRule<NumberRule>(bytes, schema, field);
}

bool DbfDoubleConverter::convertVariant(QVariant& value) const
{
    return NumberRule::convert(value);
}

QByteArray DbfDoubleConverter::defaultBytes(int length) const
{
    return NumberRule::blank(length);
}

} // namespace dbf
