// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfSmallIntConverter* DbfSmallIntConverter::instance()
{
    return sharedInstance<DbfSmallIntConverter>();
}

QByteArray DbfSmallIntConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                             const DbfFieldDescriptor& field) const
{
    return bytesByRule<SmallIntRule>(value, schema, field);
}

QVariant DbfSmallIntConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                         const DbfFieldDescriptor& field) const
{
    return valueByRule<SmallIntRule>(bytes, schema, field);
}

bool DbfSmallIntConverter::convertVariant(QVariant& value) const
{
    return SmallIntRule::convert(value);
}

QByteArray DbfSmallIntConverter::defaultBytes(int length) const
{
    return SmallIntRule::blank(length);
}

} // namespace dbf
