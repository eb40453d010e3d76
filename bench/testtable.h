// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef BENCH_TESTTABLE_H
#define BENCH_TESTTABLE_H

#include <array>
#include <string>

/// The table that all workloads use: any number of rows of ten columns, always the same for the
/// same row number. Neither made nor checked with the library under test.
namespace bench
{

enum ColumnIndex { Id, Name, City, Price, Sold, Active, Weight, Address, Code, Quantity };

struct Column {
    const char* name;
    char type;
    int length;
    int decimals;
};

constexpr int columnCount = 10;
constexpr std::array<Column, columnCount> columns = {{{"ID", 'N', 10, 0},
                                                      {"NAME", 'C', 30, 0},
                                                      {"CITY", 'C', 20, 0},
                                                      {"PRICE", 'N', 14, 2},
                                                      {"SOLD", 'D', 8, 0},
                                                      {"ACTIVE", 'L', 1, 0},
                                                      {"WEIGHT", 'F', 20, 6},
                                                      {"ADDRESS", 'C', 50, 0},
                                                      {"CODE", 'C', 8, 0},
                                                      {"QUANTITY", 'N', 6, 0}}};

constexpr int headerLength = 32 + 32 * columnCount + 1;                       // bytes
constexpr int recordLength = 1 + 10 + 30 + 20 + 14 + 8 + 1 + 20 + 50 + 8 + 6; // bytes

/// The trimmed texts of one row's fields, in Windows-1251. Some are blank.
using Row = std::array<std::string, columnCount>;

Row makeRow(int index);

/// Writes a table of the first \a records rows, none of them marked deleted.
void writeTestTable(const std::string& path, int records);

/// One number per column, to see that every reader saw the same: for C the characters of the
/// trimmed text, for F the sum, for D the number of dates, for L the number of true values; for N
/// the characters or the sum, as the reader gives text or numbers.
using Sums = std::array<double, columnCount>;

enum class Numeric { AsText, AsNumber };

void addRow(Sums& sums, const Row& row, Numeric numeric);

/// Returns the sums of the first \a records rows.
Sums sumsOfRows(int records, Numeric numeric);

} // namespace bench

#endif
