// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "commands.h"
#include "source.h"
#include "target.h"
#include "terminal.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <limits>

using namespace dbf;

namespace
{

constexpr qint64 blockBytes = 1 << 20;

/// Returns how many of the records in \a block, the first of which has index \a first, are kept:
/// all that are counted, and those behind them that begin as records do.
int keptOf(const QByteArray& block, qint64 first, const DbfTableDescriptor& header)
{
    const auto count = static_cast<int>(block.size() / header.recordLength);
    for (int i = 0; i < count; ++i) {
        const char flag = block.at(i * header.recordLength);
        if (first + i >= qint64(header.recordCount) && flag != ' ' && flag != '*')
            return i;
    }
    return count;
}

void write(Target& target, const QByteArray& bytes)
{
    if (target.file().write(bytes) != bytes.size())
        target.failWriting();
}

/// Copies the whole records behind the header and returns their number.
qint64 copyRecords(Source& source, Target& target)
{
    const DbfTableDescriptor& header = source.table().descriptor();
    const qint64 whole =
        std::min<qint64>(source.table().wholeRecords(), std::numeric_limits<int>::max());
    const qint64 batch = std::max<qint64>(blockBytes / header.recordLength, 1);
    Progress progress;
    qint64 done = 0;
    while (done < whole) {
        const qint64 count = std::min(batch, whole - done);
        const QByteArray block = source.file().read(count * header.recordLength);
        if (block.size() != count * header.recordLength)
            fail(source.path(), source.file().errorString());
        const int kept = keptOf(block, done, header);
        write(target, block.left(kept * header.recordLength));
        done += kept;
        if (!progress.show(done, whole))
            throw Failure{Failed, QStringLiteral("interrupted")};
        if (kept < count)
            break;
    }
    return done;
}

} // namespace

ExitCode runRepair(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Copies what is whole in a table into a new file: all whole records, with a "
                       "count and an end marker that are right. Values are not looked at."));
    const QStringList operands = parse(parser, arguments, QStringLiteral("FILE NEWFILE"), 2, 2);
    Source source(operands.first());
    source.open();
    const DbfTableDescriptor header = source.table().descriptor();
    if (header.recordLength == 0)
        fail(source.path(), QStringLiteral("its records have no bytes"));
    catchInterruption();
    Target target(operands.last(), {source.path(), source.memoPath(), source.codePagePath()});
    target.open();
    source.file().seek(0);
    const QByteArray start = source.file().read(header.headerLength);
    if (start.size() != header.headerLength)
        fail(source.path(), QStringLiteral("its header is cut short"));
    write(target, start);
    const qint64 count = copyRecords(source, target);
    try {
        DbfTable::writeEndMarker(&target.file());
    } catch (DbfTable::DbfTableError) {
        target.failWriting();
    }
    DbfTable::updateRecordCount(&target.file(), static_cast<unsigned>(count));
    if (!source.memoPath().isEmpty())
        copyFile(
            source.memoPath(),
            withSuffix(operands.last(), QLatin1Char('.') + QFileInfo(source.memoPath()).suffix()));
    target.commit();
    printText(QStringLiteral("%1 records of %2 kept\n").arg(count).arg(header.recordCount));
    return Done;
}
