// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfLargeIntConverter* DbfLargeIntConverter::instance()
{
    return sharedInstance<DbfLargeIntConverter>();
}

QByteArray DbfLargeIntConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                             const DbfFieldDescriptor& field) const
{
    return bytesByRule<LargeIntRule>(value, schema, field);
}

QVariant DbfLargeIntConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                         const DbfFieldDescriptor& field) const
{
    return valueByRule<LargeIntRule>(bytes, schema, field);
}

bool DbfLargeIntConverter::convertVariant(QVariant& value) const
{
    return LargeIntRule::convert(value);
}

QByteArray DbfLargeIntConverter::defaultBytes(int length) const
{
    return LargeIntRule::blank(length);
}

} // namespace dbf
