// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/table/dbftable_p.h>
#include <dbf/table/deviceidentity_p.h>
#include <dbf/table/deviceprimitives_p.h>
#include <dbf/transform/recordtransformer_p.h>

#include <algorithm>

namespace dbf
{

namespace
{

constexpr int maxBatchSize = 8388608; // bytes

} // namespace

/// One copy of a table. It works on what the table was when it began.
class DbfTable::Private::Copy
{
public:
    using Progress = std::function<bool(int done, int total)>;

    Copy(DbfTable& table, const DbfSchemaTransform& transform, QIODevice* target)
        : m_table(table)
        , m_opening(of(table).openings)
        , m_source(table.descriptor())
        , m_transformer(table.schema(), transform)
        , m_target(target)
    {
    }

    /// Writes the whole copy. Returns false when \a progress stops it.
    bool run(const DbfSchema& targetSchema, const Progress& progress);

private:
    void requireSameTable() const;
    void copyBatch(int first, int count);

    DbfTable& m_table;
    quint64 m_opening;
    DbfTableDescriptor m_source;
    RecordTransformer m_transformer;
    QIODevice* m_target;
    QByteArray m_image;
    int m_targetRecordLength = 0;
};

bool DbfTable::Private::Copy::run(const DbfSchema& targetSchema, const Progress& progress)
{
    NewTableDevice device(m_target);
    const DbfTableDescriptor header = DbfTable::transformDescriptor(m_source, targetSchema);
    device.start(header, targetSchema);
    m_targetRecordLength = header.recordLength;
    m_image = emptyWithRoom(m_targetRecordLength);

    const int batchSize = maxBatchSize / m_source.recordLength;
    const auto count = static_cast<int>(m_source.recordCount);
    for (int start = 0; start < count;) {
        const int batch = std::min(batchSize, count - start);
        copyBatch(start, batch);
        start += batch;
        if (progress && !progress(start, count))
            return false;
    }
    if (count == 0 && progress && !progress(0, 0))
        return false;
    requireSameTable();
    device.finish();
    return true;
}

// What a converter or progress opened meanwhile may be another table, even of the same layout.
void DbfTable::Private::Copy::requireSameTable() const
{
    if (of(m_table).openings != m_opening)
        throw DbfTable::ReadError;
}

void DbfTable::Private::Copy::copyBatch(int first, int count)
{
    requireSameTable();
    const int recordLength = m_source.recordLength;
    const QByteArray images =
        DbfTable::readRecordsData(m_table.device(), first, static_cast<unsigned>(count), m_source);
    const char* record = images.constData();
    for (int i = 0; i < count; ++i, record += recordLength) {
        m_image.resize(0);
        m_transformer.append({record, static_cast<size_t>(recordLength)}, m_image);
        DbfTable::writeData(m_target, m_image, m_targetRecordLength);
    }
    drainWrites(m_target);
}

bool DbfTable::Private::canCopy(const DbfTable& table, const QIODevice* target)
{
    const DbfTableDescriptor& header = table.m_descriptor;
    return table.m_opened && table.m_device && target && header.recordLength > 0 &&
           header.recordCount <= static_cast<quint32>(layout::maxRecordIndex) &&
           !table.m_device->isTextModeEnabled() && !wouldOverwrite(target, table.device());
}

bool DbfTable::copyAndTransform(QIODevice* device, const DbfSchemaTransform& transform)
{
    return copyAndTransform(device, transform, nullptr);
}

bool DbfTable::copyAndTransform(QIODevice* device, const DbfSchemaTransform& transform,
                                const std::function<bool(int done, int total)>& progress)
{
    if (!Private::canCopy(*this, device))
        return false;
    Private::Copy copy(*this, transform, device);
    if (!device->open(QIODevice::WriteOnly))
        return false;
    try {
        return copy.run(transform.schema, progress);
    } catch (DbfTableError) {
        return false;
    }
}

} // namespace dbf
