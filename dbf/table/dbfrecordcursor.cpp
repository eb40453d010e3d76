// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/format/layout_p.h>
#include <dbf/format/recordlayout_p.h>
#include <dbf/table/dbfrecordcursor.h>
#include <dbf/table/dbftable_p.h>
#include <dbf/table/deviceprimitives_p.h>

#include <algorithm>

namespace dbf
{

namespace
{

// Large enough that a seek and a read weigh little beside the records they bring, small enough that
// these are still in the processor's cache when they are looked at.
constexpr int blockSize = 131072; // bytes

bool isImpossible(qint64 first, qint64 count, const DbfTableDescriptor& descriptor)
{
    return first < 0 || first > descriptor.recordCount || count < 0 ||
           first + count > qint64(layout::maxRecordIndex) + 1;
}

bool isSameLayout(const DbfFieldDescriptor& a, const DbfFieldDescriptor& b)
{
    return a.type == b.type && a.length == b.length && a.decimals == b.decimals && a.name == b.name;
}

} // namespace

class DbfRecordCursor::Private
{
public:
    Private(DbfTable& cursorTable, qint64 first, qint64 count);

    bool next()
    {
        bool moved = step();
        while (moved && m_skipsDeleted && isDeleted())
            moved = step();
        return moved;
    }
    void setSkipDeleted(bool skip) { m_skipsDeleted = skip; }
    bool hasRecord() const { return m_current >= 0; }
    bool hasColumn(int column) const
    {
        return hasRecord() &&
               static_cast<unsigned>(column) < static_cast<unsigned>(m_layout.columnCount());
    }
    int index() const { return hasRecord() ? static_cast<int>(m_blockStart + m_current) : -1; }
    bool isDeleted() const { return hasRecord() && isDeletedImage(m_image); }
    std::string_view bytes(int column) const
    {
        return hasColumn(column) ? m_layout.slice(m_image, column) : std::string_view();
    }
    QVariant value(int column)
    {
        if (!hasColumn(column))
            return {};
        return m_layout.callsOut(column) ? valueFromCaller(column)
                                         : m_layout.value(bytes(column), column);
    }
    QStringView text(int column)
    {
        if (!hasColumn(column))
            return {};
        return m_layout.textCodec().isTabulated()
                   ? m_layout.textCodec().decode(bytes(column), m_text)
                   : textFromCaller(column);
    }
    DbfRecord record();
    bool hasError() const { return m_failed; }

private:
    QVariant valueFromCaller(int column);
    QStringView textFromCaller(int column);
    bool step();
    bool readBlock();
    bool tableHasOtherLayout() const;

    bool fail();

    DbfTable& m_table;
    const DbfTableDescriptor m_descriptor;
    const DbfSchema m_schema;
    RecordLayout m_layout;
    QByteArray m_block;
    std::string_view m_image; // of the current record
    TextScratch m_text = {};
    qint64 m_blockStart; // index of the first record in the block
    qint64 m_recordsInBlock = 0;
    qint64 m_current = -1; // the current record's place in the block, -1 for none
    qint64 m_remaining;    // records behind the block that are still to be visited
    bool m_endsWithError;  // once the records in the block are visited
    bool m_failed = false;
    bool m_skipsDeleted = false;
};

DbfRecordCursor::Private::Private(DbfTable& cursorTable, qint64 first, qint64 count)
    : m_table(cursorTable)
    , m_descriptor(cursorTable.descriptor())
    , m_schema(cursorTable.schema())
    , m_layout(m_schema)
    , m_blockStart(first)
    , m_remaining(count)
    , m_endsWithError(isImpossible(first, count, m_descriptor))
{
}

bool DbfRecordCursor::Private::step()
{
    if (m_failed)
        return false;
    if (m_current + 1 == m_recordsInBlock && !readBlock())
        return false;
    ++m_current;
    const int length = m_descriptor.recordLength;
    m_image = {m_block.constData() + m_current * length, static_cast<size_t>(length)};
    return true;
}

// While a caller's converter or codec runs, which may move the cursor on, the block is kept as it
// is by sharing it: the next one is then read into bytes of its own.
Q_NEVER_INLINE QVariant DbfRecordCursor::Private::valueFromCaller(int column)
{
    const QByteArray block = m_block;
    return m_layout.value(bytes(column), column);
}

Q_NEVER_INLINE QStringView DbfRecordCursor::Private::textFromCaller(int column)
{
    const QByteArray block = m_block;
    return m_layout.textCodec().decode(bytes(column), m_text);
}

// Leaves the cursor before the first record of the next block.
bool DbfRecordCursor::Private::readBlock()
{
    m_blockStart += m_recordsInBlock;
    m_recordsInBlock = 0;
    m_current = -1;
    if (m_endsWithError)
        return fail();
    if (m_remaining == 0)
        return false;
    if (tableHasOtherLayout())
        return fail();

    const int recordLength = m_descriptor.recordLength;
    const qint64 wanted =
        recordLength == 0 ? m_remaining
                          : std::min<qint64>(m_remaining, std::max(blockSize / recordLength, 1));
    try {
        requirePlausibleCount(m_table.device(), wanted, m_descriptor);
        seekForReading(m_table.device(), static_cast<int>(m_blockStart), m_descriptor);
    } catch (DbfTable::DbfTableError) {
        return fail();
    }
    if (m_block.size() < wanted * recordLength)
        m_block.resize(static_cast<int>(wanted * recordLength));
    const qint64 size = readUpTo(m_table.device(), m_block.data(), wanted * recordLength);
    m_recordsInBlock = recordLength == 0 ? wanted : std::max<qint64>(size, 0) / recordLength;
    m_remaining -= m_recordsInBlock;
    m_endsWithError = m_recordsInBlock < wanted;
    return m_recordsInBlock > 0 || fail();
}

bool DbfRecordCursor::Private::tableHasOtherLayout() const
{
    const DbfTableDescriptor& now = m_table.descriptor();
    if (now.headerLength != m_descriptor.headerLength ||
        now.recordLength != m_descriptor.recordLength)
        return true;
    const QVector<DbfColumn>& before = m_schema.columns;
    const QVector<DbfColumn>& columns = m_table.schema().columns;
    return columns.constData() != before.constData() &&
           !std::equal(columns.cbegin(), columns.cend(), before.cbegin(), before.cend(),
                       [](const DbfColumn& a, const DbfColumn& b) {
                           return isSameLayout(a.descriptor, b.descriptor);
                       });
}

bool DbfRecordCursor::Private::fail()
{
    m_failed = true;
    return DbfTable::Private::readingFailed(m_table, m_blockStart, 1);
}

DbfRecord DbfRecordCursor::Private::record()
{
    if (!hasRecord())
        return {-1, QVector<QVariant>(m_layout.columnCount())};
    const QByteArray block = m_block;
    return m_layout.parse(m_image, index());
}

DbfRecordCursor::DbfRecordCursor(DbfTable& table, int first)
    : d(std::make_unique<Private>(table, first,
                                  std::max<qint64>(table.recordCount() - qint64(first), 0)))
{
}

DbfRecordCursor::DbfRecordCursor(DbfTable& table, int first, int count)
    : d(std::make_unique<Private>(table, first, count))
{
}

DbfRecordCursor::DbfRecordCursor(DbfRecordCursor&& other) noexcept = default;
DbfRecordCursor& DbfRecordCursor::operator=(DbfRecordCursor&& other) noexcept = default;
DbfRecordCursor::~DbfRecordCursor() = default;

bool DbfRecordCursor::next()
{
    return d->next();
}

void DbfRecordCursor::setSkipDeleted(bool skip)
{
    d->setSkipDeleted(skip);
}

int DbfRecordCursor::index() const
{
    return d->index();
}

bool DbfRecordCursor::isDeleted() const
{
    return d->isDeleted();
}

std::string_view DbfRecordCursor::bytes(int column) const
{
    return d->bytes(column);
}

QVariant DbfRecordCursor::value(int column) const
{
    return d->value(column);
}

QStringView DbfRecordCursor::text(int column) const
{
    return d->text(column);
}

DbfRecord DbfRecordCursor::record() const
{
    return d->record();
}

bool DbfRecordCursor::hasError() const
{
    return d->hasError();
}

} // namespace dbf
