// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/datetext_p.h>

#include <QtCore/QString>

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
constexpr size_t dateSize = 8;

int digitsAt(std::string_view text, size_t offset, size_t size)
{
    int number = 0;
    for (const char digit : text.substr(offset, size))
        number = number * 10 + (digit - '0');
    return number;
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
    const auto isDigit = [](char byte) { return byte >= '0' && byte <= '9'; };
    if (text.size() == dateSize && std::all_of(text.begin(), text.end(), isDigit))
        return {digitsAt(text, 0, yearSize), digitsAt(text, monthOffset, partSize),
                digitsAt(text, dayOffset, partSize)};
    if (text.find_first_not_of(' ') == std::string_view::npos)
        return {};
    return {partByQt(text, 0, yearSize), partByQt(text, monthOffset, partSize),
            partByQt(text, dayOffset, partSize)};
}

void appendDateField(const QDate& date, int width, QByteArray& image)
{
    const int start = image.size();
    image.resize(start + width);
    char* const field = image.data() + start;
    std::memset(field, ' ', static_cast<size_t>(width));
    if (!date.isValid())
        return;

    std::array<char, dateSize> digits;
    int year = 0;
    int month = 0;
    int day = 0;
    date.getDate(&year, &month, &day);
    if (year < 1 || year > 9999) {
        const QByteArray text = date.toString(QStringLiteral("yyyyMMdd")).toLatin1();
        std::memcpy(field, text.constData(), static_cast<size_t>(std::min(text.size(), width)));
        return;
    }
    writeDigits(year, digits.data(), yearSize);
    writeDigits(month, digits.data() + monthOffset, partSize);
    writeDigits(day, digits.data() + dayOffset, partSize);
    std::memcpy(field, digits.data(), std::min(dateSize, static_cast<size_t>(width)));
}

} // namespace dbf
