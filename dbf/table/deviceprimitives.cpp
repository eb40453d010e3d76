// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/format/tableheader_p.h>
#include <dbf/table/deviceidentity_p.h>
#include <dbf/table/deviceprimitives_p.h>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QSaveFile>
#include <QtCore/QtEndian>

#include <algorithm>
#include <limits>

namespace dbf
{

namespace
{

// Qt itself reads ahead this much. Below it, asking a file for its size costs more than it saves.
constexpr qint64 freelyReadSize = 16384; // bytes

// What is allocated at once for a read from a device that does not tell how much it holds.
constexpr int blindBlockSize = 8388608; // bytes

constexpr QIODevice::OpenMode losingModes = QIODevice::Truncate | QIODevice::NewOnly;

// Asked before each call, since Qt prints a warning for what it refuses.
bool canRead(const QIODevice* device)
{
    return device && device->isReadable();
}

bool canWrite(const QIODevice* device)
{
    return device && device->isWritable();
}

// Told without a walk through its base classes, which takes a while for each record.
bool isPlainFile(const QIODevice* device)
{
    return device && device->metaObject() == &QFile::staticMetaObject;
}

QFileDevice* asFileDevice(QIODevice* device)
{
    return isPlainFile(device) ? static_cast<QFile*>(device) : qobject_cast<QFileDevice*>(device);
}

// A QBuffer fills up the way to any position that it is sent to.
bool wouldGrow(const QIODevice* device, qint64 position)
{
    if (isPlainFile(device))
        return false;
    const auto* const buffer = qobject_cast<const QBuffer*>(device);
    return buffer && position > buffer->size();
}

/// Returns how many bytes \a device still holds behind its position; nothing where it cannot tell,
/// as a device of a caller's own need not.
std::optional<qint64> remainingBytes(QIODevice* device)
{
    const qint64 size = device->isSequential() ? 0 : device->size();
    return size > 0 ? std::optional(std::max<qint64>(size - device->pos(), 0)) : std::nullopt;
}

QByteArray readOnce(QIODevice* device, int size, int length)
{
    QByteArray data(size, Qt::Uninitialized);
    if (device->read(data.data(), size) != length)
        throw DbfTable::ReadError;
    return data;
}

QByteArray readInBlocks(QIODevice* device, int length)
{
    QByteArray data;
    while (data.size() < length) {
        const ContainerSize start = data.size();
        const ContainerSize size = std::min<ContainerSize>(length - start, blindBlockSize);
        data.reserve(start + size); // or resizing would make room for twice as much
        data.resize(start + size);
        if (device->read(data.data() + start, size) != size)
            throw DbfTable::ReadError;
    }
    return data;
}

// A program that has ended cannot have taken in all that it was given: the end of its input was
// still to come.
void requireRunning(QIODevice* device)
{
    auto* const process = qobject_cast<QProcess*>(device);
    if (process && (process->state() == QProcess::NotRunning || process->waitForFinished(0)))
        throw DbfTable::WriteError; // GCOVR_EXCL_LINE: whether writing fails before is a race
}

void writeByte(QIODevice* device, char byte)
{
    if (!canWrite(device) || !device->putChar(byte))
        throw DbfTable::WriteError;
}

} // namespace

bool seekTo(QIODevice* device, qint64 position)
{
    return device && device->isOpen() && !device->isSequential() && position >= 0 &&
           !wouldGrow(device, position) && device->seek(position);
}

qint64 readUpTo(QIODevice* device, char* data, qint64 length)
{
    if (!canRead(device))
        return -1;
    const qint64 wanted = length > freelyReadSize
                              ? std::min(remainingBytes(device).value_or(length), length)
                              : length;
    const qint64 size = device->read(data, wanted);
    return size <= wanted ? size : -1;
}

void seekForReading(QIODevice* device, int index, const DbfTableDescriptor& descriptor)
{
    requireExactReads(device);
    primitives::seekRecord(device, index, descriptor, 0);
    dropReadAhead(device);
}

quint32 readRecordCount(QIODevice* device)
{
    requireExactReads(device);
    if (!seekTo(device, layout::recordCountOffset))
        throw DbfTable::ReadError;
    dropReadAhead(device);
    const QByteArray bytes = primitives::readData(device, layout::recordCountSize);
    return qFromLittleEndian<quint32>(bytes.constData());
}

// Goes away and comes back through QIODevice itself, which drops its buffer for every place outside
// of it, and calls neither the file, which stands where it stood, nor a caller's class of it.
void dropReadAhead(QIODevice* device)
{
    if (!asFileDevice(device))
        return;
    const qint64 position = device->pos();
    device->QIODevice::seek(std::numeric_limits<qint64>::max());
    device->QIODevice::seek(position);
}

void requirePlausibleCount(const QIODevice* device, qint64 count,
                           const DbfTableDescriptor& descriptor)
{
    if (descriptor.recordLength == 0 && device && count > device->size())
        throw DbfTable::ReadError;
}

void requireExactReads(const QIODevice* device)
{
    if (device && device->isTextModeEnabled())
        throw DbfTable::ReadError;
}

void requireExactWrites(const QIODevice* device)
{
    if (device && device->openMode() & (QIODevice::Append | QIODevice::Text))
        throw DbfTable::WriteError;
}

qint64 endOfFile(QIODevice* device)
{
    const auto* const file = asFileDevice(device);
    return file ? file->size() : std::numeric_limits<qint64>::max();
}

QIODevice::OpenMode modeForReopening(QIODevice::OpenMode mode)
{
    return mode & ~losingModes;
}

bool warnsWithoutAccess(QIODevice* device)
{
    return asFileDevice(device) || qobject_cast<QBuffer*>(device);
}

void flushWrites(QIODevice* device)
{
    auto* const file = asFileDevice(device);
    if (file && !file->flush())
        throw DbfTable::WriteError;
}

void drainWrites(QIODevice* device)
{
    if (!device->isSequential() || asFileDevice(device))
        return;
    while (device->bytesToWrite() > 0) {
        if (!device->waitForBytesWritten(-1))
            throw DbfTable::WriteError;
    }
}

void dropGatheredWrites(QIODevice* device)
{
    auto* const file = qobject_cast<QFileDevice*>(device);
    if (!file || !file->isOpen() || file->error() == QFileDevice::NoError)
        return;
    if (auto* const saveFile = qobject_cast<QSaveFile*>(device)) {
        saveFile->cancelWriting();
        return;
    }
    const QIODevice::OpenMode mode = file->openMode();
    const std::optional<FileIdentity> identity = identityOfFile(*file);
    file->close();
    if (!(mode & QIODevice::ReadOnly) || file->fileName().isEmpty() ||
        identityOfFile(*file) != identity)
        return;
    file->open(modeForReopening(mode) | QIODevice::ExistingOnly);
}

void closeDevice(QIODevice* device)
{
    if (auto* const process = qobject_cast<QProcess*>(device))
        process->closeWriteChannel();
    else if (!qobject_cast<QSaveFile*>(device))
        device->close();
}

NewTableDevice::~NewTableDevice()
{
    if (m_finished)
        return;
    if (auto* const saveFile = qobject_cast<QSaveFile*>(m_device))
        saveFile->cancelWriting();
}

void NewTableDevice::start(const QByteArray& header, const QByteArray& fields,
                           const QByteArray& backLink)
{
    requireExactWrites(m_device);
    primitives::writeData(m_device, header, header.size());
    primitives::writeData(m_device, fields, fields.size());
    primitives::writeSchemaTerminator(m_device);
    if (!backLink.isEmpty())
        primitives::writeData(m_device, backLink, backLink.size());
}

void NewTableDevice::finish()
{
    primitives::writeEndMarker(m_device);
    flushWrites(m_device);
    drainWrites(m_device);
    requireRunning(m_device);
    closeDevice(m_device);
    m_finished = true;
}

namespace primitives
{

QByteArray readData(QIODevice* device, int length)
{
    if (length < 0 || !canRead(device))
        throw DbfTable::ReadError;
    if (length <= freelyReadSize)
        return readOnce(device, length, length);
    const std::optional<qint64> remaining = remainingBytes(device);
    if (!remaining && length > blindBlockSize)
        return readInBlocks(device, length);
    return readOnce(device, static_cast<int>(std::min<qint64>(remaining.value_or(length), length)),
                    length);
}

QByteArray readTableDescriptorData(QIODevice* device)
{
    return readData(device, layout::headerSize);
}

QByteArray readSchemaData(QIODevice* device, const DbfTableDescriptor& descriptor)
{
    return readData(device, format::schemaLength(descriptor));
}

void seekRecord(QIODevice* device, int index, const DbfTableDescriptor& descriptor, int offset)
{
    if (index < 0 || static_cast<quint32>(index) > descriptor.recordCount)
        throw DbfTable::ReadError;
    if (!seekTo(device, format::recordOffset(index, descriptor) + offset))
        throw DbfTable::ReadError;
}

QByteArray readRecordData(QIODevice* device, int index, const DbfTableDescriptor& descriptor)
{
    seekForReading(device, index, descriptor);
    return readData(device, descriptor.recordLength);
}

QByteArray readRecordsData(QIODevice* device, int first, unsigned long count,
                           const DbfTableDescriptor& descriptor)
{
    constexpr unsigned long maxSize = std::numeric_limits<int>::max();
    if (descriptor.recordLength != 0 && count > maxSize / descriptor.recordLength)
        throw DbfTable::ReadError;
    seekForReading(device, first, descriptor);
    return readData(device, static_cast<int>(count * descriptor.recordLength));
}

void writeData(QIODevice* device, const QByteArray& data, long long size)
{
    if (size < 0 || size > data.size() || !canWrite(device))
        throw DbfTable::WriteError;
    if (device->write(data.constData(), size) != size)
        throw DbfTable::WriteError;
}

void writeSchemaTerminator(QIODevice* device)
{
    writeByte(device, layout::schemaTerminator);
}

void writeEndMarker(QIODevice* device)
{
    writeByte(device, layout::endMarker);
}

void updateRecordCount(QIODevice* device, unsigned int count)
{
    if (!canWrite(device) || !seekTo(device, layout::recordCountOffset))
        return;
    char bytes[layout::recordCountSize];
    qToLittleEndian<quint32>(count, bytes);
    device->write(bytes, layout::recordCountSize);
}

} // namespace primitives

} // namespace dbf
