// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "target.h"

#include "failure.h"
#include "terminal.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <sys/stat.h>

Target::Target(const QString& path, const QStringList& sources) : m_file(path)
{
    const QFileInfo target(path);
    if (target.exists() && !target.isFile())
        fail(path, QStringLiteral("it is no regular file, and is not replaced"));
    for (const QString& source : sources) {
        if (isSameFile(path, source))
            fail(path, QStringLiteral("it is the file that is read, and is not replaced"));
    }
}

void Target::open()
{
    if (!m_file.open(QIODevice::WriteOnly))
        failWriting();
}

void Target::commit()
{
    // commit() reports success when the last buffered write fails, so that write comes before.
    if (!m_file.flush() || m_file.error() != QFileDevice::NoError)
        failWriting();
    if (isInterrupted())
        throw Failure{Failed, QStringLiteral("interrupted")};
    if (!m_file.commit())
        failWriting();
}

void Target::failWriting()
{
    fail(m_file.fileName(), QStringLiteral("it cannot be written: %1").arg(m_file.errorString()));
}

bool isSameFile(const QString& path, const QString& otherPath)
{
    struct stat one = {};
    struct stat other = {};
    return stat(QFile::encodeName(path).constData(), &one) == 0 &&
           stat(QFile::encodeName(otherPath).constData(), &other) == 0 &&
           one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

void copyFile(const QString& from, const QString& path)
{
    constexpr qint64 blockSize = 1 << 20;
    if (isSameFile(from, path))
        return;
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly))
        fail(from, source.errorString());
    Target target(path, {});
    target.open();
    while (!source.atEnd() && !isInterrupted()) {
        const QByteArray block = source.read(blockSize);
        if (block.isEmpty())
            fail(from, source.errorString());
        if (target.file().write(block) != block.size())
            target.failWriting();
    }
    target.commit();
}
