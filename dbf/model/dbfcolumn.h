// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_MODEL_DBFCOLUMN_H
#define DBF_MODEL_DBFCOLUMN_H

#include <dbf/dbfexport.h>
#include <dbf/model/dbffielddescriptor.h>

#include <QtCore/QByteArray>

namespace dbf
{

class DbfFieldConverter;

/// One column of a table: a field descriptor and the converter of its values.
///
/// A column knows neither its position nor its offset in the record; both follow from its place
/// in DbfSchema::columns.
struct DBFTABLE_EXPORT DbfColumn {
    /// Makes the column of a default-constructed descriptor.
    DbfColumn();

    /// Takes the descriptor and the default converter of its type
    /// (DbfFieldConverter::defaultConverter).
    DbfColumn(DbfFieldDescriptor fieldDescriptor); // NOLINT(google-explicit-constructor)

    /// Replaces the converter, unchecked. It is not owned: a converter of the caller's own must
    /// live for as long as any column points at it. A null one is treated everywhere as the
    /// raw-bytes converter.
    void setConverter(DbfFieldConverter* fieldConverter);

    /// Returns whether a field's bytes must pass through converters on their way from one column
    /// to the other: true when type, length, decimals or the converter object differ. Names are
    /// not compared.
    bool needConvert(const DbfColumn& other) const;

    /// Returns the bytes of an empty field, as many as the field is long: what the converter gives
    /// as default, or spaces without a converter.
    QByteArray blankValueOfThisType() const;

    DbfFieldDescriptor descriptor;          ///< The field's descriptor.
    DbfFieldConverter* converter = nullptr; ///< The converter of the field's values; not owned.
};

} // namespace dbf

Q_DECLARE_TYPEINFO(dbf::DbfColumn, Q_MOVABLE_TYPE);

#endif
