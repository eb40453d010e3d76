// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "rewriting.h"

#include "target.h"
#include "terminal.h"

#include <QtCore/QFileInfo>

using namespace dbf;

namespace
{

[[noreturn]] void failRewriting(const QString& path, const QString& reason)
{
    throw Failure{Failed, isInterrupted() ? QStringLiteral("interrupted")
                                          : QStringLiteral("%1: %2").arg(path, reason)};
}

void rewriteInPlace(const Source& source, const RewritingOptions& options,
                    const Rewriting& rewriting)
{
    Progress progress;
    DbfFileOptions fileOptions;
    fileOptions.ignoreIndexes = options.parser.isSet(options.ignoreIndexes);
    fileOptions.codePage = rewriting.codePage;
    fileOptions.codecChoice = [&](const DbfTableDescriptor&) { return source.codec(); };
    fileOptions.progress = [&](int done, int total) { return progress.show(done, total); };
    QString reason;
    const bool isDone = rewriting.pack
                            ? packFile(source.path(), fileOptions, &reason)
                            : restructureFile(source.path(), rewriting.edit, fileOptions, &reason);
    if (!isDone)
        failRewriting(source.path(), reason);
}

/// No index file is copied, so none is announced.
void clearIndexFlag(Source& source, Target& target)
{
    constexpr qint64 flagsOffset = 28;
    constexpr int hasIndex = 0x01;
    char flags = 0;
    QSaveFile& file = target.file();
    if (!source.file().seek(flagsOffset) || !source.file().getChar(&flags))
        fail(source.path(), source.file().errorString());
    flags = static_cast<char>(flags & ~hasIndex);
    if (!file.flush() || !file.seek(flagsOffset) || file.write(&flags, 1) != 1)
        target.failWriting();
}

void rewriteInto(Source& source, const RewritingOptions& options, const Rewriting& rewriting)
{
    Progress progress;
    DbfCopyOptions copyOptions;
    copyOptions.progress = [&](int done, int total) { return progress.show(done, total); };
    copyOptions.skipDeleted = rewriting.pack;
    copyOptions.keepMetadata = true;
    copyOptions.codePage = rewriting.codePage;
    copyOptions.checkValues = true;
    DbfSchemaTransform transform = DbfSchemaTransform::identity(source.table().schema());
    if (rewriting.edit)
        rewriting.edit(transform);
    Target target(options.target, {source.path(), source.memoPath(), source.codePagePath()});
    if (!source.table().copyAndTransform(&target.file(), transform, copyOptions))
        failRewriting(source.path(), source.table().errorString());
    clearIndexFlag(source, target);
    if (!source.memoPath().isEmpty())
        copyFile(
            source.memoPath(),
            withSuffix(options.target, QLatin1Char('.') + QFileInfo(source.memoPath()).suffix()));
    target.commit();
}

} // namespace

RewritingOptions::RewritingOptions(QCommandLineParser& commandLine)
    : parser(commandLine)
    , inPlace(QStringLiteral("in-place"),
              QStringLiteral("Puts the new table in the place of the old one, in one step."))
    , ignoreIndexes(QStringLiteral("ignore-indexes"),
                    QStringLiteral("With --in-place: rewrites a table to which an index file "
                                   "belongs, though that file is wrong afterwards."))
    , encoding(QStringLiteral("encoding"), QStringLiteral("Code page of the table's text."),
               QStringLiteral("codepage"))
{
    parser.addOptions({inPlace, ignoreIndexes, encoding});
}

void RewritingOptions::parse(const QStringList& arguments)
{
    const QStringList operands = ::parse(parser, arguments, QStringLiteral("FILE [NEWFILE]"), 1, 2);
    if ((operands.size() == 2) == parser.isSet(inPlace))
        throw Failure{UsageError, QStringLiteral("name either a new file or --in-place")};
    path = operands.first();
    target = operands.value(1);
}

void rewrite(Source& source, const RewritingOptions& options, const Rewriting& rewriting)
{
    catchInterruption();
    if (options.target.isEmpty())
        rewriteInPlace(source, options, rewriting);
    else
        rewriteInto(source, options, rewriting);
}
