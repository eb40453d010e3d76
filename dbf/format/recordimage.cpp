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

#include <new>

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
    m_fields.reserve(m_schema.columns.size());
    int offset = layout::deletionFlagSize;
    for (const DbfColumn& column : m_schema.columns) {
        m_fields.append({&column, offset, column.descriptor.length, fieldKind(column.converter)});
        offset += column.descriptor.length;
    }
}

// An invalid variant owns nothing: values are constructed over it, since assigning to it costs a
// temporary and the call of its destructor for every field read.
void RecordImageCodec::read(std::string_view bytes, int column, QVariant& value)
{
    const Field& field = m_fields[column];
    switch (field.kind) {
    case FieldKind::Text: {
        QString text = m_textCodec.decode(bytes);
        new (&value) QVariant(QString());
        // data() would look for others who share a value made on the line above.
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
        static_cast<QString*>(const_cast<void*>(value.constData()))->swap(text);
        break;
    }
    case FieldKind::Number:
        new (&value) QVariant(readNumber(bytes));
        break;
    case FieldKind::Date:
        new (&value) QVariant(readDate(bytes));
        break;
    case FieldKind::Logical:
        new (&value) QVariant(readLogical(bytes));
        break;
    default:
        value = converterOf(*field.column)
                    ->toVariant(viewForConverter(bytes), m_schema, field.column->descriptor);
    }
}

// A view of nothing would lack the zero byte that Qt expects behind an array it need not copy.
const QByteArray& RecordImageCodec::viewForConverter(std::string_view bytes)
{
    if (bytes.empty())
        m_slice = QByteArray();
    else
        m_slice.setRawData(bytes.data(), static_cast<uint>(bytes.size()));
    return m_slice;
}

void RecordImageCodec::appendValue(const QVariant& value, int column, QByteArray& image)
{
    const Field& field = m_fields[column];
    const DbfFieldDescriptor& descriptor = field.column->descriptor;
    switch (field.kind) {
    case FieldKind::Text:
        if (value.userType() == QMetaType::QString) {
            m_textCodec.appendField(*static_cast<const QString*>(value.constData()),
                                    descriptor.length, image);
        } else {
            prepareDateText(value);
            m_textCodec.appendField(value.toString(), descriptor.length, image);
        }
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
    DbfRecord record(index, QVector<QVariant>(columnCount()));
    record.setDeleted(isDeletedImage(image));
    QVariant* const values = record.values.data();
    for (int column = 0; column < columnCount(); ++column)
        read(slice(image, column), column, values[column]);
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
