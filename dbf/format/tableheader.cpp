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
    const DbfTableDescriptor descriptor = parseAnyTableDescriptor(header);
    if (!supportVersion(static_cast<char>(descriptor.version)))
        throw DbfTable::UnsupportedVersionError;
    return descriptor;
}

DbfTableDescriptor parseAnyTableDescriptor(const QByteArray& header)
{
    if (header.size() < layout::headerSize)
        throw DbfTable::ReadError;
    const char* const bytes = header.constData();
    DbfTableDescriptor descriptor;
    descriptor.version = static_cast<quint8>(bytes[layout::versionOffset]);
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

bool hasSameLayout(quint8 version)
{
    switch (version) {
    case layout::nullFlagsVersion:
    case 0x43:
    case 0x63:
    case 0x83:
    case 0x8B:
    case 0xCB:
    case 0xF5:
    case 0xFB:
        return true;
    default:
        return supportVersion(static_cast<char>(version));
    }
}

int backLinkLength(const DbfTableDescriptor& descriptor)
{
    const bool hasBackLink = hasDbc(descriptor) || descriptor.version == layout::nullFlagsVersion;
    return hasBackLink ? layout::backLinkSize : 0;
}

namespace
{

int lengthBefore(int backLink, const DbfTableDescriptor& descriptor)
{
    return descriptor.headerLength - layout::headerSize - layout::schemaTerminatorSize - backLink;
}

} // namespace

int schemaLength(const DbfTableDescriptor& descriptor)
{
    return lengthBefore(hasDbc(descriptor) ? layout::backLinkSize : 0, descriptor);
}

int fieldsLength(const DbfTableDescriptor& descriptor)
{
    return lengthBefore(backLinkLength(descriptor), descriptor);
}

bool hasWideDescriptors(const QByteArray& fields, const DbfTableDescriptor& descriptor)
{
    constexpr int start = 36;
    constexpr int size = 48;
    constexpr int lengthOffset = 33;
    int recordLength = layout::deletionFlagSize;
    int field = start;
    for (; field + size <= fields.size() && fields.at(field) != layout::schemaTerminator;
         field += size)
        recordLength += static_cast<quint8>(fields.at(field + lengthOffset));
    // The terminator itself may be the byte that a block of plain descriptors leaves out.
    const bool hasEnd = field == fields.size() ||
                        (field < fields.size() && fields.at(field) == layout::schemaTerminator);
    return hasEnd && field > start && recordLength == descriptor.recordLength;
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

namespace
{

DbfTableDescriptor descriptorWith(int backLink, const DbfTableDescriptor& source,
                                  const DbfSchema& schema)
{
    const int length = headerLength(schema) + backLink;
    if (length > layout::maxHeaderLength)
        throw DbfTable::HeaderTooLongError;
    DbfTableDescriptor descriptor = source;
    descriptor.headerLength = static_cast<quint16>(length);
    descriptor.recordLength = storableRecordLength(schema);
    return descriptor;
}

} // namespace

DbfTableDescriptor transformDescriptor(const DbfTableDescriptor& source, const DbfSchema& schema)
{
    return descriptorWith(hasDbc(source) ? layout::backLinkSize : 0, source, schema);
}

DbfTableDescriptor copiedDescriptor(const DbfTableDescriptor& source, const DbfSchema& schema)
{
    return descriptorWith(backLinkLength(source), source, schema);
}

} // namespace dbf::format
