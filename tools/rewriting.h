// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TOOLS_REWRITING_H
#define TOOLS_REWRITING_H

#include "commands.h"
#include "source.h"

#include <QtCore/QCommandLineParser>

#include <functional>
#include <optional>

/// What becomes of a table that is rewritten.
struct Rewriting {
    /// Drops the records marked deleted.
    bool pack = false;

    /// Changes the columns, and the codec of their text; may be empty.
    std::function<void(dbf::DbfSchemaTransform& transform)> edit;

    /// The code page byte of the new table; that of the old one when unset.
    std::optional<dbf::DbfCodePage> codePage;
};

/// The options that pack, recode and restructure share: where the new table goes to.
struct RewritingOptions {
    /// Adds the options to \a parser, which must outlive this.
    explicit RewritingOptions(QCommandLineParser& commandLine);

    /// Reads \a arguments. Throws a Failure unless they name a table and either another file or
    /// --in-place.
    void parse(const QStringList& arguments);

    QCommandLineParser& parser;
    const QCommandLineOption inPlace;
    const QCommandLineOption ignoreIndexes;
    const QCommandLineOption encoding;
    QString path;   ///< The table.
    QString target; ///< The other file; empty in place.
};

/// Rewrites the open \a source as \a options say, atomically; the memo file is copied beside
/// another file. Throws a Failure.
void rewrite(Source& source, const RewritingOptions& options, const Rewriting& rewriting);

#endif
