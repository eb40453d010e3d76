// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_FORMAT_CODEPAGE_P_H
#define DBF_FORMAT_CODEPAGE_P_H

#include <dbf/format/dbfcodepage.h>

class QTextCodec;

namespace dbf
{

/// Returns Qt's codec for a header's code page byte, null when Qt lacks it.
QTextCodec* codecForCodePage(DbfCodePage codePage);

/// Returns \a codec, or the codec that text and names go through while a schema has none. Null only
/// when Qt has none any more, as in the destructors of static objects.
QTextCodec* usableCodec(QTextCodec* codec);

} // namespace dbf

#endif
