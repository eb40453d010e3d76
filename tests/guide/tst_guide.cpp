// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "guidesnippets.h"
#include "testtables.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace testtables;

namespace
{

constexpr QChar ring{u'\u25E6'};
const DbfSchema schema{{}, codec(2251)};

DbfColumn columnOf(const QString& text, bool isNullable) // N(8,2)
{
    const QStringList sizes = text.mid(2).chopped(1).split(',');
    const DbfFieldDescriptor field({}, DbfFieldType(text.at(0).toLatin1()),
                                   quint8(sizes.at(0).toInt()), quint8(sizes.value(1).toInt()));
    return isNullable ? nullableColumn(field, {0, 0x30, {}, 0, 0}) : DbfColumn(field);
}

bool isText(const DbfColumn& column)
{
    return QByteArray("CNFDL").contains(char(column.descriptor.type));
}

QVariant valueOf(const QString& text)
{
    bool isInteger = false;
    const qlonglong integer = text.toLongLong(&isInteger);
    if (isInteger || text == "none")
        return isInteger ? QVariant(integer) : QVariant();
    if (text.startsWith('"'))
        return text.mid(1).chopped(1);
    if (text == "true" || text == "false")
        return text == "true";
    if (text.startsWith("decimal "))
        return QVariant::fromValue(QDecNumber(text.mid(8)));
    if (text.contains('T'))
        return QDateTime::fromString(text, Qt::ISODateWithMs);
    return text.count('-') == 2 ? QVariant(QDate::fromString(text, Qt::ISODate))
                                : QVariant(text.toDouble());
}

QByteArray bytesOf(QString text, const DbfColumn& column)
{
    if (!isText(column))
        return QByteArray::fromHex(text.toLatin1());
    return schema.codec->fromUnicode(text.replace(QChar(0xB7), ' ').replace(ring, QChar(0)));
}

QString shown(const QVariant& value)
{
    const QString text = value.toString();
    switch (int(value.userType())) {
    case QMetaType::UnknownType:
        return "none";
    case QMetaType::QString:
        return '"' + text + '"';
    case QMetaType::QByteArray:
        return "0x" + value.toByteArray().toHex();
    case QMetaType::QDate:
        return value.toDate().isValid() ? text : "no date";
    case QMetaType::QDateTime:
        return value.toDateTime().toString("yyyy-MM-ddTHH:mm:ss.zzz");
    case QMetaType::Double:
        return text.contains(QRegularExpression("[.en]")) ? text : text + ".0";
    default:
        return text;
    }
}

QString shown(const QByteArray& bytes, const DbfColumn& column)
{
    if (!isText(column))
        return bytes.toHex();
    return schema.codec->toUnicode(bytes).replace(' ', QChar(0xB7)).replace(QChar(0), ring);
}

QString read(const QByteArray& bytes, const DbfColumn& column)
{
    return shown(column.converter->toVariant(bytes, schema, column.descriptor));
}

/// Returns a line of a table on the page about values as it must stand there, by its first two
/// cells: what converters make of a value or of bytes.
QString computedLine(const QString& line)
{
    QStringList cells;
    for (const QString& cell : line.split(QStringLiteral(" | ")))
        cells << cell.section('`', 1, 1);
    const bool hasBytes = cells.size() == 4;
    const QString given = cells.at(1);
    const QStringList fields = cells.at(0).split(QStringLiteral(" → "));
    cells = cells.mid(0, 2);
    for (const bool isNullable : {false, true}) {
        const DbfColumn source = columnOf(fields.first(), isNullable);
        const DbfColumn target = columnOf(fields.last(), isNullable);
        if (fields.size() == 2) {
            QVariant value =
                source.converter->toVariant(bytesOf(given, source), schema, source.descriptor);
            target.converter->convertVariant(value);
            cells << shown(target.converter->toByteArray(value, schema, target.descriptor), target);
        } else if (hasBytes) {
            cells << read(bytesOf(given, source), source);
        } else {
            const QByteArray bytes =
                given == "missing"
                    ? source.blankValueOfThisType()
                    : source.converter->toByteArray(valueOf(given), schema, source.descriptor);
            cells << shown(bytes, source) << read(bytes, source);
        }
    }
    return "| `" + cells.join("` | `") + "` |";
}

} // namespace

/// Runs the recipes of the guide.
class TestGuide : public QObject
{
    Q_OBJECT

private slots:
    void writtenGoodsAreRestructuredAndListed()
    {
        const QString path = m_folder.filePath(QStringLiteral("goods"));
        QVERIFY(writeGoods(path));
        QVERIFY(writeGoods(QStringLiteral(EXAMPLE_TABLE))); // for the example of the front page
        QFile file(path);
        DbfTable table(&file);
        table.setConverterChoice(nullableConverter);
        QVERIFY(table.open(QIODevice::ReadWrite) && changeGoods(table));
        table.close();
        QCOMPARE(readFile(path).toHex(), hexOfFormatPage());
        QVERIFY(table.open(QIODevice::ReadOnly) && addRemarks(table, path));
        QString text;
        QTextStream out(&text);
        QVERIFY(list(path, out));
        QCOMPARE(text, QStringLiteral("2024-03-01 \u0427\u0430\u0439  135 true \n"
                                      " Sugar  74.9 false deleted\n"));
    }

    void textIsReadInTheCodePageOfTheHeader()
    {
        QFile file(write({{field("G\x99TE", 'C', 5)}, {" M\x81he "}, 3, 0x02}));
        DbfTable table(&file);
        QVERIFY(openAny(table));
        QCOMPARE(table.schema().columns.at(0).descriptor.name, QStringLiteral("G\u00D6TE"));
        QCOMPARE(table.readRecord(0).values.at(0), QVariant(QStringLiteral("M\u00FChe")));
    }

    void valuesAreWrittenAndReadAsTheirPageSays()
    {
        const QStringList page = QString::fromUtf8(readFile(VALUES_PAGE)).split('\n');
        QStringList computed = page;
        for (QString& line : computed) {
            if (line.startsWith("| `"))
                line = computedLine(line);
        }
        QCOMPARE(computed, page);
        QVERIFY(page.filter("| `").size() > 50);
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

    void ownConverterKeepsDatesInText()
    {
        QFile file(write({{field("DAY", 'C', 10), field("NAME", 'C', 10)},
                          {" 2024-02-292024-02-29", " soon      later     "}}));
        IsoDateConverter converter;
        DbfTable table(&file);
        useIsoDates(table, converter);
        QVERIFY(table.open(QIODevice::ReadWrite));
        const QDate day(2024, 2, 29);
        const QVector<QVariant> expected{day, "2024-02-29"};
        QCOMPARE(table.readRecord(0).values, expected);
        QCOMPARE(table.readRecord(1).values.first(), QVariant());
        QVERIFY(table.updateValues(DbfRecord(1, {day.addDays(1)})));
        QVERIFY(readFile(file.fileName()).contains("2024-03-01later"));
    }

    void refusedRecordsAreNamed()
    {
        QFile file(write(sample()));
        DbfTable table(&file);
        table.setConverterChoice(nullableConverter);
        QVERIFY(table.open(QIODevice::ReadWrite));
        QString text;
        QTextStream out(&text);
        const DbfRecord good(-1, {"Ann", true, 1.5});
        QVERIFY(append(table, {good}, out));
        QVERIFY(!append(table, {good, DbfRecord(-1, {"Robert", true, 12345})}, out));
        QCOMPARE(text, QString("1: NAME: \"Robert\" is longer than 5 bytes\n"
                               "1: AMOUNT: 12345 does not fit 4 places with 1 decimals\n"));
        QCOMPARE(table.recordCount(), 4);
        int next = 2;
        QStringList names;
        const auto take = [&](const DbfRecord& record) { names << record.values.at(0).toString(); };
        QVERIFY(readNew(table, next, take) && readNew(table, next, take));
        QCOMPARE(names, QStringList({"Carl", "Ann"}));
        QString error;
        QVERIFY2(addNotes(file.fileName(), error), qPrintable(error));
        QVERIFY(table.actualize());
        QCOMPARE(table.recordCount(), 3);
        QCOMPARE(table.schema().columns.at(1).descriptor.name, QStringLiteral("NOTE"));
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
        QFile::remove(path);
        writeFile(path, bytes);
    }

    QTemporaryDir m_folder;
    int m_fileCount = 0;
};

QTEST_GUILESS_MAIN(TestGuide)
#include "tst_guide.moc"
