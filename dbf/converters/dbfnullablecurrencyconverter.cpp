// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

namespace dbf
{

DbfNullableCurrencyConverter* DbfNullableCurrencyConverter::instance()
{
    return sharedInstance<DbfNullableCurrencyConverter>();
}

QByteArray DbfNullableCurrencyConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                                     const DbfFieldDescriptor& field) const
{
    return bytesByRule<NullableCurrencyRule>(value, schema, field);
}

QVariant DbfNullableCurrencyConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                                 const DbfFieldDescriptor& field) const
{
    return valueByRule<NullableCurrencyRule>(bytes, schema, field);
}

bool DbfNullableCurrencyConverter::convertVariant(QVariant& value) const
{
    return NullableCurrencyRule::convert(value);
}

QByteArray DbfNullableCurrencyConverter::defaultBytes(int length) const
{
    return NullableCurrencyRule::blank(length);
}

} // namespace dbf
