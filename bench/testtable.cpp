// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "testtable.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace bench
{

namespace
{

constexpr char windowsCyrillic = '\xC9';

constexpr std::u16string_view goods[] = {u"Молоко", u"Хлеб",   u"Сыр твёрдый", u"Гвозди",
                                         u"Краска", u"Бумага", u"Лампа",       u"Чай чёрный",
                                         u"Провод", u"Доска",  u"Мыло",        u"Удобрение"};
constexpr std::u16string_view kinds[] = {u"", u" белый", u" (оптом)", u" 1-й сорт", u" импортное"};
constexpr std::u16string_view cities[] = {u"Москва",      u"Тверь",     u"Нижний Новгород",
                                          u"Ростов",      u"Уфа",       u"Санкт-Петербург",
                                          u"Владивосток", u"Смоленск",  u"",
                                          u"Омск",        u"Йошкар-Ола"};
constexpr std::u16string_view streets[] = {u"ул. Ленина", u"просп. Мира", u"ул. Советская",
                                           u"наб. реки Мойки", u"бульвар Космонавтов"};

/// Gives well mixed numbers that depend on nothing but the row.
class Dice
{
public:
    explicit Dice(int row) : m_state(static_cast<std::uint64_t>(row) << 32) {}

    int below(int limit)
    {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = m_state;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
        mixed ^= mixed >> 31;
        return static_cast<int>(mixed % static_cast<std::uint64_t>(limit));
    }

    template <size_t size>
    std::u16string_view oneOf(const std::u16string_view (&texts)[size])
    {
        return texts[below(static_cast<int>(size))];
    }

private:
    std::uint64_t m_state;
};

void appendWindows1251(std::string& bytes, std::u16string_view text)
{
    for (const char16_t unit : text) {
        if (unit < 0x80)
            bytes += static_cast<char>(unit);
        else if (unit == u'ё')
            bytes += '\xB8';
        else
            bytes += static_cast<char>(0xC0 + (unit - u'А'));
    }
}

template <typename... Arguments>
std::string formatted(const char* format, Arguments... arguments)
{
    char text[64];
    const int length = std::snprintf(text, sizeof text, format, arguments...);
    return std::string(text, static_cast<size_t>(length));
}

void appendPadded(std::string& image, const std::string& text, const Column& column)
{
    const std::string padding(static_cast<size_t>(column.length) - text.size(), ' ');
    const bool rightJustified = column.type == 'N' || column.type == 'F';
    image += rightJustified ? padding + text : text + padding;
}

void appendLittleEndian(std::string& bytes, std::uint32_t number, int size)
{
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(number >> (8 * i) & 0xFF);
}

std::string tableStart(int records)
{
    std::string bytes("\x03\x7C\x01\x01", 4);
    appendLittleEndian(bytes, static_cast<std::uint32_t>(records), 4);
    appendLittleEndian(bytes, headerLength, 2);
    appendLittleEndian(bytes, recordLength, 2);
    bytes.resize(29);
    bytes += windowsCyrillic;
    bytes.resize(32);
    for (const Column& column : columns) {
        std::string field = column.name;
        field.resize(11);
        field += column.type;
        field.resize(16);
        field += static_cast<char>(column.length);
        field += static_cast<char>(column.decimals);
        field.resize(32);
        bytes += field;
    }
    return bytes + '\x0D';
}

} // namespace

Row makeRow(int index)
{
    Dice dice(index);
    Row row;
    row[Id] = formatted("%d", index + 1);
    appendWindows1251(row[Name], dice.oneOf(goods));
    appendWindows1251(row[Name], dice.oneOf(kinds));
    appendWindows1251(row[City], dice.oneOf(cities));
    if (dice.below(16) != 0)
        row[Price] = formatted("%d.%02d", dice.below(1000000), dice.below(100));
    if (dice.below(16) != 0)
        row[Sold] = formatted("%04d%02d%02d", 1990 + dice.below(40), 1 + dice.below(12),
                              1 + dice.below(28));
    row[Active] = dice.below(3) != 0 ? "T" : "F";
    row[Weight] = formatted("%s%d.%06d", dice.below(8) == 0 ? "-" : "", dice.below(100000),
                            dice.below(1000000));
    appendWindows1251(row[Address], dice.oneOf(streets));
    row[Address] += formatted(", %d", 1 + dice.below(200));
    if (dice.below(2) == 0) {
        appendWindows1251(row[Address], u", кв. ");
        row[Address] += formatted("%d", 1 + dice.below(500));
    }
    row[Code] = formatted("%c-%d", 'A' + dice.below(26), dice.below(100000));
    row[Quantity] = formatted("%d", dice.below(100000));
    return row;
}

void writeTestTable(const std::string& path, int records)
{
    std::ofstream file(path, std::ios::binary);
    file << tableStart(records);
    std::string image;
    for (int index = 0; index < records; ++index) {
        const Row row = makeRow(index);
        image = " ";
        for (size_t column = 0; column < columnCount; ++column)
            appendPadded(image, row[column], columns[column]);
        file << image;
    }
    file << '\x1A' << std::flush;
    if (!file)
        throw std::runtime_error("cannot write " + path);
}

void addRow(Sums& sums, const Row& row, Numeric numeric)
{
    for (size_t column = 0; column < columnCount; ++column) {
        const std::string& text = row[column];
        const char type = columns[column].type;
        if (type == 'F' || (type == 'N' && numeric == Numeric::AsNumber))
            sums[column] += std::strtod(text.c_str(), nullptr);
        else if (type == 'D')
            sums[column] += text.empty() ? 0 : 1;
        else if (type == 'L')
            sums[column] += text == "T" ? 1 : 0;
        else
            sums[column] += static_cast<double>(text.size());
    }
}

Sums sumsOfRows(int records, Numeric numeric)
{
    Sums sums{};
    for (int index = 0; index < records; ++index)
        addRow(sums, makeRow(index), numeric);
    return sums;
}

} // namespace bench
