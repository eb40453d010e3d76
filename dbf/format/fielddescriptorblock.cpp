// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/fieldtext_p.h>
#include <dbf/converters/textcodec_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/table/dbftable.h>

#include <algorithm>
#include <cstring>

namespace dbf
{

DbfFieldDescriptor DbfTable::parseFieldDescriptor(const char* record, QTextCodec* codec)
{
    return {TextCodec(codec).decode({record, layout::fieldNameSize}),
            static_cast<DbfFieldType>(record[layout::fieldTypeOffset]),
            static_cast<unsigned char>(record[layout::fieldLengthOffset]),
            static_cast<unsigned char>(record[layout::fieldDecimalsOffset])};
}

QVector<DbfFieldDescriptor> DbfTable::parseFieldDescriptors(const QByteArray& block,
                                                            const DbfTableDescriptor& descriptor,
                                                            QTextCodec* codec)
{
    const int count = std::max(schemaLength(descriptor), 0) / layout::fieldDescriptorSize;
    if (block.size() < count * layout::fieldDescriptorSize)
        throw ReadError;
    QVector<DbfFieldDescriptor> fields;
    fields.reserve(count);
    const char* record = block.constData();
    for (int i = 0; i < count; ++i, record += layout::fieldDescriptorSize)
        fields.append(parseFieldDescriptor(record, codec));
    return fields;
}

QByteArray DbfTable::serializeFieldDescriptor(const DbfFieldDescriptor& field, QTextCodec* codec)
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

QByteArray DbfTable::serializeSchema(const DbfSchema& schema)
{
    QByteArray block = emptyWithRoom(calcSchemaLength(schema));
    for (const DbfColumn& column : schema.columns)
        block.append(serializeFieldDescriptor(column.descriptor, schema.codec));
    return block;
}

} // namespace dbf
