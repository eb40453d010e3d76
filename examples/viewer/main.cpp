// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

/// \file
/// Shows a table in a window. With --screenshot it makes a picture of the window and ends.

#include "mainwindow.h"
#include "sampletable.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>
#include <QtWidgets/QApplication>

namespace
{

constexpr int exitFailure = 1;
constexpr int smallestFile = 0; // In the image writer's scale of 0 to 100.

int fail(const QString& message)
{
    QTextStream(stderr) << "viewer: " << message << '\n';
    return exitFailure;
}

/// Makes a picture of \a window as it is on the screen.
int saveScreenshot(MainWindow& window, int row, const QString& path)
{
    window.show();
    QApplication::processEvents(); // The window gets its size, and with it the rows in view.
    if (!window.goToRow(row))
        return fail(QStringLiteral("record %1 does not show").arg(row));
    if (!window.grab().save(path, nullptr, smallestFile))
        return fail(QStringLiteral("cannot write %1").arg(path));
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("FILE.dbf"), QStringLiteral("The table to show."),
                                 QStringLiteral("[FILE.dbf]"));
    const QCommandLineOption sample(QStringLiteral("sample"),
                                    QStringLiteral("Show a sample table of <count> records, made "
                                                   "in a temporary folder."),
                                    QStringLiteral("count"));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Write a picture of the window and end."),
                                        QStringLiteral("FILE.png"));
    const QCommandLineOption row(QStringLiteral("row"),
                                 QStringLiteral("Start at record <index>, from 0."),
                                 QStringLiteral("index"), QStringLiteral("0"));
    parser.addOptions({sample, screenshot, row});
    parser.process(application);

    QString path = parser.positionalArguments().value(0);
    const QTemporaryDir folder;
    if (parser.isSet(sample)) {
        path = folder.filePath(QStringLiteral("товары.dbf"));
        if (!makeSampleTable(path, parser.value(sample).toInt()))
            return fail(QStringLiteral("cannot make %1").arg(path));
    }

    MainWindow window;
    QString reason;
    if (!path.isEmpty() && !window.openFile(path, &reason))
        return fail(QStringLiteral("cannot open %1: %2").arg(path, reason));
    if (parser.isSet(screenshot))
        return saveScreenshot(window, parser.value(row).toInt(), parser.value(screenshot));
    window.show();
    window.goToRow(parser.value(row).toInt());
    return QApplication::exec();
}
