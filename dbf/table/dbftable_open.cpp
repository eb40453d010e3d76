// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/table/dbftable_p.h>
#include <dbf/table/deviceprimitives_p.h>

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QFileDevice>
#include <QtCore/QFileInfo>

namespace dbf
{

bool DbfTable::open(QIODevice::OpenMode mode)
{
    if (hasError())
        return false;
    if (!m_device)
        return error(OpenError);
    const bool isRefused = !(mode & QIODevice::ReadWrite) && warnsWithoutAccess(device());
    if (!m_device->isOpen() && (isRefused || !m_device->open(mode)))
        return error(OpenError);

    return Private::recordingErrors(*this, [this] {
        requireExactReads(device());
        const DbfTableDescriptor header = parseTableDescriptor(readTableDescriptorData(device()));
        m_descriptor = header;
        Private& kept = Private::of(*this);
        ++kept.changes;
        kept.fileEnd.reset();
        if (!m_schema.codec)
            m_schema.setCodec(codecByCodePage(header.codePage));
        const QByteArray block = readSchemaData(device(), header);
        DbfSchema schema(parseFieldDescriptors(block, header, m_schema.codec), m_schema.codec);
        Private::chooseConverters(*this, header, schema);
        m_descriptor = header; // Codec and choice may have opened another table meanwhile.
        m_schema.columns = schema.columns;
        m_opened = true;
        ++kept.openings;
    });
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
    if (!hasError() && (mode & QIODevice::ReadWrite) == QIODevice::WriteOnly)
        return error(ReadError);
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

} // namespace dbf
