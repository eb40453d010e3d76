// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TOOLS_CSVTEXT_H
#define TOOLS_CSVTEXT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTextStream>
#include <QtCore/QVector>

class QIODevice;

/// Appends \a row, cells in UTF-8, to \a text as one line of CSV: the cells between commas, those
/// that need it in quotes.
void appendRow(const QVector<QByteArray>& row, QByteArray& text);

/// Reads the rows of a CSV text in UTF-8 one after another; no more than one row and a block of the
/// text are in memory.
///
/// Cells stand between commas. A cell in quotes may hold commas, line ends and, each written twice,
/// quotes. Lines end with LF, CR LF or CR; empty lines are skipped.
class CsvReader
{
public:
    /// Borrows \a device, which is open and must outlive the reader.
    explicit CsvReader(QIODevice* device);

    /// Reads the next row into \a row. Returns false after the last one and at text that is no CSV;
    /// hasError() tells which.
    bool readRow(QStringList* row);

    /// Returns the number of the line, from 1, in which the row begins that was read last.
    int line() const;

    /// Returns whether a quote was never closed, or text follows a closed one.
    bool hasError() const;

private:
    bool hasMore();
    QChar peek() const;
    QChar take();
    bool isAtCellEnd();
    void takeLineEnd();
    QString readCell();
    QString readQuoted();

    QTextStream m_stream;
    QString m_block;
    int m_position = 0;
    int m_line = 1;
    int m_rowLine = 0;
    bool m_hasError = false;
};

#endif
