// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef QUICKSTART_OPENTABLE_H
#define QUICKSTART_OPENTABLE_H

#include "tableprinter.h"

#include <dbf/dbf.h>

#include <QTextCodec>

/// \file
/// Opening a table so that its text reads right and nothing is lost.

/// Reads the text of \a table in the character set that its header names.
///
/// By itself the library tells Windows Cyrillic and DOS Cyrillic apart and takes every other code
/// page for KOI8-R. Qt knows most of the others. Field names are text, too, so the table is read
/// again.
inline bool chooseTextCodec(dbf::DbfTable& table)
{
    const int mib = dbf::DbfTable::languageIdToMIB(static_cast<int>(table.descriptor().codePage));
    QTextCodec* codec = mib == 0 ? nullptr : QTextCodec::codecForMib(mib);
    if (codec == nullptr || codec == table.schema().codec)
        return true;
    table.overrideTextCodec(codec);
    return table.reopen();
}

/// Opens \a table in \a mode, its text in \a codec or, when that is null, in what the header
/// names. Returns whether that worked; if not, \a reason says why.
inline bool openTable(dbf::DbfTable& table, QIODevice::OpenMode mode, QTextCodec* codec,
                      QString* reason)
{
    table.overrideTextCodec(codec);
    table.setConverterChoice(dbf::nullableConverter); // Blank fields are no values, not zeros.
    if (!table.open(mode) || (codec == nullptr && !chooseTextCodec(table))) {
        *reason = table.lastError() == dbf::DbfTable::OpenError ? table.device()->errorString()
                                                                : errorText(table.lastError());
        return false;
    }
    return true;
}

#endif
