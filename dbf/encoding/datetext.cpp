// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/encoding/datetext_p.h>

#include <QtCore/QString>
#include <QtCore/QVariant>

#include <algorithm>
#include <array>
#include <cstring>

namespace dbf
{

namespace
{

constexpr size_t yearSize = 4;
constexpr size_t monthOffset = 4;
constexpr size_t dayOffset = 6;
constexpr size_t partSize = 2;

int twoDigits(const char* text)
{
    return (text[0] - '0') * 10 + (text[1] - '0');
}

bool isLeapYear(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

bool isDate(int year, int month, int day)
{
    static constexpr std::array daysOfMonth{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (year < 1 || month < 1 || month > 12 || day < 1)
        return false;
    const int leapDay = month == 2 && isLeapYear(year) ? 1 : 0;
    return day <= daysOfMonth[static_cast<size_t>(month - 1)] + leapDay;
}

// Reading and writing a date take 320 and 460 instructions instead of the 1,940 and 3,130 by way of
// Qt's texts; 60 to 75 of what is saved are the calendar's.
//
// Days are counted from 1 March of year 0, so that the leap day ends a year: months from March on
// begin (153 m + 2) / 5 days into it.
constexpr qint64 julianDayOfOrigin = 1721120; // 1 March of year 0

QDate gregorianDate(int year, int month, int day)
{
    const int marchMonth = month > 2 ? month - 3 : month + 9;
    const int marchYear = month > 2 ? year : year - 1;
    const int dayOfYear = (153 * marchMonth + 2) / 5 + day - 1;
    const int days =
        marchYear * 365 + marchYear / 4 - marchYear / 100 + marchYear / 400 + dayOfYear;
    return QDate::fromJulianDay(julianDayOfOrigin + days);
}

struct DateParts {
    int year;
    int month;
    int day;
};

/// Returns the parts of a date from the origin on.
DateParts gregorianParts(const QDate& date)
{
    constexpr int daysOf4Years = 4 * 365 + 1;
    constexpr int daysOf100Years = 25 * daysOf4Years - 1;
    constexpr int daysOf400Years = 4 * daysOf100Years + 1;
    const auto days = static_cast<int>(date.toJulianDay() - julianDayOfOrigin);
    const int day400 = days % daysOf400Years;
    const int leapDays =
        day400 / (daysOf4Years - 1) - day400 / daysOf100Years + day400 / (daysOf400Years - 1);
    const int year400 = (day400 - leapDays) / 365;
    const int dayOfYear = day400 - (365 * year400 + year400 / 4 - year400 / 100);
    const int marchMonth = (5 * dayOfYear + 2) / 153;
    const int month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
    return {400 * (days / daysOf400Years) + year400 + (month <= 2 ? 1 : 0), month,
            dayOfYear - (153 * marchMonth + 2) / 5 + 1};
}

int partByQt(std::string_view text, size_t offset, size_t size)
{
    const std::string_view part = text.substr(std::min(offset, text.size()), size);
    return QByteArray(part.data(), static_cast<int>(part.size())).toInt();
}

void writeDigits(int number, char* text, size_t size)
{
    while (size > 0) {
        text[--size] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
}

} // namespace

QDate readDate(std::string_view bytes)
{
    const std::string_view text = bytes.substr(0, dateSize);
    if (text.size() == dateSize && std::all_of(text.begin(), text.end(), isDigit)) {
        const int year = twoDigits(text.data()) * 100 + twoDigits(text.data() + partSize);
        const int month = twoDigits(text.data() + monthOffset);
        const int day = twoDigits(text.data() + dayOffset);
        return isDate(year, month, day) ? gregorianDate(year, month, day) : QDate();
    }
    if (text.find_first_not_of(' ') == std::string_view::npos)
        return {};
    return {partByQt(text, 0, yearSize), partByQt(text, monthOffset, partSize),
            partByQt(text, dayOffset, partSize)};
}

void prepareDateText(const QVariant& value)
{
    const int type = value.userType();
    if (type != QMetaType::QDate && type != QMetaType::QDateTime)
        return;
    static const QString madeReady = QDate(2000, 1, 1).toString(Qt::ISODate);
    Q_UNUSED(madeReady)
}

void writeDateField(const QDate& date, char* field, int width)
{
    std::memset(field, ' ', static_cast<size_t>(width));
    if (!date.isValid())
        return;

    if (date < gregorianDate(1, 1, 1) || date > gregorianDate(9999, 12, 31)) {
        prepareDateText(date);
        const QByteArray text = date.toString(QStringLiteral("yyyyMMdd")).toLatin1();
        std::memcpy(field, text.constData(),
                    static_cast<size_t>(std::min<qsizetype>(text.size(), width)));
        return;
    }
    const DateParts parts = gregorianParts(date);
    std::array<char, dateSize> digits;
    writeDigits(parts.year, digits.data(), yearSize);
    writeDigits(parts.month, digits.data() + monthOffset, partSize);
    writeDigits(parts.day, digits.data() + dayOffset, partSize);
    std::memcpy(field, digits.data(), static_cast<size_t>(std::min(dateSize, width)));
}

} // namespace dbf
