// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "terminal.h"

#include "failure.h"

#include <QtCore/QFile>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace
{

// A signal handler may touch nothing but an object of this type.
volatile std::sig_atomic_t interrupted = 0;

void interrupt(int signalNumber)
{
    interrupted = 1;
    static_cast<void>(std::signal(signalNumber, SIG_DFL));
}

bool isHarmless(QChar character)
{
    return character.isPrint() || character.isSurrogate();
}

} // namespace

QString printable(const QString& text)
{
    QString safe;
    safe.reserve(text.size());
    for (const QChar character : text) {
        if (isHarmless(character))
            safe += character;
        else if (character.unicode() < 0x100)
            safe += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
        else
            safe += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
    }
    return safe;
}

void printText(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    QFile standardOutput;
    if (!standardOutput.open(STDOUT_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered) ||
        standardOutput.write(bytes) != bytes.size())
        fail(QStringLiteral("the standard output"), standardOutput.errorString());
}

void complain(const QString& text)
{
    const QString line = QStringLiteral("dbftable: ") + printable(text);
    static_cast<void>(std::fputs((line + QLatin1Char('\n')).toUtf8().constData(), stderr));
}

void catchInterruption()
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        // What this program was started to ignore, as in the background of a script, stays so.
        if (std::signal(number, interrupt) == SIG_IGN)
            static_cast<void>(std::signal(number, SIG_IGN));
    }
}

bool isInterrupted()
{
    return interrupted != 0;
}

Progress::Progress() : m_isTerminal(isatty(STDERR_FILENO) != 0)
{
    m_timer.start();
}

Progress::~Progress()
{
    if (m_percent >= 0)
        static_cast<void>(std::fputs("\r      \r", stderr));
}

bool Progress::show(qint64 done, qint64 total)
{
    constexpr int patience = 500; // milliseconds
    if (m_isTerminal && total > 0 && m_timer.elapsed() >= patience) {
        const int percent = static_cast<int>(double(done) / double(total) * 100);
        if (percent != m_percent)
            static_cast<void>(std::fprintf(stderr, "\r%3d %%", percent));
        m_percent = percent;
    }
    return !isInterrupted();
}
