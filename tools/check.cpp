// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "commands.h"
#include "source.h"
#include "terminal.h"

#include <QtCore/QCommandLineParser>

#include <algorithm>
#include <limits>

using namespace dbf;

namespace
{

constexpr int recordsPerReport = 4096;

/// What cannot be read in a column.
struct Unreadable {
    int records = 0;
    int first = 0;
    QString reason;
};

/// Looks at one table and prints what is wrong with it, a line each.
class Check
{
public:
    explicit Check(Source& source) : m_source(source), m_table(source.table()) {}

    /// Returns whether anything was found. Throws a Failure.
    bool run()
    {
        if (!m_table.open(QIODevice::ReadOnly)) {
            report(m_table.errorString());
            return true;
        }
        checkHeader();
        checkEnd();
        checkValues();
        return m_hasFound;
    }

private:
    void report(const QString& problem)
    {
        m_hasFound = true;
        printText(printable(QStringLiteral("%1: %2").arg(m_source.path(), problem)) +
                  QLatin1Char('\n'));
    }

    void checkHeader();
    void checkEnd();
    void checkValues();
    QString problemOf(const DbfRecordCursor& record, int column);

    Source& m_source;
    DbfTable& m_table;
    bool m_hasFound = false;
};

void Check::checkHeader()
{
    const DbfTableDescriptor& header = m_table.descriptor();
    const int computed = DbfTable::calcRecordLength(m_table.schema());
    if (header.recordLength != computed)
        report(QStringLiteral("the header says that records have %1 bytes, the columns have %2")
                   .arg(header.recordLength)
                   .arg(computed));
    if (m_source.codec() == nullptr)
        report(QStringLiteral("nothing tells the code page"));
}

void Check::checkEnd()
{
    constexpr char endMarker = 0x1A;
    const DbfTableDescriptor& header = m_table.descriptor();
    const qint64 length = header.recordLength;
    const qint64 whole = m_table.wholeRecords();
    const qint64 held = m_source.file().size() - header.headerLength;
    if (whole < qint64(header.recordCount)) {
        report(QStringLiteral("the header counts %1 records, the file holds %2")
                   .arg(header.recordCount)
                   .arg(whole));
        if (length > 0 && held > 0 && held % length > 0)
            report(QStringLiteral("the last record is torn: %1 of %2 bytes")
                       .arg(held % length)
                       .arg(length));
        return;
    }
    const qint64 end = header.headerLength + length * header.recordCount;
    char marker = 0;
    if (!m_source.file().seek(end) || !m_source.file().getChar(&marker) || marker != endMarker)
        report(QStringLiteral("there is no end marker behind record %1").arg(header.recordCount));
    if (whole > qint64(header.recordCount) && length > 1)
        report(QStringLiteral("the header counts %1 records, the file has room for %2")
                   .arg(header.recordCount)
                   .arg(whole));
}

/// Whether the bytes stand for no value: spaces, zeros, or the sign of an unknown truth value.
bool isBlank(std::string_view bytes, const DbfFieldDescriptor& field)
{
    const auto consistsOf = [&](char filling) {
        return std::all_of(bytes.begin(), bytes.end(),
                           [filling](char byte) { return byte == filling; });
    };
    return consistsOf(' ') || consistsOf('\0') ||
           (field.type == DbfFieldType::Date && consistsOf('0')) ||
           (field.type == DbfFieldType::Logical && bytes == "?");
}

/// Returns why the field cannot be read, empty when it can.
QString Check::problemOf(const DbfRecordCursor& record, int column)
{
    const DbfFieldDescriptor& field = m_table.schema().columns.at(column).descriptor;
    const std::string_view bytes = record.bytes(column);
    if (isBlank(bytes, field))
        return {};
    if (field.type == DbfFieldType::Character) {
        const bool isAscii = std::all_of(bytes.begin(), bytes.end(), [](char byte) {
            return static_cast<unsigned char>(byte) < 0x80;
        });
        return !isAscii && record.text(column).contains(QChar(QChar::ReplacementCharacter))
                   ? QStringLiteral("not in the code page")
                   : QString();
    }
    m_source.memo().clearError();
    if (record.value(column).isValid())
        return {};
    if (!m_source.memo().errorString().isEmpty())
        return m_source.memo().errorString();
    const auto isAsterisk = [](char byte) { return byte == '*' || byte == ' '; };
    if (std::all_of(bytes.begin(), bytes.end(), isAsterisk))
        return QStringLiteral("a number that had no room");
    const auto letter = static_cast<char>(field.type);
    return letter == 'M' || letter == 'G' || letter == 'P' || letter == 'W'
               ? QString() // a pointer to nothing, which is blank
               : QStringLiteral("no value of type %1").arg(QLatin1Char(letter));
}

void Check::checkValues()
{
    const QVector<DbfColumn> columns = m_table.schema().columns;
    QVector<Unreadable> found(columns.size());
    Progress progress;
    DbfRecordCursor record(m_table);
    while (record.next()) {
        for (int i = 0; i < columns.size(); ++i) {
            const QString reason = problemOf(record, i);
            if (!reason.isEmpty() && found[i].records++ == 0) {
                found[i].first = record.index() + 1;
                found[i].reason = reason;
            }
        }
        if (record.index() % recordsPerReport == 0 &&
            !progress.show(record.index(), m_table.recordCount()))
            throw Failure{Failed, QStringLiteral("interrupted")};
    }
    if (m_table.hasError() && !m_hasFound)
        report(m_table.errorString());
    for (int i = 0; i < columns.size(); ++i) {
        if (found.at(i).records > 0)
            report(QStringLiteral("column %1: %2 values cannot be read, first in record %3: %4")
                       .arg(columns.at(i).descriptor.name)
                       .arg(found.at(i).records)
                       .arg(found.at(i).first)
                       .arg(found.at(i).reason));
    }
}

} // namespace

ExitCode runCheck(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Prints what is wrong with tables, and ends with 1 when something is."));
    const QCommandLineOption encoding(QStringLiteral("encoding"),
                                      QStringLiteral("Code page of the tables' text."),
                                      QStringLiteral("codepage"));
    parser.addOption(encoding);
    const QStringList files =
        parse(parser, arguments, QStringLiteral("FILE..."), 1, std::numeric_limits<int>::max());
    ExitCode code = Done;
    for (const QString& file : files) {
        try {
            Source source(file, parser.value(encoding));
            if (Check(source).run())
                code = std::max(code, ProblemsFound);
        } catch (const Failure& failure) { // The other tables are looked at all the same.
            if (failure.code != Failed)
                throw;
            complain(failure.text);
            code = Failed;
        }
    }
    return code;
}
