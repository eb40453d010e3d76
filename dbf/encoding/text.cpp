// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/encoding/codecchoice_p.h>
#include <dbf/encoding/text_p.h>

#include <QTextCodec>

#include <algorithm>
#include <cstring>
#include <vector>

namespace dbf
{

namespace
{

// No white space lies between these, where most letters do; Qt looks each of them up.
bool isPlainlyNoSpace(QChar character)
{
    constexpr ushort noBreakSpace = 0xA0;
    constexpr ushort oghamSpace = 0x1680;
    const ushort unit = character.unicode();
    return (unit > ' ' && unit < 0x7F) || (unit > noBreakSpace && unit < oghamSpace);
}

QStringView trimmed(QStringView text)
{
    if (text.isEmpty() || (isPlainlyNoSpace(text.front()) && isPlainlyNoSpace(text.back())))
        return text;
    return text.trimmed();
}

} // namespace

TextCodec::TextCodec(QTextCodec* codec)
    : m_codec(usableCodec(codec)), m_table(m_codec ? SingleByteTable::of(m_codec) : nullptr)
{
}

QString TextCodec::decode(std::string_view bytes) const
{
    if (!m_table) {
        const std::string_view content = untilZero(bytes);
        const char* const start = content.empty() ? "" : content.data(); // never a null pointer
        const int size = saturated(static_cast<qint64>(content.size()));
        const QString text =
            m_codec ? m_codec->toUnicode(start, size, nullptr) : QString::fromLatin1(start, size);
        // Qt 6 asks no codec for nothing, and has a null text at once.
        return content.empty() && text.isNull() ? QStringLiteral("") : text.trimmed();
    }
    if (bytes.size() > TextScratch::size) {
        std::vector<char16_t> units(bytes.size());
        return decodeByTable(bytes, units.data()).toString();
    }
    char16_t units[TextScratch::size];
    return decodeByTable(bytes, units).toString();
}

QStringView TextCodec::decode(std::string_view bytes, TextScratch& scratch) const
{
    if (m_table && bytes.size() <= TextScratch::size)
        return decodeByTable(bytes, scratch.units);
    return decodeIntoString(bytes, scratch);
}

// Inlined, it would cost those who need no string some of the registers it needs.
Q_NEVER_INLINE QStringView TextCodec::decodeIntoString(std::string_view bytes,
                                                       TextScratch& scratch) const
{
    scratch.text = decode(bytes);
    return scratch.text;
}

// The padding is decoded, too: how much of it there is varies with each record, and a loop of
// unpredictable length costs more than the padding.
QStringView TextCodec::decodeByTable(std::string_view bytes, char16_t* units) const
{
    const std::string_view content = m_table->content(bytes);
    m_table->decode(bytes, units);
    return {units + (content.data() - bytes.data()), static_cast<qsizetype>(content.size())};
}

QByteArray TextCodec::encode(QStringView text) const
{
    if (m_table) {
        QByteArray bytes(static_cast<ContainerSize>(text.size()), Qt::Uninitialized);
        if (m_table->encode(text, bytes.data()))
            return bytes;
    }
    return encodeByCodec(text);
}

QByteArray TextCodec::encodeByCodec(QStringView text) const
{
    static constexpr QChar nothing; // codecs are never handed a null pointer
    const QChar* const units = text.isEmpty() ? &nothing : text.data();
    return m_codec ? m_codec->fromUnicode(units, saturated(text.size()), nullptr) : text.toLatin1();
}

void TextCodec::writeField(QStringView text, char* field, int width) const
{
    const QStringView whole = trimmed(text);
    const QStringView content = whole.left(std::min<qsizetype>(whole.size(), width));
    qsizetype written = content.size();
    if (!m_table || !m_table->encode(content, field)) {
        const QByteArray bytes = encodeByCodec(content);
        written = std::min<qsizetype>(bytes.size(), width);
        std::memcpy(field, bytes.constData(), static_cast<size_t>(written));
    }
    std::memset(field + written, 0, static_cast<size_t>(width - written));
}

QString TextCodec::decodePadded(std::string_view bytes) const
{
    const std::string_view content = withoutPadding(bytes);
    if (content.empty())
        return QStringLiteral("");
    if (m_table && content.size() <= TextScratch::size) {
        char16_t units[TextScratch::size];
        m_table->decode(content, units);
        return QStringView(units, static_cast<qsizetype>(content.size())).toString();
    }
    QString text = decodeWhole(content);
    ContainerSize end = text.size();
    while (end > 0 && text.at(end - 1) == QLatin1Char(' ')) // of sets whose space is no 0x20
        --end;
    text.truncate(end);
    return text;
}

QString TextCodec::decodeWhole(std::string_view bytes) const
{
    const char* const start = bytes.empty() ? "" : bytes.data(); // never a null pointer
    const int size = saturated(static_cast<qint64>(bytes.size()));
    const QString text =
        m_codec ? m_codec->toUnicode(start, size, nullptr) : QString::fromLatin1(start, size);
    return text.isNull() ? QStringLiteral("") : text;
}

void TextCodec::writePadded(QStringView text, char* field, int width) const
{
    qsizetype written = std::min<qsizetype>(text.size(), width);
    if (!m_table || !m_table->encode(text.left(written), field)) {
        const QByteArray bytes = encodeWithin(text, width);
        written = bytes.size();
        std::memcpy(field, bytes.constData(), static_cast<size_t>(written));
    }
    std::memset(field + written, ' ', static_cast<size_t>(width - written));
}

// Qt's own stateful codec does not come back to its first state, in which spaces are spaces.
QByteArray TextCodec::encodeBeforePadding(QStringView text) const
{
    constexpr char escape = '\x1B';
    QByteArray bytes = encodeByCodec(text);
    if (!bytes.contains(escape))
        return bytes;
    const QByteArray withSpace = encodeByCodec(QString(text.toString() + QLatin1Char(' ')));
    return withSpace.endsWith(' ') ? withSpace.chopped(1) : bytes;
}

// Prefixes are encoded whole: a codec may make one character of several units or several bytes of
// one, and has states.
QByteArray TextCodec::encodeWithin(QStringView text, int room) const
{
    constexpr qsizetype mostUnitsPerByte = 4;
    const auto encodePrefix = [this, text](qsizetype size) {
        const bool isSplit = size > 0 && size < text.size() && text[size].isLowSurrogate() &&
                             text[size - 1].isHighSurrogate();
        return encodeBeforePadding(text.left(isSplit ? size - 1 : size));
    };
    qsizetype tooLong = std::min<qsizetype>(text.size(), mostUnitsPerByte * room);
    QByteArray longest = encodePrefix(tooLong);
    if (longest.size() <= room)
        return longest;
    longest.clear();
    for (qsizetype fitting = 0; tooLong - fitting > 1;) {
        const qsizetype size = fitting + (tooLong - fitting) / 2;
        const QByteArray bytes = encodePrefix(size);
        const bool fits = bytes.size() <= room;
        (fits ? fitting : tooLong) = size;
        if (fits)
            longest = bytes;
    }
    return longest;
}

bool TextCodec::writesExactly(QStringView text, int width) const
{
    std::array<char, TextScratch::size> bytes;
    if (!m_table || text.size() > std::min<qsizetype>(width, bytes.size()) ||
        !m_table->encode(text, bytes.data()))
        return false;
    return std::memchr(bytes.data(), 0, static_cast<size_t>(text.size())) == nullptr;
}

bool TextCodec::isAsciiTransparent() const
{
    return m_table && m_table->isAsciiTransparent();
}

} // namespace dbf
