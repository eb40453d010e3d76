// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/dbf.h>

#include <QtCore/QBuffer>

/// Writes and reads a table; succeeds when the value that comes back is the one that went in.
int main()
{
    QBuffer device;
    dbf::DbfTable table(&device);
    const dbf::DbfSchema schema({dbf::DbfFieldDescriptor::numberField("N", 5, 0)}, nullptr);
    if (!table.create(schema) || !table.open(QIODevice::ReadWrite))
        return 1;
    QVariant value = QVariant::fromValue(QDecNumber("41.6"));
    dbf::DbfIntConverter::instance()->convertVariant(value);
    if (!table.appendRecord(dbf::DbfRecord(-1, {value})))
        return 1;
    return table.readRecord(0).values.at(0) == QVariant(QStringLiteral("42")) ? 0 : 1;
}
