// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef QUICKSTART_TARGETFILE_H
#define QUICKSTART_TARGETFILE_H

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <sys/stat.h>

/// \file
/// Where a file may be written.

/// Returns whether both paths lead to one file, through links of either kind, too.
inline bool isSameFile(const QString& path, const QString& otherPath)
{
    struct stat one = {};
    struct stat other = {};
    return stat(QFile::encodeName(path).constData(), &one) == 0 &&
           stat(QFile::encodeName(otherPath).constData(), &other) == 0 &&
           one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// Returns why what is read from \a sourcePath must not be written to \a path, empty when it may.
/// A finished file is put in place of what stands there, which must not be the source, nor a pipe
/// or a device.
inline QString targetProblem(const QString& path, const QString& sourcePath)
{
    const QFileInfo target(path);
    if (!target.exists())
        return {};
    if (!target.isFile())
        return QStringLiteral("it is no regular file");
    return isSameFile(path, sourcePath) ? QStringLiteral("it is the file that is read") : QString();
}

#endif
