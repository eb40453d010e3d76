// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef CSV_CSVFIELDS_H
#define CSV_CSVFIELDS_H

#include <dbf/dbf.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// Returns the header cell NAME:TYPE:LENGTH:DECIMALS for a field that holds as text what the cells
/// of \a field are written as: \a field itself, unless it is binary.
QString headerCell(const dbf::DbfFieldDescriptor& field);

/// Reads a header cell, the decimals of which may be missing, into \a field. Returns false when it
/// is none, or not that of a text form (C, D, F, L, N) or of a length its type can have.
bool parseHeaderCell(const QString& cell, dbf::DbfFieldDescriptor* field);

/// Returns the current record's cell in \a column, which is that of \a field. Text forms are given
/// as they stand in the table, so that no digit changes on the way; dates get their dashes.
QString cellText(const dbf::DbfRecordCursor& cursor, int column,
                 const dbf::DbfFieldDescriptor& field);

/// Turns \a cell into all the bytes of a field. Returns false when it does not fit, has characters
/// that \a schema's codec lacks, or is not what the type asks for.
bool fieldBytes(const QString& cell, const dbf::DbfSchema& schema,
                const dbf::DbfFieldDescriptor& field, QByteArray* bytes);

#endif
