// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/format/layout_p.h>
#include <dbf/format/recordlayout_p.h>

#include <new>

namespace dbf
{

bool isDeletedImage(std::string_view image)
{
    return !image.empty() && image.front() == layout::deletedFlag;
}

namespace
{

constexpr int anySize = -1;

int writtenSize(FieldKind kind, int length)
{
    return visitRule(
        kind, [length](auto rule) { return rule.size(length); }, [] { return anySize; });
}

} // namespace

RecordLayout::RecordLayout(const DbfSchema& schema) : m_schema(schema), m_textCodec(schema.codec)
{
    m_fields.reserve(m_schema.columns.size());
    int offset = layout::deletionFlagSize;
    int written = layout::deletionFlagSize;
    for (const DbfColumn& column : m_schema.columns) {
        const FieldKind kind = fieldKind(column);
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
void RecordLayout::read(std::string_view bytes, int column, QVariant& value)
{
    const Field& field = m_fields[column];
    visitRule(
        field.kind, [&](auto rule) { new (&value) QVariant(rule.read(bytes, contextOf(field))); },
        [&] { value = askConverter(bytes, *field.column); });
}

// The view is away from here while the converter runs, which may come back for another column and
// must not change what it was handed itself.
QVariant RecordLayout::askConverter(std::string_view bytes, const DbfColumn& column)
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

void RecordLayout::appendValue(const QVariant& value, int column, QByteArray& image)
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
void RecordLayout::write(const QVariant& value, const Field& field, char* bytes)
{
    visitRule(
        field.kind, [&](auto rule) { rule.write(value, contextOf(field), bytes); }, [] {});
}

DbfRecord RecordLayout::parse(std::string_view image, int index)
{
    DbfRecord record(index, QVector<QVariant>(columnCount()));
    record.setDeleted(isDeletedImage(image));
    QVariant* const values = record.values.data();
    for (int column = 0; column < columnCount(); ++column)
        read(slice(image, column), column, values[column]);
    return record;
}

void RecordLayout::append(const DbfRecord& record, QByteArray& image)
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

const QByteArray& RecordLayout::image(const DbfRecord& record)
{
    m_image.reserve(m_imageSize);
    m_image.resize(0);
    append(record, m_image);
    return m_image;
}

} // namespace dbf
