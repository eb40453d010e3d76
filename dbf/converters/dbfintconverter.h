// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFINTCONVERTER_H
#define DBF_CONVERTERS_DBFINTCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A signed 32-bit integer. Never a default: a caller installs it on a column.
///
/// - Bytes: 4, little-endian, whatever the field's length: QVariant::toInt.
/// - Value: an int; invalid when there are fewer bytes.
/// - Blank: zero bytes.
/// - Decimals: rounded half up to an integer of at most 9 digits; what cannot be so rounded (NaN,
///   infinities, more digits) becomes 0.
class DBFTABLE_EXPORT DbfIntConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfIntConverter* instance();

    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;
    bool convertVariant(QVariant& value) const override;
    QByteArray defaultBytes(int length) const override;
};

} // namespace dbf

#endif
