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

namespace
{

constexpr int anySize = -1;

int writtenSize(FieldKind kind, int length)
{
    switch (kind) {
    case FieldKind::Text:
    case FieldKind::Number:
    case FieldKind::Date:
        return length;
    case FieldKind::Logical:
        return sizeof(char);
    case FieldKind::SmallInt:
        return sizeof(qint16);
    case FieldKind::Int:
    case FieldKind::BinaryFloat:
        return sizeof(qint32);
    case FieldKind::LargeInt:
    case FieldKind::BinaryDouble:
        return sizeof(qint64);
    case FieldKind::Bytes:
    case FieldKind::Foreign:
        break;
    }
    return anySize;
}

} // namespace

RecordImageCodec::RecordImageCodec(const DbfSchema& schema)
    : m_schema(schema), m_textCodec(schema.codec)
{
    m_fields.reserve(m_schema.columns.size());
    int offset = layout::deletionFlagSize;
    int written = layout::deletionFlagSize;
    for (const DbfColumn& column : m_schema.columns) {
        const FieldKind kind = fieldKind(column.converter);
        const int size = writtenSize(kind, column.descriptor.length);
        m_fields.append({&column, offset, column.descriptor.length, kind, size});
        offset += column.descriptor.length;
        written = written == anySize || size == anySize ? anySize : written + size;
    }
    m_imageSize = offset;
    m_writtenSize = written;
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
        value = askConverter(bytes, *field.column);
    }
}

// The view is away from here while the converter runs, which may come back for another column and
// must not change what it was handed itself.
QVariant RecordImageCodec::askConverter(std::string_view bytes, const DbfColumn& column)
{
    QByteArray slice = std::move(m_slice);
    // A view of nothing would lack the zero byte that Qt expects behind an array it need not copy.
    if (bytes.empty())
        slice = QByteArray();
    else
        slice.setRawData(bytes.data(), static_cast<uint>(bytes.size()));
    QVariant value = converterOf(column)->toVariant(slice, m_schema, column.descriptor);
    m_slice = std::move(slice);
    return value;
}

void RecordImageCodec::appendValue(const QVariant& value, int column, QByteArray& image)
{
    const Field& field = m_fields[column];
    if (field.writtenSize == anySize) {
        image.append(
            converterOf(*field.column)->toByteArray(value, m_schema, field.column->descriptor));
    } else {
        write(value, field, extend(image, field.writtenSize));
    }
}

// Only for fields whose written size is known.
void RecordImageCodec::write(const QVariant& value, const Field& field, char* bytes)
{
    switch (field.kind) {
    case FieldKind::Text:
        if (value.userType() == QMetaType::QString) {
            m_textCodec.writeField(*static_cast<const QString*>(value.constData()), bytes,
                                   field.length);
        } else {
            prepareDateText(value);
            m_textCodec.writeField(value.toString(), bytes, field.length);
        }
        break;
    case FieldKind::Number:
        writeNumberField(floatingValue<double>(value), field.column->descriptor.decimals, bytes,
                         field.length);
        break;
    case FieldKind::Date:
        writeDateField(value.toDate(), bytes, field.length);
        break;
    case FieldKind::Logical:
        *bytes = logicalLetter(value.toBool());
        break;
    case FieldKind::SmallInt:
        qToLittleEndian(static_cast<qint16>(value.toInt()), bytes);
        break;
    case FieldKind::Int:
        qToLittleEndian(static_cast<qint32>(value.toInt()), bytes);
        break;
    case FieldKind::LargeInt:
        qToLittleEndian(static_cast<qint64>(value.toLongLong()), bytes);
        break;
    case FieldKind::BinaryDouble:
        qToLittleEndian(floatingValue<double>(value), bytes);
        break;
    default:
        qToLittleEndian(floatingValue<float>(value), bytes);
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
    const char flag = record.isDeleted() ? layout::deletedFlag : layout::liveFlag;
    if (m_writtenSize != anySize && record.values.size() >= columnCount()) {
        char* bytes = extend(image, m_writtenSize);
        *bytes++ = flag;
        const QVariant* value = record.values.constData();
        for (const Field& field : m_fields) {
            write(*value++, field, bytes);
            bytes += field.writtenSize;
        }
        return;
    }
    image.append(flag);
    for (int column = 0; column < columnCount(); ++column) {
        if (column < record.values.size())
            appendValue(record.values.at(column), column, image);
        else
            image.append(m_fields[column].column->blankValueOfThisType());
    }
}

const QByteArray& RecordImageCodec::image(const DbfRecord& record)
{
    m_image.reserve(m_imageSize);
    m_image.resize(0);
    append(record, m_image);
    return m_image;
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
