// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFBINARYDOUBLECONVERTER_H
#define DBF_CONVERTERS_DBFBINARYDOUBLECONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// An IEEE 754 binary64 number, little-endian, in 8 bytes, whatever the field's length. Never a
/// default: a caller installs it on a column.
class DBFTABLE_EXPORT DbfBinaryDoubleConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfBinaryDoubleConverter* instance();

    /// Returns 8 bytes, whatever the field's length: the value as a double, 0 when QVariant does
    /// not convert it.
    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;

    /// Returns the number in the first 8 bytes as a double (NaN and infinities included), or an
    /// invalid QVariant when \a bytes has fewer.
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;

    /// Converts to double as QVariant::convert does and returns its result.
    bool convertVariant(QVariant& value) const override;

    /// Returns \a length zero bytes.
    QByteArray defaultBytes(int length) const override;
};

} // namespace dbf

#endif
