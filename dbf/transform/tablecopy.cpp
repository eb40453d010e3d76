// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/format/metadata_p.h>
#include <dbf/table/dbftable_p.h>
#include <dbf/table/deviceidentity_p.h>
#include <dbf/table/deviceprimitives_p.h>
#include <dbf/transform/dbfcopyoptions.h>
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
    Copy(DbfTable& table, const DbfSchemaTransform& transform, const DbfCopyOptions& options)
        : m_table(table)
        , m_opening(of(table).openings)
        , m_source(table.descriptor())
        , m_sourceSchema(table.schema())
        , m_transform(transform)
        , m_options(options)
        , m_transformer(m_sourceSchema, m_transform)
        , m_checker(m_transform.schema)
        , m_count(static_cast<int>(m_source.recordCount))
        , m_kept(m_source.recordCount)
    {
    }

    /// Counts the records to keep, where not all are. Returns false when progress stops it.
    bool count();

    /// Writes the whole copy onto \a target. Returns false when progress stops it.
    bool run(QIODevice* target);

private:
    void requireSameTable() const;
    void writeStart(NewTableDevice& device);
    QByteArray readBatch(int first, int count) const;
    void copyBatch(const QByteArray& images, int first, QIODevice* target);
    void requireKeptValues(std::string_view image, int index);
    bool isKept(const char* image) const
    {
        return !m_options.skipDeleted || *image != layout::deletedFlag;
    }
    bool goesOn(int done) const { return !m_options.progress || m_options.progress(done, m_count); }

    DbfTable& m_table;
    const quint64 m_opening;
    const DbfTableDescriptor m_source;
    const DbfSchema m_sourceSchema;
    const DbfSchemaTransform m_transform;
    const DbfCopyOptions m_options;
    RecordTransformer m_transformer;
    const ValueChecker m_checker;
    const int m_count;
    quint32 m_kept; // records of the copy
    quint32 m_written = 0;
    QByteArray m_image;
    int m_targetRecordLength = 0;
};

bool DbfTable::Private::Copy::count()
{
    if (!m_options.skipDeleted)
        return true;
    m_kept = 0;
    const int batchSize = maxBatchSize / m_source.recordLength;
    for (int start = 0; start < m_count; start += batchSize) {
        const QByteArray images = readBatch(start, std::min(batchSize, m_count - start));
        const char* const end = images.constData() + images.size();
        for (const char* image = images.constData(); image < end; image += m_source.recordLength)
            m_kept += isKept(image) ? 1 : 0;
        if (!goesOn(0))
            return false;
    }
    return true;
}

bool DbfTable::Private::Copy::run(QIODevice* target)
{
    NewTableDevice device(target);
    writeStart(device);
    const int batchSize = maxBatchSize / m_source.recordLength;
    int done = 0;
    do { // A table without records is one batch of none.
        const int batch = std::min(batchSize, m_count - done);
        if (batch > 0)
            copyBatch(readBatch(done, batch), done, target);
        done += batch;
        if (!goesOn(done))
            return false;
    } while (done < m_count);
    requireSameTable();
    if (m_written != m_kept)
        throw WriteError;
    device.finish();
    return true;
}

void DbfTable::Private::Copy::writeStart(NewTableDevice& device)
{
    const DbfSchema& schema = m_transform.schema;
    DbfTableDescriptor descriptor = transformDescriptor(m_source, schema);
    descriptor.recordCount = m_kept;
    descriptor.codePage = m_options.codePage.value_or(m_source.codePage);
    m_targetRecordLength = descriptor.recordLength;
    m_image = emptyWithRoom(m_targetRecordLength);

    QByteArray header = serializeTableDescriptor(descriptor);
    QByteArray fields = serializeSchema(schema);
    QByteArray backLink(hasDbc(descriptor) ? layout::backLinkSize : 0, '\0');
    if (m_options.keepMetadata) {
        if (!seekTo(m_table.device(), 0))
            throw ReadError;
        const QByteArray start = readData(m_table.device(), m_source.headerLength);
        format::keepHeaderMetadata(start, header);
        format::keepFieldMetadata(start, m_sourceSchema, schema, m_transform.sourceIndexes, fields);
        if (!backLink.isEmpty())
            backLink = format::backLinkArea(start);
    }
    device.start(header, fields, backLink);
}

// What a converter or progress opened meanwhile may be another table, even of the same layout.
void DbfTable::Private::Copy::requireSameTable() const
{
    if (of(m_table).openings != m_opening)
        throw ReadError;
}

QByteArray DbfTable::Private::Copy::readBatch(int first, int count) const
{
    requireSameTable();
    return readRecordsData(m_table.device(), first, static_cast<unsigned>(count), m_source);
}

void DbfTable::Private::Copy::copyBatch(const QByteArray& images, int first, QIODevice* target)
{
    const int recordLength = m_source.recordLength;
    const char* const end = images.constData() + images.size();
    int index = first - 1;
    for (const char* record = images.constData(); record < end; record += recordLength) {
        ++index;
        if (!isKept(record))
            continue;
        const std::string_view image(record, static_cast<size_t>(recordLength));
        if (m_options.checkValues)
            requireKeptValues(image, index);
        m_image.resize(0);
        m_transformer.append(image, m_image);
        writeData(target, m_image, m_targetRecordLength);
        ++m_written;
    }
    drainWrites(target);
}

void DbfTable::Private::Copy::requireKeptValues(std::string_view image, int index)
{
    of(m_table).valueProblems = m_transformer.problemsOf(image, index, m_checker);
    if (!of(m_table).valueProblems.isEmpty())
        throw WriteError;
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
    return copyAndTransform(device, transform, DbfCopyOptions());
}

bool DbfTable::copyAndTransform(QIODevice* device, const DbfSchemaTransform& transform,
                                const std::function<bool(int done, int total)>& progress)
{
    DbfCopyOptions options;
    if (progress)
        options.progress = std::cref(progress);
    return copyAndTransform(device, transform, options);
}

bool DbfTable::copyAndTransform(QIODevice* device, const DbfSchemaTransform& transform,
                                const DbfCopyOptions& options)
{
    Private::of(*this).valueProblems.clear();
    if (!Private::canCopy(*this, device))
        return false;
    Private::Copy copy(*this, transform, options);
    try {
        return copy.count() && device->open(QIODevice::WriteOnly) && copy.run(device);
    } catch (DbfTableError) {
        return false;
    }
}

} // namespace dbf
