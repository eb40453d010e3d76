// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/singlebytetable_p.h>
#include <dbf/converters/textcodec_p.h>
#include <dbf/format/codepage_p.h>

#include <QtCore/QTextCodec>

#include <algorithm>
#include <cstring>

namespace dbf
{

namespace
{

std::string_view beforeFirstNul(std::string_view bytes)
{
    return bytes.substr(0, bytes.find('\0'));
}

} // namespace

TextCodec::TextCodec(QTextCodec* codec)
    : m_codec(usableCodec(codec)), m_table(SingleByteTable::of(m_codec))
{
}

QString TextCodec::decode(std::string_view bytes) const
{
    const std::string_view content = beforeFirstNul(bytes);
    if (!m_table)
        return m_codec->toUnicode(content.data(), static_cast<int>(content.size()), nullptr)
            .trimmed();
    const std::string_view trimmed = m_table->trimmed(content);
    QString text(static_cast<int>(trimmed.size()), Qt::Uninitialized);
    m_table->decode(trimmed, text.data());
    return text;
}

QStringView TextCodec::decode(std::string_view bytes, QString& scratch) const
{
    if (!m_table) {
        scratch = decode(bytes);
        return scratch;
    }
    const std::string_view trimmed = m_table->trimmed(beforeFirstNul(bytes));
    const auto size = static_cast<int>(trimmed.size());
    if (scratch.size() < size)
        scratch.resize(size);
    QChar* const units = scratch.data();
    m_table->decode(trimmed, units);
    return {units, size};
}

QByteArray TextCodec::encode(QStringView text) const
{
    if (m_table) {
        QByteArray bytes(static_cast<int>(text.size()), Qt::Uninitialized);
        if (m_table->encode(text, bytes.data()))
            return bytes;
    }
    return encodeByCodec(text);
}

QByteArray TextCodec::encodeByCodec(QStringView text) const
{
    static constexpr QChar nothing; // codecs are never handed a null pointer
    const QChar* const units = text.isEmpty() ? &nothing : text.data();
    return m_codec->fromUnicode(units, static_cast<int>(text.size()), nullptr);
}

void TextCodec::appendField(QStringView text, int width, QByteArray& image) const
{
    const QStringView trimmed = text.trimmed();
    const QStringView content = trimmed.left(std::min<qsizetype>(trimmed.size(), width));
    const int start = image.size();
    image.resize(start + width);
    char* const field = image.data() + start;
    qsizetype written = content.size();
    if (!m_table || !m_table->encode(content, field)) {
        const QByteArray bytes = encodeByCodec(content);
        written = std::min(bytes.size(), width);
        std::memcpy(field, bytes.constData(), static_cast<size_t>(written));
    }
    std::memset(field + written, 0, static_cast<size_t>(width - written));
}

bool TextCodec::isAsciiTransparent() const
{
    return m_table && m_table->isAsciiTransparent();
}

} // namespace dbf
