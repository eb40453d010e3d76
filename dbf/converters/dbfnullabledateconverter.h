// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFNULLABLEDATECONVERTER_H
#define DBF_CONVERTERS_DBFNULLABLEDATECONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A date as eight digits, whose blank means "no value".
///
/// - Bytes: year, month and day of a QDate, of the date that a QDateTime shows, or of a text
///   `20240229` or `2024-02-29`, filled up with spaces; all spaces for years outside 1 to 9999, for
///   what is no date, and in a field of fewer than eight bytes.
/// - Value: a QDate, invalid when the first eight bytes are not the digits of a date that exists.
///   Bytes after the eighth are not looked at.
/// - Blank: spaces.
class DBFTABLE_EXPORT DbfNullableDateConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfNullableDateConverter* instance();

    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;

    /// Leaves what toByteArray() takes as it is and makes everything else invalid. Returns whether
    /// there was such a value, or none at all.
    bool convertVariant(QVariant& value) const override;
    QByteArray defaultBytes(int length) const override;
};

} // namespace dbf

#endif
