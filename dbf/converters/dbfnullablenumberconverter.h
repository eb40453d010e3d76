// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFNULLABLENUMBERCONVERTER_H
#define DBF_CONVERTERS_DBFNULLABLENUMBERCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A number as text, whose blank means "no value"; for Numeric and Float columns.
///
/// - Bytes: right-justified, with the column's decimals, rounded half away from zero by the digits
///   that the number shows: those of a text or decimal, the shortest of a double or float. Where
///   the field is too narrow, decimals are given up one by one; whole digits never: what does not
///   fit, and infinities, are asterisks. A zero has no sign. Takes numbers, bools, and text or
///   bytes that are a number, a comma taken as a point; what else there is, NaN included, is blank.
/// - Value: a qlonglong for an integer in a column without decimals, a double for any other number
///   (white space around it and bytes from the first 0x00 on not counted, a comma taken as a
///   point); invalid for what is no number or too large for a double.
/// - Blank: spaces.
/// - Decimals: exact.
class DBFTABLE_EXPORT DbfNullableNumberConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfNullableNumberConverter* instance();

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
