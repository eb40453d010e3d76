// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_MODEL_DBFRECORD_H
#define DBF_MODEL_DBFRECORD_H

#include <dbf/dbfexport.h>

#include <QtCore/QVariant>
#include <QtCore/QVector>

namespace dbf
{

/// One row of a table in memory: its index, its deleted flag and one value per column.
class DBFTABLE_EXPORT DbfRecord
{
public:
    /// Makes a transient record without values.
    DbfRecord() = default;

    /// Makes the record of row \a index, not marked deleted. A negative index, and 2147483647,
    /// make a transient record: one that stands for no stored row.
    DbfRecord(int index, QVector<QVariant> fieldValues);

    /// Returns the row's index (0 to 2147483646), or -1 for a transient record.
    int index() const;

    /// Returns whether the record stands for no stored row.
    bool isTransient() const;

    /// Returns whether the record is marked deleted; never true for a transient record.
    bool isDeleted() const;

    /// Marks the record deleted or clears the mark. Has no effect on a transient record.
    /// The table changes only when the record is written (DbfTable::updateRecord).
    void setDeleted(bool deleted);

    QVector<QVariant> values; ///< The field values in column order.

private:
    /// 0 for a transient record, index + 1 for a live row, its negative for a deleted one.
    qint32 m_number = 0;
};

} // namespace dbf

Q_DECLARE_TYPEINFO(dbf::DbfRecord, Q_MOVABLE_TYPE);

#endif
