// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TOOLS_OUTPUT_H
#define TOOLS_OUTPUT_H

#include "target.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>

#include <memory>

/// Where text goes: to the standard output, or to a file that appears once it is whole.
class Output
{
public:
    /// Throws a Failure when \a path, unless it is empty, cannot be a Target beside \a sources.
    Output(const QString& path, const QStringList& sources);

    /// Returns whether a person sees it on a terminal.
    bool isTerminal() const { return m_isTerminal; }

    /// Returns what is not written yet, to be appended to.
    QByteArray& text() { return m_text; }

    /// Writes the text once there is much of it. Throws a Failure, which says nothing when nobody
    /// reads any more.
    void flushWhenLarge();

    /// Writes the rest and puts the file in its place. Throws a Failure.
    void finish();

private:
    void flush();

    QByteArray m_text;
    QFile m_standardOutput;
    std::unique_ptr<Target> m_target;
    bool m_isTerminal = false;
};

#endif
