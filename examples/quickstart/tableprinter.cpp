// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "tableprinter.h"

#include "interruption.h"

#include <dbf/model/dbfcolumn.h>

#include <QTextCodec>
#include <QtCore/QDate>
#include <QtCore/QDateTime>
#include <QtCore/QLocale>
#include <QtCore/QStringList>
#include <QtCore/QTextStream>

#include <algorithm>
#include <cmath>

using namespace dbf;

namespace
{

constexpr int pageWidth = 100;
constexpr int widestCell = 40;
constexpr int columnsShown = 100;
constexpr int recordsShown = 10;
constexpr int recordsPerRead = 500;

/// A table of text with aligned columns.
struct TextTable {
    QStringList titles;
    QVector<bool> rightAligned;
    QVector<QStringList> rows;
};

QString cell(const QString& text)
{
    QString line = text;
    for (QChar& character : line) {
        if (!character.isPrint())
            character = QLatin1Char('.');
    }
    return line.size() > widestCell ? line.left(widestCell - 3) + QLatin1String("...") : line;
}

qsizetype columnWidth(const TextTable& table, int column)
{
    qsizetype width = table.titles.at(column).size();
    for (const QStringList& row : table.rows)
        width = std::max<qsizetype>(width, row.at(column).size());
    return width;
}

/// Returns the widths of the columns from \a first on that fit on the page, one at least.
QVector<int> widthsOnPage(const TextTable& table, int first)
{
    QVector<int> widths;
    int used = 0;
    for (int column = first; column < table.titles.size(); ++column) {
        const auto width = static_cast<int>(columnWidth(table, column));
        used += 2 + width;
        if (used > pageWidth && !widths.isEmpty())
            break;
        widths.append(width);
    }
    return widths;
}

void printRow(const QStringList& row, const TextTable& table, int first, const QVector<int>& widths,
              QTextStream& out)
{
    QString line;
    for (int i = 0; i < widths.size(); ++i) {
        const int width = widths.at(i);
        const QString& text = row.at(first + i);
        line += QLatin1String("  ");
        line += table.rightAligned.at(first + i) ? text.rightJustified(width)
                                                 : text.leftJustified(width);
    }
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    out << line << '\n';
}

/// Columns that have no room beside the others follow below them.
void printTextTable(const TextTable& table, QTextStream& out)
{
    for (int first = 0; first < table.titles.size();) {
        const QVector<int> widths = widthsOnPage(table, first);
        QStringList rule(table.titles.mid(0, first));
        for (const int width : widths)
            rule.append(QString(width, QLatin1Char('-')));

        out << (first > 0 ? "\n" : "");
        printRow(table.titles, table, first, widths, out);
        printRow(rule, table, first, widths, out);
        for (const QStringList& row : table.rows)
            printRow(row, table, first, widths, out);
        first += static_cast<int>(widths.size());
    }
}

int shownColumns(const DbfSchema& schema)
{
    return static_cast<int>(std::min<qsizetype>(columnsShown, schema.columns.size()));
}

QString hexByte(unsigned char byte)
{
    return QStringLiteral("0x%1").arg(byte, 2, 16, QLatin1Char('0'));
}

/// Returns a number with the column's decimals, or with all of its own where these are too few.
QString numberText(double number, int decimals)
{
    constexpr double longestWritten = 1e15;
    const QString text = QString::number(number, 'f', decimals);
    return std::abs(number) < longestWritten && text.toDouble() == number
               ? text
               : QString::number(number, 'g', QLocale::FloatingPointShortest);
}

/// Returns bytes without a converter of their own as text if they are that, else in hexadecimal.
QString bytesText(const QByteArray& bytes)
{
    const bool isText = std::all_of(bytes.cbegin(), bytes.cend(),
                                    [](char byte) { return byte >= ' ' && byte <= '~'; });
    return isText ? QString::fromLatin1(bytes).trimmed()
                  : QStringLiteral("0x") + QString::fromLatin1(bytes.toHex());
}

bool isNumber(const DbfFieldDescriptor& field)
{
    return QByteArrayLiteral("NFIYB").contains(static_cast<char>(field.type));
}

void printStructure(const DbfSchema& schema, QTextStream& out)
{
    TextTable table{{QStringLiteral("#"), QStringLiteral("name"), QStringLiteral("type"),
                     QStringLiteral("length"), QStringLiteral("decimals")},
                    {true, false, false, true, true},
                    {}};
    const int shown = shownColumns(schema);
    for (int i = 0; i < shown; ++i) {
        const DbfFieldDescriptor& field = schema.columns.at(i).descriptor;
        const auto letter = QString(QLatin1Char(static_cast<char>(field.type)));
        table.rows.append({QString::number(i + 1), cell(field.name), cell(letter),
                           QString::number(field.length), QString::number(field.decimals)});
    }
    printTextTable(table, out);
    if (shown < schema.columns.size())
        out << "  (columns not shown: " << schema.columns.size() - shown << ")\n";
}

/// Deleted records are marked with an asterisk.
void printRecords(const QVector<DbfRecord>& records, const DbfSchema& schema, QTextStream& out)
{
    TextTable table{{QStringLiteral(" ")}, {false}, {}};
    for (int i = 0; i < shownColumns(schema); ++i) {
        const DbfFieldDescriptor& field = schema.columns.at(i).descriptor;
        table.titles.append(cell(field.name));
        table.rightAligned.append(isNumber(field));
    }
    for (const DbfRecord& record : records) {
        QStringList row{record.isDeleted() ? QStringLiteral("*") : QStringLiteral(" ")};
        for (int i = 0; i < shownColumns(schema); ++i)
            row.append(cell(valueText(record.values.at(i), schema.columns.at(i).descriptor)));
        table.rows.append(row);
    }
    printTextTable(table, out);
}

/// Counts in ranges: fast, and no more than one range is in memory at a time. Returns -1 when a
/// record cannot be read or Ctrl-C was pressed.
int countDeleted(DbfTable& table)
{
    int deleted = 0;
    for (int remaining = table.recordCount(); remaining > 0;) {
        const int count = std::min(recordsPerRead, remaining);
        const auto records = table.readRecords(table.recordCount() - remaining, count);
        if (table.hasError() || isInterrupted())
            return -1;
        deleted += static_cast<int>(
            std::count_if(records.cbegin(), records.cend(),
                          [](const DbfRecord& record) { return record.isDeleted(); }));
        remaining -= count;
    }
    return deleted;
}

void printSummary(const DbfTable& table, int deleted, QTextStream& out)
{
    const DbfTableDescriptor& header = table.descriptor();
    const QTextCodec* codec = table.schema().codec;
    out << "  version " << hexByte(header.version) << ", code page "
        << hexByte(static_cast<unsigned char>(header.codePage)) << ", codec "
        << (codec == nullptr ? QByteArrayLiteral("none") : codec->name()) << '\n'
        << "  columns: " << table.schema().columns.size() << ", records: " << table.recordCount()
        << " (marked deleted: " << deleted << "), bytes per record: " << header.recordLength
        << "\n\n";
}

} // namespace

QString errorText(DbfTable::DbfTableError code)
{
    switch (code) {
    case DbfTable::NoError:
        return QStringLiteral("no error");
    case DbfTable::OpenError:
        return QStringLiteral("the file does not open");
    case DbfTable::ReadError:
        return QStringLiteral("the file is cut short or its header is damaged");
    case DbfTable::WriteError:
        return QStringLiteral("the file does not take what is written");
    case DbfTable::UnsupportedVersionError:
        return QStringLiteral("it is no table of a version that can be read");
    case DbfTable::HeaderTooLongError:
        return QStringLiteral("there are too many columns or they are too wide");
    }
    return QStringLiteral("error %1").arg(static_cast<int>(code));
}

QString valueText(const QVariant& value, const DbfFieldDescriptor& field)
{
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    case QMetaType::QDate:
        return value.toDate().toString(Qt::ISODate);
    case QMetaType::QDateTime:
        return value.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    case QMetaType::Double:
        return numberText(value.toDouble(), field.decimals);
    case QMetaType::QByteArray:
        return bytesText(value.toByteArray());
    default:
        return value.toString();
    }
}

bool printTable(DbfTable& table, QTextStream& out)
{
    const int deleted = countDeleted(table);
    if (deleted < 0)
        return false;
    const int shown = std::min(recordsShown, table.recordCount());
    const QVector<DbfRecord> records =
        shown > 0 ? table.readRecords(0, shown) : QVector<DbfRecord>();
    if (table.hasError())
        return false;

    printSummary(table, deleted, out);
    printStructure(table.schema(), out);
    out << '\n';
    printRecords(records, table.schema(), out);
    if (shown < table.recordCount())
        out << "  (records not shown: " << table.recordCount() - shown << ")\n";
    out << '\n';
    return true;
}
