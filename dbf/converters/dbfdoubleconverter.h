// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFDOUBLECONVERTER_H
#define DBF_CONVERTERS_DBFDOUBLECONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A number as fixed-point text; the default for Float fields, and the one to install on a Numeric
/// column that is to give numbers instead of text.
class DBFTABLE_EXPORT DbfDoubleConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfDoubleConverter* instance();

    /// Returns the number with `field.decimals` digits after the point, right-justified with spaces
    /// in `field.length` bytes. A longer text silently loses its rightmost bytes. What QVariant
    /// does not convert to double is written as 0.
    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;

    /// Returns a double: the trimmed bytes as QByteArray::toDouble reads them, 0.0 for a blank
    /// field and for text that is no number.
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;

    /// Converts to double as QVariant::convert does and returns its result.
    bool convertVariant(QVariant& value) const override;

    /// Returns 0.0 right-justified in \a length bytes, or as much of its left as has room.
    QByteArray defaultBytes(int length) const override;
};

} // namespace dbf

#endif
