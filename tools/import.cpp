// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "columnguess.h"
#include "commands.h"
#include "csvtext.h"
#include "output.h"
#include "schematext.h"
#include "source.h"
#include "terminal.h"

#include <QTextCodec>
#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <memory>

using namespace dbf;

namespace
{

constexpr int recordsPerBlock = 4096;
constexpr int longestName = 10; // bytes

QString deletedMark()
{
    return QStringLiteral("*");
}

[[noreturn]] void refuse(const QString& text)
{
    throw Failure{ProblemsFound, text};
}

/// Returns the start of \a text, which may be longer than anybody reads.
QString startOf(const QString& text)
{
    constexpr int shownSize = 160;
    return text.size() <= shownSize ? text : text.left(shownSize) + QStringLiteral("...");
}

/// A CSV text on its way into a table.
class Import
{
public:
    Import(const QString& csvPath, QTextCodec* codec);

    /// Finds the columns: in \a schemaText, unless that is empty, in the first row when it tells
    /// their types, else by a pass over all rows.
    void findColumns(const QString& schemaText);

    /// Lets rows that do not fit be written to \a output, which is borrowed, instead of refused.
    void setRejected(Output* output) { m_rejected = output; }

    /// Makes the table at \a path, which must not exist. Returns how many rows were rejected.
    int makeTable(const QString& path);

private:
    void start();
    bool readRow(QStringList* row);
    void setFields(const QStringList& texts);
    void guessFields();
    QString newName(const QString& title) const;
    void fill(DbfTable& table);
    bool takeRow(const QStringList& row, const DbfSchema& schema, QVector<DbfRecord>* records);
    void reject(const QStringList& row, const QString& reason);

    QString m_path;
    QFile m_file;
    std::unique_ptr<CsvReader> m_csv;
    QStringList m_titles; ///< The first row, the mark of deleted records included.
    bool m_withDeleted = false;
    DbfSchema m_schema;
    Output* m_rejected = nullptr;
    int m_rejectedCount = 0;
    Progress m_progress;
};

Import::Import(const QString& csvPath, QTextCodec* codec) : m_path(csvPath), m_file(csvPath)
{
    m_schema.setCodec(codec);
    if (!m_file.open(QIODevice::ReadOnly))
        fail(csvPath, m_file.errorString());
    start();
}

/// Goes to the first row, the titles, and reads it.
void Import::start()
{
    m_csv = std::make_unique<CsvReader>(&m_file);
    if (!m_csv->readRow(&m_titles))
        refuse(QStringLiteral("there is no first line with the columns"));
    m_withDeleted = m_titles.first() == deletedMark();
}

bool Import::readRow(QStringList* row)
{
    if (m_csv->readRow(row))
        return true;
    if (m_csv->hasError())
        refuse(
            QStringLiteral("line %1: bad quotes in the row that begins there").arg(m_csv->line()));
    if (m_file.error() != QFileDevice::NoError)
        fail(m_path, m_file.errorString());
    return false;
}

void Import::findColumns(const QString& schemaText)
{
    const QStringList titles = m_titles.mid(m_withDeleted ? 1 : 0);
    DbfFieldDescriptor field;
    const bool isTyped = std::all_of(titles.begin(), titles.end(), [&](const QString& title) {
        return parseField(title, &field);
    });
    if (!schemaText.isEmpty())
        setFields(schemaText.split(QLatin1Char(',')));
    else if (isTyped)
        setFields(titles);
    else
        guessFields();
    if (m_schema.columns.size() != titles.size())
        refuse(QStringLiteral("the schema has %1 columns, the first line %2")
                   .arg(m_schema.columns.size())
                   .arg(titles.size()));
}

void Import::setFields(const QStringList& texts)
{
    QVector<DbfFieldDescriptor> fields;
    for (const QString& text : texts) {
        DbfFieldDescriptor field;
        if (!parseField(text, &field))
            refuse(QStringLiteral("%1 is no NAME:TYPE:LENGTH[:DECIMALS]").arg(startOf(text)));
        if (m_schema.codec->fromUnicode(field.name).size() > longestName)
            refuse(QStringLiteral("the name %1 is longer than %2 bytes")
                       .arg(startOf(field.name))
                       .arg(longestName));
        fields.append(field);
    }
    m_schema.setColumns(fields);
}

void Import::guessFields()
{
    if (m_file.isSequential())
        refuse(QStringLiteral("a pipe is read once: name the columns with --schema"));
    const int first = m_withDeleted ? 1 : 0;
    QVector<ColumnGuess> guesses(m_titles.size() - first);
    QStringList row;
    for (int count = 0; readRow(&row); ++count) {
        const auto size = std::min(row.size() - first, guesses.size());
        for (int i = 0; i < size; ++i)
            guesses[i].add(row.at(first + i), m_schema.codec);
        if (count % recordsPerBlock == 0 && !m_progress.show(m_file.pos(), 2 * m_file.size()))
            throw Failure{Failed, QStringLiteral("interrupted")};
    }
    for (int i = 0; i < guesses.size(); ++i)
        m_schema.columns.append(guesses.at(i).field(newName(m_titles.at(first + i))));
    m_file.seek(0);
    start();
}

/// Returns \a title as the name of a column that no other has, cut to the bytes that it may have.
QString Import::newName(const QString& title) const
{
    const QString base = title.trimmed().isEmpty() ? QStringLiteral("COLUMN") : title.trimmed();
    for (int number = 1;; ++number) {
        const QString ending = number == 1 ? QString() : QStringLiteral("_%1").arg(number);
        QString name = base.left(longestName);
        while (m_schema.codec->fromUnicode(name + ending).size() > longestName)
            name.chop(1);
        if (m_schema.indexOf(name + ending) < 0)
            return name + ending;
    }
}

int Import::makeTable(const QString& path)
{
    if (QFileInfo::exists(path) || QFileInfo(path).isSymLink())
        fail(path, QStringLiteral("it exists already"));
    // Whoever kills the import leaves no table under that name.
    QFile file(QStringLiteral("%1.%2.part").arg(path).arg(QCoreApplication::applicationPid()));
    try {
        DbfTable table(&file);
        table.overrideTextCodec(m_schema.codec);
        table.setConverterChoice(nullableConverter);
        bool isKnownByte = false;
        const DbfCodePage byte = DbfTable::languageDriverByCodec(m_schema.codec, &isKnownByte);
        if (!table.create(m_schema, byte) || !table.open(QIODevice::ReadWrite))
            fail(path, table.errorString());
        fill(table);
        table.close(); // The last bytes reach the file now.
        if (file.error() != QFileDevice::NoError)
            fail(path, file.errorString());
        if (isInterrupted())
            throw Failure{Failed, QStringLiteral("interrupted")};
        if (m_rejectedCount > 0 && m_rejected == nullptr)
            refuse(QStringLiteral("%1 lines do not fit; no table is made").arg(m_rejectedCount));
        if (!isKnownByte) {
            Target codePage(withSuffix(path, QStringLiteral(".cpg")), {});
            codePage.open();
            codePage.file().write(m_schema.codec->name());
            codePage.commit();
        }
        if (!file.rename(path)) // which replaces nothing
            fail(path, file.errorString());
    } catch (const Failure&) {
        file.remove();
        throw;
    }
    return m_rejectedCount;
}

void Import::fill(DbfTable& table)
{
    QVector<DbfRecord> records;
    QStringList row;
    bool hasMore = true;
    while (hasMore) {
        records.clear();
        while (records.size() < recordsPerBlock && (hasMore = readRow(&row)))
            takeRow(row, table.schema(), &records);
        if (!table.appendRecords(records))
            fail(m_path, table.errorString());
        if (!m_progress.show(m_file.pos() + m_file.size(), 2 * m_file.size()))
            throw Failure{Failed, QStringLiteral("interrupted")};
    }
}

bool Import::takeRow(const QStringList& row, const DbfSchema& schema, QVector<DbfRecord>* records)
{
    const int first = m_withDeleted ? 1 : 0;
    if (row.size() != schema.columns.size() + first) {
        reject(row, QStringLiteral("it has %1 cells, the first line %2")
                        .arg(row.size())
                        .arg(schema.columns.size() + first));
        return false;
    }
    DbfRecord record(0, QVector<QVariant>(schema.columns.size()));
    record.setDeleted(m_withDeleted && row.first() == deletedMark());
    for (int i = 0; i < schema.columns.size(); ++i) {
        if (!row.at(first + i).isEmpty())
            record.values[i] = row.at(first + i);
    }
    const QVector<DbfValueProblem> problems = checkValues(record, schema);
    if (!problems.isEmpty()) {
        reject(row, problems.first().text());
        return false;
    }
    records->append(record);
    return true;
}

void Import::reject(const QStringList& row, const QString& reason)
{
    constexpr int reasonsShown = 100;
    if (m_rejectedCount++ < reasonsShown)
        complain(QStringLiteral("line %1: %2").arg(m_csv->line()).arg(startOf(reason)));
    if (m_rejected == nullptr)
        return;
    QVector<QByteArray> cells;
    if (m_rejectedCount == 1) {
        for (const QString& title : qAsConst(m_titles))
            cells.append(title.toUtf8());
        appendRow(cells, m_rejected->text());
        cells.clear();
    }
    for (const QString& cell : row)
        cells.append(cell.toUtf8());
    appendRow(cells, m_rejected->text());
    m_rejected->flushWhenLarge();
}

} // namespace

ExitCode runImport(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Makes a table of a CSV text in UTF-8, whose first line names the columns. What a column "
        "is like is found by a pass over the whole text, unless --schema or the first line itself "
        "says NAME:TYPE:LENGTH[:DECIMALS] for each: C is text, N and F are numbers, D dates such "
        "as 2024-03-01, L the truth values T and F. A first column * marks deleted records."));
    const QCommandLineOption schema(QStringLiteral("schema"),
                                    QStringLiteral("The columns, with commas in between."),
                                    QStringLiteral("columns"));
    const QCommandLineOption rejected(
        QStringLiteral("rejected"),
        QStringLiteral("Writes the lines that do not fit there, and makes a table of the others."),
        QStringLiteral("file"));
    const QCommandLineOption encoding(
        QStringLiteral("encoding"),
        QStringLiteral("Code page of the new table; by default windows-1251. One that a header "
                       "cannot tell is told by a .cpg file beside the table."),
        QStringLiteral("codepage"), QStringLiteral("windows-1251"));
    parser.addOptions({schema, rejected, encoding});
    const QStringList operands = parse(parser, arguments, QStringLiteral("CSV TABLE"), 2, 2);

    catchInterruption();
    Import import(operands.first(), codecOf(parser.value(encoding)));
    import.findColumns(parser.value(schema));
    std::unique_ptr<Output> output;
    if (parser.isSet(rejected)) {
        if (isSameFile(parser.value(rejected), operands.first()) ||
            parser.value(rejected) == operands.last())
            throw Failure{UsageError, QStringLiteral("--rejected needs a file of its own")};
        output = std::make_unique<Output>(parser.value(rejected), QStringList{operands.first()});
        import.setRejected(output.get());
    }
    const int count = import.makeTable(operands.last());
    if (output)
        output->finish();
    return count > 0 ? ProblemsFound : Done;
}
