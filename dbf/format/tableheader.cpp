// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/format/tableheader_p.h>
#include <dbf/table/dbftable.h> // the error enumeration

#include <QtCore/QtEndian>

#include <algorithm>
#include <array>

namespace dbf::format
{

DbfTableDescriptor parseTableDescriptor(const QByteArray& header)
{
    if (header.size() < layout::headerSize)
        throw DbfTable::ReadError;
    const char version = header.at(layout::versionOffset);
    if (!supportVersion(version))
        throw DbfTable::UnsupportedVersionError;

    const char* const bytes = header.constData();
    DbfTableDescriptor descriptor;
    descriptor.version = static_cast<quint8>(version);
    descriptor.recordCount = qFromLittleEndian<quint32>(bytes + layout::recordCountOffset);
    descriptor.headerLength = qFromLittleEndian<quint16>(bytes + layout::headerLengthOffset);
    descriptor.recordLength = qFromLittleEndian<quint16>(bytes + layout::recordLengthOffset);
    descriptor.codePage = static_cast<DbfCodePage>(header.at(layout::codePageOffset));
    return descriptor;
}

QByteArray serializeTableDescriptor(const DbfTableDescriptor& descriptor)
{
    std::array<char, layout::headerSize> bytes{};
    bytes[layout::versionOffset] = static_cast<char>(descriptor.version);
    qToLittleEndian(descriptor.recordCount, bytes.data() + layout::recordCountOffset);
    qToLittleEndian(descriptor.headerLength, bytes.data() + layout::headerLengthOffset);
    qToLittleEndian(descriptor.recordLength, bytes.data() + layout::recordLengthOffset);
    bytes[layout::codePageOffset] = static_cast<char>(descriptor.codePage);
    return {bytes.data(), layout::headerSize};
}

bool supportVersion(char version)
{
    const auto byte = static_cast<quint8>(version);
    return (byte >= layout::firstPlainVersion && byte <= layout::lastPlainVersion) ||
           (byte >= layout::firstBackLinkVersion && byte <= layout::lastBackLinkVersion);
}

bool hasDbc(const DbfTableDescriptor& descriptor)
{
    return descriptor.version >= layout::firstBackLinkVersion &&
           descriptor.version <= layout::lastBackLinkVersion;
}

int schemaLength(const DbfTableDescriptor& descriptor)
{
    const int backLink = hasDbc(descriptor) ? layout::backLinkSize : 0;
    return descriptor.headerLength - layout::headerSize - layout::schemaTerminatorSize - backLink;
}

qint64 recordOffset(qint64 index, const DbfTableDescriptor& descriptor)
{
    return descriptor.headerLength + index * descriptor.recordLength;
}

int calcRecordLength(const DbfSchema& schema)
{
    qint64 length = layout::deletionFlagSize;
    for (const DbfColumn& column : schema.columns)
        length += column.descriptor.length;
    return saturated(length);
}

int calcSchemaLength(const DbfSchema& schema)
{
    return saturated(qint64(layout::fieldDescriptorSize) * schema.columns.size() +
                     layout::schemaTerminatorSize);
}

int headerLength(const DbfSchema& schema)
{
    if (schema.columns.size() > layout::maxColumnCount)
        throw DbfTable::HeaderTooLongError;
    return calcSchemaLength(schema) + layout::headerSize;
}

namespace
{

quint16 storableRecordLength(const DbfSchema& schema)
{
    const int length = calcRecordLength(schema);
    if (length > layout::maxRecordLength)
        throw DbfTable::HeaderTooLongError;
    return static_cast<quint16>(length);
}

} // namespace

DbfTableDescriptor emptyTableDescriptor(DbfCodePage codePage, const DbfSchema& schema)
{
    DbfTableDescriptor descriptor;
    descriptor.headerLength = static_cast<quint16>(headerLength(schema));
    descriptor.version = layout::newTableVersion;
    descriptor.codePage = codePage;
    descriptor.recordLength = storableRecordLength(schema);
    return descriptor;
}

DbfTableDescriptor transformDescriptor(const DbfTableDescriptor& source, const DbfSchema& schema)
{
    const int length = headerLength(schema) + (hasDbc(source) ? layout::backLinkSize : 0);
    if (length > layout::maxHeaderLength)
        throw DbfTable::HeaderTooLongError;
    DbfTableDescriptor descriptor = source;
    descriptor.headerLength = static_cast<quint16>(length);
    descriptor.recordLength = storableRecordLength(schema);
    return descriptor;
}

} // namespace dbf::format
