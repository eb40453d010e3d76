// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/dbfbytearrayconverter.h>
#include <dbf/converters/ruledconverter_p.h>
#include <dbf/encoding/qt5values_p.h>

namespace dbf
{

DbfByteArrayConverter* DbfByteArrayConverter::instance()
{
    return sharedInstance<DbfByteArrayConverter>();
}

QByteArray DbfByteArrayConverter::toByteArray(const QVariant& value, const DbfSchema& /*schema*/,
                                              const DbfFieldDescriptor& /*field*/) const
{
    return qt5::toBytes(value);
}

QVariant DbfByteArrayConverter::toVariant(const QByteArray& bytes, const DbfSchema& /*schema*/,
                                          const DbfFieldDescriptor& /*field*/) const
{
    return QByteArray(bytes.constData(), bytes.size());
}

bool DbfByteArrayConverter::convertVariant(QVariant& value) const
{
    return qt5::convert(value, QMetaType::QByteArray);
}

} // namespace dbf
