// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TESTS_RECORDINGDEVICE_H
#define TESTS_RECORDINGDEVICE_H

#include <QtCore/QByteArray>
#include <QtCore/QIODevice>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <cstring>
#include <optional>
#include <stdexcept>

/// A device in memory that behaves like a file, logs every call that reaches it ("open 2",
/// "read 32", "write 11", "seek 129", "close"; a mode, a size or a position in bytes), and can be
/// told to let one call go wrong.
///
/// It works unbuffered, so that one call of the code under test is one call here; putChar comes in
/// as "write 1". Like a file it is truncated when opened write-only, refuses to open twice or
/// neither readable nor writable, and lets itself be positioned behind its end.
class RecordingDevice : public QIODevice
{
public:
    enum Operation { Open, Read, Write, Seek, Close };
    enum Outcome {
        Fail,  ///< The call reports failure and does nothing.
        Short, ///< A read or write handles one byte less than it would; like Fail elsewhere.
        Throw, ///< The call throws std::runtime_error.
    };
    /// What goes wrong: the \a call th call of \a operation from now on, counted from 1; 0 for
    /// nothing.
    struct Fault {
        Operation operation = Read;
        int call = 0;
        Outcome outcome = Fail;
    };

    /// What a write put on the device, and where.
    struct WriteCall {
        qint64 position = 0;
        QByteArray bytes;
    };

    explicit RecordingDevice(const QByteArray& bytes = {}) : content(bytes) {}

    void setFault(const Fault& fault) { m_fault = fault; }
    bool isFaultPending() const { return m_fault.call > 0; }
    QStringList log() const { return m_log; }
    QVector<WriteCall> writes() const { return m_writes; }
    void clearLog()
    {
        m_log.clear();
        m_writes.clear();
    }

    /// Puts \a bytes where a write at \a position would, behind a gap of zeros if need be.
    static void place(QByteArray& content, qint64 position, const QByteArray& bytes)
    {
        const int start = static_cast<int>(position);
        if (start > content.size())
            content.append(start - content.size(), '\0');
        content.replace(start, bytes.size(), bytes);
    }

    bool open(OpenMode mode) override
    {
        if (note(Open, mode & ~Unbuffered) || isOpen() || !(mode & ReadWrite))
            return false;
        if ((mode & Truncate) || (mode & (ReadWrite | Append)) == WriteOnly)
            content.clear();
        // Without the seek, the first read after a second opening would bring one of Qt's own.
        return QIODevice::open(mode | Unbuffered) && QIODevice::seek(pos());
    }

    void close() override
    {
        note(Close, {});
        QIODevice::close();
    }

    bool seek(qint64 position) override
    {
        return !note(Seek, position) && QIODevice::seek(position);
    }

    qint64 size() const override { return content.size(); }

    QByteArray content; ///< The bytes on the device, for tests to look at and to change.

protected:
    qint64 readData(char* data, qint64 size) override
    {
        const auto fault = note(Read, size);
        if (fault == Fail)
            return -1;
        const qint64 available = qBound<qint64>(0, content.size() - pos(), size);
        const qint64 count = fault == Short ? qMax<qint64>(0, available - 1) : available;
        if (count > 0)
            std::memcpy(data, content.constData() + pos(), static_cast<size_t>(count));
        return count;
    }

    qint64 writeData(const char* data, qint64 size) override
    {
        const auto fault = note(Write, size);
        if (fault == Fail)
            return -1;
        const qint64 count = fault == Short ? qMax<qint64>(0, size - 1) : size;
        m_writes.append({pos(), QByteArray(data, static_cast<int>(count))});
        place(content, pos(), m_writes.last().bytes);
        return count;
    }

private:
    /// Logs a call; returns how it goes wrong, if it does.
    std::optional<Outcome> note(Operation operation, std::optional<qint64> argument)
    {
        static const char* const names[] = {"open", "read", "write", "seek", "close"};
        const auto name = QString::fromLatin1(names[operation]);
        m_log << (argument ? name + QLatin1Char(' ') + QString::number(*argument) : name);
        if (operation != m_fault.operation || m_fault.call == 0 || --m_fault.call != 0)
            return std::nullopt;
        if (m_fault.outcome == Throw)
            throw std::runtime_error("a call of the device was told to throw");
        return m_fault.outcome;
    }

    Fault m_fault;
    QStringList m_log;
    QVector<WriteCall> m_writes;
};

Q_DECLARE_METATYPE(RecordingDevice::Fault)

#endif
