// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_FORMAT_TABLEHEADER_P_H
#define DBF_FORMAT_TABLEHEADER_P_H

#include <dbf/format/dbftabledescriptor.h>

#include <QtCore/QByteArray>

namespace dbf
{
struct DbfSchema;
}

/// The header's bytes and the lengths and places that follow from it. What each function does, and
/// the codes that it throws, stand with DbfTable's static members of the same names.
namespace dbf::format
{

DbfTableDescriptor parseTableDescriptor(const QByteArray& header);
QByteArray serializeTableDescriptor(const DbfTableDescriptor& descriptor);
bool supportVersion(char version);
bool hasDbc(const DbfTableDescriptor& descriptor);
int schemaLength(const DbfTableDescriptor& descriptor);
qint64 recordOffset(qint64 index, const DbfTableDescriptor& descriptor);
int calcRecordLength(const DbfSchema& schema);
int calcSchemaLength(const DbfSchema& schema);
int headerLength(const DbfSchema& schema);
DbfTableDescriptor emptyTableDescriptor(DbfCodePage codePage, const DbfSchema& schema);
DbfTableDescriptor transformDescriptor(const DbfTableDescriptor& source, const DbfSchema& schema);

/// Parses the header of any version. Throws ReadError when it is short.
DbfTableDescriptor parseAnyTableDescriptor(const QByteArray& header);

/// Whether tables of that version lie in the file as those of the supported ones do.
bool hasSameLayout(quint8 version);

/// Returns the bytes of the area between terminator and records, 0 where there is none.
int backLinkLength(const DbfTableDescriptor& descriptor);

/// Returns the length of the field descriptors as schemaLength() does, for all of those versions.
int fieldsLength(const DbfTableDescriptor& descriptor);

/// Returns the header of a copy as transformDescriptor() does, for all of those versions.
DbfTableDescriptor copiedDescriptor(const DbfTableDescriptor& source, const DbfSchema& schema);

/// Whether \a fields, what stands behind the header of a version 0x04 table, are descriptors of 48
/// bytes behind 36 others.
bool hasWideDescriptors(const QByteArray& fields, const DbfTableDescriptor& descriptor);

} // namespace dbf::format

#endif
