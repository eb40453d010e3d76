// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "schematext.h"

#include <QtCore/QRegularExpression>

using namespace dbf;

namespace
{

constexpr int longestField = 255;
constexpr int dateLength = 8;

QByteArray textTypes()
{
    return QByteArrayLiteral("CDFLN");
}

/// Returns the field that has room for the text of any cell of \a field.
DbfFieldDescriptor textField(const DbfFieldDescriptor& field)
{
    const auto letter = static_cast<char>(field.type);
    if (textTypes().contains(letter))
        return field;
    if (letter == 'I')
        return DbfFieldDescriptor::numberField(field.name, 11, 0);
    if (letter == 'Y')
        return DbfFieldDescriptor::numberField(field.name, 21, 4);
    if (letter == 'B')
        return DbfFieldDescriptor::numberField(field.name, 24, field.decimals);
    // A date with its time, plain text, or two digits for each byte behind "0x".
    const int length = qBound(19, 2 + 2 * field.length, longestField);
    return DbfFieldDescriptor::stringField(field.name, static_cast<unsigned char>(length));
}

bool isPossible(int length, char letter)
{
    switch (letter) {
    case 'D':
        return length == dateLength;
    case 'L':
        return length == 1;
    default:
        return length >= 1 && length <= longestField;
    }
}

} // namespace

QString fieldText(const DbfFieldDescriptor& field)
{
    const DbfFieldDescriptor text = textField(field);
    const auto letter = QLatin1Char(static_cast<char>(text.type));
    return QStringLiteral("%1:%2:%3:%4")
        .arg(text.name, QString(letter), QString::number(text.length),
             QString::number(text.decimals));
}

bool parseField(const QString& text, DbfFieldDescriptor* field)
{
    static const QRegularExpression pattern(
        QStringLiteral("^(.+):([CDFLN]):(\\d{1,3})(?::(\\d{1,3}))?\\z"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return false;
    const char letter = match.captured(2).at(0).toLatin1();
    const int length = match.captured(3).toInt();
    const int decimals = match.captured(4).toInt();
    if (!isPossible(length, letter) || decimals > longestField)
        return false;
    *field = DbfFieldDescriptor(match.captured(1), static_cast<DbfFieldType>(letter),
                                static_cast<unsigned char>(length),
                                static_cast<unsigned char>(decimals));
    return true;
}
