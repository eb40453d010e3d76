// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_FORMAT_FIELDDESCRIPTORBLOCK_P_H
#define DBF_FORMAT_FIELDDESCRIPTORBLOCK_P_H

#include <dbf/model/dbffielddescriptor.h>

#include <QtCore/QByteArray>
#include <QtCore/QVector>

class QTextCodec;

namespace dbf
{
struct DbfSchema;
struct DbfTableDescriptor;
} // namespace dbf

/// The bytes of the field descriptors. What each function does, and the codes that it throws, stand
/// with DbfTable's static members of the same names.
namespace dbf::format
{

DbfFieldDescriptor parseFieldDescriptor(const char* record, QTextCodec* codec);
QVector<DbfFieldDescriptor> parseFieldDescriptors(const QByteArray& block,
                                                  const DbfTableDescriptor& descriptor,
                                                  QTextCodec* codec);
QByteArray serializeFieldDescriptor(const DbfFieldDescriptor& field, QTextCodec* codec);
QByteArray serializeSchema(const DbfSchema& schema);

/// Parses all field descriptors that \a block holds whole.
QVector<DbfFieldDescriptor> parseAllFieldDescriptors(const QByteArray& block, QTextCodec* codec);

} // namespace dbf::format

#endif
