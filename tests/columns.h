// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TESTS_COLUMNS_H
#define TESTS_COLUMNS_H

#include <QtTest/QtTest>

#include <array>

/// Adds the columns of a data table: addColumns<int, QString>({"length", "text"}).
template <typename... Types>
void addColumns(const std::array<const char*, sizeof...(Types)>& names)
{
    auto name = names.begin();
    (QTest::addColumn<Types>(*name++), ...);
}

#endif
