// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_MEMO_DBFMEMOCONVERTER_H
#define DBF_MEMO_DBFMEMOCONVERTER_H

#include <dbf/converters/dbfreadonlyconverter.h>
#include <dbf/format/dbftabledescriptor.h>
#include <dbf/model/dbffielddescriptor.h>

#include <functional>

namespace dbf
{

class DbfMemoFile;

/// What the fields of M, G, P and W columns point to in a memo file.
///
/// - Bytes: a pointer to nothing for an invalid or null value; what else there is cannot be written
///   and throws DbfTable::WriteError, so that a record with it is not written.
///   DbfTable::updateValues keeps the pointer of a field whose value is the one that it leads to.
/// - Value: in an M column a QString, text in the codec of the schema, or a QByteArray where the
///   memo file says that it is something else; in other columns a QByteArray. Invalid where there
///   is no memo, and where it cannot be read: DbfMemoFile::errorString() then says why. In fields
///   of 4 bytes a pointer is a little-endian number, in others it is digits; one that is no block
///   number counts as a read that failed.
/// - Blank: a pointer to nothing: zero bytes in fields of 4 bytes, spaces in others.
class DBFTABLE_EXPORT DbfMemoConverter : public DbfReadOnlyConverter
{
public:
    /// Borrows \a memoFile, which must outlive the converter. Null: every value is invalid.
    explicit DbfMemoConverter(DbfMemoFile* memoFile);

    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;

    /// Leaves every value as it is. Returns whether it is a QString, a QByteArray, or none at all.
    bool convertVariant(QVariant& value) const override;
    QByteArray defaultBytes(int length) const override;

private:
    DbfMemoFile* m_memoFile;
};

/// Returns the choice of converters, for DbfTable::setConverterChoice, that gives M, G, P and W
/// columns of length 10 or 4 the converter of \a memoFile, which must outlive the table, and every
/// other column its nullableConverter(); those columns, too, when \a memoFile is null.
DBFTABLE_EXPORT std::function<DbfFieldConverter*(const DbfFieldDescriptor& field,
                                                 const DbfTableDescriptor& table)>
nullableConverters(DbfMemoFile* memoFile);

} // namespace dbf

#endif
