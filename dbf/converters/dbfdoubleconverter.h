// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFDOUBLECONVERTER_H
#define DBF_CONVERTERS_DBFDOUBLECONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A number as fixed-point text; the default for Float fields, and one to install on a Numeric
/// column that is to give numbers instead of text.
///
/// - Bytes: the value as a double with the field's decimals, right-justified with spaces. A longer
///   text silently loses its rightmost bytes; what QVariant does not convert is written as 0.
/// - Value: a double, the trimmed bytes as QByteArray::toDouble reads them; 0.0 for a blank field
/// and
///   for text that is no number.
/// - Blank: 0.0 right-justified, or as much of its left as has room.
class DBFTABLE_EXPORT DbfDoubleConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfDoubleConverter* instance();

    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;
    bool convertVariant(QVariant& value) const override;
    QByteArray defaultBytes(int length) const override;
};

} // namespace dbf

#endif
