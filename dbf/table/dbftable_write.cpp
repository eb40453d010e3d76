// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/fieldtext_p.h>
#include <dbf/format/recordimage_p.h>
#include <dbf/table/dbftable_p.h>

#include <limits>

namespace dbf
{

namespace
{
constexpr int appendBlockSize = 65536; // bytes
} // namespace

// Runs \a operation, which writes to the device and flushes it. When the device fails at that,
// nothing is left behind for it to write later.
template <typename Operation>
void DbfTable::writingWhole(Operation operation)
{
    try {
        operation();
    } catch (...) {
        dropGatheredWrites(device());
        throw;
    }
}

bool DbfTable::updateRecord(const DbfRecord& record)
{
    const int index = record.index();
    if (index < 0 || static_cast<quint32>(index) >= m_descriptor.recordCount)
        return false;
    return recordingErrors([&] {
        requireExactWrites(device());
        seekRecord(device(), index, m_descriptor, 0);
        usingImageCodec([&](RecordImageCodec& codec) {
            const QByteArray& image = codec.image(record);
            writingWhole([&] {
                writeData(device(), image, m_descriptor.recordLength);
                flushWrites(device());
            });
        });
    });
}

bool DbfTable::appendRecord(const DbfRecord& record)
{
    return recordingErrors([&] {
        seekSlotForAppending(1);
        usingImageCodec([&](RecordImageCodec& codec) {
            const QByteArray& image = codec.image(record);
            writingWhole([&] {
                writeData(device(), image, m_descriptor.recordLength);
                finishAppending(1);
            });
        });
    });
}

bool DbfTable::appendRecords(const QVector<DbfRecord>& records)
{
    if (records.isEmpty())
        return true;
    return recordingErrors([&] {
        seekSlotForAppending(records.size());
        bool overwrittenEndMarker = false;
        try {
            writingWhole([&] {
                writeImages(records, overwrittenEndMarker);
                finishAppending(records.size());
            });
        } catch (...) {
            if (overwrittenEndMarker)
                restoreEndMarker();
            throw;
        }
    });
}

bool DbfTable::create(const DbfSchema& schema)
{
    if (!m_device || !m_device->open(QIODevice::WriteOnly))
        return error(OpenError);
    return recordingErrors([&] {
        requireExactWrites(device());
        const DbfTableDescriptor descriptor =
            emptyTableDescriptor(codePageByCodec(schema.codec), schema);
        writeTableStart(device(), descriptor, schema);
        writeEndMarker(device());
        flushWrites(device());
        closeDevice(device());
    });
}

// Beyond what an int numbers no index reaches the slots, and a wrapped one would name a record that
// exists.
void DbfTable::seekSlotForAppending(int count)
{
    constexpr qint64 lastSlot = std::numeric_limits<int>::max();
    requireExactWrites(device());
    if (m_descriptor.recordCount + qint64(count) - 1 > lastSlot)
        throw ReadError;
    seekRecord(device(), static_cast<int>(m_descriptor.recordCount), m_descriptor, 0);
}

// The count grows last: a table that is cut off before never counts a record that is not whole.
void DbfTable::finishAppending(int count)
{
    writeEndMarker(device());
    flushWrites(device());
    m_descriptor.recordCount += static_cast<quint32>(count);
    updateRecordCount(device(), m_descriptor.recordCount);
    try {
        flushWrites(device());
    } catch (DbfTableError) {
        dropGatheredWrites(device()); // A count that is not written goes unnoticed.
    }
}

void DbfTable::writeImages(const QVector<DbfRecord>& records, bool& writing)
{
    const int recordLength = m_descriptor.recordLength;
    QByteArray block = emptyWithRoom(appendBlockSize + recordLength);
    usingImageCodec([&](RecordImageCodec& codec) {
        for (const DbfRecord& record : records) {
            const int start = block.size();
            codec.append(record, block);
            if (block.size() - start < recordLength)
                throw WriteError;
            block.resize(start + recordLength);
            if (block.size() >= appendBlockSize) {
                writing = true;
                writeData(device(), block, block.size());
                block.resize(0);
            }
        }
    });
    if (!block.isEmpty()) {
        writing = true;
        writeData(device(), block, block.size());
    }
}

void DbfTable::restoreEndMarker()
{
    try {
        seekRecord(device(), static_cast<int>(m_descriptor.recordCount), m_descriptor, 0);
        writingWhole([this] {
            writeEndMarker(device());
            flushWrites(device());
        });
    } catch (DbfTableError) {
        // The failure that brought us here is the one to report.
        return;
    }
}

} // namespace dbf
