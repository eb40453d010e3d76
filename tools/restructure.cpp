// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "rewriting.h"
#include "schematext.h"

#include <QTextCodec>
#include <QtCore/QHash>

using namespace dbf;

namespace
{

constexpr int longestName = 10; // bytes
constexpr int longestField = 255;

[[noreturn]] void refuse(const QString& text)
{
    throw Failure{UsageError, text};
}

int columnOf(const DbfSchemaTransform& transform, const QString& name)
{
    const int column = transform.schema.indexOf(name);
    if (column < 0)
        refuse(QStringLiteral("there is no column %1").arg(name));
    return column;
}

/// Refuses a name that columns cannot have, or that another has.
void requireNewName(const DbfSchemaTransform& transform, const QString& name)
{
    const QTextCodec* const codec = transform.schema.codec;
    const QByteArray bytes = codec == nullptr ? name.toLatin1() : codec->fromUnicode(name);
    if (name.isEmpty() || bytes.size() > longestName || name != name.trimmed() ||
        (codec != nullptr && codec->toUnicode(bytes) != name))
        refuse(QStringLiteral("no column can be named %1").arg(name));
    if (transform.schema.indexOf(name) >= 0)
        refuse(QStringLiteral("there is a column %1 already").arg(name));
}

void drop(DbfSchemaTransform& transform, const QString& name)
{
    if (transform.schema.columns.size() == 1)
        refuse(QStringLiteral("a table needs a column"));
    transform.deleteColumn(columnOf(transform, name));
}

void add(DbfSchemaTransform& transform, const QString& text)
{
    DbfFieldDescriptor field;
    if (!parseField(text, &field))
        refuse(QStringLiteral("%1 is no NAME:TYPE:LENGTH[:DECIMALS]").arg(text));
    requireNewName(transform, field.name);
    transform.insertNewColumn(static_cast<int>(transform.schema.columns.size()),
                              nullableColumn(field));
}

void rename(DbfSchemaTransform& transform, const QString& text)
{
    const auto sign = text.indexOf(QLatin1Char('='));
    if (sign < 0)
        refuse(QStringLiteral("%1 is no OLD=NEW").arg(text));
    const int column = columnOf(transform, text.left(sign));
    const QString name = text.mid(sign + 1);
    if (transform.schema.indexOf(name) != column)
        requireNewName(transform, name);
    transform.schema.columns[column].descriptor.name = name;
}

void resize(DbfSchemaTransform& transform, const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    const int column = columnOf(transform, parts.first());
    const DbfFieldDescriptor& field = transform.schema.columns.at(column).descriptor;
    bool isLength = false;
    bool isDecimals = true;
    const int length = parts.value(1).toInt(&isLength);
    const int decimals = parts.size() == 3 ? parts.last().toInt(&isDecimals) : field.decimals;
    if (!isLength || !isDecimals || parts.size() > 3 || length < 1 || length > longestField ||
        decimals < 0 || decimals > length)
        refuse(QStringLiteral("%1 is no NAME:LENGTH[:DECIMALS]").arg(text));
    if (!QByteArrayLiteral("CFN").contains(static_cast<char>(field.type)))
        refuse(QStringLiteral("only columns of type C, N and F can be resized"));
    transform.resizeColumn(column, length, decimals);
}

void move(DbfSchemaTransform& transform, const QString& text)
{
    const auto sign = text.lastIndexOf(QLatin1Char(':'));
    const int to = text.mid(sign + 1).toInt();
    if (sign < 0 || to < 1 || to > transform.schema.columns.size())
        refuse(QStringLiteral("%1 is no NAME:POSITION, counted from 1").arg(text));
    transform.moveColumn(columnOf(transform, text.left(sign)), to - 1);
}

struct Edit {
    const char* option;
    const char* description;
    const char* valueName;
    void (*apply)(DbfSchemaTransform& transform, const QString& text);
};

constexpr Edit edits[] = {
    {"drop", "Drops a column.", "name", drop},
    {"add", "Adds a blank column behind the others.", "name:type:length[:decimals]", add},
    {"rename", "Renames a column.", "old=new", rename},
    {"resize", "Gives a column another length, and decimals.", "name:length[:decimals]", resize},
    {"move", "Moves a column to a position, counted from 1.", "name:position", move},
};

/// Applies the edits of the command line in their order.
void applyAll(const QCommandLineParser& parser, DbfSchemaTransform& transform)
{
    QHash<QString, int> applied;
    for (const QString& option : parser.optionNames()) {
        for (const Edit& edit : edits) {
            if (option == QLatin1String(edit.option))
                edit.apply(transform, parser.values(option).at(applied[option]++));
        }
    }
    if (applied.isEmpty())
        refuse(QStringLiteral("name an edit; try dbftable restructure --help"));
}

} // namespace

ExitCode runRestructure(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Changes the columns of a table, one edit after another in the order given. "
                       "Values that a column would not keep are refused."));
    for (const Edit& edit : edits)
        parser.addOption({QLatin1String(edit.option), QLatin1String(edit.description),
                          QLatin1String(edit.valueName)});
    RewritingOptions options(parser);
    options.parse(arguments);
    Source source(options.path, parser.value(options.encoding));
    source.open();
    Rewriting rewriting;
    rewriting.edit = [&](DbfSchemaTransform& transform) { applyAll(parser, transform); };
    rewrite(source, options, rewriting);
    return Done;
}
