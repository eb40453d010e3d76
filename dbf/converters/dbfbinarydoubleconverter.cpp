// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfBinaryDoubleConverter* DbfBinaryDoubleConverter::instance()
{
    return sharedInstance<DbfBinaryDoubleConverter>();
}

QByteArray DbfBinaryDoubleConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                                 const DbfFieldDescriptor& field) const
{
    return bytesByRule<BinaryDoubleRule>(value, schema, field);
}

QVariant DbfBinaryDoubleConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                             const DbfFieldDescriptor& field) const
{
    return valueByRule<BinaryDoubleRule>(bytes, schema, field);
}

bool DbfBinaryDoubleConverter::convertVariant(QVariant& value) const
{
    return BinaryDoubleRule::convert(value);
}

QByteArray DbfBinaryDoubleConverter::defaultBytes(int length) const
{
    return BinaryDoubleRule::blank(length);
}

} // namespace dbf
