// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

/// \file
/// Opens a table, prints it, writes a copy of it with other columns, and prints that.

#include "interruption.h"
#include "opentable.h"
#include "progressbar.h"
#include "sampletable.h"
#include "tableprinter.h"
#include "targetfile.h"
#include "utf8stream.h"

#include <dbf/dbf.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QSaveFile>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>

#include <algorithm>
#include <cstdio>

using namespace dbf;

namespace
{

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;
constexpr int exitInterrupted = 130; // What shells expect after Ctrl-C.

constexpr int longestField = 255;
constexpr int widenBy = 10;

const char* const usage =
    "Usage: quickstart [FILE.dbf [OUT.dbf]]\n"
    "\n"
    "Prints FILE.dbf, writes a restructured copy of it to OUT.dbf, and prints the copy.\n"
    "Without OUT.dbf the copy goes to a temporary folder that is removed at the end; without\n"
    "FILE.dbf a sample table is made there first.\n";

bool fail(const QString& message)
{
    QTextStream stream(stderr);
    useUtf8(stream);
    stream << "quickstart: " << message << '\n';
    return false;
}

bool failInterrupted()
{
    return fail(QStringLiteral("interrupted"));
}

/// Opens \a table, whose device is \a file, for reading.
bool openForReading(DbfTable& table, const QFile& file)
{
    QString reason;
    return openTable(table, QIODevice::ReadOnly, nullptr, &reason) ||
           fail(QStringLiteral("cannot open %1: %2").arg(file.fileName(), reason));
}

/// Opens and prints the table in \a path.
bool showTable(const QString& path, QTextStream& out)
{
    QFile file(path);
    DbfTable table(&file);
    if (!openForReading(table, file))
        return false;
    out << path << '\n';
    if (!printTable(table, out))
        return isInterrupted() ? failInterrupted()
                               : fail(QStringLiteral("cannot read %1: %2")
                                          .arg(path, errorText(table.lastError())));
    return true;
}

/// Returns a field name that no column of \a schema has.
QString freeName(const DbfSchema& schema)
{
    const auto isTaken = [&schema](const QString& name) {
        return std::any_of(
            schema.columns.cbegin(), schema.columns.cend(), [&name](const DbfColumn& column) {
                return column.descriptor.name.compare(name, Qt::CaseInsensitive) == 0;
            });
    };
    QString name = QStringLiteral("REMARK");
    for (int i = 2; isTaken(name); ++i)
        name = QStringLiteral("REMARK%1").arg(i);
    return name;
}

/// Widens the first text column that has room for more.
void widenColumn(DbfSchemaTransform& transform, QTextStream& out)
{
    for (int i = 0; i < transform.schema.columns.size(); ++i) {
        const DbfFieldDescriptor field = transform.schema.columns.at(i).descriptor;
        if (field.type != DbfFieldType::Character || field.length == longestField)
            continue;
        const int length = qMin(field.length + widenBy, longestField);
        out << "  widen " << field.name << " from " << field.length << " to " << length << '\n';
        transform.resizeColumn(i, length, field.decimals);
        return;
    }
    out << "  widen nothing: there is no text column with room for more\n";
}

/// Moves the second column to the front.
void moveColumn(DbfSchemaTransform& transform, QTextStream& out)
{
    if (transform.schema.columns.size() < 2) {
        out << "  move nothing: there are not two columns\n";
        return;
    }
    out << "  move " << transform.schema.columns.at(1).descriptor.name << " to the front\n";
    transform.moveColumn(1, 0);
}

/// Inserts a blank text column after the first one.
void insertColumn(DbfSchemaTransform& transform, QTextStream& out)
{
    const int position = transform.schema.columns.isEmpty() ? 0 : 1;
    const auto field = DbfFieldDescriptor::stringField(freeName(transform.schema), 20);
    out << "  insert " << field.name << " as column " << position + 1 << '\n';
    transform.insertNewColumn(position, nullableColumn(field));
}

/// Describes the columns of the copy. The identity of the table's schema carries the converters
/// that are installed on it, and columns that do not change are copied as they are.
DbfSchemaTransform makeTransform(const DbfTable& table, QTextStream& out)
{
    auto transform = DbfSchemaTransform::identity(table.schema());
    widenColumn(transform, out);
    moveColumn(transform, out);
    insertColumn(transform, out);
    return transform;
}

/// Writes the copy and shows how far it is. Ctrl-C stops it between two batches of records.
bool copyWithProgress(DbfTable& table, QIODevice& target, const DbfSchemaTransform& transform)
{
    ProgressBar bar;
    DbfCopyOptions options;
    options.keepMetadata = true;
    options.progress = [&bar](int done, int total) {
        bar.show(done, total);
        return !isInterrupted();
    };
    return table.copyAndTransform(&target, transform, options);
}

/// Writes a copy of the table in \a sourcePath with other columns to \a targetPath.
///
/// The QSaveFile puts the copy in place in one step when it is whole; after a failure it discards
/// what was written, and a file that was there before stays as it was.
bool restructure(const QString& sourcePath, const QString& targetPath, QTextStream& out)
{
    QFile file(sourcePath);
    DbfTable table(&file);
    if (!openForReading(table, file))
        return false;
    out << "Restructuring " << sourcePath << '\n';
    const DbfSchemaTransform transform = makeTransform(table, out);
    out << '\n';
    out.flush();

    QSaveFile target(targetPath);
    const bool copied = copyWithProgress(table, target, transform);
    if (isInterrupted())
        return failInterrupted();
    if (!copied || !target.commit()) {
        const QString reason =
            target.error() != QFileDevice::NoError
                ? target.errorString()
                : QStringLiteral("the table is damaged, or the copy would be too wide");
        return fail(QStringLiteral("cannot write %1: %2").arg(targetPath, reason));
    }
    return true;
}

bool run(QString sourcePath, QString targetPath, QTextStream& out)
{
    const QTemporaryDir folder;
    if (!folder.isValid())
        return fail(QStringLiteral("no temporary folder: %1").arg(folder.errorString()));
    if (sourcePath.isEmpty()) {
        sourcePath = folder.filePath(QStringLiteral("goods.dbf"));
        QString reason;
        if (!makeSampleTable(sourcePath, &reason))
            return fail(QStringLiteral("cannot make %1: %2").arg(sourcePath, reason));
    }
    if (targetPath.isEmpty())
        targetPath = folder.filePath(QStringLiteral("restructured.dbf"));
    const QString problem = targetProblem(targetPath, sourcePath);
    if (!problem.isEmpty())
        return fail(QStringLiteral("cannot write %1: %2").arg(targetPath, problem));

    return showTable(sourcePath, out) && restructure(sourcePath, targetPath, out) &&
           showTable(targetPath, out);
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const bool wantsHelp = arguments == QStringList(QStringLiteral("--help"));
    if (wantsHelp || arguments.size() > 2 || arguments.contains(QString())) {
        QTextStream(wantsHelp ? stdout : stderr) << usage;
        return wantsHelp ? 0 : exitUsage;
    }

    QTextStream out(stdout);
    useUtf8(out);
    catchInterruption();
    if (!run(arguments.value(0), arguments.value(1), out))
        return isInterrupted() ? exitInterrupted : exitFailure;
    out.flush();
    if (out.status() != QTextStream::Ok || std::ferror(stdout) != 0) {
        fail(QStringLiteral("cannot write to the standard output"));
        return exitFailure;
    }
    return 0;
}
