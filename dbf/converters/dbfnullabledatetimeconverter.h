// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFNULLABLEDATETIMECONVERTER_H
#define DBF_CONVERTERS_DBFNULLABLEDATETIMECONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A date with its time, by the clock and without a time zone, in milliseconds.
///
/// - Bytes: the Julian day and the milliseconds since midnight, each 4 bytes, little-endian, filled
///   up with zero bytes. They are those of the clock that a QDateTime shows, whatever its time
///   spec, of a QDate's midnight, or of an ISO text as written, a zone in it not counted. Zero
///   bytes for years outside 1 to 9999, for what is no date-time, and in a field of fewer than 8
///   bytes.
/// - Value: a QDateTime in UTC that shows the clock, since local time has hours that do not exist;
///   invalid for zero bytes, spaces, days outside years 1 to 9999 and milliseconds outside the day.
/// - Blank: zero bytes.
class DBFTABLE_EXPORT DbfNullableDateTimeConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfNullableDateTimeConverter* instance();

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
