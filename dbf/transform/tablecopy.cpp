// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/format/metadata_p.h>
#include <dbf/format/tableheader_p.h>
#include <dbf/table/dbftable_p.h>
#include <dbf/table/deviceidentity_p.h>
#include <dbf/table/deviceprimitives_p.h>
#include <dbf/table/plainfile_p.h>
#include <dbf/transform/dbfcopyoptions.h>
#include <dbf/transform/recordtransformer_p.h>

#include <QtCore/QFile>

#include <algorithm>
#include <utility>

namespace dbf
{

namespace
{

constexpr int maxBatchSize = 8388608; // bytes

// What is read and written at a time between plain files, small enough to stay in the processor's
// cache.
constexpr int plainBlockSize = 131072; // bytes

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

    /// Says why the copy failed with \a code.
    QString whyFailed(DbfTableError code) const;

    /// Writes the whole copy onto \a target. Returns false when progress stops it.
    bool run(QIODevice* target);

private:
    void requireSameTable() const;
    void writeStart(NewTableDevice& device);
    bool copyRecords(QIODevice* target);
    void requireReadable(int first, int count);
    QByteArray readImages(int first, int count);
    void copyBatch(int first, int count, QIODevice* target);
    bool copyWithinSystem(int first, int count, QFile& source, QFile& target);
    void copyImages(const QByteArray& images, int first, QIODevice* target);
    void appendImage(std::string_view image);
    void writeGathered(QIODevice* target);
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
    int m_readStart = 0; // of the last images read
    int m_readCount = 0;
    bool m_isComplete = false;
    QString m_targetText;         // what the target said before it was given up
    QByteArray m_block;           // images that are still to be written, and one under way
    ContainerSize m_gathered = 0; // bytes of the former
    int m_writeSize = 1;          // bytes from which on they are written
    int m_targetRecordLength = 0;
    bool m_isRefusedBySystem = false;
};

bool DbfTable::Private::Copy::count()
{
    if (!m_options.skipDeleted)
        return true;
    m_kept = 0;
    const int batchSize = maxBatchSize / m_source.recordLength;
    for (int start = 0; start < m_count; start += batchSize) {
        const QByteArray images = readImages(start, std::min(batchSize, m_count - start));
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
    try {
        writeStart(device);
        if (!copyRecords(target))
            return false;
        requireSameTable();
        m_isComplete = true;
        if (m_written != m_kept)
            throw WriteError;
        device.finish();
        return true;
    } catch (DbfTableError) {
        m_targetText = errortext::ofFailedWrite(target);
        throw;
    }
}

bool DbfTable::Private::Copy::copyRecords(QIODevice* target)
{
    const int batchSize = maxBatchSize / m_source.recordLength;
    int done = 0;
    do { // A table without records is one batch of none.
        const int batch = std::min(batchSize, m_count - done);
        if (batch > 0)
            copyBatch(done, batch, target);
        done += batch;
        if (!goesOn(done))
            return false;
    } while (done < m_count);
    return true;
}

void DbfTable::Private::Copy::writeStart(NewTableDevice& device)
{
    const DbfSchema& schema = m_transform.schema;
    DbfTableDescriptor descriptor = format::copiedDescriptor(m_source, schema);
    descriptor.recordCount = m_kept;
    descriptor.codePage = m_options.codePage.value_or(m_source.codePage);
    m_targetRecordLength = descriptor.recordLength;
    m_block = emptyWithRoom(plainBlockSize + 2 * m_targetRecordLength);

    QByteArray header = serializeTableDescriptor(descriptor);
    QByteArray fields = serializeSchema(schema);
    QByteArray backLink(format::backLinkLength(descriptor), '\0');
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

void DbfTable::Private::Copy::requireReadable(int first, int count)
{
    requireSameTable();
    m_readStart = first;
    m_readCount = count;
}

QByteArray DbfTable::Private::Copy::readImages(int first, int count)
{
    requireReadable(first, count);
    return readRecordsData(m_table.device(), first, static_cast<unsigned>(count), m_source);
}

// Devices of a caller's own see one read for the batch, and one write for each record.
void DbfTable::Private::Copy::copyBatch(int first, int count, QIODevice* target)
{
    QFile* const source = PlainFile::of(m_table.device());
    QFile* const file = PlainFile::of(target);
    const bool isPlain = source && file && !file->isSequential() &&
                         format::recordOffset(first + count, m_source) <= source->size();
    if (isPlain && copyWithinSystem(first, count, *source, *file))
        return;
    const int atOnce = isPlain ? std::max(plainBlockSize / m_source.recordLength, 1) : count;
    m_writeSize = isPlain ? plainBlockSize : 1;
    try {
        for (int done = 0; done < count; done += atOnce)
            copyImages(readImages(first + done, std::min(atOnce, count - done)), first + done,
                       target);
        writeGathered(target);
    } catch (...) {
        if (m_gathered > 0)
            target->write(m_block.constData(), m_gathered); // as far as records were made
        throw;
    }
    drainWrites(target);
}

// Nobody but the system then sees the records at all.
bool DbfTable::Private::Copy::copyWithinSystem(int first, int count, QFile& source, QFile& target)
{
    if (m_isRefusedBySystem || m_options.skipDeleted ||
        m_targetRecordLength != m_source.recordLength || !m_transformer.isIdentity())
        return false;
    requireReadable(first, count);
    seekForReading(&source, first, m_source);
    flushWrites(&target);
    const qint64 start = source.pos();
    const qint64 size = qint64(count) * m_source.recordLength;
    m_isRefusedBySystem = !PlainFile::copy(source, start, target, size);
    if (m_isRefusedBySystem || !seekTo(&source, start + size))
        return false;
    m_written += static_cast<quint32>(count);
    return true;
}

void DbfTable::Private::Copy::copyImages(const QByteArray& images, int first, QIODevice* target)
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
        appendImage(image);
        ++m_written;
        if (m_gathered >= m_writeSize)
            writeGathered(target);
    }
}

void DbfTable::Private::Copy::appendImage(std::string_view image)
{
    m_block.resize(m_gathered);
    m_transformer.append(image, m_block);
    if (m_block.size() - m_gathered < m_targetRecordLength)
        throw WriteError;
    m_gathered += m_targetRecordLength;
    m_block.resize(m_gathered);
}

// What could not be written is not tried again.
void DbfTable::Private::Copy::writeGathered(QIODevice* target)
{
    if (const ContainerSize size = std::exchange(m_gathered, 0))
        writeData(target, m_block, size);
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

QString DbfTable::Private::whyNoCopy(const DbfTable& table, const QIODevice* target)
{
    if (!table.m_opened)
        return QStringLiteral("it is not open");
    if (!target)
        return QStringLiteral("there is no target");
    if (wouldOverwrite(target, table.device()))
        return QStringLiteral("the target is the table's own file");
    return errortext::obstacle(table.device(), false);
}

QString DbfTable::Private::Copy::whyFailed(DbfTableError code) const
{
    if (of(m_table).openings != m_opening)
        return QStringLiteral("it was opened anew meanwhile");
    if (!of(m_table).valueProblems.isEmpty()) {
        const DbfValueProblem& problem = of(m_table).valueProblems.first();
        return errortext::records(problem.record, 1, m_count) + QStringLiteral(", ") +
               problem.text();
    }
    if (code == HeaderTooLongError)
        return errortext::ofCode(code);
    if (code == ReadError)
        return unreadable(m_table, m_readStart, m_readCount);
    if (m_isComplete && m_written != m_kept)
        return QStringLiteral("records were marked deleted or taken back meanwhile");
    return m_targetText;
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
    Private::of(*this).copyErrorText.clear();
    Private::of(*this).reason.clear();
    const auto fails = [&](const QString& reason) {
        Private::of(*this).copyErrorText =
            errortext::because(QStringLiteral("The table cannot be copied"), reason);
        return false;
    };
    if (!Private::canCopy(*this, device))
        return fails(Private::whyNoCopy(*this, device));
    Private::Copy copy(*this, transform, options);
    try {
        if (!copy.count())
            return false;
        if (!device->open(QIODevice::WriteOnly))
            return fails(errortext::ofDevice(device));
        return copy.run(device);
    } catch (DbfTableError code) {
        return fails(copy.whyFailed(code));
    }
}

} // namespace dbf
