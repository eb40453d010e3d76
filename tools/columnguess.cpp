// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "columnguess.h"

#include <QTextCodec>
#include <QtCore/QDate>
#include <QtCore/QStringList>

#include <algorithm>

using namespace dbf;

namespace
{

constexpr int longestText = 254;
constexpr int longestNumber = 20;
constexpr int dateLength = 8;
constexpr int isoDateLength = 10;

template <typename Text>
int sizeOf(const Text& text)
{
    return static_cast<int>(text.size());
}

bool isDate(const QString& cell)
{
    return cell.size() == isoDateLength && QDate::fromString(cell, Qt::ISODate).isValid();
}

bool isLogical(const QString& cell)
{
    static const QStringList words{QStringLiteral("t"), QStringLiteral("f"), QStringLiteral("true"),
                                   QStringLiteral("false")};
    return words.contains(cell.toLower());
}

bool isAscii(const QString& cell)
{
    return std::all_of(cell.begin(), cell.end(),
                       [](QChar character) { return character.unicode() < 0x80; });
}

bool isDigits(const QString& text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar character) {
        return character >= QLatin1Char('0') && character <= QLatin1Char('9');
    });
}

} // namespace

void ColumnGuess::add(const QString& cell, QTextCodec* codec)
{
    if (cell.isEmpty())
        return;
    m_isEmpty = false;
    // Encoding each cell would take most of the time.
    if (!isAscii(cell))
        m_bytes = std::max(m_bytes, sizeOf(codec->fromUnicode(cell)));
    m_bytes = std::max(m_bytes, sizeOf(cell));
    m_isDate = m_isDate && isDate(cell);
    m_isLogical = m_isLogical && isLogical(cell);
    if (m_isNumber)
        addNumber(cell);
}

void ColumnGuess::addNumber(const QString& cell)
{
    const int sign = cell.startsWith(QLatin1Char('-')) ? 1 : 0;
    const auto point = cell.indexOf(QLatin1Char('.'));
    const QString whole = cell.mid(sign, point < 0 ? -1 : point - sign);
    const QString decimals = point < 0 ? QString() : cell.mid(point + 1);
    // A number in front of which zeros stand is a code, as of an article or a post office.
    m_isNumber = isDigits(whole) && (whole.size() == 1 || !whole.startsWith(QLatin1Char('0'))) &&
                 (point < 0 || isDigits(decimals));
    m_whole = std::max(m_whole, sign + sizeOf(whole));
    m_decimals = std::max(m_decimals, sizeOf(decimals));
}

DbfFieldDescriptor ColumnGuess::field(const QString& name) const
{
    const int length = m_whole + (m_decimals > 0 ? 1 + m_decimals : 0);
    if (!m_isEmpty && m_isDate)
        return {name, DbfFieldType::Date, dateLength, 0};
    if (!m_isEmpty && m_isLogical)
        return DbfFieldDescriptor::logicalField(name);
    if (!m_isEmpty && m_isNumber && length <= longestNumber)
        return DbfFieldDescriptor::numberField(name, static_cast<unsigned char>(length),
                                               static_cast<unsigned char>(m_decimals));
    return DbfFieldDescriptor::stringField(
        name, static_cast<unsigned char>(std::min(m_bytes, longestText)));
}
