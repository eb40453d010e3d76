// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFBOOLCONVERTER_H
#define DBF_CONVERTERS_DBFBOOLCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A truth value as one letter; the default for Logical fields. A blank field is all spaces.
class DBFTABLE_EXPORT DbfBoolConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfBoolConverter* instance();

    /// Returns one byte, T or F, by QVariant::toBool, whatever the field's length.
    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;

    /// Returns true when the first byte is T, t, Y or y, else false (an empty field included).
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;

    /// Converts to bool as QVariant::convert does and returns its result. A QDecNumber becomes
    /// false when it is zero of either sign, else true (NaN and infinities too); the result is then
    /// always true.
    bool convertVariant(QVariant& value) const override;
};

} // namespace dbf

#endif
