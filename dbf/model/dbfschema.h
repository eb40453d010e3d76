// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_MODEL_DBFSCHEMA_H
#define DBF_MODEL_DBFSCHEMA_H

#include <dbf/dbfexport.h>
#include <dbf/model/dbfcolumn.h>

#include <QtCore/QVector>

class QTextCodec;

namespace dbf
{

/// The structure of a table: its columns in field order and the codec of its text.
struct DBFTABLE_EXPORT DbfSchema {
    /// Makes a schema without columns and with a null codec.
    DbfSchema() = default;

    /// Stores the codec (not owned) and builds the columns as setColumns() does.
    DbfSchema(QVector<DbfFieldDescriptor> descriptors, QTextCodec* textCodec);

    /// Replaces the codec (not owned); the columns stay as they are.
    ///
    /// While the codec is null, text and names go through the codec of
    /// DbfTable::codecByCodePage(DbfCodePage::NotSet), or Latin-1 where Qt has no such codec.
    void setCodec(QTextCodec* textCodec);

    /// Rebuilds the columns from \a descriptors, each with the default converter of its type;
    /// converters set before are dropped. Nothing is validated.
    void setColumns(QVector<DbfFieldDescriptor> descriptors);

    /// Returns the index of the column of that name, the first of several, in any case; -1 if there
    /// is none.
    int indexOf(const QString& name) const;

    QVector<DbfColumn> columns;  ///< The columns in field order.
    QTextCodec* codec = nullptr; ///< Codec of character data and field names; not owned.
};

} // namespace dbf

Q_DECLARE_TYPEINFO(dbf::DbfSchema, Q_MOVABLE_TYPE);

#endif
