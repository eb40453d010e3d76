// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef VIEWER_SAMPLETABLE_H
#define VIEWER_SAMPLETABLE_H

#include <QtCore/QString>

/// Makes a Cyrillic table of \a count records in \a path. Returns whether that worked.
bool makeSampleTable(const QString& path, int count);

#endif
