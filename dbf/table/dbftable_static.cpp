// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/codecchoice_p.h>
#include <dbf/format/fielddescriptorblock_p.h>
#include <dbf/format/recordlayout_p.h>
#include <dbf/format/tableheader_p.h>
#include <dbf/table/dbftable.h>
#include <dbf/table/deviceprimitives_p.h>

// The static members, in the order of their declarations. Each is one call into the layer that does
// it; transformRecord(), whose layer is above this one, stands there.

namespace dbf
{

DbfTableDescriptor DbfTable::parseTableDescriptor(const QByteArray& header)
{
    return format::parseTableDescriptor(header);
}

QByteArray DbfTable::serializeTableDescriptor(const DbfTableDescriptor& descriptor)
{
    return format::serializeTableDescriptor(descriptor);
}

bool DbfTable::supportVersion(char version)
{
    return format::supportVersion(version);
}

bool DbfTable::hasDbc(const DbfTableDescriptor& descriptor)
{
    return format::hasDbc(descriptor);
}

int DbfTable::schemaLength(const DbfTableDescriptor& descriptor)
{
    return format::schemaLength(descriptor);
}

qint64 DbfTable::recordOffset(int index, const DbfTableDescriptor& descriptor)
{
    return format::recordOffset(index, descriptor);
}

int DbfTable::calcRecordLength(const DbfSchema& schema)
{
    return format::calcRecordLength(schema);
}

int DbfTable::calcSchemaLength(const DbfSchema& schema)
{
    return format::calcSchemaLength(schema);
}

int DbfTable::headerLength(const DbfSchema& schema)
{
    return format::headerLength(schema);
}

DbfTableDescriptor DbfTable::emptyTableDescriptor(DbfCodePage codePage, const DbfSchema& schema)
{
    return format::emptyTableDescriptor(codePage, schema);
}

DbfTableDescriptor DbfTable::transformDescriptor(const DbfTableDescriptor& source,
                                                 const DbfSchema& schema)
{
    return format::transformDescriptor(source, schema);
}

DbfFieldDescriptor DbfTable::parseFieldDescriptor(const char* record, QTextCodec* codec)
{
    return format::parseFieldDescriptor(record, codec);
}

QVector<DbfFieldDescriptor> DbfTable::parseFieldDescriptors(const QByteArray& block,
                                                            const DbfTableDescriptor& descriptor,
                                                            QTextCodec* codec)
{
    return format::parseFieldDescriptors(block, descriptor, codec);
}

QByteArray DbfTable::serializeFieldDescriptor(const DbfFieldDescriptor& field, QTextCodec* codec)
{
    return format::serializeFieldDescriptor(field, codec);
}

QByteArray DbfTable::serializeSchema(const DbfSchema& schema)
{
    return format::serializeSchema(schema);
}

QTextCodec* DbfTable::codecByCodePage(DbfCodePage codePage)
{
    return codecForCodePage(static_cast<quint8>(codePage));
}

DbfCodePage DbfTable::codePageByCodec(QTextCodec* codec)
{
    return static_cast<DbfCodePage>(codePageForCodec(codec));
}

int DbfTable::languageIdToMIB(int id)
{
    return mibForLanguageDriver(id);
}

QTextCodec* DbfTable::codecByLanguageDriver(int id)
{
    return codecForLanguageDriver(id);
}

QTextCodec* DbfTable::codecByLabel(const QByteArray& label)
{
    return codecForLabel(label);
}

DbfCodePage DbfTable::languageDriverByCodec(QTextCodec* codec, bool* ok)
{
    const std::optional<quint8> id = languageDriverForCodec(codec);
    if (ok)
        *ok = id.has_value();
    return static_cast<DbfCodePage>(id.value_or(0));
}

DbfRecord DbfTable::parseRecord(const QByteArray& image, int index, const DbfSchema& schema)
{
    return RecordLayout(schema).parse(viewOf(image), index);
}

QByteArray DbfTable::serializeRecord(const DbfRecord& record, const DbfTableDescriptor& descriptor,
                                     const DbfSchema& schema)
{
    QByteArray image = emptyWithRoom(descriptor.recordLength);
    RecordLayout(schema).append(record, image);
    return image;
}

QByteArray DbfTable::readData(QIODevice* device, int length)
{
    return primitives::readData(device, length);
}

QByteArray DbfTable::readTableDescriptorData(QIODevice* device)
{
    return primitives::readTableDescriptorData(device);
}

QByteArray DbfTable::readSchemaData(QIODevice* device, const DbfTableDescriptor& descriptor)
{
    return primitives::readSchemaData(device, descriptor);
}

void DbfTable::seekRecord(QIODevice* device, int index, const DbfTableDescriptor& descriptor,
                          int offset)
{
    primitives::seekRecord(device, index, descriptor, offset);
}

QByteArray DbfTable::readRecordData(QIODevice* device, int index,
                                    const DbfTableDescriptor& descriptor)
{
    return primitives::readRecordData(device, index, descriptor);
}

QByteArray DbfTable::readRecordsData(QIODevice* device, int first, unsigned long count,
                                     const DbfTableDescriptor& descriptor)
{
    return primitives::readRecordsData(device, first, count, descriptor);
}

void DbfTable::writeData(QIODevice* device, const QByteArray& data, long long size)
{
    primitives::writeData(device, data, size);
}

void DbfTable::writeSchemaTerminator(QIODevice* device)
{
    primitives::writeSchemaTerminator(device);
}

void DbfTable::writeEndMarker(QIODevice* device)
{
    primitives::writeEndMarker(device);
}

void DbfTable::updateRecordCount(QIODevice* device, unsigned int count)
{
    primitives::updateRecordCount(device, count);
}

} // namespace dbf
