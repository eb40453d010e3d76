// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TABLE_PLAINFILE_P_H
#define DBF_TABLE_PLAINFILE_P_H

#include <QtCore/QObject>

#include <memory>

class QFile;
class QIODevice;

namespace dbf
{

/// Positioned reads and writes on a table's plain file, which save a seek in the kernel beside
/// each. They are made only where nobody can tell them from QFile's own: everything but the file's
/// place in the kernel, to which QFile goes by itself before it uses it, is as after a seek and a
/// read or write. Where they are not made or come short, nothing has changed that the usual calls,
/// made instead, do not change in the same way.
class PlainFile
{
public:
    PlainFile() = default;
    ~PlainFile();
    PlainFile(const PlainFile&) = delete;
    PlainFile& operator=(const PlainFile&) = delete;

    /// Takes over \a device, which was just opened by the table itself, until it is closed. Does
    /// nothing unless it is a QFile and no class of a caller's own, and holds places, on a POSIX
    /// system. A file that others opened may have a buffer that no call tells of.
    void adopt(QIODevice* device);

    /// Whether \a device is that file, and nothing gathered, begun or gone wrong on it stands in
    /// the way.
    bool isReady(const QIODevice* device) const;

    /// Lets \a device stand at \a position, 0 or more, with nothing read ahead. Returns false, with
    /// nothing done, if it is not ready.
    bool standAt(QIODevice* device, qint64 position);

    /// Reads \a length bytes, at least one, at \a position. Returns false if there are fewer.
    bool read(QIODevice* device, qint64 position, char* data, qint64 length);

    /// Writes \a length bytes, at least one, where \a device stands. Returns false if not all were
    /// written: it then still stands there, though some may be.
    bool write(QIODevice* device, const char* data, qint64 length);

    /// Returns \a device if it is a QFile and of no class of a caller's own, whose calls would be
    /// seen; null for every other one.
    static QFile* of(QIODevice* device);

    /// Copies \a length bytes from \a position of \a source to where \a target stands, and lets
    /// that stand behind them, without bringing them into this process. Both are plain files with
    /// nothing gathered. Returns false where the system does not do that, or there are fewer bytes:
    /// \a target then still stands there, though some may be written, and the usual calls do or
    /// report what is right.
    static bool copy(QFile& source, qint64 position, QFile& target, qint64 length);

private:
    void release();

    QFile* m_file = nullptr;
    std::shared_ptr<bool> m_isOpen;
    QMetaObject::Connection m_closing;
};

} // namespace dbf

#endif
