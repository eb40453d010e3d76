// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TRANSFORM_DBFSCHEMATRANSFORM_H
#define DBF_TRANSFORM_DBFSCHEMATRANSFORM_H

#include <dbf/dbfexport.h>
#include <dbf/model/dbfschema.h>

#include <QtCore/QList>

namespace dbf
{

/// How the columns of one table become the columns of another.
///
/// Start from identity() of the source table's schema, edit the columns, and hand the transform to
/// DbfTable::copyAndTransform. A transform is a value with its own copy of the schema: neither does
/// the table see the edits, nor the transform later changes of the table. Every position is an
/// index into the target columns after the edits made so far; edits at positions out of range
/// change nothing.
struct DBFTABLE_EXPORT DbfSchemaTransform {
    /// Takes the target schema and its map unchecked. \a sources holds, for each target
    /// column, the index of its source column, or -1 for a new one; several target columns may
    /// share a source.
    DbfSchemaTransform(DbfSchema targetSchema, QList<int> sources);

    /// Returns the transform that changes nothing: \a sourceSchema as it is, converters and codec
    /// included, each column taken from itself.
    static DbfSchemaTransform identity(DbfSchema sourceSchema);

    /// Inserts a new column, filled with blank values, before the one at \a position (0 to the
    /// column count, which appends). It gets the default converter of its type.
    void insertNewColumn(int position, const DbfFieldDescriptor& descriptor);

    /// Does the same with \a column, which brings its converter along (nullableColumn).
    void insertNewColumn(int position, const DbfColumn& column);

    /// Gives column \a index (0 to the column count minus 1) another definition: renames, widens,
    /// narrows it or changes its type. It keeps its source and gets the default converter of its
    /// new type.
    void updateColumn(int index, const DbfFieldDescriptor& descriptor);

    /// Does the same with \a column, which brings its converter along (nullableColumn).
    void updateColumn(int index, const DbfColumn& column);

    /// Gives column \a index (0 to the column count minus 1) another \a length and number of
    /// \a decimals, both 0 to 255. Name, type, source and converter stay, so values are written
    /// anew: numbers of the nullable set are aligned, and their blanks stay blank.
    void resizeColumn(int index, int length, int decimals);

    /// Removes column \a index (0 to the column count minus 1) from the target.
    void deleteColumn(int index);

    /// Moves the column at \a from to position \a to (both 0 to the column count minus 1); the
    /// columns between them move by one place towards \a from.
    void moveColumn(int from, int to);

    DbfSchema schema;         ///< The target schema.
    QList<int> sourceIndexes; ///< Per target column its source column's index, -1 for a new one.
};

} // namespace dbf

Q_DECLARE_TYPEINFO(dbf::DbfSchemaTransform, Q_MOVABLE_TYPE);

#endif
