// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/table/deviceidentity_p.h>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryFile>

#include <sys/stat.h>

namespace dbf
{

std::optional<FileIdentity> identityOfFile(const QFileDevice& file)
{
    struct stat status = {};
    const int result = file.isOpen()
                           ? fstat(file.handle(), &status)
                           : stat(QFile::encodeName(file.fileName()).constData(), &status);
    if (result != 0)
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

namespace
{

bool isSameFile(const QFileDevice& a, const QFileDevice& b)
{
    const std::optional<FileIdentity> first = identityOfFile(a);
    return first && first == identityOfFile(b);
}

// With its fallback allowed, a QSaveFile writes in place where it cannot make a file beside its
// own.
bool wouldWriteInPlace(const QSaveFile& file)
{
    if (!file.directWriteFallback())
        return false;
    QTemporaryFile neighbour(QFileInfo(file.fileName()).canonicalFilePath() +
                             QLatin1String(".XXXXXX"));
    return !neighbour.open();
}

} // namespace

bool wouldOverwrite(const QIODevice* target, const QIODevice* source)
{
    if (target == source)
        return true;

    const auto* const targetBuffer = qobject_cast<const QBuffer*>(target);
    const auto* const sourceBuffer = qobject_cast<const QBuffer*>(source);
    if (targetBuffer && sourceBuffer)
        return &targetBuffer->buffer() == &sourceBuffer->buffer();

    const auto* const targetFile = qobject_cast<const QFileDevice*>(target);
    const auto* const sourceFile = qobject_cast<const QFileDevice*>(source);
    if (!targetFile || !sourceFile || !isSameFile(*targetFile, *sourceFile))
        return false;
    const auto* const saveFile = qobject_cast<const QSaveFile*>(target);
    return !saveFile || wouldWriteInPlace(*saveFile);
}

} // namespace dbf
