// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFSMALLINTCONVERTER_H
#define DBF_CONVERTERS_DBFSMALLINTCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A signed 16-bit little-endian integer in 2 bytes, whatever the field's length. Never a default:
/// a caller installs it on a column.
class DBFTABLE_EXPORT DbfSmallIntConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfSmallIntConverter* instance();

    /// Returns 2 bytes, whatever the field's length: the low 16 bits of QVariant::toInt.
    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;

    /// Returns the integer in the first 2 bytes as an int, or an invalid QVariant when \a bytes has
    /// fewer.
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;

    /// Converts to short as QVariant::convert does and returns its result. A QDecNumber is rounded
    /// half up to an integer (at most 9 digits) and held as an int, wrapped to 16 bits; what cannot
    /// be so rounded (NaN, infinities, more digits) becomes 0. The result is then always true.
    bool convertVariant(QVariant& value) const override;

    /// Returns \a length zero bytes.
    QByteArray defaultBytes(int length) const override;
};

} // namespace dbf

#endif
