// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef VIEWER_CSVEXPORT_H
#define VIEWER_CSVEXPORT_H

#include <QtCore/QAbstractItemModel>

#include <functional>

/// Writes the rows that \a model shows into the file \a path as comma-separated values in UTF-8.
/// The file is there when it is complete, or stays as it was. Returns whether it was written;
/// \a reason says why not, and is empty when \a progress stopped it.
bool exportCsv(const QAbstractItemModel& model, const QString& path,
               const std::function<bool(int done, int total)>& progress, QString* reason);

#endif
