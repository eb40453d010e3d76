// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "celltext.h"
#include "commands.h"
#include "source.h"
#include "terminal.h"

#include <QTextCodec>
#include <QtCore/QCommandLineParser>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <limits>

using namespace dbf;

namespace
{

QString versionName(int version)
{
    switch (version) {
    case 0x30:
    case 0x31:
    case 0x32:
        return QStringLiteral("table with back-link area, memos in an FPT file");
    case 0x83:
    case 0x8B:
    case 0xCB:
        return QStringLiteral("table with memos in a DBT file");
    case 0xF5:
        return QStringLiteral("table with memos in an FPT file");
    case 0x43:
    case 0x63:
        return QStringLiteral("table of an SQL system");
    default:
        return QStringLiteral("plain table");
    }
}

QString hexByte(int byte)
{
    return QStringLiteral("0x%1").arg(byte, 2, 16, QLatin1Char('0'));
}

QString codecName(const Source& source)
{
    return source.codec() == nullptr ? QStringLiteral("unknown")
                                     : QString::fromLatin1(source.codec()->name());
}

QJsonArray columnsOf(const DbfSchema& schema)
{
    QJsonArray columns;
    for (const DbfColumn& column : schema.columns) {
        const DbfFieldDescriptor& field = column.descriptor;
        columns.append(QJsonObject{{QStringLiteral("name"), field.name},
                                   {QStringLiteral("type"), QString(QLatin1Char(char(field.type)))},
                                   {QStringLiteral("length"), field.length},
                                   {QStringLiteral("decimals"), field.decimals}});
    }
    return columns;
}

QJsonObject describe(Source& source)
{
    int deleted = 0;
    DbfRecordCursor cursor(source.table());
    while (cursor.next())
        deleted += cursor.isDeleted() ? 1 : 0;
    source.table().clearError(); // A table that is cut short has fewer whole records; that is told.

    const DbfTableDescriptor& header = source.table().descriptor();
    return {{QStringLiteral("file"), source.path()},
            {QStringLiteral("version"), header.version},
            {QStringLiteral("versionName"), versionName(header.version)},
            {QStringLiteral("codePageByte"), static_cast<int>(header.codePage)},
            {QStringLiteral("codec"), codecName(source)},
            {QStringLiteral("records"), static_cast<double>(header.recordCount)},
            {QStringLiteral("wholeRecords"), static_cast<double>(source.table().wholeRecords())},
            {QStringLiteral("deletedRecords"), deleted},
            {QStringLiteral("recordLength"), header.recordLength},
            {QStringLiteral("memoFile"),
             source.memoPath().isEmpty() ? QJsonValue() : source.memoPath()},
            {QStringLiteral("columns"), columnsOf(source.table().schema())}};
}

QString textOf(const QJsonObject& table)
{
    const auto number = [&](const char* key) {
        return QString::number(table.value(QLatin1String(key)).toDouble(), 'f', 0);
    };
    const QString memo = table.value(QStringLiteral("memoFile")).toString();
    QString text = QStringLiteral("%1\n  version %2 (%3), code page byte %4, text in %5\n")
                       .arg(printable(table.value(QStringLiteral("file")).toString()),
                            hexByte(table.value(QStringLiteral("version")).toInt()),
                            table.value(QStringLiteral("versionName")).toString(),
                            hexByte(table.value(QStringLiteral("codePageByte")).toInt()),
                            table.value(QStringLiteral("codec")).toString());
    text += QStringLiteral("  records %1, whole %2, marked deleted %3, bytes each %4\n")
                .arg(number("records"), number("wholeRecords"), number("deletedRecords"),
                     number("recordLength"));
    if (!memo.isEmpty())
        text += QStringLiteral("  memo file %1\n").arg(printable(memo));
    text += QStringLiteral("  %1 type length decimals\n").arg(QStringLiteral("column"), -10);
    for (const QJsonValue& column : table.value(QStringLiteral("columns")).toArray())
        text += QStringLiteral("  %1 %2    %3 %4\n")
                    .arg(printable(column[QStringLiteral("name")].toString()), -10)
                    .arg(printable(column[QStringLiteral("type")].toString()))
                    .arg(column[QStringLiteral("length")].toInt(), 6)
                    .arg(column[QStringLiteral("decimals")].toInt(), 8);
    return text;
}

} // namespace

ExitCode runInfo(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Tells what tables are."));
    const QCommandLineOption json(QStringLiteral("json"),
                                  QStringLiteral("Prints a JSON object a line for each table."));
    const QCommandLineOption encoding(QStringLiteral("encoding"),
                                      QStringLiteral("Code page of the column names."),
                                      QStringLiteral("codepage"));
    parser.addOptions({json, encoding});
    const QStringList files =
        parse(parser, arguments, QStringLiteral("FILE..."), 1, std::numeric_limits<int>::max());
    ExitCode code = Done;
    for (const QString& file : files) {
        try {
            Source source(file, parser.value(encoding));
            source.open();
            const QJsonObject table = describe(source);
            const QByteArray line = QJsonDocument(table).toJson(QJsonDocument::Compact);
            printText(parser.isSet(json) ? jsonSafe(QString::fromUtf8(line)) + QLatin1Char('\n')
                                         : textOf(table));
        } catch (const Failure& failure) { // The other tables are told of all the same.
            if (failure.code != Failed)
                throw;
            complain(failure.text);
            code = Failed;
        }
    }
    return code;
}
