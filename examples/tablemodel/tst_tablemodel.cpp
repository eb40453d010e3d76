// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "tablemodel.h"

#include <QTextCodec>
#include <QtCore/QBuffer>
#include <QtCore/QTemporaryFile>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <limits>
#include <memory>

using namespace dbf;

namespace
{

/// A file in memory that counts what is read of it.
class CountingBuffer : public QBuffer
{
public:
    qint64 bytesRead = 0;

protected:
    qint64 readData(char* data, qint64 length) override
    {
        const qint64 read = QBuffer::readData(data, length);
        bytesRead += read;
        return read;
    }
};

enum Column { Name, Price, Date, InStock, Weight };

constexpr int headerLength = 33 + 5 * 32;
constexpr int recordLength = 1 + 6 + 6 + 8 + 1 + 20;

/// The fields of one record. A truth value of t does not come out of its converter as it went in.
QByteArray oddFields()
{
    return QByteArrayLiteral("\xD7\xE0\xE9   " // The name,
                             "  1.50"          // the price,
                             "        "        // no date,
                             "t") +            // in stock,
           QByteArray(20, ' ');                // no weight.
}

} // namespace

class TestTableModel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void keepsTheRulesOfModels();
    void readsOnlyWhatIsLookedAt();
    void keepsBoundedNumberOfPages();
    void editWritesItsOwnCell_data();
    void editWritesItsOwnCell();
    void refusesWhatTheFieldCannotHold_data();
    void refusesWhatTheFieldCannotHold();
    void refusesEditsOfReadOnlyDevice();
    void marksRecordsDeleted();
    void appendsBlankRecords();
    void refusesMoreRowsThanAnIntNumbers();
    void showsWhatIsLeftOfTruncatedTable();

private:
    void open(int records, QIODevice::OpenMode mode = QIODevice::ReadWrite);
    QByteArray recordBytes(int index) const;
    QVariant cell(int row, int column, int role = Qt::EditRole) const;
    bool setCell(int row, int column, const QVariant& value, int role = Qt::EditRole);

    std::unique_ptr<CountingBuffer> m_buffer;
    std::unique_ptr<TableModel> m_model;
};

void TestTableModel::init()
{
    m_model.reset();
    m_buffer = std::make_unique<CountingBuffer>();
    DbfTable table(m_buffer.get());
    QVERIFY(table.create({{DbfFieldDescriptor::stringField(QStringLiteral("ИМЯ"), 6),
                           DbfFieldDescriptor::numberField(QStringLiteral("ЦЕНА"), 6, 2),
                           DbfFieldDescriptor(QStringLiteral("ДАТА"), DbfFieldType::Date, 8, 0),
                           DbfFieldDescriptor::logicalField(QStringLiteral("ЕСТЬ")),
                           DbfFieldDescriptor::floatField(QStringLiteral("ВЕС"), 3)},
                          QTextCodec::codecForName("Windows-1251")}));
}

/// Opens a model on \a records records, all alike.
void TestTableModel::open(int records, QIODevice::OpenMode mode)
{
    QByteArray& bytes = m_buffer->buffer();
    bytes.truncate(headerLength);
    for (int i = 0; i < 4; ++i)
        bytes[4 + i] = static_cast<char>(records >> (8 * i) & 0xFF);
    bytes += (' ' + oddFields()).repeated(records) + '\x1A';

    DbfTable table(m_buffer.get());
    table.setConverterChoice(nullableConverter);
    QVERIFY(table.open(mode));
    m_buffer->bytesRead = 0;
    m_model = std::make_unique<TableModel>(std::move(table));
}

QByteArray TestTableModel::recordBytes(int index) const
{
    return m_buffer->data().mid(headerLength + index * recordLength, recordLength);
}

QVariant TestTableModel::cell(int row, int column, int role) const
{
    return m_model->data(m_model->index(row, column), role);
}

bool TestTableModel::setCell(int row, int column, const QVariant& value, int role)
{
    return m_model->setData(m_model->index(row, column), value, role);
}

void TestTableModel::keepsTheRulesOfModels()
{
    open(300);
    const QAbstractItemModelTester tester(m_model.get(),
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    QVERIFY(setCell(0, Name, QStringLiteral("Чай")));
    QVERIFY(m_model->insertRows(300, 200));
    QVERIFY(setCell(499, Name, true, TableModel::DeletedRole));
    QVERIFY(m_model->setTextCodec(QTextCodec::codecForName("IBM866")));
    QVERIFY(m_model->insertRows(500, 1));
    QCOMPARE(m_model->rowCount(), 501);
    QVERIFY(m_model->headerData(Name, Qt::Horizontal).toString() != QStringLiteral("ИМЯ"));
    QCOMPARE(cell(0, Price), QVariant(1.5)); // The converter stays.
}

void TestTableModel::readsOnlyWhatIsLookedAt()
{
    open(100'000);
    QCOMPARE(m_buffer->bytesRead, 0);
    QCOMPARE(cell(50'000, Name), QVariant(QStringLiteral("Чай")));
    QVERIFY(m_buffer->bytesRead >= recordLength);
    QVERIFY(m_buffer->bytesRead < qint64(500) * recordLength);
    const qint64 read = m_buffer->bytesRead;
    QCOMPARE(cell(50'000, Price), QVariant(1.5));
    QCOMPARE(m_buffer->bytesRead, read);
}

void TestTableModel::keepsBoundedNumberOfPages()
{
    open(100'000);
    for (int row = 0; row < m_model->rowCount(); row += 100)
        cell(row, Name);
    const qint64 read = m_buffer->bytesRead;
    cell(m_model->rowCount() - 100, Name);
    QCOMPARE(m_buffer->bytesRead, read); // Looked at just now,
    cell(0, Name);
    QVERIFY(m_buffer->bytesRead > read); // and so long ago that it went.
}

void TestTableModel::editWritesItsOwnCell_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("text") << int(Name) << QVariant(QStringLiteral("Ёж")) << 1
                          << QByteArrayLiteral("\xA8\xE6    ");
    QTest::newRow("no text") << int(Name) << QVariant(QString()) << 1 << QByteArray(6, ' ');
    QTest::newRow("number") << int(Price) << QVariant(-2.125) << 7 << QByteArrayLiteral(" -2.13");
    QTest::newRow("typed number") << int(Price) << QVariant(QStringLiteral("7")) << 7
                                  << QByteArrayLiteral("  7.00");
    QTest::newRow("date") << int(Date) << QVariant(QDate(2024, 2, 29)) << 13
                          << QByteArrayLiteral("20240229");
    QTest::newRow("truth") << int(InStock) << QVariant(false) << 21 << QByteArrayLiteral("F");
    QTest::newRow("float") << int(Weight) << QVariant(0.5) << 22
                           << QByteArray("0.500").rightJustified(20);
}

void TestTableModel::editWritesItsOwnCell()
{
    QFETCH(int, column);
    QFETCH(QVariant, value);
    QFETCH(int, offset);
    QFETCH(QByteArray, bytes);

    open(3);
    QByteArray expected = m_buffer->data();
    expected.replace(headerLength + recordLength + offset, bytes.size(), bytes);
    const QSignalSpy changes(m_model.get(), &TableModel::dataChanged);
    QVERIFY(setCell(1, column, value));
    QCOMPARE(m_buffer->data(), expected);
    QCOMPARE(changes.size(), 1);
    const QVariant shown = cell(1, column);
    QVERIFY(m_model->setTextCodec(m_model->table().schema().codec)); // Reads the table again.
    QCOMPARE(shown, cell(1, column));
}

void TestTableModel::refusesWhatTheFieldCannotHold_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("value");

    QTest::newRow("long text") << int(Name) << QVariant(QStringLiteral("Молочко"));
    QTest::newRow("unknown character") << int(Name) << QVariant(QStringLiteral("日"));
    QTest::newRow("wide number") << int(Price) << QVariant(12345.67);
    QTest::newRow("no number") << int(Price) << QVariant(QStringLiteral("dear"));
    QTest::newRow("infinity") << int(Weight) << QVariant(qInf());
    QTest::newRow("no date") << int(Date) << QVariant(QStringLiteral("2024-02-30"));
}

void TestTableModel::refusesWhatTheFieldCannotHold()
{
    QFETCH(int, column);
    QFETCH(QVariant, value);

    open(3);
    const QByteArray before = m_buffer->data();
    const QSignalSpy refusals(m_model.get(), &TableModel::refused);
    QVERIFY(!setCell(1, column, value));
    QCOMPARE(m_buffer->data(), before);
    QCOMPARE(refusals.size(), 1);
    QVERIFY(!m_model->table().hasError());
}

void TestTableModel::refusesEditsOfReadOnlyDevice()
{
    open(3, QIODevice::ReadOnly);
    QVERIFY(!(m_model->flags(m_model->index(0, Name)) & Qt::ItemIsEditable));
    QVERIFY(!setCell(0, Name, QStringLiteral("Ёж")));
    QVERIFY(!setCell(0, Name, true, TableModel::DeletedRole));
    QVERIFY(!m_model->table().hasError());
}

void TestTableModel::marksRecordsDeleted()
{
    open(3);
    const QByteArray before = m_buffer->data();
    QVERIFY(setCell(1, Price, true, TableModel::DeletedRole));
    QCOMPARE(recordBytes(1), '*' + oddFields());
    QCOMPARE(cell(1, Name, TableModel::DeletedRole), QVariant(true));
    QVERIFY(setCell(1, Price, false, TableModel::DeletedRole));
    QCOMPARE(m_buffer->data(), before);
}

void TestTableModel::appendsBlankRecords()
{
    open(3);
    QVERIFY(!m_model->insertRows(2, 1));
    QVERIFY(cell(2, Name).isValid()); // The page of the last record is in memory.
    QVERIFY(m_model->insertRows(3, 2));
    QByteArray blank(recordLength, ' ');
    blank[21] = '?';
    QCOMPARE(recordBytes(4), blank);
    QCOMPARE(cell(4, InStock, Qt::CheckStateRole), QVariant(int(Qt::PartiallyChecked)));
    QCOMPARE(m_buffer->data().back(), '\x1A');
    QCOMPARE(m_buffer->data().at(4), '\x05');
    QVERIFY(setCell(4, InStock, Qt::Checked, Qt::CheckStateRole));
    QCOMPARE(recordBytes(4).at(21), 'T');
}

void TestTableModel::refusesMoreRowsThanAnIntNumbers()
{
    QTemporaryFile file; // 2147483647 records of one byte, without their bytes
    QVERIFY(file.open());
    file.write(QByteArray("\x03\0\0\0\xFF\xFF\xFF\x7F\x21\0\x01\0", 12));
    QVERIFY(file.resize(33 + Q_INT64_C(0x7FFFFFFF)) && file.seek(0));
    DbfTable table(&file);
    QVERIFY(table.open(QIODevice::ReadWrite));
    TableModel model(std::move(table));
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QVERIFY(!model.insertRows(model.rowCount(), 1));
    QCOMPARE(inserted.size() + model.rowCount(), std::numeric_limits<int>::max());
}

void TestTableModel::showsWhatIsLeftOfTruncatedTable()
{
    open(3);
    m_buffer->buffer().truncate(headerLength + 2 * recordLength + 5);
    QCOMPARE(cell(1, Name), QVariant(QStringLiteral("Чай")));
    QCOMPARE(cell(2, Name), QVariant());
    QVERIFY(m_model->table().hasError());
}

QTEST_GUILESS_MAIN(TestTableModel)

#include "tst_tablemodel.moc"
