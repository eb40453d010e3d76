// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/transform/dbfschematransform.h>

#include <algorithm>
#include <utility>

namespace dbf
{

namespace
{

constexpr int noSource = -1;

bool isIndex(int index, qsizetype size)
{
    return index >= 0 && index < size;
}

} // namespace

DbfSchemaTransform::DbfSchemaTransform(DbfSchema targetSchema, QList<int> sources)
    : schema(std::move(targetSchema)), sourceIndexes(std::move(sources))
{
}

DbfSchemaTransform DbfSchemaTransform::identity(DbfSchema sourceSchema)
{
    QList<int> sources;
    sources.reserve(sourceSchema.columns.size());
    for (int i = 0; i < saturated(sourceSchema.columns.size()); ++i)
        sources.append(i);
    return {std::move(sourceSchema), std::move(sources)};
}

void DbfSchemaTransform::insertNewColumn(int position, const DbfFieldDescriptor& descriptor)
{
    insertNewColumn(position, DbfColumn(descriptor));
}

void DbfSchemaTransform::insertNewColumn(int position, const DbfColumn& column)
{
    if (position < 0 || position > schema.columns.size())
        return;
    schema.columns.insert(position, column);
    sourceIndexes.insert(std::min<ContainerSize>(position, sourceIndexes.size()), noSource);
}

void DbfSchemaTransform::updateColumn(int index, const DbfFieldDescriptor& descriptor)
{
    updateColumn(index, DbfColumn(descriptor));
}

void DbfSchemaTransform::updateColumn(int index, const DbfColumn& column)
{
    if (isIndex(index, schema.columns.size()))
        schema.columns[index] = column;
}

void DbfSchemaTransform::resizeColumn(int index, int length, int decimals)
{
    constexpr int byteValues = 256; // the descriptor keeps each of the two in one
    if (!isIndex(index, schema.columns.size()) || !isIndex(length, byteValues) ||
        !isIndex(decimals, byteValues))
        return;
    DbfFieldDescriptor& descriptor = schema.columns[index].descriptor;
    descriptor.length = static_cast<unsigned char>(length);
    descriptor.decimals = static_cast<unsigned char>(decimals);
}

void DbfSchemaTransform::deleteColumn(int index)
{
    if (!isIndex(index, schema.columns.size()))
        return;
    schema.columns.remove(index);
    if (isIndex(index, sourceIndexes.size()))
        sourceIndexes.removeAt(index);
}

void DbfSchemaTransform::moveColumn(int from, int to)
{
    const qsizetype count = schema.columns.size();
    if (!isIndex(from, count) || !isIndex(to, count))
        return;
    schema.columns.move(from, to);
    if (isIndex(from, sourceIndexes.size()) && isIndex(to, sourceIndexes.size()))
        sourceIndexes.move(from, to);
}

} // namespace dbf
