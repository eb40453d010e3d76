// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/table/dbftable_p.h>
#include <dbf/table/deviceprimitives_p.h>

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

} // namespace

DbfRecord DbfTable::readRecord(int index)
{
    DbfRecord record;
    const bool read = Private::recordingErrors(
        *this,
        [&] {
            const QByteArray image = readRecordData(device(), index, m_descriptor);
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
            requirePlausibleCount(device(), count, m_descriptor);
            const QByteArray images =
                readRecordsData(device(), first, static_cast<unsigned>(count), m_descriptor);
            records.reserve(count);
            const std::string_view all = viewOf(images);
            const size_t length = m_descriptor.recordLength;
            Private::usingLayout(*this, [&](RecordLayout& layout) {
                for (int i = 0; i < count; ++i) {
                    // Of more records than an int numbers, the last ones share its highest.
                    const qint64 index = qMin<qint64>(qint64(first) + i, layout::maxRecordIndex);
                    records.append(layout.parse(all.substr(static_cast<size_t>(i) * length, length),
                                                static_cast<int>(index)));
                }
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
