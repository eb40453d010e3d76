// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_FIELDKIND_P_H
#define DBF_CONVERTERS_FIELDKIND_P_H

#include <QtCore/QtGlobal>

namespace dbf
{

class DbfFieldConverter;

/// What a column's converter does, where it is one of the library's own shared objects. Loops over
/// many records then do the same without a virtual call and without temporaries.
enum class FieldKind : quint8 {
    Text,
    Logical,
    Bytes,
    Number,
    Date,
    SmallInt,
    Int,
    LargeInt,
    BinaryDouble,
    BinaryFloat,
    Foreign, ///< Any other object, be its class derived from one of the library's: ask the object.
};

/// Returns what \a converter does; a null one counts as the raw-bytes converter.
FieldKind fieldKind(const DbfFieldConverter* converter);

} // namespace dbf

#endif
