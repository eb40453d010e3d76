// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/table/dbftable_p.h>

#include <limits>

namespace dbf
{

bool DbfTable::updateRecord(const DbfRecord& record)
{
    const int index = record.index();
    if (index < 0 || static_cast<quint32>(index) >= m_descriptor.recordCount)
        return false;
    return recordingErrors([&] {
        requireExactWrites(device());
        seekRecord(device(), index, m_descriptor, 0);
        writeData(device(), serializeRecord(record, m_descriptor, m_schema),
                  m_descriptor.recordLength);
        flushWrites(device());
    });
}

bool DbfTable::appendRecord(const DbfRecord& record)
{
    return recordingErrors([&] {
        requireExactWrites(device());
        seekRecord(device(), slotForAppending(), m_descriptor, 0);
        writeData(device(), serializeRecord(record, m_descriptor, m_schema),
                  m_descriptor.recordLength);
        writeEndMarker(device());
        flushWrites(device());
        ++m_descriptor.recordCount;
        updateRecordCount(device(), m_descriptor.recordCount);
    });
}

bool DbfTable::create(const DbfSchema& schema)
{
    if (!m_device || !m_device->open(QIODevice::WriteOnly))
        return error(OpenError);
    return recordingErrors([&] {
        const DbfTableDescriptor descriptor =
            emptyTableDescriptor(codePageByCodec(schema.codec), schema);
        writeTableStart(device(), descriptor, schema);
        writeEndMarker(device());
        flushWrites(device());
        closeDevice(device());
    });
}

// The index behind the last record. Beyond what an int numbers no index reaches the slot, and a
// wrapped one would name a record that exists.
int DbfTable::slotForAppending() const
{
    if (m_descriptor.recordCount > static_cast<quint32>(std::numeric_limits<int>::max()))
        throw ReadError;
    return static_cast<int>(m_descriptor.recordCount);
}

} // namespace dbf
