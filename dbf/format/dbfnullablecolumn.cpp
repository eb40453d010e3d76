// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/dbfbinarydoubleconverter.h>
#include <dbf/converters/dbfbytearrayconverter.h>
#include <dbf/converters/dbfintconverter.h>
#include <dbf/converters/dbfnullableboolconverter.h>
#include <dbf/converters/dbfnullablecurrencyconverter.h>
#include <dbf/converters/dbfnullabledateconverter.h>
#include <dbf/converters/dbfnullabledatetimeconverter.h>
#include <dbf/converters/dbfnullablenumberconverter.h>
#include <dbf/converters/dbfnullablestringconverter.h>
#include <dbf/format/dbfnullablecolumn.h>
#include <dbf/format/layout_p.h>

namespace dbf
{

DbfFieldConverter* nullableConverter(const DbfFieldDescriptor& field,
                                     const DbfTableDescriptor& table)
{
    const bool hasBinaryDoubles =
        table.version >= layout::firstBackLinkVersion && table.version <= layout::nullFlagsVersion;
    const auto letter = static_cast<char>(field.type);
    if (letter == 'C')
        return DbfNullableStringConverter::instance();
    if (letter == 'N' || letter == 'F')
        return DbfNullableNumberConverter::instance();
    if (letter == 'L' && field.length == 1)
        return DbfNullableBoolConverter::instance();
    if (letter == 'I' && field.length == 4)
        return DbfIntConverter::instance();
    if (field.length == 8) {
        if (letter == 'D')
            return DbfNullableDateConverter::instance();
        if (letter == 'T')
            return DbfNullableDateTimeConverter::instance();
        if (letter == 'Y')
            return DbfNullableCurrencyConverter::instance();
        if (letter == 'B' && hasBinaryDoubles)
            return DbfBinaryDoubleConverter::instance();
    }
    return DbfByteArrayConverter::instance();
}

DbfColumn nullableColumn(const DbfFieldDescriptor& field, const DbfTableDescriptor& table)
{
    DbfColumn column(field);
    column.setConverter(nullableConverter(field, table));
    return column;
}

} // namespace dbf
