// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "guidesnippets.h"
#include "testtables.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace testtables;

/// Runs the recipes of the guide.
class TestGuide : public QObject
{
    Q_OBJECT

private slots:
    void writtenGoodsAreRestructuredAndListed()
    {
        const QString path = m_folder.filePath(QStringLiteral("goods"));
        QVERIFY(writeGoods(path));
        QCOMPARE(readFile(path).toHex(), hexOfFormatPage());
        QVERIFY(writeGoods(QStringLiteral(EXAMPLE_TABLE))); // for the example of the front page
        QVERIFY(addRemarks(path));
        QString text;
        QTextStream out(&text);
        QVERIFY(list(path, out));
        QCOMPARE(
            text,
            QStringLiteral(
                "SINCE NAME REMARK PRICE SOLD \n2024-03-01 \u0427\u0430\u0439  135.00 true \n"));
        QVERIFY(readFile(path).contains("*        Sugar"));
    }

    void textIsReadInTheCodePageOfTheHeader()
    {
        QFile file(write({{field("G\x99TE", 'C', 5)}, {" M\x81he "}, 3, 0x02}));
        DbfTable table(&file);
        QVERIFY(openInItsCodePage(table));
        QCOMPARE(table.schema().columns.at(0).descriptor.name, QStringLiteral("G\u00D6TE"));
        QCOMPARE(table.readRecord(0).values.at(0), QVariant(QStringLiteral("M\u00FChe")));
    }

    void convertersGiveNumbers()
    {
        const QByteArray numbers("\xFE\xFF\xFF\xFF\x39\x30\0\0\0\0\0\0\0\0\0\0\0\0\xF8\x3F", 20);
        QFile file(write(
            {{field("I", 'I', 4), field("Y", 'Y', 8), field("B", 'B', 8), field("N", 'N', 5, 2)},
             {' ' + numbers + " 1.25"},
             0x30,
             0xC9,
             QByteArray(263, '\0')}));
        DbfTable table(&file);
        QVERIFY(table.open(QIODevice::ReadOnly));
        readBinaryColumns(table);
        readNumbers(table);
        const QVector<QVariant> expected{-2, 12345LL, 1.5, 1.25};
        QCOMPARE(table.readRecord(0).values, expected);
        QCOMPARE(currencyText(12345), QStringLiteral("1.2345"));
        QCOMPARE(currencyText(-7), QStringLiteral("-0.0007"));
    }

    void memoTextIsListed()
    {
        const Table notes{{field("NAME", 'C', 3), field("NOTE", 'M', 4)},
                          {QByteArray(" Ann\1\0\0\0", 8), QByteArray(" Bob\2\0\0\0", 8)},
                          0x30,
                          0xC9,
                          QByteArray(263, '\0')};
        const QString path = write(notes);
        const QByteArray header = QByteArray(6, '\0') + "\x02" + QByteArray(505, '\0');
        writeFile(path + ".FPT", header + QByteArray::fromHex("0000000100000002") + "Hi");
        QString text;
        QTextStream out(&text);
        QVERIFY(listNotes(path, out));
        QCOMPARE(text, QStringLiteral("Ann Hi \nBob  Memo block 2 cannot be read: it would begin "
                                      "behind the end of the memo file\n"));
        QVERIFY(listNotes(write(notes), out));
        QVERIFY(text.endsWith("Bob  Memo block 2 cannot be read: there is no memo file\n"));
    }

    void ownConverterKeepsMoments()
    {
        QFile file(write({{field("T", 'T', 8), field("C", 'C', 1)}, {"         x"}}));
        DateTimeConverter converter;
        DbfTable table(&file);
        QVERIFY(table.open(QIODevice::ReadWrite));
        table.setFieldConverter(0, &converter);
        QCOMPARE(table.readRecord(0).values.at(0), QVariant(QDateTime()));
        const QDateTime moment(QDate(2024, 2, 29), QTime(23, 59, 58, 999));
        QVERIFY(table.updateRecord(DbfRecord(0, {moment, "y"})));
        const QVector<QVariant> expected{moment, "y"};
        QCOMPARE(table.readRecord(0).values, expected);
        QVERIFY(readFile(file.fileName()).contains(QByteArray::fromHex("D28A250017582605")));
    }

    void problemsAreNamed()
    {
        DbfSchema schema({DbfFieldDescriptor::stringField("C", 3),
                          DbfFieldDescriptor::numberField("N", 5, 2),
                          DbfFieldDescriptor("RAW", DbfFieldType('P'), 2, 0)},
                         codec(2251));
        schema.columns[1].setConverter(DbfDoubleConverter::instance());
        QCOMPARE(problems(DbfRecord(-1, {" abc ", 12.344, "xy"}), schema), QStringList());
        QCOMPARE(problems(DbfRecord(-1, {"abcd", 123.4, "xyz"}), schema),
                 QStringList({"RAW is too wide", "C is too long", "N is too large"}));
        QCOMPARE(problems(DbfRecord(-1, {QStringLiteral("\u4E2D")}), schema),
                 QStringList("C has characters that the code page lacks"));
    }

    void rewrittenFileIsFollowed()
    {
        QFile file(write(sample()));
        DbfTable table(&file);
        QVERIFY(table.open(QIODevice::ReadOnly));
        Table longer = sample();
        longer.records.append(longer.records.at(0));
        replace(file.fileName(), longer.bytes());
        QVERIFY(refresh(table, file));
        QCOMPARE(table.recordCount(), 4);

        replace(file.fileName(), "no table");
        QVERIFY(!refresh(table, file));
        QVERIFY(!refresh(table, file));
        replace(file.fileName(), sample().bytes());
        QVERIFY(refresh(table, file));
        QCOMPARE(table.recordCount(), 3);
    }

    void threadsSumUpTheirRanges()
    {
        Table numbers{{field("N", 'N', 4)}};
        for (int i = 0; i < 1001; ++i)
            numbers.records.append(' ' + QByteArray::number(i).rightJustified(4));
        QCOMPARE(sumInTwoThreads(write(numbers), 0, 1001), 500500.0);
    }

private:
    /// The bytes that the page on the format explains: those of its lines that begin with an
    /// offset.
    static QByteArray hexOfFormatPage()
    {
        QByteArray digits;
        for (const QByteArray& line : readFile(QStringLiteral(FORMAT_PAGE)).split('\n'))
            if (line.startsWith("0x") && line.mid(6, 2) == "  ")
                digits += line.mid(8, 47).replace(' ', "");
        return digits;
    }

    QString write(const Table& table)
    {
        const QString path = m_folder.filePath(QString::number(++m_fileCount));
        writeFile(path, table.bytes());
        return path;
    }

    /// Puts another file in the place of the one in \a path.
    static void replace(const QString& path, const QByteArray& bytes)
    {
        writeFile(path + QStringLiteral(".new"), bytes);
        QFile::remove(path);
        QVERIFY(QFile::rename(path + QStringLiteral(".new"), path));
    }

    QTemporaryDir m_folder;
    int m_fileCount = 0;
};

QTEST_GUILESS_MAIN(TestGuide)
#include "tst_guide.moc"
