// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/valuechecker_p.h>
#include <dbf/encoding/bytes_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/format/tableheader_p.h>
#include <dbf/model/samevalue_p.h>
#include <dbf/table/dbftable_p.h>
#include <dbf/table/deviceprimitives_p.h>

#include <QtCore/QtEndian>

#include <algorithm>
#include <utility>

namespace dbf
{

namespace
{

constexpr int appendBlockSize = 65536; // bytes

qint64 endOfRecords(const DbfTableDescriptor& descriptor)
{
    return format::recordOffset(descriptor.recordCount, descriptor);
}

} // namespace

/// How table and device stand before converters run, which may use both: what was true then may
/// have to be made true again before anything is written.
class DbfTable::Private::Standing
{
public:
    explicit Standing(DbfTable& table)
        : m_table(&table)
        , m_changes(of(table).changes)
        , m_appends(of(table).appends)
        , m_position(table.m_device->pos())
    {
    }

    /// Throws WriteError when the table was opened anew or closed: the record was meant for what it
    /// was.
    void requireSameTable() const
    {
        if (of(*m_table).changes != m_changes)
            refuse(*m_table, QStringLiteral("the table was opened anew or closed meanwhile"));
        requireExactWrites(m_table->device());
    }

    /// Whether other records were written behind the last one.
    bool hasAppended() const { return of(*m_table).appends != m_appends; }

    /// Whether the device stands elsewhere. It is asked, and not told where to stand, since each
    /// seek is a call that a caller's own device sees.
    bool hasMoved() const { return hasAppended() || m_table->m_device->pos() != m_position; }

private:
    DbfTable* m_table;
    quint64 m_changes;
    quint64 m_appends;
    qint64 m_position;
};

/// Runs \a operation, which writes \a records, unless they have problems; records the code that
/// either throws. Returns whether they were written.
template <typename Operation>
bool DbfTable::Private::writingChecked(DbfTable& table, const QVector<DbfRecord>& records,
                                       qint64 first, Operation operation)
{
    bool isRefused = false;
    const bool written = recordingErrors(
        table,
        [&] {
            isRefused = hasProblems(table, records);
            if (!isRefused)
                operation();
        },
        [&](DbfTableError) { return unwritable(table, first, records.size()); });
    return written && !isRefused;
}

bool DbfTable::updateRecord(const DbfRecord& record)
{
    const int index = record.index();
    if (index < 0 || static_cast<quint32>(index) >= m_descriptor.recordCount)
        return false;
    return Private::writingChecked(*this, {record}, index, [this, index, record] {
        requireExactWrites(device());
        Private::seekSlot(*this, index);
        Private::usingLayout(*this, [&](RecordLayout& layout) {
            const Private::Standing standing(*this);
            const QByteArray& image = layout.image(record);
            standing.requireSameTable();
            if (standing.hasMoved())
                Private::seekSlot(*this, index);
            Private::requireWholeImage(*this, image);
            Private::overwrite(*this, image, m_descriptor.recordLength);
        });
    });
}

/// The fields of one record whose bytes change, and what becomes of them.
class DbfTable::Private::ChangedFields
{
public:
    /// Looks at the values that change with \a checker, unless it is null.
    ChangedFields(RecordLayout& layout, const DbfRecord& record, const QByteArray& image,
                  const ValueChecker* checker)
        : m_isDeleted(record.isDeleted()), m_checker(checker)
    {
        const int count = std::min(layout.columnCount(), saturated(record.values.size()));
        for (int column = 0; column < count; ++column)
            compare(layout, viewOf(image), column, record.values.at(column));
    }

    const QVector<DbfValueProblem>& problems() const { return m_problems; }

    /// Returns \a image with the changes made.
    QByteArray appliedTo(QByteArray image) const
    {
        for (const Change& change : m_changes)
            image.replace(change.offset, change.bytes.size(), change.bytes);
        if (!image.isEmpty() && isDeletedImage(viewOf(image)) != m_isDeleted)
            image[0] = m_isDeleted ? layout::deletedFlag : layout::liveFlag;
        return image;
    }

private:
    struct Change {
        int offset;
        QByteArray bytes;
    };

    void compare(RecordLayout& layout, std::string_view image, int column, const QVariant& value)
    {
        const std::string_view before = layout.slice(image, column);
        const QVariant old = layout.value(before, column);
        if (isSameValue(old, value))
            return;
        if (m_checker && !isWritable(value, layout.column(column)))
            return m_problems.append(*m_checker->problemOf(value, column, 0));
        QByteArray bytes;
        layout.appendValue(value, column, bytes);
        if (old.userType() == value.userType() && old.userType() >= QMetaType::User) {
            QByteArray oldBytes;
            layout.appendValue(old, column, oldBytes);
            if (bytes == oldBytes)
                return;
        }
        if (m_checker) {
            if (const auto problem = m_checker->problemOf(value, column, 0))
                return m_problems.append(*problem);
        }
        if (viewOf(bytes) == before)
            return;
        if (static_cast<size_t>(bytes.size()) != before.size() ||
            bytes.size() != layout.column(column).descriptor.length)
            throw WriteError;
        m_changes.append({layout.offset(column), bytes});
    }

    QVector<Change> m_changes;
    QVector<DbfValueProblem> m_problems;
    bool m_isDeleted;
    const ValueChecker* m_checker;
};

bool DbfTable::updateValues(const DbfRecord& record)
{
    const int index = record.index();
    if (index < 0 || static_cast<quint32>(index) >= m_descriptor.recordCount)
        return false;
    Private::of(*this).valueProblems.clear();
    const bool written = Private::recordingErrors(
        *this,
        [this, index, record] {
            requireExactWrites(device());
            QByteArray image = Private::readImage(*this, index);
            Private::usingLayout(*this, [&](RecordLayout& layout) {
                const Private::Standing standing(*this);
                const quint64 updates = Private::of(*this).updates;
                std::optional<ValueChecker> checker;
                if (isCheckingValues())
                    checker.emplace(m_schema);
                const Private::ChangedFields changes(layout, record, image,
                                                     checker ? &*checker : nullptr);
                standing.requireSameTable();
                Private::of(*this).valueProblems = changes.problems();
                if (!changes.problems().isEmpty())
                    return;
                if (updates != Private::of(*this).updates)
                    image = Private::readImage(*this, index);
                const QByteArray changed = changes.appliedTo(image);
                if (changed == image)
                    return;
                Private::seekSlot(*this, index);
                Private::overwrite(*this, changed, saturated(changed.size()));
            });
        },
        [&](DbfTableError code) {
            return code == ReadError ? Private::unreadable(*this, index, 1)
                                     : Private::unwritable(*this, index, 1);
        });
    return written && valueProblems().isEmpty();
}

bool DbfTable::setRecordDeleted(int index, bool deleted)
{
    if (index < 0 || static_cast<quint32>(index) >= m_descriptor.recordCount)
        return false;
    return Private::recordingErrors(
        *this,
        [this, index, deleted] {
            requireExactWrites(device());
            Private::seekSlot(*this, index);
            const char flag = deleted ? layout::deletedFlag : layout::liveFlag;
            Private::overwrite(*this, QByteArray(layout::deletionFlagSize, flag),
                               layout::deletionFlagSize);
        },
        [&](DbfTableError) { return Private::unwritable(*this, index, 1); });
}

bool DbfTable::appendRecord(const DbfRecord& record)
{
    return Private::writingChecked(*this, {record}, m_descriptor.recordCount, [this, record] {
        Private::seekSlotForAppending(*this, 1);
        Private::usingLayout(*this, [&](RecordLayout& layout) {
            const Private::Standing standing(*this);
            const QByteArray& image = layout.image(record);
            standing.requireSameTable();
            if (standing.hasMoved())
                Private::seekSlotForAppending(*this, 1);
            Private::requireWholeImage(*this, image);
            Private::writingWhole(*this, [&] {
                ++Private::of(*this).appends;
                Private::writeLastImage(*this, image);
                Private::finishAppending(*this, 1);
            });
        });
    });
}

bool DbfTable::appendRecords(const QVector<DbfRecord>& records)
{
    if (records.isEmpty())
        return true;
    return Private::writingChecked(*this, records, m_descriptor.recordCount, [this, records] {
        Private::seekSlotForAppending(*this, records.size());
        try {
            Private::writingWhole(*this, [&] {
                Private::writeImages(*this, records);
                if (!Private::of(*this).plainFile.write(device(), &layout::endMarker, 1))
                    writeEndMarker(device());
                Private::finishAppending(*this, records.size());
            });
        } catch (...) {
            Private::restoreEndMarker(*this);
            throw;
        }
    });
}

bool DbfTable::create(const DbfSchema& schema)
{
    return create(schema, codePageByCodec(schema.codec));
}

bool DbfTable::create(const DbfSchema& schema, DbfCodePage codePage)
{
    if (!m_device || !m_device->open(QIODevice::WriteOnly))
        return Private::openingFailed(*this);
    DbfSchema named = schema;
    if (!named.codec)
        named.codec = codecByLanguageDriver(static_cast<quint8>(codePage));
    NewTableDevice target(device());
    return Private::recordingErrors(
        *this,
        [&] {
            const DbfTableDescriptor header = emptyTableDescriptor(codePage, schema);
            target.start(serializeTableDescriptor(header), serializeSchema(named), {});
            target.finish();
        },
        [&](DbfTableError code) {
            return errortext::because(errortext::ofCode(code), errortext::obstacle(device(), true));
        });
}

bool DbfTable::Private::hasProblems(DbfTable& table, const QVector<DbfRecord>& records)
{
    constexpr int mostRecords = 100;
    of(table).valueProblems.clear();
    if (!of(table).isCheckingValues)
        return false;
    const quint64 changes = of(table).changes;
    const ValueChecker checker(table.m_schema);
    QVector<DbfValueProblem> problems;
    int bad = 0;
    for (int i = 0; i < saturated(records.size()) && bad < mostRecords; ++i) {
        const QVector<DbfValueProblem> found = checker.problemsOf(records.at(i), i);
        bad += found.isEmpty() ? 0 : 1;
        problems += found;
    }
    if (of(table).changes != changes)
        refuse(table, QStringLiteral("the table was opened anew or closed meanwhile"));
    of(table).valueProblems = problems;
    return bad > 0;
}

void DbfTable::Private::refuse(DbfTable& table, const QString& reason)
{
    of(table).reason = reason;
    throw WriteError;
}

void DbfTable::Private::requireWholeImage(DbfTable& table, const QByteArray& image)
{
    if (image.size() < table.m_descriptor.recordLength)
        refuse(table, QStringLiteral("its converters give fewer bytes than a record has"));
}

void DbfTable::Private::overwrite(DbfTable& table, const QByteArray& bytes, int size)
{
    ++of(table).updates;
    writingWhole(table, [&] {
        write(table, bytes, size);
        flushWrites(table.device());
    });
}

void DbfTable::Private::write(DbfTable& table, const QByteArray& bytes, ContainerSize size)
{
    const bool isWhole = size > 0 && size <= bytes.size();
    if (!isWhole || !of(table).plainFile.write(table.device(), bytes.constData(), size))
        writeData(table.device(), bytes, size);
}

void DbfTable::Private::writeLastImage(DbfTable& table, const QByteArray& image)
{
    const int length = table.m_descriptor.recordLength;
    PlainFile& file = of(table).plainFile;
    if (file.isReady(table.device())) {
        QByteArray bytes = emptyWithRoom(length + layout::endMarkerSize);
        bytes.append(image.constData(), length).append(layout::endMarker);
        if (file.write(table.device(), bytes.constData(), bytes.size()))
            return;
    }
    writeData(table.device(), image, length);
    writeEndMarker(table.device());
}

void DbfTable::Private::seekSlot(DbfTable& table, int index)
{
    std::optional<qint64>& end = of(table).fileEnd;
    if (!end)
        end = endOfFile(table.device());
    if (recordOffset(index, table.m_descriptor) > *end) {
        of(table).reason = QStringLiteral("the file ends before its place");
        throw ReadError;
    }
    if (!of(table).plainFile.standAt(table.device(), recordOffset(index, table.m_descriptor)))
        seekRecord(table.device(), index, table.m_descriptor, 0);
}

// Beyond what an int numbers no index reaches the slots, and a wrapped one would name a record that
// exists.
void DbfTable::Private::seekSlotForAppending(DbfTable& table, qint64 count)
{
    requireExactWrites(table.device());
    if (table.m_descriptor.recordCount + count - 1 > layout::maxRecordIndex)
        throw ReadError;
    seekSlot(table, static_cast<int>(table.m_descriptor.recordCount));
}

/// Writes images behind the last record, block by block.
class DbfTable::Private::ImageWriter
{
public:
    ImageWriter(DbfTable& table, qint64 count)
        : m_table(table)
        , m_recordLength(table.m_descriptor.recordLength)
        , m_count(count)
        , m_standing(table)
        , m_block(emptyWithRoom(appendBlockSize + m_recordLength))
    {
    }

    void add(RecordLayout& layout, const DbfRecord& record)
    {
        const ContainerSize start = m_block.size();
        layout.append(record, m_block);
        if (m_block.size() - start < m_recordLength)
            refuse(m_table, QStringLiteral("its converters give fewer bytes than a record has"));
        m_block.resize(start + m_recordLength);
        if (m_block.size() >= appendBlockSize)
            writeBlock();
    }

    /// Writes what is gathered. Leaves the device where the next byte goes.
    void writeBlock()
    {
        m_standing.requireSameTable();
        if (m_standing.hasMoved())
            standAgain();
        if (m_block.isEmpty())
            return;
        of(m_table).missingEndMarker = endOfRecords(m_table.m_descriptor);
        ++of(m_table).appends;
        write(m_table, m_block, m_block.size());
        m_written += m_block.size();
        m_block.resize(0);
        m_standing = Standing(m_table);
    }

private:
    // Once blocks are out, records that others appended lie where they lay.
    void standAgain()
    {
        if (m_written == 0)
            return seekSlotForAppending(m_table, m_count);
        if (m_standing.hasAppended())
            refuse(m_table, QStringLiteral("other records were appended meanwhile"));
        if (!seekTo(m_table.device(), endOfRecords(m_table.m_descriptor) + m_written))
            throw ReadError;
    }

    DbfTable& m_table;
    int m_recordLength;
    qint64 m_count;
    Standing m_standing;
    QByteArray m_block;
    qint64 m_written = 0;
};

void DbfTable::Private::writeImages(DbfTable& table, const QVector<DbfRecord>& records)
{
    ImageWriter writer(table, records.size());
    usingLayout(table, [&](RecordLayout& layout) {
        for (const DbfRecord& record : records)
            writer.add(layout, record);
        writer.writeBlock();
    });
}

bool DbfTable::Private::writeCountPlainly(DbfTable& table)
{
    char bytes[layout::recordCountSize];
    qToLittleEndian<quint32>(table.m_descriptor.recordCount, bytes);
    PlainFile& file = of(table).plainFile;
    return file.standAt(table.device(), layout::recordCountOffset) &&
           file.write(table.device(), bytes, layout::recordCountSize);
}

// The count grows last: a table that is cut off before never counts a record that is not whole.
void DbfTable::Private::finishAppending(DbfTable& table, qint64 count)
{
    QIODevice* const device = table.device();
    flushWrites(device);
    Private& kept = of(table);
    kept.missingEndMarker.reset();
    DbfTableDescriptor& header = table.m_descriptor;
    header.recordCount += static_cast<quint32>(count);
    kept.fileEnd = std::max(*kept.fileEnd, endOfRecords(header) + layout::endMarkerSize);
    if (writeCountPlainly(table))
        return;
    updateRecordCount(device, header.recordCount);
    try {
        flushWrites(device);
    } catch (DbfTableError) {
        dropGatheredWrites(device); // A count that is not written goes unnoticed.
    }
}

void DbfTable::Private::restoreEndMarker(DbfTable& table)
{
    const std::optional<qint64> position = std::exchange(of(table).missingEndMarker, std::nullopt);
    if (!position || !seekTo(table.device(), *position))
        return;
    try {
        writingWhole(table, [&] {
            writeEndMarker(table.device());
            flushWrites(table.device());
        });
    } catch (DbfTableError) {
        // The failure that brought us here is the one to report.
        return;
    }
}

} // namespace dbf
