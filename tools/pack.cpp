// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "rewriting.h"

ExitCode runPack(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Drops the records that are marked deleted."));
    RewritingOptions options(parser);
    options.parse(arguments);
    Source source(options.path, parser.value(options.encoding));
    source.open();
    Rewriting rewriting;
    rewriting.pack = true;
    rewrite(source, options, rewriting);
    return Done;
}
