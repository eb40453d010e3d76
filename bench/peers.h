// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef BENCH_PEERS_H
#define BENCH_PEERS_H

#include "testtable.h"

#include <string>
#include <vector>

/// What the other libraries are asked to do, through their public interfaces. Each is there when
/// its library was found (BENCH_SHAPELIB, BENCH_XBASE64, BENCH_GDAL). A failure throws
/// std::runtime_error.
namespace bench
{

/// Every field as bytes, F as double.
Sums shapelibReadAll(const std::string& table);
/// NAME as bytes and WEIGHT as double.
Sums shapelibReadTwoColumns(const std::string& table);
/// Every field of the records \a indexes as shapelibReadAll() reads them.
Sums shapelibReadRandom(const std::string& table, const std::vector<int>& indexes);
/// Makes a table of \a records records, \a rows over and over: C, N and D as bytes, L as a letter,
/// F as double.
void shapelibAppend(const std::string& table, std::vector<Row>& rows, int records);
/// Writes the fields of the records \a indexes as shapelibAppend() does, \a rows over and over.
void shapelibUpdate(const std::string& table, std::vector<Row>& rows,
                    const std::vector<int>& indexes);

/// Every field as bytes, F as double.
Sums xbase64ReadAll(const std::string& table);

/// Every record as a feature, every field as the type that it has there.
Sums gdalReadAll(const std::string& table);

} // namespace bench

#endif
