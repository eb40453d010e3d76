// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TOOLS_TARGET_H
#define TOOLS_TARGET_H

#include <QtCore/QSaveFile>
#include <QtCore/QStringList>

/// A file that appears, or takes the place of a regular one, once it is whole; without commit() it
/// never was.
class Target
{
public:
    /// Throws a Failure when \a path is no regular file or one of \a sources, through whatever
    /// links; those paths may be empty.
    Target(const QString& path, const QStringList& sources);

    /// Returns the file, which is not open.
    QSaveFile& file() { return m_file; }

    /// Opens the file for writing. Throws a Failure.
    void open();

    /// Puts the file in its place. Throws a Failure when that does not work, and after an
    /// interruption.
    void commit();

    /// Throws the Failure of what the file said last.
    [[noreturn]] void failWriting();

private:
    QSaveFile m_file;
};

/// Returns whether both paths lead to one file, through links of either kind, too.
bool isSameFile(const QString& path, const QString& otherPath);

/// Copies the file at \a from to \a path as a Target, unless they are the same. Throws a Failure.
void copyFile(const QString& from, const QString& path);

#endif
