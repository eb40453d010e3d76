// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfIntConverter* DbfIntConverter::instance()
{
    return sharedInstance<DbfIntConverter>();
}

QByteArray DbfIntConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                        const DbfFieldDescriptor& field) const
{
    return bytesByRule<IntRule>(value, schema, field);
}

QVariant DbfIntConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                    const DbfFieldDescriptor& field) const
{
    return valueByRule<IntRule>(bytes, schema, field);
}

bool DbfIntConverter::convertVariant(QVariant& value) const
{
    return IntRule::convert(value);
}

QByteArray DbfIntConverter::defaultBytes(int length) const
{
    return IntRule::blank(length);
}

} // namespace dbf
