// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "celltext.h"

#include "terminal.h"

#include <QTextCodec>
#include <QtCore/QDateTime>
#include <QtCore/QLocale>

#include <algorithm>
#include <cmath>

using namespace dbf;

namespace
{

bool isPlain(char byte)
{
    return byte >= ' ' && byte <= '~';
}

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

std::string_view trimmed(std::string_view bytes)
{
    const std::size_t first = bytes.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return bytes.substr(first, bytes.find_last_not_of(' ') + 1 - first);
}

void append(std::string_view bytes, QByteArray& text)
{
    text.append(bytes.data(), static_cast<int>(bytes.size()));
}

/// Whether fields of printable ASCII can be taken as they are.
bool keepsAscii(QTextCodec* codec)
{
    QByteArray all;
    for (char byte = ' '; byte <= '~'; ++byte)
        all.append(byte);
    return codec != nullptr && codec->toUnicode(all) == QLatin1String(all);
}

int number(std::string_view digits)
{
    int result = 0;
    for (const char digit : digits)
        result = result * 10 + (digit - '0');
    return result;
}

bool isDate(std::string_view bytes)
{
    return bytes.size() == 8 && std::all_of(bytes.begin(), bytes.end(), isDigit) &&
           number(bytes.substr(0, 4)) > 0 &&
           QDate::isValid(number(bytes.substr(0, 4)), number(bytes.substr(4, 2)),
                          number(bytes.substr(6, 2)));
}

/// Whether \a text is a number by the grammar of JSON, without an exponent.
bool isJsonNumber(std::string_view text)
{
    if (!text.empty() && text.front() == '-')
        text.remove_prefix(1);
    const std::size_t point = std::min(text.find('.'), text.size());
    const std::string_view whole = text.substr(0, point);
    const std::string_view part = text.substr(std::min(point + 1, text.size()));
    return !whole.empty() && (whole == "0" || whole.front() != '0') &&
           std::all_of(whole.begin(), whole.end(), isDigit) &&
           (point == text.size() || !part.empty()) &&
           std::all_of(part.begin(), part.end(), isDigit);
}

QByteArray otherText(const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::QDateTime:
        return value.toDateTime().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzz")).toLatin1();
    case QMetaType::Double:
        return QByteArray::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::QByteArray:
        return value.toByteArray().isEmpty() ? QByteArray() : "0x" + value.toByteArray().toHex();
    default:
        return value.toString().toUtf8();
    }
}

} // namespace

CellText::CellText(const DbfRecordCursor& cursor, const DbfSchema& schema)
    : m_cursor(cursor), m_isAsciiKept(keepsAscii(schema.codec))
{
    for (const DbfColumn& column : schema.columns)
        m_kinds.append(kindOf(column.descriptor));
}

CellText::Kind CellText::kindOf(const DbfFieldDescriptor& field)
{
    switch (field.type) {
    case DbfFieldType::Character:
        return Kind::Text;
    case DbfFieldType::Numeric:
    case DbfFieldType::Float:
        return Kind::Number;
    case DbfFieldType::Date:
        return field.length == 8 ? Kind::Date : Kind::Other;
    case DbfFieldType::Logical:
        return field.length == 1 ? Kind::Logical : Kind::Other;
    }
    return Kind::Other;
}

void CellText::append(int column, QByteArray& text) const
{
    switch (m_kinds.at(column)) {
    case Kind::Text:
        return appendText(column, text);
    case Kind::Number:
        if (!appendPlain(trimmed(m_cursor.bytes(column)), text))
            text += m_cursor.text(column).toUtf8();
        return;
    case Kind::Date:
        return appendDate(column, text);
    case Kind::Logical:
        return appendLogical(column, text);
    case Kind::Other:
        text += otherText(m_cursor.value(column));
    }
}

bool CellText::appendPlain(std::string_view bytes, QByteArray& text) const
{
    if (!m_isAsciiKept || !std::all_of(bytes.begin(), bytes.end(), isPlain))
        return false;
    ::append(bytes, text);
    return true;
}

void CellText::appendText(int column, QByteArray& text) const
{
    const std::string_view bytes = m_cursor.bytes(column);
    const std::size_t last = bytes.find_last_not_of(' ');
    if (last == std::string_view::npos || appendPlain(bytes.substr(0, last + 1), text))
        return;
    // text() is the faster one, but takes away the blanks in front.
    const auto isInk = [](char byte) { return static_cast<unsigned char>(byte) > ' '; };
    if (isInk(bytes.front()) && std::all_of(bytes.begin(), bytes.end(), [&](char byte) {
            return byte == ' ' || (isInk(byte) && byte != '\x7f');
        }))
        text += m_cursor.text(column).toUtf8();
    else
        text += m_cursor.value(column).toString().toUtf8();
}

void CellText::appendDate(int column, QByteArray& text) const
{
    const std::string_view bytes = m_cursor.bytes(column);
    if (!isDate(bytes)) {
        text += m_cursor.text(column).toUtf8();
        return;
    }
    ::append(bytes.substr(0, 4), text);
    text += '-';
    ::append(bytes.substr(4, 2), text);
    text += '-';
    ::append(bytes.substr(6, 2), text);
}

void CellText::appendLogical(int column, QByteArray& text) const
{
    const QVariant value = m_cursor.value(column);
    if (value.isValid())
        text += value.toBool() ? 'T' : 'F';
    else if (m_cursor.bytes(column) != "?")
        text += m_cursor.text(column).toUtf8();
}

void CellText::appendJson(int column, QByteArray& json) const
{
    const Kind kind = m_kinds.at(column);
    if (kind == Kind::Number)
        return appendNumberJson(column, json);
    QByteArray text;
    append(column, text);
    if (text.isEmpty() || (kind != Kind::Text && !m_cursor.value(column).isValid()))
        json += "null";
    else if (kind == Kind::Logical)
        json += text == "T" ? "true" : "false";
    else if (kind == Kind::Other && isJsonNumber({text.constData(), std::size_t(text.size())}))
        json += text;
    else
        appendJsonString(text, json);
}

void CellText::appendNumberJson(int column, QByteArray& json) const
{
    const std::string_view bytes = trimmed(m_cursor.bytes(column));
    if (isJsonNumber(bytes))
        return ::append(bytes, json);
    const QVariant value = m_cursor.value(column);
    const double real = value.toDouble();
    json += value.isValid() && std::isfinite(real)
                ? QByteArray::number(real, 'g', QLocale::FloatingPointShortest)
                : QByteArray("null");
}

QString jsonSafe(const QString& json)
{
    QString safe;
    for (const QChar character : json) {
        if (character.isPrint() || character.isSurrogate())
            safe += character;
        else
            safe += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
    }
    return safe;
}

void appendJsonString(const QByteArray& text, QByteArray& json)
{
    QByteArray quoted;
    for (const char byte : text) {
        if (byte == '"' || byte == '\\')
            quoted += '\\';
        quoted += byte;
    }
    const bool isAscii = std::all_of(text.begin(), text.end(), isPlain);
    json += '"' + (isAscii ? quoted : jsonSafe(QString::fromUtf8(quoted)).toUtf8()) + '"';
}
