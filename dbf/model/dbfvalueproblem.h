// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_MODEL_DBFVALUEPROBLEM_H
#define DBF_MODEL_DBFVALUEPROBLEM_H

#include <dbf/dbfexport.h>
#include <dbf/model/dbffielddescriptor.h>

#include <QtCore/QVariant>
#include <QtCore/QVector>

namespace dbf
{

class DbfRecord;
struct DbfSchema;

/// A value that would not read back from its field as what it is.
struct DBFTABLE_EXPORT DbfValueProblem {
    /// What would go wrong.
    enum class Reason : quint8 {
        TooLong,       ///< Text or raw bytes longer than the field.
        TooLarge,      ///< A number or year beyond what field or type hold.
        NotInCodePage, ///< Characters that the codec cannot write.
        NotOfType,     ///< No number, date or truth value where one is due.
        Changed,       ///< Whatever else would read back as another value.
        NotWritable,   ///< Its column cannot be written, as that of a memo.
    };

    /// Returns one sentence for a person: `SUM: 123456789 does not fit 8 places with 2 decimals`.
    QString text() const;

    int record = 0;      ///< Position in the vector, or index in the source of a copy; else 0.
    int columnIndex = 0; ///< Index of the column in the schema.
    Reason reason = Reason::Changed; ///< What would go wrong.
    DbfFieldDescriptor field;        ///< The column's descriptor.
    QVariant value;                  ///< The value; invalid when the record has none.
};

/// Returns the values of \a record that its columns in \a schema would not keep, in the order of
/// the columns, one entry a value at most; an empty vector when the record reads back as it is.
///
/// The columns' current converters are asked. Rounding to the column's decimals is no problem, nor
/// are trailing spaces, nor another time zone; a value that the record lacks is one only in a
/// column that makes a date of it. Every memo is one, since none is written. Values
/// beyond the last column are skipped. Lets through what a caller's converter throws.
DBFTABLE_EXPORT QVector<DbfValueProblem> checkValues(const DbfRecord& record,
                                                     const DbfSchema& schema);

} // namespace dbf

Q_DECLARE_TYPEINFO(dbf::DbfValueProblem, Q_MOVABLE_TYPE);

#endif
