// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFNULLABLESTRINGCONVERTER_H
#define DBF_CONVERTERS_DBFNULLABLESTRINGCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// Text in the codec of the schema, filled up with spaces, whose blank means "no value".
///
/// - Bytes: the text as it is, cut between characters, filled up with spaces; null and invalid as
///   blank. Numbers as their shortest text (without decimals that have no room, asterisks where
///   whole digits have none), bools as T and F, dates as ISO texts, or as eight digits below ten
///   places, date-times as ISO texts without a zone.
/// - Value: a QString, what stands before the first 0x00 byte, without the spaces at its end;
///   leading ones stay. Empty, not null, for a blank field.
/// - Blank: spaces.
/// - Decimals: with their digits.
class DBFTABLE_EXPORT DbfNullableStringConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfNullableStringConverter* instance();

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
