// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TOOLS_SOURCE_H
#define TOOLS_SOURCE_H

#include <dbf/dbf.h>

#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <memory>

class QTextCodec;

/// A table file that is read, of every version, its blanks as no values, with the memo file that
/// lies beside it. Its text is in the code page that is asked for, else in that of the `.cpg` file
/// beside it, else in that of its header.
class Source
{
public:
    /// Opens nothing but the file, so that a damaged table can be looked at. Throws a Failure for
    /// what is no regular file, cannot be read, and for a \a label that is no code page; an empty
    /// one asks for none.
    explicit Source(const QString& path, const QString& label = {});

    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    /// Opens the table. Throws a Failure that says why it is none.
    void open();

    /// Throws the Failure of the table's error, when it has one.
    void requireNoError();

    dbf::DbfTable& table() { return m_table; }
    dbf::DbfMemoFile& memo() { return *m_memo; }
    QFile& file() { return m_file; }
    const QString& path() const { return m_path; }

    /// Returns the paths of the files beside the table, empty when there are none.
    const QString& memoPath() const { return m_memoPath; }
    const QString& codePagePath() const { return m_codePagePath; }

    /// Returns the codec of text and names, once open.
    QTextCodec* codec() const { return m_table.schema().codec; }

private:
    void chooseCodec(const QString& label);

    QString m_path;
    QString m_memoPath;
    QString m_codePagePath;
    QFile m_file;
    QFile m_memoFile;
    std::unique_ptr<dbf::DbfMemoFile> m_memo;
    dbf::DbfTable m_table;
};

/// Returns the codec that \a label names; throws a Failure when it names none.
QTextCodec* codecOf(const QString& label);

/// Returns \a path with \a suffix, such as `.cpg`, in place of its own.
QString withSuffix(const QString& path, const QString& suffix);

#endif
