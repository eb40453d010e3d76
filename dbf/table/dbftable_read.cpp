// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/fieldtext_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/format/recordimage_p.h>
#include <dbf/table/dbftable_p.h>

#include <limits>

namespace dbf
{

DbfRecord DbfTable::readRecord(int index)
{
    DbfRecord record;
    const bool read = recordingErrors([&] {
        const QByteArray image = readRecordData(device(), index, m_descriptor);
        usingImageCodec(
            [&](RecordImageCodec& codec) { record = codec.parse(viewOf(image), index); });
    });
    return read ? record : blankRecord(-1);
}

QVector<DbfRecord> DbfTable::readRecords(int first, int count)
{
    QVector<DbfRecord> records;
    const bool read = recordingErrors([&] {
        if (count < 0)
            throw ReadError;
        requirePlausibleCount(device(), count, m_descriptor);
        const QByteArray images =
            readRecordsData(device(), first, static_cast<unsigned>(count), m_descriptor);
        records.reserve(count);
        const std::string_view all = viewOf(images);
        const size_t length = m_descriptor.recordLength;
        usingImageCodec([&](RecordImageCodec& codec) {
            for (int i = 0; i < count; ++i) {
                const qint64 index =
                    qMin<qint64>(qint64(first) + i, std::numeric_limits<int>::max());
                records.append(codec.parse(all.substr(static_cast<size_t>(i) * length, length),
                                           static_cast<int>(index)));
            }
        });
    });
    return read ? records : QVector<DbfRecord>();
}

bool DbfTable::isRecordDeleted(int index)
{
    char flag = 0;
    const bool read = recordingErrors([&] {
        seekRecord(device(), index, m_descriptor, 0);
        if (!device()->isReadable() ||
            device()->read(&flag, layout::deletionFlagSize) != layout::deletionFlagSize)
            throw ReadError;
    });
    return !read || flag == layout::deletedFlag;
}

DbfRecord DbfTable::blankRecord(int index) const
{
    return {index, QVector<QVariant>(m_schema.columns.size())};
}

} // namespace dbf
