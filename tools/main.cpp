// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

/// \file
/// Looks into tables, makes them, and rewrites them: see docs/dbftable.1.

#include "commands.h"
#include "terminal.h"

#include <dbf/dbfversion.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QVector>
#include <QtCore/QVersionNumber>

#include <cstdio>
#include <limits>
#include <new>

namespace
{

struct Command {
    const char* name;
    const char* summary;
    ExitCode (*run)(const QStringList& arguments);
};

const QVector<Command>& commands()
{
    static const QVector<Command> all{
        {"info", "what tables are: version, code page, records, columns", runInfo},
        {"cat", "the records, aligned, as CSV or as JSON", runCat},
        {"check", "what is wrong with tables", runCheck},
        {"import", "makes a table of a CSV text", runImport},
        {"repair", "a copy of what is whole in a table", runRepair},
        {"pack", "drops the records marked deleted", runPack},
        {"recode", "changes the code page", runRecode},
        {"restructure", "drops, adds, renames, resizes and moves columns", runRestructure},
    };
    return all;
}

QString usage()
{
    QString text = QStringLiteral("Usage: dbftable COMMAND [options] ...\n\nCommands:\n");
    for (const Command& command : commands())
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command.name), -12)
                    .arg(QLatin1String(command.summary));
    return text + QStringLiteral("\n\"dbftable COMMAND --help\" tells the options of one.\n");
}

ExitCode run(const QStringList& arguments)
{
    const QString name = arguments.value(1);
    for (const Command& command : commands()) {
        if (name == QLatin1String(command.name))
            return command.run(arguments);
    }
    if (name == QLatin1String("--version") || name == QLatin1String("-v")) {
        printText(QStringLiteral("dbftable %1\n").arg(dbf::libraryVersion().toString()));
        return Done;
    }
    if (name == QLatin1String("--help") || name == QLatin1String("-h")) {
        printText(usage());
        return Done;
    }
    throw Failure{UsageError, name.isEmpty() ? QStringLiteral("try dbftable --help")
                                             : QStringLiteral("there is no command %1").arg(name)};
}

} // namespace

QStringList parse(QCommandLineParser& parser, const QStringList& arguments, const QString& operands,
                  int least, int most)
{
    const QString name = arguments.value(1);
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Prints this help."));
    parser.addOption(help);
    parser.addPositionalArgument(name, QStringLiteral("The command, and what it works on."),
                                 name + QLatin1Char(' ') + operands);
    const bool isParsed = parser.parse(arguments);
    if (parser.isSet(help)) {
        printText(parser.helpText());
        throw Failure{Done, {}};
    }
    if (!isParsed)
        throw Failure{UsageError, parser.errorText()};
    const QStringList found = parser.positionalArguments().mid(1);
    if (found.size() < least || found.size() > most)
        throw Failure{UsageError, QStringLiteral("try dbftable %1 --help").arg(name)};
    return found;
}

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    try {
        return run(QCoreApplication::arguments());
    } catch (const Failure& failure) {
        if (!failure.text.isEmpty())
            complain(failure.text);
        return failure.code;
    } catch (const std::bad_alloc&) {
        complain(QStringLiteral("there is not enough memory"));
        return Failed;
    }
}
