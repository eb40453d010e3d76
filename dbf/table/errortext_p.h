// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TABLE_ERRORTEXT_P_H
#define DBF_TABLE_ERRORTEXT_P_H

#include <dbf/table/dbftable.h>

#include <QtCore/QString>

#include <optional>

/// What DbfTable::errorString() says. Texts without a full stop, made only once something failed.
namespace dbf::errortext
{

/// Returns what \a code alone tells.
QString ofCode(DbfTable::DbfTableError code);

/// Returns why tables of that version are not opened when \a accepted are.
QString ofVersion(quint8 version, DbfTable::AcceptedVersions accepted);

/// Returns what \a device says itself of its last failure; empty for nothing.
QString ofDevice(const QIODevice* device);

/// Does the same for a device that did not take all that it was given. Of a file, only the rest
/// brings out why, so it is tried once more, at its place.
QString ofFailedWrite(QIODevice* device);

/// Returns what keeps \a device from being read or, when \a writing, written; what it says of its
/// last failure; empty for nothing.
QString obstacle(const QIODevice* device, bool writing);

/// Returns "Record 5 of 10" or "Records 5 to 7 of 10", counted from 1, for \a first counted from 0.
QString records(qint64 first, qint64 count, qint64 total);

/// Returns \a what and, where \a reason is not empty, ": " and the reason.
QString because(const QString& what, const QString& reason);

/// Returns how many whole records \a device holds; nothing where its size cannot be told.
std::optional<qint64> wholeRecords(const QIODevice* device, const DbfTableDescriptor& descriptor);

} // namespace dbf::errortext

#endif
