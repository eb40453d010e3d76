// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "csvfields.h"

#include "quickstart/tableprinter.h"

#include <QtCore/QDate>
#include <QtCore/QLocale>
#include <QtCore/QRegularExpression>

#include <cmath>

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
    if (letter == 'I' || (letter == 'M' && field.length == 4))
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

/// Returns the bytes of a date, none if \a cell is no date.
QByteArray dateBytes(const QString& cell)
{
    const QDate date = QDate::fromString(cell, Qt::ISODate);
    return date.isValid() ? date.toString(QStringLiteral("yyyyMMdd")).toLatin1() : QByteArray();
}

/// Returns the bytes of a truth value or of "?", which means that it is not known.
QByteArray logicalBytes(const QString& cell)
{
    return cell.size() == 1 && QStringLiteral("TtFfYyNn?").contains(cell) ? cell.toLatin1()
                                                                          : QByteArray();
}

/// Returns the digits as they were written, right-justified as numbers stand in a table.
QByteArray numberBytes(const QString& cell, int length)
{
    bool isNumber = false;
    const double number = cell.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? cell.toLatin1().rightJustified(length)
                                             : QByteArray();
}

/// The converter cuts what is too long and puts something else for unknown characters. Reading the
/// bytes back tells whether that happened.
QByteArray textBytes(const QString& cell, const DbfSchema& schema, const DbfFieldDescriptor& field)
{
    const auto* converter = DbfStringConverter::instance();
    bool fits = false;
    const QByteArray bytes =
        DbfStringConverter::fromUnicode(cell, field.length, schema.codec, &fits);
    const bool isSame = converter->toVariant(bytes, schema, field).toString() == cell;
    return fits && isSame ? bytes.leftJustified(field.length) : QByteArray();
}

} // namespace

QString headerCell(const DbfFieldDescriptor& field)
{
    const DbfFieldDescriptor text = textField(field);
    const auto letter = QLatin1Char(static_cast<char>(text.type));
    return QStringLiteral("%1:%2:%3:%4")
        .arg(text.name, QString(letter), QString::number(text.length),
             QString::number(text.decimals));
}

bool parseHeaderCell(const QString& cell, DbfFieldDescriptor* field)
{
    static const QRegularExpression pattern(
        QStringLiteral("^(.+):([CDFLN]):(\\d{1,3})(?::(\\d{1,3}))?\\z"));
    const QRegularExpressionMatch match = pattern.match(cell);
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

QString cellText(const DbfRecordCursor& cursor, int column, const DbfFieldDescriptor& field)
{
    const auto letter = static_cast<char>(field.type);
    if (letter == 'D') {
        const QDate date = cursor.value(column).toDate();
        return date.isValid() ? date.toString(Qt::ISODate) : cursor.text(column).toString();
    }
    if (textTypes().contains(letter))
        return cursor.text(column).toString();
    const QVariant value = cursor.value(column);
    // As many digits as it takes to read the same number back.
    return value.userType() == QMetaType::Double
               ? QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest)
               : valueText(value, field);
}

bool fieldBytes(const QString& cell, const DbfSchema& schema, const DbfFieldDescriptor& field,
                QByteArray* bytes)
{
    const QString text = cell.trimmed();
    if (text.isEmpty())
        *bytes = QByteArray(field.length, ' ');
    else if (field.type == DbfFieldType::Date)
        *bytes = dateBytes(text);
    else if (field.type == DbfFieldType::Logical)
        *bytes = logicalBytes(text);
    else if (field.type == DbfFieldType::Character)
        *bytes = textBytes(text, schema, field);
    else
        *bytes = numberBytes(text, field.length);
    return bytes->size() == field.length;
}
