// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFBINARYFLOATCONVERTER_H
#define DBF_CONVERTERS_DBFBINARYFLOATCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// An IEEE 754 binary32 number. Never a default: a caller installs it on a column.
///
/// - Bytes: 4, little-endian, whatever the field's length: the value as a float, 0 when QVariant
/// does
///   not convert it.
/// - Value: a float (NaN and infinities included); invalid when there are fewer bytes.
/// - Blank: zero bytes.
class DBFTABLE_EXPORT DbfBinaryFloatConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfBinaryFloatConverter* instance();

    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;
    bool convertVariant(QVariant& value) const override;
    QByteArray defaultBytes(int length) const override;
};

} // namespace dbf

#endif
