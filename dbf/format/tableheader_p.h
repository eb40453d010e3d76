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

} // namespace dbf::format

#endif
