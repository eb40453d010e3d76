// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/model/dbfschema.h>

#include <utility>

namespace dbf
{

DbfSchema::DbfSchema(QVector<DbfFieldDescriptor> descriptors, QTextCodec* textCodec)
    : codec(textCodec)
{
    setColumns(std::move(descriptors));
}

void DbfSchema::setCodec(QTextCodec* textCodec)
{
    codec = textCodec;
}

void DbfSchema::setColumns(QVector<DbfFieldDescriptor> descriptors)
{
    columns.clear();
    columns.reserve(descriptors.size());
    for (const DbfFieldDescriptor& descriptor : std::as_const(descriptors))
        columns.append(DbfColumn(descriptor));
}

int DbfSchema::indexOf(const QString& name) const
{
    for (int i = 0; i < columns.size(); ++i) {
        if (columns.at(i).descriptor.name.compare(name, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

} // namespace dbf
