// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef QUICKSTART_PROGRESSBAR_H
#define QUICKSTART_PROGRESSBAR_H

#include <QtCore/QByteArray>
#include <QtCore/QTextStream>

#include <cstdio>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

/// A bar on the terminal; nothing at all when the standard error goes elsewhere, where the
/// characters that redraw a line would only be noise.
class ProgressBar
{
public:
    ProgressBar() = default;
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Takes the bar away again, however the work ended.
    ~ProgressBar()
    {
        if (m_isDrawn)
            draw(QByteArray(lineLength, ' ') + '\r');
    }

    /// Draws how much of \a total is \a done. Work that is done at the first call was too short for
    /// a bar.
    void show(int done, int total)
    {
        if (!m_isTerminal || (done == total && !m_isDrawn))
            return;
        m_isDrawn = true;
        const double share = total > 0 ? double(done) / total : 1;
        const auto filled = QByteArray(static_cast<int>(share * barLength), '#');
        const auto percent = QByteArray::number(static_cast<int>(share * 100));
        draw("  [" + filled.leftJustified(barLength, '.') + "] " + percent.rightJustified(3) +
             " %\r");
    }

private:
    static constexpr int barLength = 50;
    static constexpr int lineLength = barLength + 10;

    static bool isTerminal()
    {
#ifdef Q_OS_WIN
        return _isatty(_fileno(stderr)) != 0;
#else
        return isatty(fileno(stderr)) != 0;
#endif
    }

    static void draw(const QByteArray& line)
    {
        QTextStream(stderr) << line;
    }

    const bool m_isTerminal = isTerminal();
    bool m_isDrawn = false;
};

#endif
