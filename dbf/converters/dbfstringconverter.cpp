// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/ruledconverter_p.h>

#include <algorithm>

namespace dbf
{

DbfStringConverter* DbfStringConverter::instance()
{
    return sharedInstance<DbfStringConverter>();
}

QByteArray DbfStringConverter::toByteArray(const QVariant& value, const DbfSchema& schema,
                                           const DbfFieldDescriptor& field) const
{
    return bytesByRule<TextRule>(value, schema, field);
}

QVariant DbfStringConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                       const DbfFieldDescriptor& field) const
{
    return valueByRule<TextRule>(bytes, schema, field);
}

bool DbfStringConverter::convertVariant(QVariant& value) const
{
    return TextRule::convert(value);
}

QByteArray DbfStringConverter::fromUnicode(const QString& text, int maxLength, QTextCodec* codec,
                                           bool* ok)
{
    const int room = std::max(maxLength, 0);
    bool fits = room >= text.size();
    QByteArray bytes =
        TextCodec(codec).encode(QStringView(text).left(std::min<qsizetype>(text.size(), room)));
    if (bytes.size() > room) {
        bytes.truncate(room);
        fits = false;
    }
    if (ok)
        *ok = fits;
    return bytes;
}

} // namespace dbf
