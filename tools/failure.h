// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TOOLS_FAILURE_H
#define TOOLS_FAILURE_H

#include <QtCore/QString>

/// What the program ends with.
enum ExitCode {
    Done = 0,          ///< Everything that was asked for is done.
    ProblemsFound = 1, ///< A table or text was looked at and has problems.
    UsageError = 2,    ///< The command line makes no sense.
    Failed = 3,        ///< Something cannot be read or written, or the output is not whole.
};

/// Why a command ends early; main() prints the text, unless it is empty, and returns the code.
struct Failure {
    ExitCode code;
    QString text;
};

/// Throws the Failure of a file that cannot be read or written.
[[noreturn]] inline void fail(const QString& what, const QString& reason)
{
    throw Failure{Failed, QStringLiteral("%1: %2").arg(what, reason)};
}

#endif
