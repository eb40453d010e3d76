// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "output.h"

#include "failure.h"

#include <cerrno>
#include <unistd.h>

namespace
{

constexpr int largeText = 1 << 17;

} // namespace

Output::Output(const QString& path, const QStringList& sources)
{
    m_text.reserve(2 * largeText);
    if (!path.isEmpty()) {
        m_target = std::make_unique<Target>(path, sources);
        m_target->open();
        return;
    }
    m_isTerminal = isatty(STDOUT_FILENO) != 0;
    if (!m_standardOutput.open(STDOUT_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered))
        fail(QStringLiteral("the standard output"), m_standardOutput.errorString());
}

void Output::flushWhenLarge()
{
    if (m_text.size() >= largeText)
        flush();
}

void Output::flush()
{
    if (m_target) {
        if (m_target->file().write(m_text) != m_text.size())
            m_target->failWriting();
    } else if (m_standardOutput.write(m_text) != m_text.size()) {
        if (errno == EPIPE)
            throw Failure{Failed, {}};
        fail(QStringLiteral("the standard output"), m_standardOutput.errorString());
    }
    m_text.resize(0); // which keeps the room that was reserved
}

void Output::finish()
{
    flush();
    if (m_target)
        m_target->commit();
}
