// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/binarynumber_p.h>
#include <dbf/converters/dbfbinaryfloatconverter.h>
#include <dbf/converters/fieldtext_p.h>
#include <dbf/converters/sharedinstance_p.h>

namespace dbf
{

DbfBinaryFloatConverter* DbfBinaryFloatConverter::instance()
{
    return sharedInstance<DbfBinaryFloatConverter>();
}

QByteArray DbfBinaryFloatConverter::toByteArray(const QVariant& value, const DbfSchema& /*schema*/,
                                                const DbfFieldDescriptor& /*field*/) const
{
    return binaryBytes(floatingValue<float>(value));
}

QVariant DbfBinaryFloatConverter::toVariant(const QByteArray& bytes, const DbfSchema& /*schema*/,
                                            const DbfFieldDescriptor& /*field*/) const
{
    const std::optional<float> number = readBinary<float>(viewOf(bytes));
    return number ? QVariant(*number) : QVariant();
}

bool DbfBinaryFloatConverter::convertVariant(QVariant& value) const
{
    return value.convert(QMetaType::Double);
}

QByteArray DbfBinaryFloatConverter::defaultBytes(int length) const
{
    return QByteArray(length, '\0');
}

} // namespace dbf
