// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/datetext_p.h>
#include <dbf/converters/dbfdateconverter.h>
#include <dbf/converters/fieldtext_p.h>
#include <dbf/converters/sharedinstance_p.h>
#include <dbf/model/dbffielddescriptor.h>

namespace dbf
{

DbfDateConverter* DbfDateConverter::instance()
{
    return sharedInstance<DbfDateConverter>();
}

QByteArray DbfDateConverter::toByteArray(const QVariant& value, const DbfSchema& /*schema*/,
                                         const DbfFieldDescriptor& field) const
{
    QByteArray bytes(field.length, Qt::Uninitialized);
    writeDateField(value.toDate(), bytes.data(), field.length);
    return bytes;
}

QVariant DbfDateConverter::toVariant(const QByteArray& bytes, const DbfSchema& /*schema*/,
                                     const DbfFieldDescriptor& /*field*/) const
{
    return readDate(viewOf(bytes));
}

bool DbfDateConverter::convertVariant(QVariant& value) const
{
    return value.convert(QMetaType::QDate);
}

QByteArray DbfDateConverter::defaultBytes(int length) const
{
    return QByteArrayLiteral("19000101").leftJustified(length, ' ', true);
}

} // namespace dbf
