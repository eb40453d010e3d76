// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFNULLABLECURRENCYCONVERTER_H
#define DBF_CONVERTERS_DBFNULLABLECURRENCYCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// An amount of money with four decimals, exact.
///
/// - Bytes: a 64-bit integer in units of 0.0001, little-endian, filled up with zero bytes. Takes
///   what DbfNullableNumberConverter takes and rounds it alike; beyond the range the nearest limit,
///   infinities too; 0 for what is no number, and in a field of fewer than 8 bytes.
/// - Value: a double where it is written as the same amount again, else a QString of the exact
///   decimal; invalid when there are fewer than 8 bytes.
/// - Blank: zero bytes, an amount of 0: the field knows no other "no value".
/// - Decimals: exact.
class DBFTABLE_EXPORT DbfNullableCurrencyConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfNullableCurrencyConverter* instance();

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
