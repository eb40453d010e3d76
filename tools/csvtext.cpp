// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "csvtext.h"

#include "quickstart/utf8stream.h"

#include <algorithm>

namespace
{

constexpr int charactersPerBlock = 1 << 16;

bool isLineEnd(QChar character)
{
    return character == QLatin1Char('\n') || character == QLatin1Char('\r');
}

/// Spaces at the ends are quoted, too: some programs drop those that are not.
bool needsQuotes(const QByteArray& cell)
{
    const auto isSpecial = [](char byte) {
        return byte == ',' || byte == '"' || byte == '\n' || byte == '\r';
    };
    return !cell.isEmpty() && (cell.front() == ' ' || cell.back() == ' ' ||
                               std::any_of(cell.begin(), cell.end(), isSpecial));
}

void appendQuoted(const QByteArray& cell, QByteArray& text)
{
    text += '"';
    for (const char byte : cell) {
        if (byte == '"')
            text += '"';
        text += byte;
    }
    text += '"';
}

} // namespace

void appendRow(const QVector<QByteArray>& row, QByteArray& text)
{
    // An only cell that is empty would make an empty line, which reads as no row at all.
    if (row.size() == 1 && row.first().isEmpty())
        text += "\"\"";
    for (int i = 0; i < row.size(); ++i) {
        if (i > 0)
            text += ',';
        if (needsQuotes(row.at(i)))
            appendQuoted(row.at(i), text);
        else
            text += row.at(i);
    }
    text += '\n';
}

CsvReader::CsvReader(QIODevice* device) : m_stream(device)
{
    useUtf8(m_stream);
}

bool CsvReader::readRow(QStringList* row)
{
    row->clear();
    while (hasMore() && isLineEnd(peek()))
        takeLineEnd();
    if (!hasMore())
        return false;

    m_rowLine = m_line;
    for (;;) {
        row->append(readCell());
        if (m_hasError)
            return false;
        if (!hasMore())
            return true;
        if (isLineEnd(peek())) {
            takeLineEnd();
            return true;
        }
        take(); // The comma: another cell follows, be it an empty one.
    }
}

int CsvReader::line() const
{
    return m_rowLine;
}

bool CsvReader::hasError() const
{
    return m_hasError;
}

bool CsvReader::hasMore()
{
    if (m_position == m_block.size()) {
        m_block = m_stream.read(charactersPerBlock);
        m_position = 0;
    }
    return m_position < m_block.size();
}

QChar CsvReader::peek() const
{
    return m_block.at(m_position);
}

QChar CsvReader::take()
{
    return m_block.at(m_position++);
}

bool CsvReader::isAtCellEnd()
{
    return !hasMore() || peek() == QLatin1Char(',') || isLineEnd(peek());
}

void CsvReader::takeLineEnd()
{
    const bool isCarriageReturn = take() == QLatin1Char('\r');
    if (isCarriageReturn && hasMore() && peek() == QLatin1Char('\n'))
        take();
    ++m_line;
}

QString CsvReader::readCell()
{
    if (hasMore() && peek() == QLatin1Char('"'))
        return readQuoted();
    QString cell;
    while (!isAtCellEnd())
        cell += take();
    return cell;
}

QString CsvReader::readQuoted()
{
    QString cell;
    take();
    while (hasMore()) {
        const QChar character = take();
        if (character == QLatin1Char('\n'))
            ++m_line;
        if (character != QLatin1Char('"')) {
            cell += character;
            continue;
        }
        if (!hasMore() || peek() != QLatin1Char('"')) {
            m_hasError = !isAtCellEnd();
            return cell;
        }
        cell += take();
    }
    m_hasError = true;
    return cell;
}
