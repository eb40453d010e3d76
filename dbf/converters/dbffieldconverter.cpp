// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/dbfboolconverter.h>
#include <dbf/converters/dbfbytearrayconverter.h>
#include <dbf/converters/dbfdateconverter.h>
#include <dbf/converters/dbfdoubleconverter.h>
#include <dbf/converters/dbffieldconverter.h>
#include <dbf/converters/dbfstringconverter.h>

namespace dbf
{

DbfFieldConverter::~DbfFieldConverter() = default;

QByteArray DbfFieldConverter::defaultBytes(int length) const
{
    return QByteArray(length, ' ');
}

DbfFieldConverter* DbfFieldConverter::defaultConverter(DbfFieldType type)
{
    switch (type) {
    case DbfFieldType::Character:
    case DbfFieldType::Numeric:
        return DbfStringConverter::instance();
    case DbfFieldType::Date:
        return DbfDateConverter::instance();
    case DbfFieldType::Float:
        return DbfDoubleConverter::instance();
    case DbfFieldType::Logical:
        return DbfBoolConverter::instance();
    }
    return DbfByteArrayConverter::instance();
}

} // namespace dbf
