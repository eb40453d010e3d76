// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFREADONLYCONVERTER_H
#define DBF_CONVERTERS_DBFREADONLYCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A converter of fields whose values cannot be written, since they stand elsewhere: its
/// toByteArray() gives what defaultBytes() gives for an invalid or null value and throws for every
/// other one. checkValues() knows that from the class and does not ask.
class DBFTABLE_EXPORT DbfReadOnlyConverter : public DbfFieldConverter
{
public:
    ~DbfReadOnlyConverter() override;

    /// Returns whether toByteArray() takes \a value: when it is invalid or null.
    static bool isWritable(const QVariant& value);
};

} // namespace dbf

#endif
