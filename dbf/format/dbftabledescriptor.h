// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_FORMAT_DBFTABLEDESCRIPTOR_H
#define DBF_FORMAT_DBFTABLEDESCRIPTOR_H

#include <dbf/format/dbfcodepage.h>

#include <QtCore/QtGlobal>

namespace dbf
{

/// What the library keeps of a table's 32-byte header. A plain value; every field is zero in a
/// default-constructed one.
struct DbfTableDescriptor {
    quint16 headerLength = 0;                   ///< Offset of record 0 in the file, in bytes.
    quint8 version = 0;                         ///< Version byte.
    DbfCodePage codePage = DbfCodePage::NotSet; ///< Code page byte.
    quint32 recordCount = 0;  ///< Record slots in the table, those marked deleted included.
    quint16 recordLength = 0; ///< Bytes per record image, the deletion flag byte included.
};

} // namespace dbf

Q_DECLARE_TYPEINFO(dbf::DbfTableDescriptor, Q_MOVABLE_TYPE);

#endif
