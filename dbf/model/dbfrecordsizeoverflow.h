// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_MODEL_DBFRECORDSIZEOVERFLOW_H
#define DBF_MODEL_DBFRECORDSIZEOVERFLOW_H

#include <dbf/dbfexport.h>

#include <QtCore/QList>

namespace dbf
{

class DbfRecord;
struct DbfSchema;

/// A value whose bytes do not fit its field.
struct DbfRecordSizeOverflow {
    int columnIndex; ///< Index of the column in the schema.
    int valueSize;   ///< Bytes that the column's converter produced for the value.
    int fieldLength; ///< Bytes that the field has room for.
};

/// Returns one entry for each value of \a record that needs more bytes than its column in
/// \a schema has, in ascending column order; an empty list when everything fits.
///
/// The columns' current converters are asked. Columns for which the record holds no value,
/// values beyond the last column, and those that cannot be written at all are skipped. Text, float
/// and date converters cut their output to the field themselves, so they never give an entry
/// (DbfStringConverter::fromUnicode tells whether a text fits). Lets through whatever a caller's
/// converter throws.
DBFTABLE_EXPORT QList<DbfRecordSizeOverflow> checkRecordSizeOverflow(const DbfRecord& record,
                                                                     const DbfSchema& schema);

} // namespace dbf

Q_DECLARE_TYPEINFO(dbf::DbfRecordSizeOverflow, Q_MOVABLE_TYPE);

#endif
