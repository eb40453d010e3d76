// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/dbfbytearrayconverter.h>
#include <dbf/converters/dbfreadonlyconverter.h>
#include <dbf/converters/fieldkind_p.h>

namespace dbf
{

DbfFieldConverter* converterOf(const DbfColumn& column)
{
    return column.converter ? column.converter : DbfByteArrayConverter::instance();
}

bool isWritable(const QVariant& value, const DbfColumn& column)
{
    return !dynamic_cast<const DbfReadOnlyConverter*>(converterOf(column)) ||
           DbfReadOnlyConverter::isWritable(value);
}

FieldKind fieldKind(const DbfColumn& column)
{
    const DbfFieldConverter* const converter = converterOf(column);
    for (quint8 index = 0; index < static_cast<quint8>(FieldKind::Foreign); ++index) {
        const auto kind = static_cast<FieldKind>(index);
        const bool isOfKind = visitRule(
            kind,
            [converter](auto rule) { return decltype(rule)::Converter::instance() == converter; },
            [converter] { return DbfByteArrayConverter::instance() == converter; });
        if (isOfKind)
            return kind;
    }
    return FieldKind::Foreign;
}

} // namespace dbf
