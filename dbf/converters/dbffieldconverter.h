// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFFIELDCONVERTER_H
#define DBF_CONVERTERS_DBFFIELDCONVERTER_H

#include <dbf/dbfexport.h>
#include <dbf/model/dbffieldtype.h>

#include <QtCore/QByteArray>
#include <QtCore/QVariant>

namespace dbf
{

struct DbfFieldDescriptor;
struct DbfSchema;

/// Turns a field's bytes into a value and back.
///
/// Every column points at one converter: the default one of its type, or one that the caller
/// installs (DbfColumn::setConverter, DbfTable::setFieldConverter), taken from those that
/// come with the library or derived from this class. The library's own converters hold no state,
/// never throw, and serve any number of tables and threads at once. A caller's converter stays the
/// caller's to keep alive and to free; the library never deletes one. The schema and field that it
/// is handed are sometimes copies and sometimes the caller's own objects: their addresses mean
/// nothing, and neither outlives the call.
class DBFTABLE_EXPORT DbfFieldConverter
{
public:
    virtual ~DbfFieldConverter();

    /// Returns the bytes to store for \a value; \a schema and \a field are those of its column.
    /// They go into the record image as returned, neither padded nor cut: anything but
    /// `field.length` bytes shifts the fields after it.
    virtual QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                                   const DbfFieldDescriptor& field) const = 0;

    /// Returns the value of a field. \a bytes is normally `field.length` bytes long (less where
    /// the record image ends early) and only a view of the image: not NUL-terminated, and gone
    /// after the call. A converter that keeps the bytes copies them.
    virtual QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                               const DbfFieldDescriptor& field) const = 0;

    /// Brings \a value in place to the type that the converter works with. Returns whether it now
    /// holds that type; after a failure it is in the state in which QVariant::convert leaves it.
    /// The library's own converters do what QVariant::convert does, except for a QDecNumber where
    /// their class says so, which always becomes a value, and except for the nullable ones.
    virtual bool convertVariant(QVariant& value) const = 0;

    /// Returns the image of a field of \a length bytes that holds the type's default value; spaces
    /// unless overridden.
    virtual QByteArray defaultBytes(int length) const;

    /// Returns the shared converter for fields of \a type: text for Character and Numeric, date
    /// for Date, double for Float, bool for Logical, raw bytes for every other letter.
    static DbfFieldConverter* defaultConverter(DbfFieldType type);
};

} // namespace dbf

#endif
