// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/binarynumber_p.h>
#include <dbf/converters/dbfdoubleconverter.h>
#include <dbf/converters/fieldtext_p.h>
#include <dbf/converters/numbertext_p.h>
#include <dbf/converters/sharedinstance_p.h>
#include <dbf/model/dbffielddescriptor.h>

namespace dbf
{

DbfDoubleConverter* DbfDoubleConverter::instance()
{
    return sharedInstance<DbfDoubleConverter>();
}

QByteArray DbfDoubleConverter::toByteArray(const QVariant& value, const DbfSchema& /*schema*/,
                                           const DbfFieldDescriptor& field) const
{
    QByteArray bytes(field.length, Qt::Uninitialized);
    writeNumberField(floatingValue<double>(value), field.decimals, bytes.data(), field.length);
    return bytes;
}

QVariant DbfDoubleConverter::toVariant(const QByteArray& bytes, const DbfSchema& /*schema*/,
                                       const DbfFieldDescriptor& /*field*/) const
{
    return readNumber(viewOf(bytes));
}

bool DbfDoubleConverter::convertVariant(QVariant& value) const
{
    return value.convert(QMetaType::Double);
}

QByteArray DbfDoubleConverter::defaultBytes(int length) const
{
    return QByteArrayLiteral("0.0").rightJustified(length, ' ', true);
}

} // namespace dbf
