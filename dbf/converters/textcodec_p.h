// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_TEXTCODEC_P_H
#define DBF_CONVERTERS_TEXTCODEC_P_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringView>

#include <string_view>

class QTextCodec;

namespace dbf
{

class SingleByteTable;

/// Room for the text of one field.
struct TextScratch {
    static constexpr int size = 255; // bytes, the longest field
    char16_t units[size];
    QString text;
};

/// A codec made ready for many fields: single-byte character sets go through tables, everything
/// else through the codec itself. Whichever way is taken, the result is the codec's own.
///
/// A cheap value; any number of threads may make and use them.
class TextCodec
{
public:
    /// Prepares \a codec; a null one is replaced by usableCodec(), by Latin-1 where there is none.
    explicit TextCodec(QTextCodec* codec);

    /// Returns the text of a field: what stands before the first 0x00 byte, trimmed.
    QString decode(std::string_view bytes) const;

    /// Does the same without allocating a string where possible: the view returned is on
    /// \a scratch and valid until that changes.
    QStringView decode(std::string_view bytes, TextScratch& scratch) const;

    /// Returns the bytes of \a text.
    QByteArray encode(QStringView text) const;

    /// Writes a field of \a width bytes that holds \a text trimmed: cut to the width, filled up
    /// with 0x00.
    void writeField(QStringView text, char* field, int width) const;

    /// Returns whether each byte of plain ASCII stands for itself, so that digits may be read
    /// without decoding.
    bool isAsciiTransparent() const;

    /// Returns whether texts go through a table, so that the codec itself is not called.
    bool isTabulated() const { return m_table != nullptr; }

private:
    QStringView decodeIntoString(std::string_view bytes, TextScratch& scratch) const;
    QStringView decodeByTable(std::string_view bytes, char16_t* units) const;
    QByteArray encodeByCodec(QStringView text) const;

    QTextCodec* m_codec;
    const SingleByteTable* m_table;
};

} // namespace dbf

#endif
