// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfBinaryFloatConverter* DbfBinaryFloatConverter::instance()
{
    return sharedInstance<DbfBinaryFloatConverter>();
}

QByteArray DbfBinaryFloatConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                                const DbfFieldDescriptor& field) const
{
    return bytesByRule<BinaryFloatRule>(value, schema, field);
}

QVariant DbfBinaryFloatConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                            const DbfFieldDescriptor& field) const
{
    return valueByRule<BinaryFloatRule>(bytes, schema, field);
}

bool DbfBinaryFloatConverter::convertVariant(QVariant& value) const
{
    return BinaryFloatRule::convert(value);
}

QByteArray DbfBinaryFloatConverter::defaultBytes(int length) const
{
    return BinaryFloatRule::blank(length);
}

} // namespace dbf
