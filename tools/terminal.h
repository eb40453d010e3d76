// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TOOLS_TERMINAL_H
#define TOOLS_TERMINAL_H

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

/// Returns \a text with each character that a terminal could obey, or that would hide another,
/// written as its number (`\x1b`, `\u202e`) instead.
QString printable(const QString& text);

/// Writes \a text, in UTF-8, to the standard output. Throws a Failure when it does not take it all.
void printText(const QString& text);

/// Writes one line to the standard error, printable.
void complain(const QString& text);

/// Makes Ctrl-C, a request to terminate, and a terminal that is closed set a mark instead of ending
/// the program, so that long work can clean up after itself. A second one ends it.
void catchInterruption();

/// Returns whether that mark is set.
bool isInterrupted();

/// How far long work is, on the standard error when that is a terminal.
class Progress
{
public:
    /// Shows nothing yet; work that is done within half a second never shows.
    Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Takes the line away again.
    ~Progress();

    /// Shows how much of \a total is \a done. Returns whether to go on: false once isInterrupted().
    bool show(qint64 done, qint64 total);

private:
    QElapsedTimer m_timer;
    const bool m_isTerminal;
    int m_percent = -1;
};

#endif
