// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/dbfreadonlyconverter.h>

namespace dbf
{

DbfReadOnlyConverter::~DbfReadOnlyConverter() = default;

bool DbfReadOnlyConverter::isWritable(const QVariant& value)
{
    return !value.isValid() || value.isNull();
}

} // namespace dbf
