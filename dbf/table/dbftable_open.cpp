// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/format/fielddescriptorblock_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/format/tableheader_p.h>
#include <dbf/table/dbftable_p.h>
#include <dbf/table/deviceprimitives_p.h>

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QFileDevice>
#include <QtCore/QFileInfo>

#include <algorithm>

namespace dbf
{

bool DbfTable::open(QIODevice::OpenMode mode)
{
    if (hasError())
        return false;
    const bool isRefused = !(mode & QIODevice::ReadWrite) && warnsWithoutAccess(device());
    if (!m_device)
        return Private::openingFailed(*this);
    if (!m_device->isOpen()) {
        if (isRefused || !m_device->open(mode))
            return Private::openingFailed(*this);
        Private::of(*this).plainFile.adopt(device());
    }

    DbfTableDescriptor header;
    return Private::recordingErrors(
        *this,
        [&] {
            requireExactReads(device());
            header = format::parseAnyTableDescriptor(readTableDescriptorData(device()));
            Private::requireAccepted(*this, header, {});
            m_descriptor = header;
            Private& kept = Private::of(*this);
            ++kept.changes;
            kept.fileEnd.reset();
            if (!m_schema.codec)
                m_schema.setCodec(codecByCodePage(header.codePage));
            const QByteArray block = readData(device(), format::fieldsLength(header));
            Private::requireAccepted(*this, header, block);
            m_schema.setCodec(Private::chooseCodec(*this, header));
            DbfSchema schema(format::parseAllFieldDescriptors(block, m_schema.codec),
                             m_schema.codec);
            Private::chooseConverters(*this, header, schema);
            m_descriptor = header; // Codec and choices may have opened another table meanwhile.
            m_schema.columns = schema.columns;
            m_opened = true;
            ++kept.openings;
        },
        [&](DbfTableError code) { return Private::unopenable(*this, header, code); });
}

bool DbfTable::Private::openingFailed(DbfTable& table)
{
    const QIODevice* const device = table.device();
    const QString reason =
        device ? errortext::ofDevice(device) : QStringLiteral("there is no device");
    table.error(OpenError);
    of(table).errorText = errortext::because(errortext::ofCode(OpenError), reason);
    return false;
}

QString DbfTable::Private::unopenable(const DbfTable& table, const DbfTableDescriptor& header,
                                      DbfTableError code)
{
    if (code == UnsupportedVersionError)
        return errortext::ofVersion(header.version);
    const QString obstacle = errortext::obstacle(table.device(), false);
    if (!obstacle.isEmpty())
        return errortext::because(errortext::ofCode(code), obstacle);
    if (header.version == 0)
        return QStringLiteral("This is no table: it has fewer bytes than a header");
    if (format::fieldsLength(header) < 0)
        return QStringLiteral("This is no table: its header cannot have %1 bytes")
            .arg(header.headerLength);
    return QStringLiteral("The table cannot be read: the file ends before its columns do");
}

void DbfTable::Private::requireAccepted(const DbfTable& table, const DbfTableDescriptor& header,
                                        const QByteArray& fields)
{
    constexpr quint8 oldVersion = 0x02;
    constexpr quint8 wideVersion = 0x04;
    if (table.acceptedVersions() == DefaultVersions) {
        if (!supportVersion(static_cast<char>(header.version)))
            throw UnsupportedVersionError;
        return;
    }
    if (!format::hasSameLayout(header.version))
        throw UnsupportedVersionError;
    const QIODevice* const device = table.device();
    const bool isCut =
        !device->isSequential() && device->size() > 0 && header.headerLength > device->size();
    constexpr int leastLength =
        layout::headerSize + layout::fieldDescriptorSize + layout::schemaTerminatorSize;
    if (header.version == oldVersion &&
        (isCut || header.headerLength < leastLength || header.recordLength == 0))
        throw UnsupportedVersionError;
    if (header.version == wideVersion && format::hasWideDescriptors(fields, header))
        throw UnsupportedVersionError;
}

QTextCodec* DbfTable::Private::chooseCodec(DbfTable& table, const DbfTableDescriptor& header)
{
    const CodecChoice choice = of(table).codecChoice; // which may replace itself
    if (!choice || of(table).isCodecImposed)
        return table.m_schema.codec;
    QTextCodec* const codec = choice(header);
    return codec ? codec : codecByCodePage(header.codePage);
}

void DbfTable::Private::chooseConverters(DbfTable& table, const DbfTableDescriptor& header,
                                         DbfSchema& schema)
{
    const ConverterChoice choice = of(table).converterChoice; // which may replace itself
    if (!choice)
        return;
    for (DbfColumn& column : schema.columns) {
        if (DbfFieldConverter* const converter = choice(column.descriptor, header))
            column.setConverter(converter);
    }
}

bool DbfTable::reopen()
{
    // Opening a file for writing alone, or as it may have been opened first, would empty it; the
    // table in it now must not be thrown away for that.
    const QIODevice::OpenMode mode = m_device ? m_device->openMode() : QIODevice::ReadOnly;
    close();
    if (!hasError() && (mode & QIODevice::ReadWrite) == QIODevice::WriteOnly) {
        error(ReadError);
        Private::of(*this).errorText =
            QStringLiteral("The table cannot be opened again: its file is open for writing only");
        return false;
    }
    return open(modeForReopening(mode));
}

bool DbfTable::isActual() const
{
    const auto* const file = qobject_cast<const QFileDevice*>(m_device.get());
    if (!file)
        return true;
    const QString name = file->fileName();
    if (name.isEmpty() || !QFile::exists(name))
        return true;

    const qint64 size = file->size(); // hands on what was gathered, so the path shows it, too
    const QFileInfo named(name);
    if (named.size() != size)
        return false;
    return named.fileTime(QFileDevice::FileModificationTime) ==
           file->fileTime(QFileDevice::FileModificationTime);
}

bool DbfTable::actualize()
{
    return isActual() || reopen();
}

int DbfTable::refreshRecordCount()
{
    const quint32 before = m_descriptor.recordCount;
    const bool read = Private::recordingErrors(
        *this,
        [this] {
            if (!m_opened)
                throw ReadError;
            const quint32 count = readRecordCount(device());
            const auto whole = errortext::wholeRecords(device(), m_descriptor);
            const auto known = static_cast<quint32>(std::min<qint64>(count, whole.value_or(count)));
            Private::of(*this).fileEnd.reset();
            if (known != m_descriptor.recordCount)
                ++Private::of(*this).changes;
            m_descriptor.recordCount = known;
        },
        [this](DbfTableError) {
            return errortext::because(QStringLiteral("The record count cannot be read"),
                                      errortext::obstacle(device(), false));
        });
    if (!read)
        return -1;
    const qint64 added = qint64(m_descriptor.recordCount) - before;
    return static_cast<int>(std::clamp<qint64>(added, 0, layout::maxRecordIndex));
}

} // namespace dbf
