// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_FORMAT_RECORDLAYOUT_P_H
#define DBF_FORMAT_RECORDLAYOUT_P_H

#include <dbf/converters/fieldkind_p.h>
#include <dbf/model/dbfrecord.h>
#include <dbf/model/dbfschema.h>

#include <QtCore/QByteArray>
#include <QtCore/QVarLengthArray>

#include <algorithm>
#include <string_view>

namespace dbf
{

/// Whether a record image is marked deleted; an empty one is not.
bool isDeletedImage(std::string_view image);

/// The layout of one schema's record images, made ready to read and write many of them.
///
/// Slices are views of the image they are cut from; of an image that ends early they come out short
/// or empty. Not for use by several threads at once.
class RecordLayout
{
public:
    explicit RecordLayout(const DbfSchema& schema);

    /// Whether this is the layout of \a schema as it is now.
    bool isMadeFor(const DbfSchema& schema) const
    {
        // The copy kept here shares the columns until somebody changes theirs.
        return schema.columns.constData() == m_schema.columns.constData() &&
               schema.codec == m_schema.codec;
    }

    int columnCount() const { return saturated(m_fields.size()); }

    /// Returns the bytes of column \a column, which must exist.
    std::string_view slice(std::string_view image, int column) const
    {
        const Field& field = m_fields[column];
        const auto offset = static_cast<size_t>(field.offset);
        if (offset >= image.size())
            return {};
        return {image.data() + offset, std::min<size_t>(field.length, image.size() - offset)};
    }

    /// Returns what the column's converter reads in \a bytes.
    QVariant value(std::string_view bytes, int column)
    {
        QVariant result;
        read(bytes, column, result);
        return result;
    }

    /// Puts what the column's converter reads in \a bytes into \a value, which must be invalid.
    void read(std::string_view bytes, int column, QVariant& value);

    /// Appends what the column's converter makes of \a value.
    void appendValue(const QVariant& value, int column, QByteArray& image);

    /// Returns the record of index \a index.
    DbfRecord parse(std::string_view image, int index);

    /// Appends the image of \a record.
    void append(const DbfRecord& record, QByteArray& image);

    /// Returns the image of \a record, valid until the next call.
    const QByteArray& image(const DbfRecord& record);

    int offset(int column) const { return m_fields[column].offset; }
    FieldKind kind(int column) const { return m_fields[column].kind; }
    const DbfColumn& column(int column) const { return *m_fields[column].column; }
    const TextCodec& textCodec() const { return m_textCodec; }

    /// Whether reading the column calls what may be a caller's own: its converter or codec.
    bool callsOut(int column) const
    {
        return kind(column) == FieldKind::Foreign ||
               (isTextKind(kind(column)) && !m_textCodec.isTabulated());
    }

    /// Whether reading any column does.
    bool callsOut() const
    {
        for (int column = 0; column < columnCount(); ++column) {
            if (callsOut(column))
                return true;
        }
        return false;
    }

private:
    struct Field {
        const DbfColumn* column;
        int offset;
        unsigned char length;
        FieldKind kind;
        int writtenSize; // what the column's converter always gives, in bytes; -1 for any number
    };

    QVariant askConverter(std::string_view bytes, const DbfColumn& column);
    void write(const QVariant& value, const Field& field, char* bytes);
    FieldContext contextOf(const Field& field) const
    {
        return {&m_textCodec, field.length, field.column->descriptor.decimals};
    }

    const DbfSchema m_schema; // a copy, since a caller's converter may rebuild the original
    TextCodec m_textCodec;
    QVarLengthArray<Field, 32> m_fields;
    int m_imageSize = 0;   // of an image read
    int m_writtenSize = 0; // of an image written, -1 if that depends on the values
    QByteArray m_slice; // the view that converters get, reused so that none is allocated per field
    QByteArray m_image; // reused for the same reason
};

} // namespace dbf

#endif
