// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

/// \file
/// Writes a table as CSV text and makes a table of such a text, both of any size: records and rows
/// pass through one block at a time.

#include "csvfields.h"
#include "csvtext.h"

#include "quickstart/interruption.h"
#include "quickstart/opentable.h"
#include "quickstart/targetfile.h"
#include "quickstart/utf8stream.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QSaveFile>

#include <algorithm>

using namespace dbf;

namespace
{

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;
constexpr int recordsPerBlock = 4096;

const char* const description =
    "Writes a table as CSV in UTF-8, or makes a table of such a text:\n"
    "\n"
    "  csv export TABLE.dbf [OUT.csv]     (the standard output without OUT.csv)\n"
    "  csv import IN.csv TABLE.dbf        (TABLE.dbf must not exist)\n"
    "\n"
    "The cells of the first line are NAME:TYPE:LENGTH or NAME:TYPE:LENGTH:DECIMALS, such as\n"
    "CITY:C:30 or PRICE:N:10:2; they are the structure of the table that an import makes. The\n"
    "types are C (text), N and F (numbers), D (dates such as 2024-03-01, length 8) and L (T, F,\n"
    "Y, N or ?, length 1). Lengths are in bytes. Empty cells make blank fields. An export gives\n"
    "binary columns the text type that holds their values.\n"
    "\n"
    "With --deleted a first column named * holds * for each record that is marked deleted; an\n"
    "import knows it by its name. Without, an export leaves these records out.";

bool fail(const QString& message)
{
    QTextStream stream(stderr);
    useUtf8(stream);
    stream << "csv: " << message << '\n';
    return false;
}

/// Returns the start of \a cell, which may be longer than anybody reads.
QString startOf(const QString& cell)
{
    constexpr int shownSize = 60;
    return cell.size() <= shownSize ? cell : cell.left(shownSize) + QStringLiteral("…");
}

QString deletedMark()
{
    return QStringLiteral("*");
}

// Table to CSV

void writeRecords(DbfTable& table, bool withDeleted, QTextStream& out)
{
    const QVector<DbfColumn> columns = table.schema().columns;
    QStringList row;
    DbfRecordCursor cursor(table);
    while (!isInterrupted() && cursor.next()) {
        if (cursor.isDeleted() && !withDeleted)
            continue;
        row.clear();
        if (withDeleted)
            row.append(cursor.isDeleted() ? deletedMark() : QString());
        for (int i = 0; i < columns.size(); ++i)
            row.append(cellText(cursor, i, columns.at(i).descriptor));
        writeRow(row, out);
    }
}

bool writeCsv(DbfTable& table, bool withDeleted, QIODevice& target)
{
    QTextStream out(&target);
    useUtf8(out);
    QStringList header;
    if (withDeleted)
        header.append(deletedMark());
    for (const DbfColumn& column : table.schema().columns)
        header.append(headerCell(column.descriptor));
    writeRow(header, out);
    writeRecords(table, withDeleted, out);
    out.flush();

    if (table.hasError())
        return fail(QStringLiteral("the table: %1").arg(errorText(table.lastError())));
    if (isInterrupted())
        return fail(QStringLiteral("interrupted"));
    if (out.status() != QTextStream::Ok)
        return fail(QStringLiteral("cannot write: %1").arg(target.errorString()));
    return true;
}

bool exportTable(const QString& tablePath, const QString& csvPath, QTextCodec* codec,
                 bool withDeleted)
{
    QFile file(tablePath);
    DbfTable table(&file);
    QString reason;
    if (!openTable(table, QIODevice::ReadOnly, codec, &reason))
        return fail(QStringLiteral("cannot open %1: %2").arg(tablePath, reason));

    if (csvPath.isEmpty()) {
        QFile standardOutput;
        return standardOutput.open(stdout, QIODevice::WriteOnly) &&
               writeCsv(table, withDeleted, standardOutput);
    }
    const QString problem = targetProblem(csvPath, tablePath);
    if (!problem.isEmpty())
        return fail(QStringLiteral("cannot write %1: %2").arg(csvPath, problem));
    // A QSaveFile that is not committed leaves nothing behind.
    QSaveFile csv(csvPath);
    if (!csv.open(QIODevice::WriteOnly))
        return fail(QStringLiteral("cannot write %1: %2").arg(csvPath, csv.errorString()));
    if (!writeCsv(table, withDeleted, csv))
        return false;
    return csv.commit() ||
           fail(QStringLiteral("cannot write %1: %2").arg(csvPath, csv.errorString()));
}

// CSV to table

/// Makes \a schema of the header row, the mark of deleted records excluded.
bool parseHeader(const QStringList& header, DbfSchema* schema)
{
    QVector<DbfFieldDescriptor> fields;
    for (const QString& cell : header) {
        DbfFieldDescriptor field;
        if (!parseHeaderCell(cell, &field))
            return fail(QStringLiteral("no such column can be made: \"%1\"").arg(startOf(cell)));
        fields.append(field);
    }
    schema->setColumns(fields);
    // The cells come as bytes already, checked one by one; nothing is left to convert.
    for (DbfColumn& column : schema->columns)
        column.setConverter(DbfByteArrayConverter::instance());
    return true;
}

/// Makes a record of \a row, which stands in \a line, the mark first if there is one.
bool parseRow(QStringList row, int line, bool withDeleted, const DbfSchema& schema,
              DbfRecord* record)
{
    const bool isDeleted = withDeleted && !row.takeFirst().isEmpty();
    if (row.size() != schema.columns.size())
        return fail(QStringLiteral("line %1: another number of cells than in the first").arg(line));
    // Appending does not look at the index, but only a record that has one can be marked.
    *record = DbfRecord(0, {});
    record->setDeleted(isDeleted);
    for (int i = 0; i < row.size(); ++i) {
        const DbfFieldDescriptor& field = schema.columns.at(i).descriptor;
        QByteArray bytes;
        if (!fieldBytes(row.at(i), schema, field, &bytes))
            return fail(QStringLiteral("line %1: \"%2\" is no value for %3")
                            .arg(QString::number(line), startOf(row.at(i)), headerCell(field)));
        record->values.append(bytes);
    }
    return true;
}

/// Reads up to \a recordsPerBlock rows into \a records.
bool readBlock(CsvReader& csv, bool withDeleted, const DbfSchema& schema,
               QVector<DbfRecord>* records)
{
    records->clear();
    QStringList row;
    while (records->size() < recordsPerBlock && csv.readRow(&row)) {
        DbfRecord record;
        if (!parseRow(row, csv.line(), withDeleted, schema, &record))
            return false;
        records->append(record);
    }
    return !csv.hasError() ||
           fail(QStringLiteral("line %1: bad quotes in the row that begins there").arg(csv.line()));
}

bool appendRows(DbfTable& table, CsvReader& csv, bool withDeleted)
{
    const DbfSchema schema = table.schema();
    QVector<DbfRecord> records;
    do {
        if (!readBlock(csv, withDeleted, schema, &records))
            return false;
        if (!table.appendRecords(records))
            return fail(QStringLiteral("the table: %1").arg(errorText(table.lastError())));
        if (isInterrupted())
            return fail(QStringLiteral("interrupted"));
    } while (!records.isEmpty());
    return true;
}

/// Makes the table of \a schema in \a file and fills it.
bool makeTable(QFile& file, const DbfSchema& schema, CsvReader& csv, bool withDeleted)
{
    DbfTable table(&file);
    table.overrideTextCodec(schema.codec);
    if (!table.create(schema) || !table.open(QIODevice::ReadWrite))
        return fail(QStringLiteral("the table: %1").arg(errorText(table.lastError())));
    for (int i = 0; i < schema.columns.size(); ++i)
        table.setFieldConverter(i, schema.columns.at(i).converter);
    if (!appendRows(table, csv, withDeleted))
        return false;
    table.close(); // The last bytes reach the file now.
    return file.error() == QFileDevice::NoError || fail(file.errorString());
}

bool importTable(const QString& csvPath, const QString& tablePath, QTextCodec* codec)
{
    QFile csvFile(csvPath);
    if (!csvFile.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("cannot open %1: %2").arg(csvPath, csvFile.errorString()));
    CsvReader csv(&csvFile);
    QStringList header;
    if (!csv.readRow(&header))
        return fail(QStringLiteral("there is no first line with the columns"));
    const bool withDeleted = header.first() == deletedMark();
    DbfSchema schema({}, codec);
    if (!parseHeader(header.mid(withDeleted ? 1 : 0), &schema))
        return false;

    if (QFileInfo::exists(tablePath))
        return fail(QStringLiteral("%1 exists already").arg(tablePath));
    // Whoever kills the import leaves no table under that name.
    QFile file(QStringLiteral("%1.%2.part").arg(tablePath).arg(QCoreApplication::applicationPid()));
    if (makeTable(file, schema, csv, withDeleted)) {
        if (file.rename(tablePath)) // which replaces nothing
            return true;
        fail(QStringLiteral("cannot write %1: %2").arg(tablePath, file.errorString()));
    }
    file.remove();
    return false;
}

bool run(const QStringList& arguments, QTextCodec* codec, bool withDeleted)
{
    if (arguments.first() == QLatin1String("export"))
        return exportTable(arguments.at(1), arguments.value(2), codec, withDeleted);
    if (codec == nullptr)
        codec = DbfTable::codecByCodePage(DbfCodePage::Windows1251);
    return importTable(arguments.at(1), arguments.at(2), codec);
}

bool isComplete(const QStringList& arguments)
{
    const QString command = arguments.value(0);
    return (command == QLatin1String("import") && arguments.size() == 3) ||
           (command == QLatin1String("export") && (arguments.size() == 2 || arguments.size() == 3));
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(description));
    parser.addHelpOption();
    const QCommandLineOption codecOption(
        QStringLiteral("codec"),
        QStringLiteral("Character set of the table's text. By default that of the table's header, "
                       "and Windows-1251 for an import. Of others than Windows-1251 and IBM866 the "
                       "header of the new table tells nothing: name it again when you read it."),
        QStringLiteral("name"));
    const QCommandLineOption deletedOption(QStringLiteral("deleted"),
                                           QStringLiteral("Export deleted records, too."));
    parser.addOptions({codecOption, deletedOption});
    parser.addPositionalArgument(QStringLiteral("export|import"), QStringLiteral("What to do."));
    parser.addPositionalArgument(QStringLiteral("FROM"), QStringLiteral("The file to read."));
    parser.addPositionalArgument(QStringLiteral("TO"), QStringLiteral("The file to make."),
                                 QStringLiteral("[TO]"));
    parser.process(application);

    QTextCodec* codec = QTextCodec::codecForName(parser.value(codecOption).toLatin1());
    if (parser.isSet(codecOption) && codec == nullptr) {
        fail(QStringLiteral("there is no character set %1").arg(parser.value(codecOption)));
        return exitUsage;
    }
    if (!isComplete(parser.positionalArguments())) {
        fail(QStringLiteral("try csv --help"));
        return exitUsage;
    }
    catchInterruption();
    return run(parser.positionalArguments(), codec, parser.isSet(deletedOption)) ? 0 : exitFailure;
}
