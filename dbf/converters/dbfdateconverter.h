// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFDATECONVERTER_H
#define DBF_CONVERTERS_DBFDATECONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A date as eight digits, year, month and day; the default for Date fields.
class DBFTABLE_EXPORT DbfDateConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfDateConverter* instance();

    /// Returns the date (QVariant::toDate) as yyyyMMdd, left-justified with spaces in, or cut to,
    /// `field.length` bytes; all spaces for an invalid date.
    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;

    /// Returns a QDate, invalid when the first eight bytes are no date (a blank field included).
    /// Bytes after the eighth are not looked at.
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;

    /// Converts to QDate as QVariant::convert does and returns its result.
    bool convertVariant(QVariant& value) const override;

    /// Returns 19000101 left-justified in \a length bytes, or as much of its left as has room.
    QByteArray defaultBytes(int length) const override;
};

} // namespace dbf

#endif
