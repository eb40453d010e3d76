// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_ENCODING_TEXT_P_H
#define DBF_ENCODING_TEXT_P_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringView>

#include <array>
#include <string_view>
#include <vector>

class QTextCodec;

namespace dbf
{

/// Returns what stands in \a bytes before the first 0x00, without the spaces at its end.
std::string_view withoutPadding(std::string_view bytes);

/// The two directions of a single-byte character set as tables, read off the codec itself.
class SingleByteTable
{
public:
    /// Returns the table of \a codec, null when it is not known for a single-byte character set or
    /// does not behave like one. Made on first use and kept for the life of the process; safe on
    /// any thread, without a lock.
    static const SingleByteTable* of(QTextCodec* codec);

    /// Returns what stands in \a bytes before the first 0x00, without the white space at both ends,
    /// by the characters they stand for.
    std::string_view content(std::string_view bytes) const;

    /// Decodes \a bytes into as many units at \a units.
    void decode(std::string_view bytes, char16_t* units) const;

    /// Encodes \a text into as many bytes at \a bytes. Returns false, with \a bytes in any state,
    /// when a unit has no exact byte: only the codec knows what then happens.
    bool encode(QStringView text, char* bytes) const;

    bool isAsciiTransparent() const { return m_asciiTransparent; }

private:
    static constexpr quint16 noByte = 0x100; // a bit that no byte has

    SingleByteTable() = default;
    char16_t unit(char byte) const { return m_units[static_cast<quint8>(byte)]; }

    static const SingleByteTable* derivedFrom(const QTextCodec& codec);
    bool readDecoding(const QTextCodec& codec);
    bool readPairs(const QTextCodec& codec);
    void readEncoding(const QTextCodec& codec);

    std::array<char16_t, 256> m_units{};
    std::array<bool, 256> m_isSpace{};
    std::vector<char16_t> m_pairs; // the units of all pairs of bytes; one look-up for two bytes
    std::vector<quint16> m_bytes;  // by unit, noByte where none is exact
    bool m_asciiTransparent = false;
};

/// Room for the text of one field.
struct TextScratch {
    static constexpr int size = 255; // bytes, what no field exceeds
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

    /// Returns whether \a text, which does not begin or end with white space, is known to read back
    /// from a field of \a width bytes as it is. The codec is not asked, so false says nothing.
    bool writesExactly(QStringView text, int width) const;

    /// Returns the text of a field that is padded with spaces: what stands before the first 0x00
    /// byte, without the spaces at its end. Never null.
    QString decodePadded(std::string_view bytes) const;

    /// Returns the text of all of \a bytes, be they as many as they may. Never null.
    QString decodeWhole(std::string_view bytes) const;

    /// Writes a field of \a width bytes that holds \a text as it is, cut between two characters
    /// and filled up with spaces.
    void writePadded(QStringView text, char* field, int width) const;

    /// Returns whether each byte of plain ASCII stands for itself, so that digits may be read
    /// without decoding.
    bool isAsciiTransparent() const;

    /// Returns whether texts go through a table, so that the codec itself is not called.
    bool isTabulated() const { return m_table != nullptr; }

private:
    QStringView decodeIntoString(std::string_view bytes, TextScratch& scratch) const;
    QStringView decodeByTable(std::string_view bytes, char16_t* units) const;
    QByteArray encodeByCodec(QStringView text) const;
    QByteArray encodeBeforePadding(QStringView text) const;
    QByteArray encodeWithin(QStringView text, int room) const;

    QTextCodec* m_codec;
    const SingleByteTable* m_table;
};

} // namespace dbf

#endif
