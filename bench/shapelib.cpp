// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "peers.h"

#include <shapefil.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace bench
{

namespace
{

using Handle = std::unique_ptr<DBFInfo, void (*)(DBFHandle)>;

Handle required(DBFHandle handle)
{
    if (!handle)
        throw std::runtime_error("shapelib does not open the table");
    return Handle(handle, DBFClose);
}

void addRecord(Sums& sums, DBFHandle table, int record)
{
    for (int column = 0; column < columnCount; ++column) {
        double& sum = sums[static_cast<size_t>(column)];
        if (column == Weight) {
            sum += DBFReadDoubleAttribute(table, record, column);
            continue;
        }
        const char* const text = DBFReadStringAttribute(table, record, column);
        if (column == Active)
            sum += text[0] == 'T' ? 1 : 0;
        else if (column == Sold)
            sum += text[0] != '\0' ? 1 : 0;
        else
            sum += static_cast<double>(std::strlen(text));
    }
}

/// Writes \a count records, \a rows over and over, the k-th to the place \a placeOf(k).
template <typename PlaceOf>
void writeRows(DBFHandle table, std::vector<Row>& rows, int count, PlaceOf placeOf)
{
    std::vector<double> weights;
    for (const Row& row : rows)
        weights.push_back(std::strtod(row[Weight].c_str(), nullptr));

    bool written = true;
    for (int k = 0; k < count; ++k) {
        const size_t index = static_cast<size_t>(k) % rows.size();
        const int record = placeOf(k);
        for (int column = 0; column < columnCount; ++column) {
            std::string& text = rows[index][static_cast<size_t>(column)];
            int done = 0;
            if (column == Weight)
                done = DBFWriteDoubleAttribute(table, record, column, weights[index]);
            else if (column == Active)
                done = DBFWriteLogicalAttribute(table, record, column, text[0]);
            else if (columns[static_cast<size_t>(column)].type == 'C')
                done = DBFWriteStringAttribute(table, record, column, text.c_str());
            else
                done = DBFWriteAttributeDirectly(table, record, column, text.data());
            written = written && done != 0;
        }
    }
    if (!written)
        throw std::runtime_error("shapelib does not write the table");
}

} // namespace

Sums shapelibReadAll(const std::string& table)
{
    const Handle handle = required(DBFOpen(table.c_str(), "rb"));
    const int count = DBFGetRecordCount(handle.get());
    Sums sums{};
    for (int record = 0; record < count; ++record)
        addRecord(sums, handle.get(), record);
    return sums;
}

Sums shapelibReadTwoColumns(const std::string& table)
{
    const Handle handle = required(DBFOpen(table.c_str(), "rb"));
    const int count = DBFGetRecordCount(handle.get());
    Sums sums{};
    for (int record = 0; record < count; ++record) {
        sums[Name] +=
            static_cast<double>(std::strlen(DBFReadStringAttribute(handle.get(), record, Name)));
        sums[Weight] += DBFReadDoubleAttribute(handle.get(), record, Weight);
    }
    return sums;
}

Sums shapelibReadRandom(const std::string& table, const std::vector<int>& indexes)
{
    const Handle handle = required(DBFOpen(table.c_str(), "rb"));
    Sums sums{};
    for (const int record : indexes)
        addRecord(sums, handle.get(), record);
    return sums;
}

void shapelibAppend(const std::string& table, std::vector<Row>& rows, int records)
{
    const Handle handle = required(DBFCreateEx(table.c_str(), "LDID/201"));
    for (const Column& column : columns)
        DBFAddNativeFieldType(handle.get(), column.name, column.type, column.length,
                              column.decimals);
    writeRows(handle.get(), rows, records, [](int record) { return record; });
}

void shapelibUpdate(const std::string& table, std::vector<Row>& rows,
                    const std::vector<int>& indexes)
{
    const Handle handle = required(DBFOpen(table.c_str(), "rb+"));
    writeRows(handle.get(), rows, static_cast<int>(indexes.size()),
              [&](int k) { return indexes[static_cast<size_t>(k)]; });
}

} // namespace bench
