// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfBoolConverter* DbfBoolConverter::instance()
{
    return sharedInstance<DbfBoolConverter>();
}

QByteArray DbfBoolConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                         const DbfFieldDescriptor& field) const
{
    return bytesByRule<LogicalRule>(value, schema, field);
}

QVariant DbfBoolConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                     const DbfFieldDescriptor& field) const
{
    return valueByRule<LogicalRule>(bytes, schema, field);
}

bool DbfBoolConverter::convertVariant(QVariant& value) const
{
    return LogicalRule::convert(value);
}

} // namespace dbf
