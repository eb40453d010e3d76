// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/dbfbinarydoubleconverter.h>
#include <dbf/converters/dbfbinaryfloatconverter.h>
#include <dbf/converters/dbfboolconverter.h>
#include <dbf/converters/dbfbytearrayconverter.h>
#include <dbf/converters/dbfdateconverter.h>
#include <dbf/converters/dbfdoubleconverter.h>
#include <dbf/converters/dbfintconverter.h>
#include <dbf/converters/dbflargeintconverter.h>
#include <dbf/converters/dbfsmallintconverter.h>
#include <dbf/converters/dbfstringconverter.h>
#include <dbf/converters/fieldkind_p.h>

namespace dbf
{

FieldKind fieldKind(const DbfFieldConverter* converter)
{
    if (converter == DbfStringConverter::instance())
        return FieldKind::Text;
    if (converter == DbfDoubleConverter::instance())
        return FieldKind::Number;
    if (converter == DbfDateConverter::instance())
        return FieldKind::Date;
    if (converter == DbfBoolConverter::instance())
        return FieldKind::Logical;
    if (!converter || converter == DbfByteArrayConverter::instance())
        return FieldKind::Bytes;
    if (converter == DbfIntConverter::instance())
        return FieldKind::Int;
    if (converter == DbfSmallIntConverter::instance())
        return FieldKind::SmallInt;
    if (converter == DbfLargeIntConverter::instance())
        return FieldKind::LargeInt;
    if (converter == DbfBinaryDoubleConverter::instance())
        return FieldKind::BinaryDouble;
    if (converter == DbfBinaryFloatConverter::instance())
        return FieldKind::BinaryFloat;
    return FieldKind::Foreign;
}

} // namespace dbf
