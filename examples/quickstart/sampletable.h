// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef QUICKSTART_SAMPLETABLE_H
#define QUICKSTART_SAMPLETABLE_H

#include <QtCore/QString>

/// Makes a small Cyrillic table in \a path: creates it, appends records, updates one of them and
/// marks another deleted. Returns whether all of that worked; if not, \a reason says why.
bool makeSampleTable(const QString& path, QString* reason);

#endif
