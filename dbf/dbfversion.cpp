// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/dbfversion.h>

namespace dbf
{

QVersionNumber libraryVersion()
{
    return {DBFTABLE_VERSION_MAJOR, DBFTABLE_VERSION_MINOR, DBFTABLE_VERSION_PATCH};
}

} // namespace dbf
