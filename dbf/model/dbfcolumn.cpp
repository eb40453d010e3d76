// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/fieldkind_p.h>
#include <dbf/model/dbfcolumn.h>

#include <utility>

namespace dbf
{

DbfColumn::DbfColumn() : DbfColumn(DbfFieldDescriptor()) {}

DbfColumn::DbfColumn(DbfFieldDescriptor fieldDescriptor)
    : descriptor(std::move(fieldDescriptor))
    , converter(DbfFieldConverter::defaultConverter(descriptor.type))
{
}

void DbfColumn::setConverter(DbfFieldConverter* fieldConverter)
{
    converter = fieldConverter;
}

bool DbfColumn::needConvert(const DbfColumn& other) const
{
    return descriptor.type != other.descriptor.type ||
           descriptor.length != other.descriptor.length ||
           descriptor.decimals != other.descriptor.decimals || converter != other.converter;
}

QByteArray DbfColumn::blankValueOfThisType() const
{
    return converterOf(*this)->defaultBytes(descriptor.length);
}

} // namespace dbf
