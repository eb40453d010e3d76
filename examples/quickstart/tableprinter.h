// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef QUICKSTART_TABLEPRINTER_H
#define QUICKSTART_TABLEPRINTER_H

#include <dbf/table/dbftable.h>

#include <QtCore/QString>

class QTextStream;

/// Returns what the code means, in words.
QString errorText(dbf::DbfTable::DbfTableError code);

/// Prints the structure and the first records of the open \a table. Returns false when the table
/// cannot be read; its lastError() then says why.
bool printTable(dbf::DbfTable& table, QTextStream& out);

#endif
