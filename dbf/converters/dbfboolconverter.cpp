// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/dbfboolconverter.h>
#include <dbf/converters/decimalvalue_p.h>
#include <dbf/converters/fieldtext_p.h>
#include <dbf/converters/sharedinstance_p.h>

namespace dbf
{

DbfBoolConverter* DbfBoolConverter::instance()
{
    return sharedInstance<DbfBoolConverter>();
}

QByteArray DbfBoolConverter::toByteArray(const QVariant& value, const DbfSchema& /*schema*/,
                                         const DbfFieldDescriptor& /*field*/) const
{
    return QByteArray(1, logicalLetter(value.toBool()));
}

QVariant DbfBoolConverter::toVariant(const QByteArray& bytes, const DbfSchema& /*schema*/,
                                     const DbfFieldDescriptor& /*field*/) const
{
    return readLogical(viewOf(bytes));
}

bool DbfBoolConverter::convertVariant(QVariant& value) const
{
    if (const std::optional<QDecNumber> number = decimalValue(value)) {
        value = !number->isZero();
        return true;
    }
    return value.convert(QMetaType::Bool);
}

} // namespace dbf
