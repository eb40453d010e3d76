// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/format/layout_p.h>
#include <dbf/table/dbftable_p.h>
#include <dbf/table/fileidentity_p.h>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QFileDevice>
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

bool seekTo(QIODevice* device, qint64 position)
{
    return device && device->isOpen() && !device->isSequential() && position >= 0 &&
           !wouldGrow(device, position) && device->seek(position);
}

void writeByte(QIODevice* device, char byte)
{
    if (!canWrite(device) || !device->putChar(byte))
        throw DbfTable::WriteError;
}

} // namespace

qint64 obtainable(QIODevice* device, qint64 length)
{
    if (length <= freelyReadSize || device->isSequential())
        return length;
    const qint64 size = device->size();
    if (size <= 0)
        return length; // a device of a caller's own need not know its size
    return std::clamp<qint64>(size - device->pos(), 0, length);
}

qint64 readUpTo(QIODevice* device, char* data, qint64 length)
{
    return canRead(device) ? device->read(data, obtainable(device, length)) : -1;
}

void requirePlausibleCount(const QIODevice* device, qint64 count,
                           const DbfTableDescriptor& descriptor)
{
    if (descriptor.recordLength == 0 && device && count > device->size())
        throw DbfTable::ReadError;
}

void requireExactWrites(const QIODevice* device)
{
    if (device && device->openMode() & (QIODevice::Append | QIODevice::Text))
        throw DbfTable::WriteError;
}

void flushWrites(QIODevice* device)
{
    auto* const file = asFileDevice(device);
    if (file && !file->flush())
        throw DbfTable::WriteError;
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
    const std::optional<FileIdentity> identity = identityOf(*file);
    file->close();
    if (!(mode & QIODevice::ReadOnly) || file->fileName().isEmpty() ||
        identityOf(*file) != identity)
        return;
    file->open((mode & ~(QIODevice::Truncate | QIODevice::NewOnly)) | QIODevice::ExistingOnly);
}

void closeDevice(QIODevice* device)
{
    if (!qobject_cast<QSaveFile*>(device))
        device->close();
}

void writeTableStart(QIODevice* device, const DbfTableDescriptor& descriptor,
                     const DbfSchema& schema)
{
    DbfTable::writeData(device, DbfTable::serializeTableDescriptor(descriptor), layout::headerSize);
    DbfTable::writeData(device, DbfTable::serializeSchema(schema),
                        DbfTable::schemaLength(descriptor));
    DbfTable::writeSchemaTerminator(device);
    if (DbfTable::hasDbc(descriptor))
        DbfTable::writeData(device, QByteArray(layout::backLinkSize, '\0'), layout::backLinkSize);
}

QByteArray DbfTable::readData(QIODevice* device, int length)
{
    if (length < 0 || !canRead(device))
        throw ReadError;
    const qint64 size = obtainable(device, length);
    QByteArray data(static_cast<int>(size), Qt::Uninitialized);
    if (device->read(data.data(), size) != length)
        throw ReadError;
    return data;
}

QByteArray DbfTable::readTableDescriptorData(QIODevice* device)
{
    return readData(device, layout::headerSize);
}

QByteArray DbfTable::readSchemaData(QIODevice* device, const DbfTableDescriptor& descriptor)
{
    return readData(device, schemaLength(descriptor));
}

void DbfTable::seekRecord(QIODevice* device, int index, const DbfTableDescriptor& descriptor,
                          int offset)
{
    if (index < 0 || static_cast<quint32>(index) > descriptor.recordCount)
        throw ReadError;
    if (!seekTo(device, recordOffset(index, descriptor) + offset))
        throw ReadError;
}

QByteArray DbfTable::readRecordData(QIODevice* device, int index,
                                    const DbfTableDescriptor& descriptor)
{
    seekRecord(device, index, descriptor, 0);
    return readData(device, descriptor.recordLength);
}

QByteArray DbfTable::readRecordsData(QIODevice* device, int first, unsigned long count,
                                     const DbfTableDescriptor& descriptor)
{
    constexpr unsigned long maxSize = std::numeric_limits<int>::max();
    if (descriptor.recordLength != 0 && count > maxSize / descriptor.recordLength)
        throw ReadError;
    seekRecord(device, first, descriptor, 0);
    return readData(device, static_cast<int>(count * descriptor.recordLength));
}

void DbfTable::writeData(QIODevice* device, const QByteArray& data, long long size)
{
    if (size < 0 || size > data.size() || !canWrite(device))
        throw WriteError;
    if (device->write(data.constData(), size) != size)
        throw WriteError;
}

void DbfTable::writeSchemaTerminator(QIODevice* device)
{
    writeByte(device, layout::schemaTerminator);
}

void DbfTable::writeEndMarker(QIODevice* device)
{
    writeByte(device, layout::endMarker);
}

void DbfTable::updateRecordCount(QIODevice* device, unsigned int count)
{
    if (!canWrite(device) || !seekTo(device, layout::recordCountOffset))
        return;
    char bytes[layout::recordCountSize];
    qToLittleEndian<quint32>(count, bytes);
    device->write(bytes, layout::recordCountSize);
}

} // namespace dbf
