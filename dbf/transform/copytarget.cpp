// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/transform/copytarget_p.h>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QFileDevice>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryFile>

#include <sys/stat.h>

#include <optional>

namespace dbf
{

namespace
{

// Names tell nothing here: a file has many spellings, symbolic and hard links.
struct FileIdentity {
    dev_t device;
    ino_t inode;

    bool operator==(const FileIdentity& other) const
    {
        return device == other.device && inode == other.inode;
    }
};

std::optional<FileIdentity> identityOf(const QFileDevice& file)
{
    struct stat status = {};
    const int result = file.isOpen() && file.handle() != -1
                           ? fstat(file.handle(), &status)
                           : stat(QFile::encodeName(file.fileName()).constData(), &status);
    if (result != 0)
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

bool isSameFile(const QFileDevice& a, const QFileDevice& b)
{
    const std::optional<FileIdentity> first = identityOf(a);
    return first && first == identityOf(b);
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
