// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_DBFVERSION_H
#define DBF_DBFVERSION_H

/// \file
/// The version of the library. The build, the packages and the reference read it here.

#include <dbf/dbfexport.h>

#include <QtCore/QVersionNumber>

#define DBFTABLE_VERSION_MAJOR 1 ///< Grows when a program must change or be built anew.
#define DBFTABLE_VERSION_MINOR 0 ///< Grows with what is added.
#define DBFTABLE_VERSION_PATCH 0 ///< Grows with what is mended.

/// A version as one number, to be compared with DBFTABLE_VERSION.
#define DBFTABLE_VERSION_CHECK(major, minor, patch) (((major) << 16) | ((minor) << 8) | (patch))

/// The version of the headers that a program is compiled with, as one number.
#define DBFTABLE_VERSION \
    DBFTABLE_VERSION_CHECK(DBFTABLE_VERSION_MAJOR, DBFTABLE_VERSION_MINOR, DBFTABLE_VERSION_PATCH)

namespace dbf
{

/// Returns the version of the library that the program runs with, which may be newer than
/// DBFTABLE_VERSION.
DBFTABLE_EXPORT QVersionNumber libraryVersion();

} // namespace dbf

#endif
