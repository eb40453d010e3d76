// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "testtables.h"

#include <QtCore/QBuffer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <atomic>
#include <thread>
#include <vector>

using namespace dbf;
using namespace testtables;

namespace
{

constexpr int threadCount = 6;

/// A field of each kind of converter; those of columns from the sixth on are installed.
QByteArray tableOfEveryKind()
{
    Table table{{field("T", 'C', 4), field("N", 'N', 4, 1), field("D", 'D', 8),
                 field("F", 'F', 5, 1), field("L", 'L', 1), field("B", 'B', 2), field("I", 'B', 4),
                 field("G", 'B', 8), field("R", 'B', 8), field("S", 'B', 4)}};
    const auto binaries =
        QByteArray::fromHex("0200030000000400000000000000000000000000F83F00002040");
    table.records.fill(" \xC0\xED\xED\xE0 1.520240229  2.5T" + binaries, 3000);
    return table.bytes();
}

QString textOf(const DbfRecord& record)
{
    QStringList texts;
    for (const QVariant& value : record.values)
        texts << (value.userType() == QMetaType::QDate
                      ? QString::number(value.toDate().toJulianDay())
                      : value.toString());
    return texts.join(QLatin1Char(' '));
}

/// Reads the table in every way, recodes it, and hands decimals to the converters that take them.
QString readAll(const QString& path)
{
    QVariant day = QDate(2024, 2, 29); // Qt itself gives some threads no text for their first date.
    DbfStringConverter::instance()->convertVariant(day);

    QFile file(path);
    DbfTable table(&file);
    if (!table.open(QIODevice::ReadOnly))
        return {};
    int column = 5;
    for (DbfFieldConverter* converter : std::initializer_list<DbfFieldConverter*>{
             DbfSmallIntConverter::instance(), DbfIntConverter::instance(),
             DbfLargeIntConverter::instance(), DbfBinaryDoubleConverter::instance(),
             DbfBinaryFloatConverter::instance()})
        table.setFieldConverter(column++, converter);

    QBuffer copy;
    auto transform = DbfSchemaTransform::identity(table.schema());
    transform.schema.setCodec(codec(2086));
    transform.updateColumn(2, DbfFieldDescriptor::stringField(QStringLiteral("D"), 10));
    const bool copied = table.copyAndTransform(&copy, transform);

    int equal = 0;
    const DbfRecord first = table.readRecord(0);
    const QString text = textOf(first);
    DbfRecordCursor cursor(table);
    for (const DbfRecord& record : table.readRecords(0, table.recordCount()))
        equal += cursor.next() && textOf(record) == text &&
                 cursor.text(0) == record.values.at(0).toString() &&
                 textOf(cursor.record()) == text;

    QVariant decimal = QVariant::fromValue(QDecNumber("41.6"));
    const bool converted = DbfIntConverter::instance()->convertVariant(decimal);
    return QStringLiteral("%1, %2, %3 equal, copy %4 %5, decimal %6 %7")
        .arg(day.toString())
        .arg(text)
        .arg(equal)
        .arg(copied)
        .arg(QString::fromLatin1(copy.data().mid(353, 5).toHex() + copy.data().mid(362, 10)))
        .arg(converted)
        .arg(decimal.toInt());
}

} // namespace

class TestThreads : public QObject
{
    Q_OBJECT

private slots:
    // Nothing of the library may be used before the threads are: each comes first somewhere, to a
    // converter, a text table or the decimal type's registration.
    void threadsReadOneFileOnDevicesOfTheirOwn()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("table"));
        writeFile(path, tableOfEveryKind());
        std::vector<QString> reports(threadCount);
        std::vector<std::thread> threads;
        std::atomic<int> ready{0};
        for (QString& report : reports)
            threads.emplace_back([&report, &ready, &path] {
                for (++ready; ready < threadCount;)
                    std::this_thread::yield();
                report = readAll(path);
            });
        for (std::thread& thread : threads)
            thread.join();
        for (const QString& report : reports)
            QCOMPARE(report, QStringLiteral(
                                 "2024-02-29, \u0410\u043D\u043D\u0430 1.5 2460370 2.5 true 2 3 4 "
                                 "1.5 2.5, 3000 equal, copy 1 2080adada02024-02-29, decimal 1 42"));
    }
};

QTEST_GUILESS_MAIN(TestThreads)
#include "tst_threads.moc"
