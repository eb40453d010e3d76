// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "celltext.h"
#include "commands.h"
#include "csvtext.h"
#include "output.h"
#include "schematext.h"
#include "source.h"
#include "terminal.h"

#include <QtCore/QCommandLineParser>

#include <algorithm>
#include <limits>

using namespace dbf;

namespace
{

constexpr int recordsPerReport = 4096;

/// A column and the cell that it must have.
struct Condition {
    int column;
    QByteArray value;
};

/// What of a table is wanted.
struct Selection {
    QVector<int> columns;
    QVector<Condition> conditions;
    int first = 0;
    int count = 0;
    bool withDeleted = false;
};

/// How records are written.
class Writer
{
public:
    Writer(Output& output, const DbfSchema& schema, const Selection& selection)
        : m_output(output), m_schema(schema), m_selection(selection)
    {
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    virtual ~Writer() = default;

    virtual void begin() {}
    virtual void write(const DbfRecordCursor& record, const CellText& cells) = 0;
    virtual void end() {}

protected:
    Output& m_output;
    const DbfSchema& m_schema;
    const Selection& m_selection;
};

class CsvWriter : public Writer
{
public:
    CsvWriter(Output& output, const DbfSchema& schema, const Selection& selection, bool withTypes)
        : Writer(output, schema, selection), m_withTypes(withTypes)
    {
    }

    void begin() override
    {
        if (m_selection.withDeleted)
            m_row.append("*");
        for (const int column : m_selection.columns) {
            const DbfFieldDescriptor& field = m_schema.columns.at(column).descriptor;
            m_row.append((m_withTypes ? fieldText(field) : field.name).toUtf8());
        }
        finishRow();
    }

    void write(const DbfRecordCursor& record, const CellText& cells) override
    {
        int place = 0;
        if (m_selection.withDeleted)
            m_row[place++] = record.isDeleted() ? "*" : "";
        for (const int column : m_selection.columns) {
            QByteArray& cell = m_row[place++];
            cell.resize(0); // which keeps its room
            cells.append(column, cell);
        }
        finishRow();
    }

private:
    void finishRow()
    {
        if (m_output.isTerminal()) {
            for (QByteArray& cell : m_row)
                cell = printable(QString::fromUtf8(cell)).toUtf8();
        }
        appendRow(m_row, m_output.text());
    }

    QVector<QByteArray> m_row;
    bool m_withTypes;
};

class JsonWriter : public Writer
{
public:
    using Writer::Writer;

    void begin() override
    {
        for (const int column : m_selection.columns) {
            QByteArray name;
            appendJsonString(m_schema.columns.at(column).descriptor.name.toUtf8(), name);
            m_names.append(name + ':');
        }
    }

    void write(const DbfRecordCursor& record, const CellText& cells) override
    {
        QByteArray& json = m_output.text();
        json += '{';
        if (m_selection.withDeleted)
            json += record.isDeleted() ? "\"*\":true" : "\"*\":false";
        for (int i = 0; i < m_selection.columns.size(); ++i) {
            if (i > 0 || m_selection.withDeleted)
                json += ',';
            json += m_names.at(i);
            cells.appendJson(m_selection.columns.at(i), json);
        }
        json += "}\n";
    }

private:
    QVector<QByteArray> m_names;
};

/// Aligns the columns by the first records; longer text further down is not cut.
class AlignedWriter : public Writer
{
public:
    using Writer::Writer;

    void begin() override
    {
        QStringList row;
        if (m_selection.withDeleted)
            row.append(QStringLiteral(" "));
        for (const int column : m_selection.columns)
            row.append(printable(m_schema.columns.at(column).descriptor.name));
        m_rows.append(row);
    }

    void write(const DbfRecordCursor& record, const CellText& cells) override
    {
        constexpr int rowsLookedAt = 1000;
        QStringList row;
        if (m_selection.withDeleted)
            row.append(record.isDeleted() ? QStringLiteral("*") : QStringLiteral(" "));
        for (const int column : m_selection.columns) {
            QByteArray cell;
            cells.append(column, cell);
            row.append(printable(QString::fromUtf8(cell)));
        }
        m_rows.append(row);
        if (!m_widths.isEmpty() || m_rows.size() > rowsLookedAt)
            writeRows();
    }

    void end() override { writeRows(); }

private:
    void writeRows()
    {
        if (m_widths.isEmpty())
            m_widths = widthsOf(m_rows);
        for (const QStringList& row : qAsConst(m_rows)) {
            QString line;
            for (int i = 0; i < row.size(); ++i)
                line += isNumber(i) ? row.at(i).rightJustified(m_widths.at(i)) + QLatin1String("  ")
                                    : row.at(i).leftJustified(m_widths.at(i) + 2);
            while (line.endsWith(QLatin1Char(' ')))
                line.chop(1);
            m_output.text() += line.toUtf8() + '\n';
        }
        m_rows.clear();
    }

    static QVector<int> widthsOf(const QVector<QStringList>& rows)
    {
        QVector<int> widths(rows.first().size());
        for (const QStringList& row : rows) {
            for (int i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths.at(i), static_cast<int>(row.at(i).size()));
        }
        return widths;
    }

    bool isNumber(int place) const
    {
        const int i = place - (m_selection.withDeleted ? 1 : 0);
        return i >= 0 && QByteArrayLiteral("NFIYB").contains(static_cast<char>(
                             m_schema.columns.at(m_selection.columns.at(i)).descriptor.type));
    }

    QVector<QStringList> m_rows;
    QVector<int> m_widths;
};

int columnOf(const DbfSchema& schema, const QString& name)
{
    const int column = schema.indexOf(name);
    if (column < 0)
        throw Failure{UsageError, QStringLiteral("there is no column %1").arg(name)};
    return column;
}

Condition conditionOf(const DbfSchema& schema, const QString& text)
{
    const auto sign = text.indexOf(QLatin1Char('='));
    if (sign < 0)
        throw Failure{UsageError, QStringLiteral("%1 is no COLUMN=VALUE").arg(text)};
    return {columnOf(schema, text.left(sign)), text.mid(sign + 1).toUtf8()};
}

/// Sets the records of \a selection by FIRST-LAST, one of which may be missing, counted from 1.
void setRange(Selection& selection, const QString& text, int total)
{
    const QStringList ends = text.split(QLatin1Char('-'));
    bool isFirst = true;
    bool isLast = true;
    const int first = ends.at(0).isEmpty() ? 1 : ends.at(0).toInt(&isFirst);
    const int last =
        ends.value(1).isEmpty() && ends.size() == 2 ? total : ends.last().toInt(&isLast);
    if (ends.size() > 2 || !isFirst || !isLast || first < 1 || last < 0)
        throw Failure{UsageError, QStringLiteral("%1 is no range FIRST-LAST").arg(text)};
    selection.first = std::min(first - 1, total);
    selection.count = std::max(std::min(last, total) - selection.first, 0);
}

bool isMet(const QVector<Condition>& conditions, const CellText& cells)
{
    return std::all_of(conditions.begin(), conditions.end(), [&](const Condition& condition) {
        QByteArray cell;
        cells.append(condition.column, cell);
        if (cell == condition.value)
            return true;
        bool isNumber = false;
        bool isWanted = false;
        return cell.toDouble(&isNumber) == condition.value.toDouble(&isWanted) && isNumber &&
               isWanted;
    });
}

ExitCode write(Source& source, const Selection& selection, Output& output, Writer& writer)
{
    Progress progress;
    writer.begin();
    DbfRecordCursor cursor(source.table(), selection.first, selection.count);
    cursor.setSkipDeleted(!selection.withDeleted);
    const CellText cells(cursor, source.table().schema());
    int written = 0;
    while (cursor.next()) {
        if (isMet(selection.conditions, cells))
            writer.write(cursor, cells);
        output.flushWhenLarge();
        if (++written % recordsPerReport == 0 && !output.isTerminal() &&
            !progress.show(cursor.index() - selection.first, selection.count))
            throw Failure{Failed, QStringLiteral("interrupted")};
    }
    writer.end();
    output.finish();
    source.requireNoError();
    if (!source.memo().errorString().isEmpty())
        fail(source.path(),
             QStringLiteral("the memos are not whole: %1").arg(source.memo().errorString()));
    return Done;
}

struct Options {
    const QCommandLineOption csv{QStringLiteral("csv"),
                                 QStringLiteral("Writes CSV in UTF-8, column names first.")};
    const QCommandLineOption types{QStringLiteral("types"),
                                   QStringLiteral("With --csv: names as NAME:TYPE:LENGTH:DECIMALS, "
                                                  "of which import makes the same columns again.")};
    const QCommandLineOption json{QStringLiteral("json"),
                                  QStringLiteral("Writes a JSON object a line for each record.")};
    const QCommandLineOption columns{QStringLiteral("columns"),
                                     QStringLiteral("Only these columns, in this order."),
                                     QStringLiteral("A,B,...")};
    const QCommandLineOption where{
        QStringLiteral("where"),
        QStringLiteral("Only records whose column has that value; may be given again."),
        QStringLiteral("column=value")};
    const QCommandLineOption deleted{
        QStringLiteral("deleted"), QStringLiteral("Deleted records, too, with a column * first.")};
    const QCommandLineOption range{QStringLiteral("range"),
                                   QStringLiteral("Only these records, counted from 1."),
                                   QStringLiteral("first-last")};
    const QCommandLineOption encoding{QStringLiteral("encoding"),
                                      QStringLiteral("Code page of the table's text."),
                                      QStringLiteral("codepage")};
    const QCommandLineOption output{QStringLiteral("output"),
                                    QStringLiteral("Writes to a file once it is whole."),
                                    QStringLiteral("file")};
};

Selection selectionOf(const QCommandLineParser& parser, const Options& options, DbfTable& table)
{
    Selection selection;
    selection.count = table.recordCount();
    selection.withDeleted = parser.isSet(options.deleted);
    const auto columnCount = static_cast<int>(table.schema().columns.size());
    if (parser.isSet(options.columns)) {
        for (const QString& name : parser.value(options.columns).split(QLatin1Char(',')))
            selection.columns.append(columnOf(table.schema(), name));
    } else {
        for (int i = 0; i < columnCount; ++i)
            selection.columns.append(i);
    }
    for (const QString& text : parser.values(options.where))
        selection.conditions.append(conditionOf(table.schema(), text));
    if (parser.isSet(options.range))
        setRange(selection, parser.value(options.range), table.recordCount());
    return selection;
}

} // namespace

ExitCode runCat(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Writes the records of a table."));
    const Options options;
    parser.addOptions({options.csv, options.types, options.json, options.columns, options.where,
                       options.deleted, options.range, options.encoding, options.output});
    const QStringList files = parse(parser, arguments, QStringLiteral("FILE"), 1, 1);
    if (parser.isSet(options.csv) && parser.isSet(options.json))
        throw Failure{UsageError, QStringLiteral("--csv and --json exclude each other")};

    Source source(files.first(), parser.value(options.encoding));
    source.open();
    const DbfSchema schema = source.table().schema();
    const Selection selection = selectionOf(parser, options, source.table());
    if (parser.isSet(options.output))
        catchInterruption(); // The standard output needs no cleaning up.
    Output output(parser.value(options.output),
                  {source.path(), source.memoPath(), source.codePagePath()});
    std::unique_ptr<Writer> writer;
    if (parser.isSet(options.csv) || parser.isSet(options.types))
        writer =
            std::make_unique<CsvWriter>(output, schema, selection, parser.isSet(options.types));
    else if (parser.isSet(options.json))
        writer = std::make_unique<JsonWriter>(output, schema, selection);
    else
        writer = std::make_unique<AlignedWriter>(output, schema, selection);
    return write(source, selection, output, *writer);
}
