// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/table/plainfile_p.h>

#include <QtCore/QFile>

#include <limits>
#include <typeinfo>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace dbf
{

namespace
{

#ifdef Q_OS_UNIX
constexpr bool hasPositionedCalls = sizeof(off_t) >= sizeof(qint64);

qint64 readAt(int handle, char* data, qint64 length, qint64 position)
{
    return pread(handle, data, static_cast<size_t>(length), static_cast<off_t>(position));
}

qint64 writeAt(int handle, const char* data, qint64 length, qint64 position)
{
    return pwrite(handle, data, static_cast<size_t>(length), static_cast<off_t>(position));
}
#else
constexpr bool hasPositionedCalls = false;

qint64 readAt(int, char*, qint64, qint64)
{
    return -1;
}

qint64 writeAt(int, const char*, qint64, qint64)
{
    return -1;
}
#endif

#ifdef Q_OS_LINUX
bool copyWithin(int source, qint64 from, int target, qint64 to, qint64 length)
{
    off64_t in = from;
    off64_t out = to;
    while (length > 0) {
        const qint64 step =
            copy_file_range(source, &in, target, &out, static_cast<size_t>(length), 0);
        if (step <= 0)
            return false;
        length -= step;
    }
    return true;
}
#else
bool copyWithin(int, qint64, int, qint64, qint64)
{
    return false;
}
#endif

// Of all public calls only the end of a transaction sets the position alone: QFile then believes to
// be elsewhere in the kernel, at a place where nothing is, and seeks before it reads or writes.
void setPosition(QFile& file, qint64 position)
{
    file.QIODevice::seek(position);
    file.startTransaction();
    file.QIODevice::seek(std::numeric_limits<qint64>::max());
    file.rollbackTransaction();
}

} // namespace

PlainFile::~PlainFile()
{
    release();
}

void PlainFile::release()
{
    QObject::disconnect(m_closing);
    m_file = nullptr;
}

void PlainFile::adopt(QIODevice* device)
{
    release();
    QFile* const file = of(device);
    if (!hasPositionedCalls || !file || file->handle() < 0 || file->isSequential())
        return;
    m_file = file;
    m_isOpen = std::make_shared<bool>(true);
    m_closing =
        QObject::connect(file, &QIODevice::aboutToClose, [isOpen = m_isOpen] { *isOpen = false; });
}

QFile* PlainFile::of(QIODevice* device)
{
    return device && typeid(*device) == typeid(QFile) ? static_cast<QFile*>(device) : nullptr;
}

bool PlainFile::copy(QFile& source, qint64 position, QFile& target, qint64 length)
{
    const qint64 start = target.pos();
    return copyWithin(source.handle(), position, target.handle(), start, length) &&
           target.seek(start + length);
}

bool PlainFile::isReady(const QIODevice* device) const
{
    return m_file && device == m_file && *m_isOpen && m_file->bytesToWrite() == 0 &&
           m_file->error() == QFileDevice::NoError && !m_file->isTransactionStarted() &&
           !(m_file->openMode() & (QIODevice::Append | QIODevice::Text));
}

bool PlainFile::standAt(QIODevice* device, qint64 position)
{
    if (!isReady(device))
        return false;
    setPosition(*m_file, position);
    return true;
}

bool PlainFile::read(QIODevice* device, qint64 position, char* data, qint64 length)
{
    if (!isReady(device) || readAt(m_file->handle(), data, length, position) != length)
        return false;
    setPosition(*m_file, position + length);
    return true;
}

bool PlainFile::write(QIODevice* device, const char* data, qint64 length)
{
    if (!isReady(device))
        return false;
    const qint64 position = m_file->pos();
    if (writeAt(m_file->handle(), data, length, position) != length)
        return false;
    setPosition(*m_file, position + length);
    return true;
}

} // namespace dbf
