// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_FORMAT_METADATA_P_H
#define DBF_FORMAT_METADATA_P_H

#include <dbf/model/dbfschema.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>

/// What stands in a table's header beside what DbfTableDescriptor and DbfSchema keep. \a source is
/// the start of a table, as many bytes as its header length says.
namespace dbf::format
{

/// Puts date and flags of \a source into the header \a header.
void keepHeaderMetadata(const QByteArray& source, QByteArray& header);

/// Puts flags and the like of the columns of \a sourceSchema that stay what they are, and the
/// places of all fields, into the field descriptor block \a block of \a schema, whose columns come
/// from \a sourceIndexes.
void keepFieldMetadata(const QByteArray& source, const DbfSchema& sourceSchema,
                       const DbfSchema& schema, const QList<int>& sourceIndexes, QByteArray& block);

/// Returns the back-link area at the end of \a source.
QByteArray backLinkArea(const QByteArray& source);

} // namespace dbf::format

#endif
