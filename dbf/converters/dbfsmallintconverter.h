// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFSMALLINTCONVERTER_H
#define DBF_CONVERTERS_DBFSMALLINTCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A signed 16-bit integer. Never a default: a caller installs it on a column.
///
/// - Bytes: 2, little-endian, whatever the field's length: the low 16 bits of QVariant::toInt.
/// - Value: an int; invalid when there are fewer bytes.
/// - Blank: zero bytes.
/// - Decimals: rounded half up to an integer of at most 9 digits, wrapped to 16 bits; what cannot
/// be so rounded (NaN,
///   infinities, more digits) becomes 0.
class DBFTABLE_EXPORT DbfSmallIntConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfSmallIntConverter* instance();

    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;
    bool convertVariant(QVariant& value) const override;
    QByteArray defaultBytes(int length) const override;
};

} // namespace dbf

#endif
