// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/encoding/text_p.h>
#include <dbf/format/fielddescriptorblock_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/format/tableheader_p.h>
#include <dbf/table/dbftable.h> // the error enumeration

#include <algorithm>
#include <cstring>

namespace dbf::format
{

DbfFieldDescriptor parseFieldDescriptor(const char* record, QTextCodec* codec)
{
    return {TextCodec(codec).decode({record, layout::fieldNameSize}),
            static_cast<DbfFieldType>(record[layout::fieldTypeOffset]),
            static_cast<unsigned char>(record[layout::fieldLengthOffset]),
            static_cast<unsigned char>(record[layout::fieldDecimalsOffset])};
}

QVector<DbfFieldDescriptor> parseFieldDescriptors(const QByteArray& block,
                                                  const DbfTableDescriptor& descriptor,
                                                  QTextCodec* codec)
{
    const int count = std::max(schemaLength(descriptor), 0) / layout::fieldDescriptorSize;
    if (block.size() < count * layout::fieldDescriptorSize)
        throw DbfTable::ReadError;
    return parseAllFieldDescriptors(block.left(count * layout::fieldDescriptorSize), codec);
}

QVector<DbfFieldDescriptor> parseAllFieldDescriptors(const QByteArray& block, QTextCodec* codec)
{
    const ContainerSize count = block.size() / layout::fieldDescriptorSize;
    QVector<DbfFieldDescriptor> fields;
    fields.reserve(count);
    const char* record = block.constData();
    for (ContainerSize i = 0; i < count; ++i, record += layout::fieldDescriptorSize)
        fields.append(parseFieldDescriptor(record, codec));
    return fields;
}

QByteArray serializeFieldDescriptor(const DbfFieldDescriptor& field, QTextCodec* codec)
{
    QByteArray record(layout::fieldDescriptorSize, '\0');
    char* const bytes = record.data();
    const QByteArray name = TextCodec(codec).encode(field.name);
    std::memcpy(bytes, name.constData(),
                strnlen(name.constData(), std::min(static_cast<size_t>(name.size()),
                                                   size_t(layout::writtenFieldNameSize))));
    bytes[layout::fieldTypeOffset] = static_cast<char>(field.type);
    bytes[layout::fieldLengthOffset] = static_cast<char>(field.length);
    bytes[layout::fieldDecimalsOffset] = static_cast<char>(field.decimals);
    return record;
}

QByteArray serializeSchema(const DbfSchema& schema)
{
    QByteArray block = emptyWithRoom(calcSchemaLength(schema));
    for (const DbfColumn& column : schema.columns)
        block.append(serializeFieldDescriptor(column.descriptor, schema.codec));
    return block;
}

} // namespace dbf::format
