// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_MODEL_DBFFIELDDESCRIPTOR_H
#define DBF_MODEL_DBFFIELDDESCRIPTOR_H

#include <dbf/dbfexport.h>
#include <dbf/model/dbffieldtype.h>

#include <QtCore/QString>

namespace dbf
{

/// What the file records about one field: its name, type letter, width and decimal places.
///
/// A plain value. Nothing is validated: an empty name, a width of 0 or more decimals than the
/// width has room for are all kept as given.
struct DBFTABLE_EXPORT DbfFieldDescriptor {
    /// Makes a character field without a name and of width 0.
    DbfFieldDescriptor() = default;

    /// Stores the four values unchanged. \a fieldLength is in bytes (0 to 255).
    DbfFieldDescriptor(const QString& fieldName, DbfFieldType fieldType, unsigned char fieldLength,
                       unsigned char decimalCount);

    /// Returns a character field of \a length bytes.
    static DbfFieldDescriptor stringField(const QString& name, unsigned char length);

    /// Returns a numeric text field of \a length bytes with \a decimals decimal places.
    static DbfFieldDescriptor numberField(const QString& name, unsigned char length,
                                          unsigned char decimals);

    /// Returns a float field, always 20 bytes wide, with \a decimals decimal places.
    static DbfFieldDescriptor floatField(const QString& name, unsigned char decimals);

    /// Returns a logical field, always 1 byte wide.
    static DbfFieldDescriptor logicalField(const QString& name);

    QString name;                                ///< Name; the file keeps 10 encoded bytes of it.
    DbfFieldType type = DbfFieldType::Character; ///< Type letter.
    unsigned char length = 0;                    ///< Width in the record image, in bytes.
    unsigned char decimals = 0;                  ///< Number of decimal places.
};

} // namespace dbf

Q_DECLARE_TYPEINFO(dbf::DbfFieldDescriptor, Q_MOVABLE_TYPE);

#endif
