// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef BENCH_COPIES_H
#define BENCH_COPIES_H

#include "testtable.h"

#include <string>

namespace bench
{

enum class Copy {
    Identity,    ///< Every column as it is.
    Restructure, ///< CODE dropped, NOTE inserted, CITY widened, PRICE made a float, QUANTITY moved.
    Recode,      ///< Every text to DOS Cyrillic.
};

constexpr const char* copyNames[] = {"identity", "restructure", "recode"};

/// Copies a test table with the library. Throws std::runtime_error on failure.
void copyTable(Copy copy, const std::string& source, const std::string& target);

/// Ends the program unless \a target holds what a copy of a table of the sums \a original has to
/// hold. \a subject names who made it.
void checkCopy(const std::string& subject, Copy copy, const std::string& target, Sums original);

} // namespace bench

#endif
