// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFBYTEARRAYCONVERTER_H
#define DBF_CONVERTERS_DBFBYTEARRAYCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

namespace dbf
{

/// A field's bytes as they are; the default for every type letter without a converter of its own.
///
/// - Bytes: QVariant::toByteArray of the value, neither padded nor cut to the field.
/// - Value: a QByteArray with a copy of all bytes.
/// - Blank: spaces.
class DBFTABLE_EXPORT DbfByteArrayConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfByteArrayConverter* instance();

    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;
    bool convertVariant(QVariant& value) const override;
};

} // namespace dbf

#endif
