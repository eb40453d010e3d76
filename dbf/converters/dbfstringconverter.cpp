// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/datetext_p.h>
#include <dbf/converters/dbfstringconverter.h>
#include <dbf/converters/fieldtext_p.h>
#include <dbf/converters/sharedinstance_p.h>
#include <dbf/converters/textcodec_p.h>
#include <dbf/model/dbfschema.h>

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
    QByteArray bytes(field.length, Qt::Uninitialized);
    prepareDateText(value);
    TextCodec(schema.codec).writeField(value.toString(), bytes.data(), field.length);
    return bytes;
}

QVariant DbfStringConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                       const DbfFieldDescriptor& /*field*/) const
{
    return textVariant(TextCodec(schema.codec).decode(viewOf(bytes)));
}

bool DbfStringConverter::convertVariant(QVariant& value) const
{
    prepareDateText(value);
    return value.convert(QMetaType::QString);
}

QByteArray DbfStringConverter::fromUnicode(const QString& text, int maxLength, QTextCodec* codec,
                                           bool* ok)
{
    const int room = std::max(maxLength, 0);
    bool fits = room >= text.size();
    QByteArray bytes = TextCodec(codec).encode(QStringView(text).left(std::min(text.size(), room)));
    if (bytes.size() > room) {
        bytes.truncate(room);
        fits = false;
    }
    if (ok)
        *ok = fits;
    return bytes;
}

} // namespace dbf
