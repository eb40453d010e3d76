// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/table/fileidentity_p.h>
#include <dbf/transform/copytarget_p.h>

#include <QtCore/QBuffer>
#include <QtCore/QFileDevice>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryFile>

#include <optional>

namespace dbf
{

namespace
{

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
