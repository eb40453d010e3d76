// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/binarynumber_p.h>
#include <dbf/converters/dbfbinarydoubleconverter.h>
#include <dbf/converters/fieldtext_p.h>
#include <dbf/converters/sharedinstance_p.h>

namespace dbf
{

DbfBinaryDoubleConverter* DbfBinaryDoubleConverter::instance()
{
    return sharedInstance<DbfBinaryDoubleConverter>();
}

QByteArray DbfBinaryDoubleConverter::toByteArray(const QVariant& value, const DbfSchema& /*schema*/,
                                                 const DbfFieldDescriptor& /*field*/) const
{
    return binaryBytes(floatingValue<double>(value));
}

QVariant DbfBinaryDoubleConverter::toVariant(const QByteArray& bytes, const DbfSchema& /*schema*/,
                                             const DbfFieldDescriptor& /*field*/) const
{
    const std::optional<double> number = readBinary<double>(viewOf(bytes));
    return number ? QVariant(*number) : QVariant();
}

bool DbfBinaryDoubleConverter::convertVariant(QVariant& value) const
{
    return value.convert(QMetaType::Double);
}

QByteArray DbfBinaryDoubleConverter::defaultBytes(int length) const
{
    return QByteArray(length, '\0');
}

} // namespace dbf
