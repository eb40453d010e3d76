// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/codecchoice_p.h>
#include <dbf/format/dbflanguagedriver.h>

namespace dbf
{

QTextCodec* codecOfLanguageDriver(const DbfTableDescriptor& table)
{
    return codecForLanguageDriver(static_cast<quint8>(table.codePage));
}

} // namespace dbf
