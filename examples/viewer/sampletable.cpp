// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "sampletable.h"

#include <dbf/dbf.h>

#include <QtCore/QDate>
#include <QtCore/QFile>
#include <QtCore/QRandomGenerator>
#include <QtCore/QStringList>

#include <algorithm>

using namespace dbf;

namespace
{

enum Column { Number, Name, City, Price, Left, Received, IsNew };

constexpr int recordsPerBlock = 10'000;

DbfSchema goodsSchema()
{
    return {{DbfFieldDescriptor::numberField(QStringLiteral("АРТИКУЛ"), 8, 0),
             DbfFieldDescriptor::stringField(QStringLiteral("НАЗВАНИЕ"), 30),
             DbfFieldDescriptor::stringField(QStringLiteral("ГОРОД"), 20),
             DbfFieldDescriptor::numberField(QStringLiteral("ЦЕНА"), 10, 2),
             DbfFieldDescriptor::numberField(QStringLiteral("ОСТАТОК"), 7, 0),
             DbfFieldDescriptor(QStringLiteral("ПОСТУПИЛ"), DbfFieldType::Date, 8, 0),
             DbfFieldDescriptor::logicalField(QStringLiteral("НОВИНКА"))},
            DbfTable::codecByCodePage(DbfCodePage::Windows1251)};
}

QString pick(const QStringList& choices, QRandomGenerator& random)
{
    return choices.at(random.bounded(choices.size()));
}

DbfRecord randomGoods(int index, QRandomGenerator& random)
{
    static const QStringList names = {
        QStringLiteral("Чай чёрный, 250 г"), QStringLiteral("Кофе молотый, 500 г"),
        QStringLiteral("Сахар, 1 кг"),       QStringLiteral("Мёд липовый, 700 г"),
        QStringLiteral("Варенье вишнёвое"),  QStringLiteral("Гречка, 800 г"),
        QStringLiteral("Печенье овсяное"),   QStringLiteral("Сушки с маком")};
    static const QStringList cities = {
        QStringLiteral("Москва"), QStringLiteral("Санкт-Петербург"), QStringLiteral("Казань"),
        QStringLiteral("Тверь"),  QStringLiteral("Новосибирск"),     QStringLiteral("Калуга")};

    DbfRecord record(index, QVector<QVariant>(IsNew + 1));
    record.values[Number] = 1'000'000 + index;
    record.values[Name] = pick(names, random);
    record.values[City] = pick(cities, random);
    record.values[Price] = 40 + random.bounded(90'000) / 100.0;
    record.values[Left] = random.bounded(5'000);
    record.values[Received] = QDate(2023, 1, 1).addDays(random.bounded(700));
    record.values[IsNew] = random.bounded(4) == 0;
    record.setDeleted(random.bounded(6) == 0);
    return record;
}

bool appendGoods(DbfTable& table, int count)
{
    QRandomGenerator random(1); // The same table every time.
    QVector<DbfRecord> records;
    for (int done = 0; done < count; done += recordsPerBlock) {
        records.clear();
        const int size = std::min(recordsPerBlock, count - done);
        for (int i = 0; i < size; ++i)
            records.append(randomGoods(done + i, random));
        if (!table.appendRecords(records))
            return false;
    }
    return true;
}

} // namespace

bool makeSampleTable(const QString& path, int count)
{
    QFile file(path);
    DbfTable table(&file);
    table.setConverterChoice(nullableConverter);
    if (!table.create(goodsSchema()) || !table.open(QIODevice::ReadWrite) ||
        !appendGoods(table, count))
        return false;
    table.close();
    return file.error() == QFileDevice::NoError;
}
