// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_FORMAT_DBFLANGUAGEDRIVER_H
#define DBF_FORMAT_DBFLANGUAGEDRIVER_H

#include <dbf/dbfexport.h>
#include <dbf/format/dbftabledescriptor.h>

class QTextCodec;

namespace dbf
{

/// Returns the codec (not owned) that other programs mean by the code page byte of \a table, that
/// of DbfTable::codecByLanguageDriver(); null where there is none. One line lets a table choose by
/// it:
///
///     table.setCodecChoice(codecOfLanguageDriver);
DBFTABLE_EXPORT QTextCodec* codecOfLanguageDriver(const DbfTableDescriptor& table);

} // namespace dbf

#endif
