// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/dbfreadonlyconverter.h>
#include <dbf/encoding/qt5values_p.h>

namespace dbf
{

DbfReadOnlyConverter::~DbfReadOnlyConverter() = default;

bool DbfReadOnlyConverter::isWritable(const QVariant& value)
{
    return qt5::isNull(value);
}

} // namespace dbf
