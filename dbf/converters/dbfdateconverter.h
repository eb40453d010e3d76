// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFDATECONVERTER_H
#define DBF_CONVERTERS_DBFDATECONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A date as eight digits, year, month and day; the default for Date fields.
///
/// - Bytes: QVariant::toDate as yyyyMMdd, left-justified with spaces in, or cut to, the field; all
///   spaces for an invalid date.
/// - Value: a QDate, invalid when the first eight bytes are no date (a blank field included). Bytes
///   after the eighth are not looked at.
/// - Blank: 19000101 left-justified, or as much of its left as has room.
class DBFTABLE_EXPORT DbfDateConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfDateConverter* instance();

    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;
    bool convertVariant(QVariant& value) const override;
    QByteArray defaultBytes(int length) const override;
};

} // namespace dbf

#endif
