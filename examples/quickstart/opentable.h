// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef QUICKSTART_OPENTABLE_H
#define QUICKSTART_OPENTABLE_H

#include "tableprinter.h"

#include <dbf/dbf.h>

#include <QTextCodec>

/// \file
/// Opening a table so that its text and its binary columns read right.

/// Reads the text of \a table in the character set that its header names.
///
/// By itself the library tells Windows Cyrillic and DOS Cyrillic apart and takes every other code
/// page for KOI8-R. Qt knows most of the others. Field names are text, too, so the table is read
/// again; that rebuilds the columns, so converters are installed afterwards.
inline bool chooseTextCodec(dbf::DbfTable& table)
{
    const int mib = dbf::DbfTable::languageIdToMIB(static_cast<int>(table.descriptor().codePage));
    QTextCodec* codec = mib == 0 ? nullptr : QTextCodec::codecForMib(mib);
    if (codec == nullptr || codec == table.schema().codec)
        return true;
    table.overrideTextCodec(codec);
    return table.reopen();
}

/// Returns the converter for a binary column, or null to keep the default one of its type.
inline dbf::DbfFieldConverter* binaryConverter(const dbf::DbfFieldDescriptor& field,
                                               bool binaryDoubles)
{
    const auto letter = static_cast<char>(field.type);
    if (letter == 'I' && field.length == 4)
        return dbf::DbfIntConverter::instance();
    if (letter == 'M' && field.length == 4) // The number of a block in a separate memo file.
        return dbf::DbfIntConverter::instance();
    if (letter == 'Y' && field.length == 8) // Currency, in units of 0.0001.
        return dbf::DbfLargeIntConverter::instance();
    if (letter == 'B' && field.length == 8 && binaryDoubles)
        return dbf::DbfBinaryDoubleConverter::instance();
    return nullptr;
}

/// Makes the binary columns of \a table give numbers instead of raw bytes.
inline void installConverters(dbf::DbfTable& table)
{
    // Only the versions with a back-link area use the letter B for a floating-point number.
    const bool binaryDoubles = dbf::DbfTable::hasDbc(table.descriptor());
    const QVector<dbf::DbfColumn> columns = table.schema().columns;
    for (int i = 0; i < columns.size(); ++i) {
        if (auto* converter = binaryConverter(columns.at(i).descriptor, binaryDoubles))
            table.setFieldConverter(i, converter);
    }
}

/// Opens \a table in \a mode, its text in \a codec or, when that is null, in what the header
/// names. Returns whether that worked; if not, \a reason says why.
inline bool openTable(dbf::DbfTable& table, QIODevice::OpenMode mode, QTextCodec* codec,
                      QString* reason)
{
    table.overrideTextCodec(codec);
    if (!table.open(mode) || (codec == nullptr && !chooseTextCodec(table))) {
        *reason = table.lastError() == dbf::DbfTable::OpenError ? table.device()->errorString()
                                                                : errorText(table.lastError());
        return false;
    }
    installConverters(table);
    return true;
}

#endif
