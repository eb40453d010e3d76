// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_DBFSTRINGCONVERTER_H
#define DBF_CONVERTERS_DBFSTRINGCONVERTER_H

#include <dbf/converters/dbffieldconverter.h>

#include <QtCore/QString>

class QTextCodec;

namespace dbf
{

/// Text in the codec of the schema; the default for Character and Numeric fields.
///
/// - Bytes: QVariant::toString of the value, trimmed, encoded, cut to the field and filled up with
///   0x00. The cut is silent and may fall inside a multi-byte character; fromUnicode() tells
///   whether a text fits.
/// - Value: a QString, the text before the first 0x00 byte decoded (by the fallback of
///   DbfSchema::setCodec when the codec is null) and trimmed.
/// - Blank: spaces.
class DBFTABLE_EXPORT DbfStringConverter : public DbfFieldConverter
{
public:
    /// Returns the one shared object; never null, owned by the library.
    static DbfStringConverter* instance();

    QByteArray toByteArray(const QVariant& value, const DbfSchema& schema,
                           const DbfFieldDescriptor& field) const override;
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override;
    bool convertVariant(QVariant& value) const override;

    /// Returns \a text encoded with \a codec (null as in DbfSchema::setCodec), never more than
    /// \a maxLength bytes: the first \a maxLength UTF-16 units are encoded, and what is longer then
    /// is cut on a byte. `*ok`, unless \a ok is null, becomes true when nothing was cut, else
    /// false. A negative \a maxLength counts as 0.
    static QByteArray fromUnicode(const QString& text, int maxLength, QTextCodec* codec, bool* ok);
};

} // namespace dbf

#endif
