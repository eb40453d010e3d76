// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_DBFEXPORT_H
#define DBF_DBFEXPORT_H

/// \file
/// What makes a symbol part of the library's interface.

#include <QtCore/qglobal.h>

/// Marks what the library offers to other programs; everything else stays hidden.
/// A static build of the library defines `DBFTABLE_STATIC` for itself and for its users.
#if defined(DBFTABLE_STATIC)
#define DBFTABLE_EXPORT
#elif defined(DBFTABLE_BUILDING)
#define DBFTABLE_EXPORT Q_DECL_EXPORT
#else
#define DBFTABLE_EXPORT Q_DECL_IMPORT
#endif

#endif
