// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/dbf.h>

#include <QTextCodec>
#include <QtTest/QtTest>

using namespace dbf;

class TestModel : public QObject
{
    Q_OBJECT

private slots:
    void versionIsThatOfTheHeaders()
    {
        QCOMPARE(libraryVersion().toString(), QString("%1.%2.%3")
                                                  .arg(DBFTABLE_VERSION >> 16)
                                                  .arg(DBFTABLE_VERSION >> 8 & 0xFF)
                                                  .arg(DBFTABLE_VERSION & 0xFF));
    }

    void columnsNeedConversionUnlessOnlyNamesDiffer()
    {
        const DbfColumn column(DbfFieldDescriptor::numberField("A", 10, 2));
        const auto needConvert = [&](char type, unsigned char length, unsigned char decimals) {
            return column.needConvert(
                DbfFieldDescriptor("B", DbfFieldType(type), length, decimals));
        };
        QVERIFY(!needConvert('N', 10, 2) && needConvert('C', 10, 2));
        QVERIFY(needConvert('N', 11, 2) && needConvert('N', 10, 3));
        DbfColumn converter = column;
        converter.setConverter(DbfDoubleConverter::instance());
        QVERIFY(column.needConvert(converter));
    }

    void setColumnsBringsDefaultConvertersBack()
    {
        QTextCodec* const codec = QTextCodec::codecForName("IBM 866");
        const QVector<DbfFieldDescriptor> fields{DbfFieldDescriptor::numberField("A", 4, 0)};
        DbfSchema schema(fields, codec);
        schema.columns[0].setConverter(DbfIntConverter::instance());
        schema.setColumns(fields);
        QCOMPARE(int(schema.columns.size()), 1);
        QCOMPARE(schema.columns[0].converter, DbfStringConverter::instance());
        QCOMPARE(DbfColumn().converter, DbfStringConverter::instance());
        schema.setColumns({});
        QVERIFY(schema.columns.isEmpty() && schema.codec == codec);
    }

    void recordKeepsIndexAndDeletedFlag()
    {
        for (const int index : {0, 2147483646, -5, 2147483647}) {
            const bool transient = index == -5 || index == 2147483647;
            DbfRecord record(index, {});
            QVERIFY(!record.isDeleted());
            for (const bool deleted : {true, true, false, false}) {
                record.setDeleted(deleted);
                QCOMPARE(record.isTransient(), transient);
                QCOMPARE(record.isDeleted(), deleted && !transient);
                QCOMPARE(record.index(), transient ? -1 : index);
            }
        }
    }

    void valuesWiderThanTheirFieldsAreListed()
    {
        DbfSchema schema({DbfFieldDescriptor::stringField("CUT", 2),
                          {"INTEGER", DbfFieldType('I'), 3, 0},
                          {"RAW", DbfFieldType('M'), 2, 0},
                          {"NONE", DbfFieldType('M'), 0, 0}},
                         nullptr);
        schema.columns[1].setConverter(DbfIntConverter::instance());
        schema.columns[2].setConverter(nullptr);
        QString shown;
        for (const auto& overflow : checkRecordSizeOverflow({-1, {"abc", 1, "abc"}}, schema))
            shown += QString::asprintf("%d: %d for %d, ", overflow.columnIndex, overflow.valueSize,
                                       overflow.fieldLength);
        QCOMPARE(shown, QString("1: 4 for 3, 2: 3 for 2, "));
    }
};

QTEST_APPLESS_MAIN(TestModel)

#include "tst_model.moc"
