// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/valuechecker_p.h>
#include <dbf/encoding/qt5values_p.h>
#include <dbf/model/dbfvalueproblem.h>

#include <QtCore/QLocale>

#include <cmath>

namespace dbf
{

namespace
{

QString textOf(const QVariant& value)
{
    constexpr double longestWritten = 1e15;
    if (value.userType() == qMetaTypeId<QDecNumber>())
        return value.value<QDecNumber>().toString();
    if (value.userType() == QMetaType::Double && std::abs(value.toDouble()) < longestWritten)
        return QString::number(value.toDouble(), 'f', QLocale::FloatingPointShortest);
    return qt5::toText(value);
}

QString shown(const QVariant& value)
{
    constexpr int mostShown = 60;
    if (qt5::isNull(value))
        return QStringLiteral("no value");
    const bool isText = value.userType() == QMetaType::QString;
    QString text = textOf(value);
    if (text.size() > mostShown)
        text = text.left(mostShown) + QStringLiteral("…");
    if (isText)
        text = QLatin1Char('"') + text + QLatin1Char('"');
    return text;
}

bool isNumberText(DbfFieldType type)
{
    return type == DbfFieldType::Numeric || type == DbfFieldType::Float;
}

QString room(const DbfFieldDescriptor& field)
{
    if (!isNumberText(field.type))
        return QStringLiteral("is beyond what the field holds");
    QString places = QStringLiteral("does not fit %1 places").arg(field.length);
    if (field.decimals != 0)
        places += QStringLiteral(" with %1 decimals").arg(field.decimals);
    return places;
}

QString kindOfValue(DbfFieldType type)
{
    switch (static_cast<char>(type)) {
    case 'D':
        return QStringLiteral("date");
    case 'T':
        return QStringLiteral("date and time");
    case 'L':
        return QStringLiteral("truth value");
    default:
        return QStringLiteral("number");
    }
}

QString complaint(const DbfValueProblem& problem)
{
    switch (problem.reason) {
    case DbfValueProblem::Reason::TooLong:
        return QStringLiteral("is longer than %1 bytes").arg(problem.field.length);
    case DbfValueProblem::Reason::TooLarge:
        return room(problem.field);
    case DbfValueProblem::Reason::NotInCodePage:
        return QStringLiteral("has characters that the code page lacks");
    case DbfValueProblem::Reason::NotOfType:
        return QStringLiteral("is no ") + kindOfValue(problem.field.type);
    case DbfValueProblem::Reason::NotWritable:
        return QStringLiteral("cannot be written");
    case DbfValueProblem::Reason::Changed:
        break;
    }
    return QStringLiteral("would read back as something else");
}

} // namespace

QString DbfValueProblem::text() const
{
    return field.name + QStringLiteral(": ") + shown(value) + QLatin1Char(' ') + complaint(*this);
}

QVector<DbfValueProblem> checkValues(const DbfRecord& record, const DbfSchema& schema)
{
    return ValueChecker(schema).problemsOf(record, 0);
}

} // namespace dbf
