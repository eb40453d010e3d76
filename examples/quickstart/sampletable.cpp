// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "sampletable.h"

#include "tableprinter.h"

#include <dbf/dbf.h>

#include <QtCore/QDate>
#include <QtCore/QFile>

using namespace dbf;

namespace
{

enum Column { Name, Price, Received, InStock, Weight };

/// The codec encodes the text and the field names, of which the file keeps 10 bytes each, and its
/// code page goes into the header.
DbfSchema goodsSchema()
{
    return {{DbfFieldDescriptor::stringField(QStringLiteral("НАЗВАНИЕ"), 20),
             DbfFieldDescriptor::numberField(QStringLiteral("ЦЕНА"), 10, 2),
             DbfFieldDescriptor(QStringLiteral("ПОСТУПИЛ"), DbfFieldType::Date, 8, 0),
             DbfFieldDescriptor::logicalField(QStringLiteral("В_НАЛИЧИИ")),
             DbfFieldDescriptor::floatField(QStringLiteral("ВЕС"), 3)},
            DbfTable::codecByCodePage(DbfCodePage::Windows1251)};
}

/// A record that is to be appended has no index yet.
DbfRecord goods(const QString& name, double price, const QDate& received, bool inStock,
                double weight)
{
    return DbfRecord(-1, {name, price, received, inStock, weight});
}

bool appendGoods(DbfTable& table)
{
    return table.appendRecord(
               goods(QStringLiteral("Чай чёрный"), 120.5, QDate(2024, 3, 1), true, 0.25)) &&
           table.appendRecord(
               goods(QStringLiteral("Кофе молотый"), 480, QDate(2024, 3, 8), true, 0.5)) &&
           table.appendRecord(goods(QStringLiteral("Сахар"), 74.9, QDate(2023, 12, 20), true, 1)) &&
           table.appendRecord(
               goods(QStringLiteral("Мёд липовый"), 650, QDate(2024, 8, 14), false, 0.7));
}

bool raisePrice(DbfTable& table, int index, double price)
{
    DbfRecord record = table.readRecord(index);
    if (table.hasError())
        return false;
    record.values.replace(Price, price);
    return table.updateValues(record); // which writes no other field
}

/// A deleted record keeps its place and its values; only its mark is set.
bool fillTable(DbfTable& table)
{
    return appendGoods(table) && raisePrice(table, 0, 135) && table.setRecordDeleted(2, true);
}

} // namespace

bool makeSampleTable(const QString& path, QString* reason)
{
    QFile file(path);
    DbfTable table(&file);
    table.setConverterChoice(nullableConverter);
    table.setCheckingValues(true); // What would not fit is refused, not cut.
    // create() closes the file again; open() reads back what it wrote.
    if (table.create(goodsSchema()) && table.open(QIODevice::ReadWrite) && fillTable(table)) {
        table.close();
        if (file.error() == QFileDevice::NoError)
            return true;
    }
    *reason =
        file.error() == QFileDevice::NoError ? errorText(table.lastError()) : file.errorString();
    return false;
}
