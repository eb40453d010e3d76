// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/fieldtext_p.h>
#include <dbf/table/dbftable_p.h>
#include <dbf/transform/copytarget_p.h>
#include <dbf/transform/recordtransformer_p.h>

#include <algorithm>
#include <limits>

namespace dbf
{

namespace
{

constexpr int maxBatchSize = 8388608; // bytes

/// Rewrites the records of \a source, which are read in batches, one write each.
/// Returns false when \a progress stops it.
bool copyRecords(QIODevice* source, const DbfTableDescriptor& sourceDescriptor,
                 RecordTransformer& transformer, QIODevice* target, int targetRecordLength,
                 const std::function<bool(int, int)>& progress)
{
    const int recordLength = sourceDescriptor.recordLength;
    const int batchSize = maxBatchSize / recordLength;
    const auto count = static_cast<int>(sourceDescriptor.recordCount);
    QByteArray image = emptyWithRoom(targetRecordLength);
    for (int start = 0; start < count;) {
        const int batch = std::min(batchSize, count - start);
        const QByteArray images = DbfTable::readRecordsData(
            source, start, static_cast<unsigned>(batch), sourceDescriptor);
        const char* record = images.constData();
        for (int i = 0; i < batch; ++i, record += recordLength) {
            image.resize(0);
            transformer.append({record, static_cast<size_t>(recordLength)}, image);
            DbfTable::writeData(target, image, targetRecordLength);
        }
        start += batch;
        if (progress && !progress(start, count))
            return false;
    }
    return count > 0 || !progress || progress(0, 0);
}

} // namespace

bool DbfTable::canCopyTo(const QIODevice* target) const
{
    return m_opened && m_device && target && m_descriptor.recordLength > 0 &&
           m_descriptor.recordCount <= static_cast<quint32>(std::numeric_limits<int>::max()) &&
           !m_device->isTextModeEnabled() && !wouldOverwrite(target, m_device.get());
}

bool DbfTable::copyAndTransform(QIODevice* device, const DbfSchemaTransform& transform)
{
    return copyAndTransform(device, transform, nullptr);
}

bool DbfTable::copyAndTransform(QIODevice* device, const DbfSchemaTransform& transform,
                                const std::function<bool(int done, int total)>& progress)
{
    if (!canCopyTo(device) || !device->open(QIODevice::WriteOnly))
        return false;
    try {
        const DbfTableDescriptor descriptor = transformDescriptor(m_descriptor, transform.schema);
        RecordTransformer transformer(m_schema, transform);
        requireExactWrites(device);
        writeTableStart(device, descriptor, transform.schema);
        if (!copyRecords(m_device.get(), m_descriptor, transformer, device, descriptor.recordLength,
                         progress))
            return false;
        writeEndMarker(device);
        flushWrites(device);
        closeDevice(device);
        return true;
    } catch (DbfTableError) {
        return false;
    }
}

} // namespace dbf
