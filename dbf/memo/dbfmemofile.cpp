// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/format/memolayout_p.h>
#include <dbf/memo/dbfmemoconverter.h>
#include <dbf/memo/dbfmemofile.h>
#include <dbf/table/deviceprimitives_p.h>

#include <QtCore/QFileDevice>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <optional>

namespace dbf
{

namespace
{

using layout::memo::Kind;

// What a QString has room for once it is decoded.
constexpr qint64 longestMemo = (1 << 30) - 64; // bytes

constexpr int searchStep = 4096; // bytes

/// Why a memo is not read, for a person.
struct Failure {
    QString reason;
};

[[noreturn]] void fail(const char* reason)
{
    throw Failure{QString::fromLatin1(reason)};
}

// Qt prints a warning when it opens one.
bool isNamelessFile(const QIODevice* device)
{
    const auto* const file = qobject_cast<const QFileDevice*>(device);
    return file && !file->isOpen() && file->fileName().isEmpty();
}

} // namespace

class DbfMemoFile::Private
{
public:
    Private(DbfMemoFile* file, QIODevice* memoDevice, quint8 tableVersion)
        : converter(file), m_device(memoDevice), m_kind(layout::memo::kindOfVersion(tableVersion))
    {
    }

    /// Throws a Failure or what the primitives throw.
    QByteArray memo(quint32 block);

    DbfMemoConverter converter;
    QString error;
    bool wasText = false;

private:
    void openDevice();
    int blockSize();
    qint64 start(quint32 block, int size) const;
    QByteArray headAt(qint64 position);
    QByteArray bytesAt(qint64 position, int size);
    QByteArray body(qint64 position, qint64 length);
    QByteArray typedMemo(qint64 position);
    QByteArray countedMemo(qint64 position);
    QByteArray endedMemo(qint64 position);

    QIODevice* m_device;
    Kind m_kind;
    std::optional<int> m_blockSize; // since the device was opened
};

QByteArray DbfMemoFile::Private::memo(quint32 block)
{
    if (m_kind == Kind::None)
        fail("tables of this version have no memo file");
    openDevice();
    const qint64 position = start(block, blockSize());
    if (m_kind == Kind::Typed)
        return typedMemo(position);
    return m_kind == Kind::Ended ? endedMemo(position) : countedMemo(position);
}

void DbfMemoFile::Private::openDevice()
{
    if (!m_device || isNamelessFile(m_device))
        fail("there is no memo file");
    if (!m_device->isOpen()) {
        m_blockSize.reset();
        if (!m_device->open(QIODevice::ReadOnly))
            throw Failure{QStringLiteral("the memo file does not open, ") +
                          m_device->errorString()};
    }
    requireExactReads(m_device);
}

int DbfMemoFile::Private::blockSize()
{
    if (m_kind == Kind::Ended)
        return layout::memo::endedBlockSize;
    if (!m_blockSize) {
        const bool isTyped = m_kind == Kind::Typed;
        const int offset =
            isTyped ? layout::memo::typedBlockSizeOffset : layout::memo::countedBlockSizeOffset;
        if (m_device->size() < offset + layout::memo::blockSizeSize)
            fail("the memo file has no header");
        const QByteArray bytes = bytesAt(offset, layout::memo::blockSizeSize);
        const int size = isTyped ? qFromBigEndian<quint16>(bytes.constData())
                                 : qFromLittleEndian<quint16>(bytes.constData());
        if (size == 0)
            fail("the memo file says that its blocks have no bytes");
        m_blockSize = size;
    }
    return *m_blockSize;
}

qint64 DbfMemoFile::Private::start(quint32 block, int size) const
{
    const qint64 position = qint64(block) * size;
    if (position < layout::memo::headerSize)
        fail("it would lie in the header of the memo file");
    if (position >= m_device->size())
        fail("it would begin behind the end of the memo file");
    return position;
}

QByteArray DbfMemoFile::Private::bytesAt(qint64 position, int size)
{
    if (!seekTo(m_device, position))
        throw DbfTable::ReadError;
    dropReadAhead(m_device);
    return primitives::readData(m_device, size);
}

QByteArray DbfMemoFile::Private::headAt(qint64 position)
{
    if (m_device->size() - position < layout::memo::headSize)
        fail("the memo file ends within its head");
    return bytesAt(position, layout::memo::headSize);
}

QByteArray DbfMemoFile::Private::body(qint64 position, qint64 length)
{
    if (length > m_device->size() - position)
        fail("it is longer than what is left of the memo file");
    if (length > longestMemo)
        fail("it is too long");
    return primitives::readData(m_device, static_cast<int>(length));
}

QByteArray DbfMemoFile::Private::typedMemo(qint64 position)
{
    const QByteArray head = headAt(position);
    const auto length = qFromBigEndian<quint32>(head.constData() + layout::memo::lengthOffset);
    QByteArray bytes = body(position + layout::memo::headSize, length);
    wasText = qFromBigEndian<quint32>(head.constData()) == layout::memo::textType;
    return bytes;
}

QByteArray DbfMemoFile::Private::countedMemo(qint64 position)
{
    const QByteArray head = headAt(position);
    const auto length = qFromLittleEndian<quint32>(head.constData() + layout::memo::lengthOffset);
    const bool hasMarker = std::equal(std::begin(layout::memo::countedMarker),
                                      std::end(layout::memo::countedMarker), head.cbegin());
    if (!hasMarker || length < layout::memo::headSize)
        fail("no memo begins there");
    QByteArray bytes =
        body(position + layout::memo::headSize, qint64(length) - layout::memo::headSize);
    wasText = true;
    return bytes;
}

QByteArray DbfMemoFile::Private::endedMemo(qint64 position)
{
    qint64 left = std::min(m_device->size() - position, longestMemo);
    QByteArray bytes = bytesAt(position, static_cast<int>(std::min<qint64>(left, searchStep)));
    ContainerSize searched = 0;
    while (true) {
        const ContainerSize end = bytes.indexOf(layout::memo::endMarker, searched);
        if (end >= 0) {
            wasText = true;
            return bytes.left(end);
        }
        left -= bytes.size() - searched;
        if (left == 0)
            fail("it has no end");
        searched = bytes.size();
        bytes +=
            primitives::readData(m_device, static_cast<int>(std::min<qint64>(left, searchStep)));
    }
}

DbfMemoFile::DbfMemoFile(QIODevice* device, quint8 tableVersion)
    : d(std::make_unique<Private>(this, device, tableVersion))
{
}

DbfMemoFile::~DbfMemoFile() = default;

QByteArray DbfMemoFile::read(quint32 block, bool* ok)
{
    const QString intro = QStringLiteral("Memo block %1 cannot be read: ").arg(block);
    QByteArray bytes;
    d->wasText = false;
    bool isRead = false;
    try {
        bytes = d->memo(block);
        isRead = true;
    } catch (const Failure& failure) {
        refuse(intro + failure.reason);
    } catch (DbfTable::DbfTableError) {
        refuse(intro + QStringLiteral("the device does not give its bytes"));
    }
    if (ok)
        *ok = isRead;
    return bytes;
}

void DbfMemoFile::refuse(const QString& reason)
{
    d->wasText = false;
    d->error = reason;
}

bool DbfMemoFile::lastWasText() const
{
    return d->wasText;
}

QString DbfMemoFile::errorString() const
{
    return d->error;
}

void DbfMemoFile::clearError()
{
    d->error.clear();
}

DbfMemoConverter* DbfMemoFile::converter() const
{
    return &d->converter;
}

QString DbfMemoFile::pathBeside(const QString& tablePath, quint8 tableVersion)
{
    const Kind kind = layout::memo::kindOfVersion(tableVersion);
    const QFileInfo table(tablePath);
    if (kind == Kind::None || table.fileName().isEmpty())
        return {};
    const QString stem =
        tablePath.chopped(table.fileName().size() - table.completeBaseName().size()) +
        QLatin1Char('.');
    const QString lower = kind == Kind::Typed ? QStringLiteral("fpt") : QStringLiteral("dbt");
    const QString upper = lower.toUpper();
    constexpr int cases[] = {0, 7, 1, 2, 3, 4, 5, 6}; // bits: the letters in upper case
    for (const int letters : cases) {
        QString path = stem;
        for (int i = 0; i < lower.size(); ++i)
            path += (letters >> i & 1) != 0 ? upper.at(i) : lower.at(i);
        if (QFileInfo(path).isFile())
            return path;
    }
    return {};
}

} // namespace dbf
