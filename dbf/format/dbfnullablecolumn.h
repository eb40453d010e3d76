// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_FORMAT_DBFNULLABLECOLUMN_H
#define DBF_FORMAT_DBFNULLABLECOLUMN_H

#include <dbf/dbfexport.h>
#include <dbf/format/dbftabledescriptor.h>
#include <dbf/model/dbfcolumn.h>

/// \file
/// The set of converters in which blank means "no value", by the fields that each is for.

namespace dbf
{

/// Returns the shared converter for \a field of \a table, never null:
///
/// - C: DbfNullableStringConverter; N and F: DbfNullableNumberConverter; of any length.
/// - L of length 1: DbfNullableBoolConverter.
/// - D, T and Y of length 8: DbfNullableDateConverter, DbfNullableDateTimeConverter and
///   DbfNullableCurrencyConverter.
/// - I of length 4: DbfIntConverter.
/// - B of length 8 in tables of version 0x30 to 0x32: DbfBinaryDoubleConverter. In others the
///   letter stands for something else.
/// - Every other letter or length: DbfByteArrayConverter.
DBFTABLE_EXPORT DbfFieldConverter* nullableConverter(const DbfFieldDescriptor& field,
                                                     const DbfTableDescriptor& table);

/// Returns a column of \a field with its nullableConverter(), for new tables and for transforms.
DBFTABLE_EXPORT DbfColumn nullableColumn(const DbfFieldDescriptor& field,
                                         const DbfTableDescriptor& table = {});

} // namespace dbf

#endif
