// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TOOLS_COMMANDS_H
#define TOOLS_COMMANDS_H

#include "failure.h"

#include <QtCore/QStringList>

class QCommandLineParser;

/// \file
/// The sub-commands. Each takes the whole command line, the program's name and its own included,
/// and throws a Failure when it cannot do what it is told.

ExitCode runInfo(const QStringList& arguments);
ExitCode runCat(const QStringList& arguments);
ExitCode runCheck(const QStringList& arguments);
ExitCode runImport(const QStringList& arguments);
ExitCode runRepair(const QStringList& arguments);
ExitCode runPack(const QStringList& arguments);
ExitCode runRecode(const QStringList& arguments);
ExitCode runRestructure(const QStringList& arguments);

/// Adds --help and the operands of command \a name, as they stand in its usage, to \a parser, and
/// reads \a arguments with it. Returns the operands, at least \a least and at most \a most.
QStringList parse(QCommandLineParser& parser, const QStringList& arguments, const QString& operands,
                  int least, int most);

#endif
