// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "rewriting.h"
#include "target.h"

#include <QTextCodec>

#include <algorithm>

using namespace dbf;

namespace
{

void requireNoMemo(Source& source)
{
    const QVector<DbfColumn>& columns = source.table().schema().columns;
    const auto isMemo = [](const DbfColumn& column) {
        return static_cast<char>(column.descriptor.type) == 'M';
    };
    if (std::any_of(columns.begin(), columns.end(), isMemo))
        fail(source.path(), QStringLiteral("its memo file would stay in the old code page"));
}

void requireNames(Source& source, QTextCodec* codec)
{
    constexpr int longestName = 10; // bytes
    for (const DbfColumn& column : source.table().schema().columns) {
        const QString& name = column.descriptor.name;
        const QByteArray bytes = codec->fromUnicode(name);
        if (bytes.size() > longestName || codec->toUnicode(bytes) != name)
            fail(source.path(), QStringLiteral("the column name %1 would not fit").arg(name));
    }
}

void writeCodePageFile(const QString& path, const QByteArray& name)
{
    Target target(path, {});
    target.open();
    if (target.file().write(name) != name.size())
        target.failWriting();
    target.commit();
}

} // namespace

ExitCode runRecode(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Changes the code page of the text, and of the column names. A table whose "
                       "header cannot tell the new one gets a .cpg file beside it."));
    const QCommandLineOption to(QStringLiteral("to"), QStringLiteral("The new code page."),
                                QStringLiteral("codepage"));
    parser.addOption(to);
    RewritingOptions options(parser);
    options.parse(arguments);
    if (!parser.isSet(to))
        throw Failure{UsageError, QStringLiteral("--to tells the new code page")};
    QTextCodec* const codec = codecOf(parser.value(to));

    Source source(options.path, parser.value(options.encoding));
    source.open();
    requireNoMemo(source);
    requireNames(source, codec);
    bool isKnownByte = false;
    Rewriting rewriting;
    rewriting.codePage = DbfTable::languageDriverByCodec(codec, &isKnownByte);
    rewriting.edit = [codec](DbfSchemaTransform& transform) { transform.schema.setCodec(codec); };
    rewrite(source, options, rewriting);
    // A .cpg file that stands beside the new table must not tell the old code page.
    const QString path = options.target.isEmpty() ? options.path : options.target;
    const Source renewed(path);
    if (!isKnownByte || !renewed.codePagePath().isEmpty())
        writeCodePageFile(renewed.codePagePath().isEmpty()
                              ? withSuffix(path, QStringLiteral(".cpg"))
                              : renewed.codePagePath(),
                          codec->name());
    return Done;
}
