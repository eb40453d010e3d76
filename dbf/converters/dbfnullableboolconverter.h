// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFNULLABLEBOOLCONVERTER_H
#define DBF_CONVERTERS_DBFNULLABLEBOOLCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A truth value as one letter that may be missing.
///
/// - Bytes: T, F, or ? for no value, filled up with spaces. Takes bools, numbers (zero or not), and
///   t, f, y, n, true, false, yes, no, 1 and 0 as text, in any case and trimmed.
/// - Value: a bool by the first byte: T, t, Y and y are true, F, f, N and n false; else invalid.
/// - Blank: a question mark.
/// - Decimals: zero or not.
class DBFTABLE_EXPORT DbfNullableBoolConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfNullableBoolConverter* instance();

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
