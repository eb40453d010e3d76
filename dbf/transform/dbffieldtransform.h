// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TRANSFORM_DBFFIELDTRANSFORM_H
#define DBF_TRANSFORM_DBFFIELDTRANSFORM_H

#include <dbf/dbfexport.h>

#include <QtCore/QByteArray>

namespace dbf
{

struct DbfColumn;
struct DbfSchema;

/// Returns the bytes of one field rewritten from its source column to its target column.
///
/// They come back unchanged when DbfColumn::needConvert is false and both schemas carry the same
/// codec object. Otherwise the source converter reads the value, the target converter brings it to
/// its own type (a failure of that is ignored) and writes it. Lets through whatever a caller's
/// converter throws.
DBFTABLE_EXPORT QByteArray transformField(const QByteArray& bytes, const DbfSchema& sourceSchema,
                                          const DbfColumn& sourceColumn,
                                          const DbfSchema& targetSchema,
                                          const DbfColumn& targetColumn);

/// Returns \a bytes brought from one field length to another: cut to \a toLength bytes when that is
/// less than \a fromLength, with \a toLength - \a fromLength spaces appended when it is more,
/// unchanged when both are equal. The actual size of \a bytes is not consulted.
DBFTABLE_EXPORT QByteArray resizeField(const QByteArray& bytes, int fromLength, int toLength);

} // namespace dbf

#endif
