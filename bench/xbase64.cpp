// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "peers.h"

#include <xbase64/xbase64.h>

#include <cstring>
#include <stdexcept>

namespace bench
{

namespace
{

size_t trimmedLength(const char* text)
{
    size_t end = std::strlen(text);
    while (end > 0 && text[end - 1] == ' ')
        --end;
    size_t start = 0;
    while (start < end && text[start] == ' ')
        ++start;
    return end - start;
}

} // namespace

Sums xbase64ReadAll(const std::string& table)
{
    xbXBase engine;
    xbDbf dbf(&engine);
    if (dbf.OpenDatabase(table.c_str()) != XB_NO_ERROR)
        throw std::runtime_error("xbase64 does not open the table");
    char text[256];
    Sums sums{};
    for (xbShort status = dbf.GetFirstRecord(); status == XB_NO_ERROR;
         status = dbf.GetNextRecord()) {
        for (xbShort column = 0; column < columnCount; ++column) {
            double& sum = sums[static_cast<size_t>(column)];
            if (column == Weight) {
                sum += dbf.GetDoubleField(column);
                continue;
            }
            dbf.GetField(column, text);
            if (column == Active)
                sum += text[0] == 'T' ? 1 : 0;
            else if (column == Sold)
                sum += text[0] != ' ' ? 1 : 0;
            else
                sum += static_cast<double>(trimmedLength(text));
        }
    }
    dbf.CloseDatabase();
    return sums;
}

} // namespace bench
