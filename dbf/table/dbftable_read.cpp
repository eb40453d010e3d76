// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/table/dbftable_p.h>
#include <dbf/table/deviceprimitives_p.h>

#include <algorithm>

namespace dbf
{

namespace
{

// No record is no error, whatever the device does; one of a caller's own sees the call all the
// same.
void visitSlot(QIODevice* device, int index, const DbfTableDescriptor& descriptor)
{
    if (index < 0 || static_cast<quint32>(index) > descriptor.recordCount)
        throw DbfTable::ReadError;
    seekTo(device, DbfTable::recordOffset(index, descriptor));
}

// Small enough that what was read is still in the processor's cache when it is looked at.
constexpr int pieceSize = 131072; // bytes

} // namespace

bool DbfTable::Private::readPlainly(DbfTable& table, int index, char* data, ContainerSize length)
{
    const DbfTableDescriptor& header = table.m_descriptor;
    return index >= 0 && static_cast<quint32>(index) <= header.recordCount && length > 0 &&
           of(table).plainFile.read(table.device(), recordOffset(index, header), data, length);
}

QByteArray DbfTable::Private::readImage(DbfTable& table, int index)
{
    if (of(table).plainFile.isReady(table.device())) {
        QByteArray image(table.m_descriptor.recordLength, Qt::Uninitialized);
        if (readPlainly(table, index, image.data(), image.size()))
            return image;
    }
    return readRecordData(table.device(), index, table.m_descriptor);
}

void DbfTable::Private::parse(RecordLayout& layout, std::string_view images, int count,
                              qint64 first, QVector<DbfRecord>& records)
{
    const size_t length = images.size() / static_cast<size_t>(count);
    for (qint64 i = 0; i < count; ++i) {
        // Of more records than an int numbers, the last ones share its highest.
        const qint64 index = std::min<qint64>(first + i, layout::maxRecordIndex);
        records.append(layout.parse(images.substr(static_cast<size_t>(i) * length, length),
                                    static_cast<int>(index)));
    }
}

bool DbfTable::Private::readPieces(DbfTable& table, int first, int count,
                                   QVector<DbfRecord>& records)
{
    Private& kept = of(table);
    const int length = table.m_descriptor.recordLength;
    if (!kept.plainFile.isReady(table.device()) || length == 0)
        return false;
    const int atOnce = std::max(pieceSize / length, 1);
    if (count > atOnce && recordOffset(first, table.m_descriptor) + qint64(count) * length >
                              endOfFile(table.device()))
        return false;
    int done = 0;
    usingLayout(table, [&](RecordLayout& layout) {
        if (layout.callsOut())
            return;
        if (kept.piece.size() < atOnce * length)
            kept.piece.resize(std::max(pieceSize, length));
        for (int some = 0; done < count; done += some) {
            some = std::min(atOnce, count - done);
            if (!readPlainly(table, first + done, kept.piece.data(), some * length))
                break;
            if (done == 0)
                records.reserve(count);
            parse(layout, {kept.piece.constData(), static_cast<size_t>(some * length)}, some,
                  first + done, records);
        }
    });
    if (done < count)
        records.clear();
    return done == count;
}

DbfRecord DbfTable::readRecord(int index)
{
    DbfRecord record;
    const bool read = Private::recordingErrors(
        *this,
        [&] {
            const QByteArray image = Private::readImage(*this, index);
            Private::usingLayout(
                *this, [&](RecordLayout& layout) { record = layout.parse(viewOf(image), index); });
        },
        [&](DbfTableError) { return Private::unreadable(*this, index, 1); });
    return read ? record : blankRecord(-1);
}

QVector<DbfRecord> DbfTable::readRecords(int first, int count)
{
    QVector<DbfRecord> records;
    const bool read = Private::recordingErrors(
        *this,
        [&] {
            if (count < 0)
                throw ReadError;
            if (count == 0)
                return visitSlot(device(), first, m_descriptor);
            if (Private::readPieces(*this, first, count, records))
                return;
            requirePlausibleCount(device(), count, m_descriptor);
            const QByteArray images =
                readRecordsData(device(), first, static_cast<unsigned>(count), m_descriptor);
            records.reserve(count);
            Private::usingLayout(*this, [&](RecordLayout& layout) {
                Private::parse(layout, viewOf(images), count, first, records);
            });
        },
        [&](DbfTableError) { return Private::unreadable(*this, first, count); });
    return read ? records : QVector<DbfRecord>();
}

bool DbfTable::isRecordDeleted(int index)
{
    char flag = 0;
    const bool read = Private::recordingErrors(
        *this,
        [&] {
            if (Private::readPlainly(*this, index, &flag, layout::deletionFlagSize))
                return;
            seekForReading(device(), index, m_descriptor);
            if (!device()->isReadable() ||
                device()->read(&flag, layout::deletionFlagSize) != layout::deletionFlagSize)
                throw ReadError;
        },
        [&](DbfTableError) { return Private::unreadable(*this, index, 1); });
    return !read || flag == layout::deletedFlag;
}

DbfRecord DbfTable::blankRecord(int index) const
{
    return {index, QVector<QVariant>(m_schema.columns.size())};
}

} // namespace dbf
