// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFBOOLCONVERTER_H
#define DBF_CONVERTERS_DBFBOOLCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A truth value as one letter; the default for Logical fields.
///
/// - Bytes: one, T or F by QVariant::toBool, whatever the field's length.
/// - Value: a bool, true when the first byte is T, t, Y or y, else false (an empty field included).
/// - Blank: spaces.
/// - Decimals: false when zero of either sign, else true (NaN and infinities too).
class DBFTABLE_EXPORT DbfBoolConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfBoolConverter* instance();

    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;
    bool convertVariant(QVariant& value) const override;
};

} // namespace dbf

#endif
