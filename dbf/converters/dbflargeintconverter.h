// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFLARGEINTCONVERTER_H
#define DBF_CONVERTERS_DBFLARGEINTCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A signed 64-bit integer. Never a default: a caller installs it on a column.
///
/// - Bytes: 8, little-endian, whatever the field's length: QVariant::toLongLong.
/// - Value: a qlonglong; invalid when there are fewer bytes.
/// - Blank: zero bytes.
/// - Decimals: rounded half up to an integer of at most 9 digits; what cannot be so rounded (NaN,
///   infinities, more digits) becomes 0.
class DBFTABLE_EXPORT DbfLargeIntConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfLargeIntConverter* instance();

    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;
    bool convertVariant(QVariant& value) const override;
    QByteArray defaultBytes(int length) const override;
};

} // namespace dbf

#endif
