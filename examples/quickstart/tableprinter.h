// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef QUICKSTART_TABLEPRINTER_H
#define QUICKSTART_TABLEPRINTER_H

#include <dbf/table/dbftable.h>

#include <QtCore/QString>

class QTextStream;

/// Returns what the code means, in words.
QString errorText(dbf::DbfTable::DbfTableError code);

/// Returns \a value, which is that of a cell of \a field, as a person would write it.
QString valueText(const QVariant& value, const dbf::DbfFieldDescriptor& field);

/// Prints the structure and the first records of the open \a table. Returns false when the table
/// cannot be read, its lastError() then says why, or when Ctrl-C was pressed.
bool printTable(dbf::DbfTable& table, QTextStream& out);

#endif
