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

#include <array>

namespace dbf
{

FieldKind fieldKind(const DbfFieldConverter* converter)
{
    struct KnownConverter {
        const DbfFieldConverter* converter;
        FieldKind kind;
    };
    static const std::array<KnownConverter, 11> knownConverters{{
        {DbfStringConverter::instance(), FieldKind::Text},
        {DbfDoubleConverter::instance(), FieldKind::Number},
        {DbfDateConverter::instance(), FieldKind::Date},
        {DbfBoolConverter::instance(), FieldKind::Logical},
        {DbfByteArrayConverter::instance(), FieldKind::Bytes},
        {nullptr, FieldKind::Bytes},
        {DbfIntConverter::instance(), FieldKind::Int},
        {DbfSmallIntConverter::instance(), FieldKind::SmallInt},
        {DbfLargeIntConverter::instance(), FieldKind::LargeInt},
        {DbfBinaryDoubleConverter::instance(), FieldKind::BinaryDouble},
        {DbfBinaryFloatConverter::instance(), FieldKind::BinaryFloat},
    }};
    for (const KnownConverter& known : knownConverters) {
        if (known.converter == converter)
            return known.kind;
    }
    return FieldKind::Foreign;
}

} // namespace dbf
