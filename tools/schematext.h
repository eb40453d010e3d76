// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TOOLS_SCHEMATEXT_H
#define TOOLS_SCHEMATEXT_H

#include <dbf/model/dbffielddescriptor.h>

/// Returns NAME:TYPE:LENGTH:DECIMALS for a field that holds as text what the cells of \a field are
/// written as: \a field itself, unless it is binary.
QString fieldText(const dbf::DbfFieldDescriptor& field);

/// Reads such a text, the decimals of which may be missing, into \a field. Returns false when it is
/// none, or not that of a text form (C, D, F, L, N) or of a length its type can have.
bool parseField(const QString& text, dbf::DbfFieldDescriptor* field);

#endif
