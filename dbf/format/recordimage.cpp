// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/binarynumber_p.h>
#include <dbf/converters/datetext_p.h>
#include <dbf/converters/dbfbytearrayconverter.h>
#include <dbf/converters/fieldtext_p.h>
#include <dbf/converters/numbertext_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/format/recordimage_p.h>
#include <dbf/table/dbftable.h>

#include <utility>

namespace dbf
{

DbfFieldConverter* converterOf(const DbfColumn& column)
{
    return column.converter ? column.converter : DbfByteArrayConverter::instance();
}

bool isDeletedImage(std::string_view image)
{
    return !image.empty() && image.front() == layout::deletedFlag;
}

RecordImageCodec::RecordImageCodec(const DbfSchema& schema)
    : m_schema(schema), m_textCodec(schema.codec)
{
    m_fields.reserve(schema.columns.size());
    int offset = layout::deletionFlagSize;
    for (const DbfColumn& column : schema.columns) {
        m_fields.append({&column, offset, fieldKind(column.converter)});
        offset += column.descriptor.length;
    }
}

std::string_view RecordImageCodec::slice(std::string_view image, int column) const
{
    const Field& field = m_fields[column];
    const auto offset = static_cast<size_t>(field.offset);
    if (offset >= image.size())
        return {};
    return image.substr(offset, field.column->descriptor.length);
}

QVariant RecordImageCodec::value(std::string_view bytes, int column)
{
    const Field& field = m_fields[column];
    switch (field.kind) {
    case FieldKind::Text:
        return textVariant(m_textCodec.decode(bytes));
    case FieldKind::Number:
        return readNumber(bytes);
    case FieldKind::Date:
        return readDate(bytes);
    case FieldKind::Logical:
        return readLogical(bytes);
    default:
        m_slice.setRawData(bytes.data(), static_cast<uint>(bytes.size()));
        return converterOf(*field.column)->toVariant(m_slice, m_schema, field.column->descriptor);
    }
}

void RecordImageCodec::appendValue(const QVariant& value, int column, QByteArray& image)
{
    const Field& field = m_fields[column];
    const DbfFieldDescriptor& descriptor = field.column->descriptor;
    switch (field.kind) {
    case FieldKind::Text:
        if (value.userType() == QMetaType::QString)
            m_textCodec.appendField(*static_cast<const QString*>(value.constData()),
                                    descriptor.length, image);
        else
            m_textCodec.appendField(value.toString(), descriptor.length, image);
        break;
    case FieldKind::Number:
        appendNumberField(floatingValue<double>(value), descriptor.decimals, descriptor.length,
                          image);
        break;
    case FieldKind::Date:
        appendDateField(value.toDate(), descriptor.length, image);
        break;
    case FieldKind::Logical:
        image.append(logicalLetter(value.toBool()));
        break;
    case FieldKind::Bytes:
        image.append(value.toByteArray());
        break;
    case FieldKind::SmallInt:
        appendBinary(static_cast<qint16>(value.toInt()), image);
        break;
    case FieldKind::Int:
        appendBinary(qint32(value.toInt()), image);
        break;
    case FieldKind::LargeInt:
        appendBinary(qint64(value.toLongLong()), image);
        break;
    case FieldKind::BinaryDouble:
        appendBinary(floatingValue<double>(value), image);
        break;
    case FieldKind::BinaryFloat:
        appendBinary(floatingValue<float>(value), image);
        break;
    case FieldKind::Foreign:
        image.append(field.column->converter->toByteArray(value, m_schema, descriptor));
        break;
    }
}

DbfRecord RecordImageCodec::parse(std::string_view image, int index)
{
    QVector<QVariant> values(columnCount());
    DbfRecord record(index, std::move(values));
    record.setDeleted(isDeletedImage(image));
    for (int column = 0; column < columnCount(); ++column)
        record.values[column] = value(slice(image, column), column);
    return record;
}

void RecordImageCodec::append(const DbfRecord& record, QByteArray& image)
{
    image.append(record.isDeleted() ? layout::deletedFlag : layout::liveFlag);
    for (int column = 0; column < columnCount(); ++column) {
        if (column < record.values.size())
            appendValue(record.values.at(column), column, image);
        else
            image.append(m_fields[column].column->blankValueOfThisType());
    }
}

DbfRecord DbfTable::parseRecord(const QByteArray& image, int index, const DbfSchema& schema)
{
    return RecordImageCodec(schema).parse(viewOf(image), index);
}

QByteArray DbfTable::serializeRecord(const DbfRecord& record, const DbfTableDescriptor& descriptor,
                                     const DbfSchema& schema)
{
    QByteArray image = emptyWithRoom(descriptor.recordLength);
    RecordImageCodec(schema).append(record, image);
    return image;
}

} // namespace dbf
