// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef CSV_CSVFIELDS_H
#define CSV_CSVFIELDS_H

#include <dbf/dbf.h>

#include <QtCore/QString>

/// Returns the header cell NAME:TYPE:LENGTH:DECIMALS for a field that holds as text what the cells
/// of \a field are written as: \a field itself, unless it is binary.
QString headerCell(const dbf::DbfFieldDescriptor& field);

/// Reads a header cell, the decimals of which may be missing, into \a field. Returns false when it
/// is none, or not that of a text form (C, D, F, L, N) or of a length its type can have.
bool parseHeaderCell(const QString& cell, dbf::DbfFieldDescriptor* field);

/// Returns the current record's cell in \a column, which is that of \a field. Numbers in text, and
/// what is no value of the field's type, are given as they stand in the table; dates get their
/// dashes.
QString cellText(const dbf::DbfRecordCursor& cursor, int column,
                 const dbf::DbfFieldDescriptor& field);

#endif
