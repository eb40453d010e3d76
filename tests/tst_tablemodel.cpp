// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"
#include "testtables.h"

#include <QtCore/QRandomGenerator>
#include <QtCore/QTemporaryDir>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>

#include <algorithm>
#include <limits>

using namespace dbf;
using namespace testtables;
using Comparison = DbfTableModel::Comparison;

/// Rows by the book: every record read, compared with every other.
struct NaiveRows {
    QVector<int> rows;
    QString needle;
    int column = -1;
    Qt::SortOrder order = Qt::AscendingOrder;
    bool hidesDeleted = false;

    static QVector<DbfRecord> records(RecordingDevice& device)
    {
        RecordingDevice copy(device.content);
        DbfTable table(&copy);
        table.setConverterChoice(nullableConverter);
        table.open(QIODevice::ReadOnly);
        return table.readRecords(0, table.recordCount());
    }
    static bool isBlank(const QVariant& value) { return value.toString().isEmpty(); }

    void arrange(RecordingDevice& device)
    {
        const QVector<DbfRecord> all = records(device);
        rows.clear();
        for (const DbfRecord& record : all) {
            const bool isFound =
                needle.isEmpty() || record.values.at(0).toString().contains(needle);
            if (isFound && !(hidesDeleted && record.isDeleted()))
                rows << record.index();
        }
        if (column < 0)
            return;
        std::stable_sort(rows.begin(), rows.end(), [&](int a, int b) {
            const QVariant left = all.at(a).values.at(column);
            const QVariant right = all.at(b).values.at(column);
            if (isBlank(left) || isBlank(right))
                return !isBlank(left) && isBlank(right);
            const bool isText = column == 0;
            const auto less = [isText](const QVariant& x, const QVariant& y) {
                return isText ? x.toString() < y.toString() : x.toDouble() < y.toDouble();
            };
            return order == Qt::AscendingOrder ? less(left, right) : less(right, left);
        });
    }
};

class TestTableModel : public QObject
{
    Q_OBJECT

private slots:
    void randomOperationsAreThoseOfNaiveModel()
    {
        QRandomGenerator random(7);
        const auto model = open(sample());
        const QAbstractItemModelTester tester(
            model.get(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        NaiveRows naive;
        naive.arrange(*device);
        for (int step = 0; step < 600; ++step) {
            const int row = model->rowCount() > 0 ? random.bounded(model->rowCount()) : -1;
            const int count = model->table().recordCount();
            switch (random.bounded(8)) {
            case 0:
                naive.column = random.bounded(4) - 1;
                naive.order = Qt::SortOrder(random.bounded(2));
                model->sort(naive.column, naive.order);
                naive.arrange(*device);
                break;
            case 1:
                naive.needle =
                    random.bounded(2) ? QString(QChar('A' + random.bounded(4))) : QString();
                // The numbers and letters of other columns hold none of these.
                QVERIFY(naive.needle.isEmpty()
                            ? model->setFilter(QString())
                            : model->setFilter(0, Comparison::Contains, naive.needle));
                naive.arrange(*device);
                break;
            case 2:
                naive.hidesDeleted = !naive.hidesDeleted;
                QVERIFY(model->setShowingDeleted(!naive.hidesDeleted));
                QCOMPARE(model->isShowingDeleted(), !naive.hidesDeleted);
                naive.arrange(*device);
                break;
            case 3:
                QVERIFY(model->insertRows(model->rowCount(), 2));
                naive.rows << count << count + 1;
                break;
            case 4: // Another program appends a record.
                device->content.chop(1);
                device->content += " ABC  T 2.5\x1A";
                device->content.replace(4, 4, littleEndian(quint32(count) + 1, 4));
                QVERIFY(model->refresh());
                naive.rows << count;
                break;
            case 5:
                if (row < 0)
                    break;
                QVERIFY(
                    model->setData(model->index(row, 1), row % 3 != 0, DbfTableModel::DeletedRole));
                if (naive.hidesDeleted && row % 3 != 0)
                    naive.rows.removeAt(row);
                break;
            default:
                if (row < 0)
                    break;
                QVERIFY(model->setData(model->index(row, 2), random.bounded(90) / 10.0));
                QVERIFY(
                    model->setData(model->index(row, 0), QString(QChar('A' + random.bounded(6))) +
                                                             QChar('A' + random.bounded(6))));
            }
            QCOMPARE(shown(*model), naive.rows);
            const QVector<DbfRecord> records = NaiveRows::records(*device);
            for (int i = 0; i < naive.rows.size(); ++i) {
                const DbfRecord& record = records.at(naive.rows.at(i));
                QCOMPARE(model->index(i, 0).data(DbfTableModel::DeletedRole).toBool(),
                         record.isDeleted());
                for (int column = 0; column < 3; ++column)
                    QCOMPARE(model->index(i, column).data(DbfTableModel::ValueRole),
                             record.values.at(column));
            }
        }
    }

    void textOfNumbersSortsByNumberAndBlanksLast()
    {
        const auto numbers = open(names({"10", "", "9", "-3", "9.0"}));
        numbers->sort(0);
        QCOMPARE(shown(*numbers), QVector<int>({3, 2, 4, 0, 1}));
        numbers->sort(0, Qt::DescendingOrder);
        QCOMPARE(shown(*numbers), QVector<int>({0, 2, 4, 3, 1}));
        numbers->sort(7);
        QCOMPARE(shown(*numbers), QVector<int>({0, 1, 2, 3, 4}));
        const auto mixed = open(names({"9", "10", "x"}));
        mixed->sort(0);
        QCOMPARE(shown(*mixed), QVector<int>({1, 0, 2}));
    }

    void filtersCompare_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("comparison");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QVector<int>>("rows");

        const auto row = [](const char* name, int column, Comparison comparison,
                            const QVariant& value, const QVector<int>& rows) {
            QTest::newRow(name) << column << int(comparison) << value << rows;
        };
        row("equal text", 0, Comparison::Equal, "ann", {0});
        row("other text", 0, Comparison::NotEqual, "ann", {1, 2});
        row("text before", 0, Comparison::Less, "bob", {0});
        row("text from on", 0, Comparison::AtLeast, "bob", {1, 2});
        row("equal number", 1, Comparison::Equal, "2", {0});
        row("less", 1, Comparison::Less, 20, {0});
        row("at most", 1, Comparison::AtMost, 20, {0, 1});
        row("greater", 1, Comparison::Greater, 2, {1});
        row("at least", 1, Comparison::AtLeast, 2, {0, 1});
        row("contains", 1, Comparison::Contains, "0", {0, 1});
        row("blank", 1, Comparison::Equal, QVariant(), {2});
        row("not blank", 1, Comparison::NotEqual, QVariant(), {0, 1});
        row("no number", 1, Comparison::NotEqual, "x", {0, 1, 2});
        row("no number is less", 1, Comparison::Less, "x", {});
        row("date", 2, Comparison::Greater, "2024-02-28", {0});
        row("day", 2, Comparison::Equal, QDate(2024, 2, 29), {0});
        row("no day", 2, Comparison::Less, "soon", {});
        row("truth", 3, Comparison::Equal, true, {0});
        row("untruth", 3, Comparison::AtMost, false, {1});
        row("blank is not unequal to blank", 2, Comparison::NotEqual, "", {0, 1});
        row("no moment", 4, Comparison::AtLeast, "soon", {});
        row("moment", 4, Comparison::AtLeast, "2000-01-01T00:00:00", {0});
    }

    void filtersCompare()
    {
        QFETCH(int, column);
        QFETCH(int, comparison);
        QFETCH(QVariant, value);
        QFETCH(QVector<int>, rows);

        const auto model = open(
            {{field("NAME", 'C', 3), field("N", 'N', 4, 1), field("D", 'D', 8), field("L", 'L', 1),
              field("T", 'T', 8)},
             {" Ann 2.020240229T" + hex("d28a250000000000"),
              " Bob20.020240228F" + QByteArray(8, '\0'), " Cat            ?" + QByteArray(8, '\0')},
             0x30,
             0xC9,
             QByteArray(263, '\0')});
        QVERIFY(model->setFilter(column, Comparison(comparison), value));
        QCOMPARE(shown(*model), rows);
        QVERIFY(model->setFilter(QString()));
        for (const int key : {4, 3, 2}) {
            model->sort(key);
            QCOMPARE(shown(*model), key == 4 ? QVector<int>({0, 1, 2}) : QVector<int>({1, 0, 2}));
        }
        QVERIFY(model->setFilter("bO"));
        QCOMPARE(shown(*model), QVector<int>({1}));
        QVERIFY(!model->setFilter(5, Comparison::Equal, 1));
        QCOMPARE(model->errorString(), QString("There is no such column"));
    }

    void persistentIndexesFollowTheirRecords()
    {
        const auto model = open(names({"c", "a", "b"}));
        const QPersistentModelIndex kept = model->index(0, 0);
        model->sort(0);
        QCOMPARE(kept.row(), 2);
        model->sort(-1);
        QCOMPARE(kept.row(), 0);
    }

    void refusalsSayWhy()
    {
        const auto model = open(sample());
        QSignalSpy refusals(model.get(), &DbfTableModel::refused);
        QVERIFY(!model->setData(model->index(0, 2), "dear"));
        QCOMPARE(refusals.size(), 1);
        QVERIFY(model->errorString().startsWith("AMOUNT: "));
        QVERIFY(!model->setData(model->index(0, 2), 1, Qt::ToolTipRole));
        QVERIFY(!model->setData(QModelIndex(), 1));
        QVERIFY(!model->insertRows(0, 1) && !model->insertRows(3, 0) &&
                !model->insertRows(3, std::numeric_limits<int>::max()));
        QVERIFY(!model->setFilter(-1, Comparison::Equal, 1));
        device->setFault({RecordingDevice::Write, 1});
        QVERIFY(!model->setData(model->index(0, 0), true, DbfTableModel::DeletedRole));
        QVERIFY(!model->errorString().startsWith("AMOUNT: "));
        device->setFault({RecordingDevice::Write, 1});
        QVERIFY(!model->insertRows(3, 1));
        device->setFault({RecordingDevice::Read, 1});
        QVERIFY(!model->refresh());
        device->setFault({RecordingDevice::Read, 1});
        QVERIFY(!model->setData(model->index(0, 0), "x"));
        QVERIFY(!model->table().hasError());
        QVERIFY(model->setData(model->index(0, 1), Qt::Unchecked, Qt::CheckStateRole));
        QCOMPARE(device->content.at(129 + 6), 'F');
        QVERIFY(model->flags(model->index(0, 0)) & Qt::ItemIsEditable);
        QVERIFY(model->flags(model->index(0, 1)) & Qt::ItemIsUserCheckable);

        const auto readOnly = open(sample(), QIODevice::ReadOnly);
        QVERIFY(!(readOnly->flags(readOnly->index(0, 0)) & Qt::ItemIsEditable));
        QVERIFY(!readOnly->setData(readOnly->index(0, 0), "x"));
        QVERIFY(!readOnly->insertRows(3, 1));
    }

    void modelIsLeftAloneWhileItSorts()
    {
        const auto model = open(names({"c", "a", "b"}));
        int calls = 0;
        model->setProgress([&](int, int) {
            ++calls;
            model->sort(0, Qt::DescendingOrder);
            model->setProgress({});
            const bool isLeft = !model->setFilter("a") && !model->setTextCodec(nullptr) &&
                                !model->refresh() && !model->actualize() &&
                                !model->insertRows(3, 1) &&
                                !model->setData(model->index(0, 0), "x");
            return isLeft && model->index(0, 0).data() == QVariant("c");
        });
        model->sort(0);
        QCOMPARE(calls, 1);
        QCOMPARE(shown(*model), QVector<int>({1, 2, 0}));
    }

    void stoppedSortLeavesRows()
    {
        const auto model = open(names({"c", "a", "b"}));
        model->setProgress([](int, int) { return false; });
        QSignalSpy refusals(model.get(), &DbfTableModel::refused);
        model->sort(0);
        QCOMPARE(shown(*model), QVector<int>({0, 1, 2}));
        QCOMPARE(refusals.size(), 1);
    }

    void cutTableShowsWhatIsLeft()
    {
        const auto model = open(sample());
        device->content.truncate(129 + 15);
        QCOMPARE(model->index(0, 2).data(), QVariant("1.5"));
        QCOMPARE(model->index(1, 2).data(), QVariant());
        QVERIFY(!model->errorString().isEmpty() && !model->table().hasError());
        model->sort(0);
        QCOMPARE(shown(*model), QVector<int>({0, 1, 2}));
        QVERIFY(model->refresh()); // The count follows down to what is whole.
        QCOMPARE(model->rowCount(), 1);

        const auto sorted = open(sample());
        sorted->sort(0, Qt::DescendingOrder);
        device->content.truncate(129 + 11);
        QVERIFY(sorted->refresh());
        QCOMPARE(shown(*sorted), QVector<int>({0}));
    }

    void cellsShowTheirValues()
    {
        const auto model = open({{field("B", 'B', 8), field("Q", 'Q', 2), field("T", 'T', 8),
                                  field("L", 'L', 1), field("D", 'D', 8)},
                                 {' ' + hex("9a9999999999b93f 1aff d28a250000000000") + "?20240229",
                                  (QByteArray(19, ' ') + 'T').leftJustified(28),
                                  (QByteArray(19, ' ') + 'F').leftJustified(28)},
                                 0x30,
                                 0xC9,
                                 QByteArray(263, '\0')});
        QStringList texts;
        for (int i = 0; i < 5; ++i)
            texts << model->index(0, i).data().toString();
        QCOMPARE(texts, QStringList({"0.1", "1aff", "2024-02-29 00:00:00", "", "2024-02-29"}));
        const Qt::CheckState states[] = {Qt::PartiallyChecked, Qt::Checked, Qt::Unchecked};
        for (int row = 0; row < 3; ++row)
            QCOMPARE(model->index(row, 3).data(Qt::CheckStateRole), QVariant(int(states[row])));
        QCOMPARE(model->index(0, 0).data(Qt::CheckStateRole), QVariant());
        QCOMPARE(model->index(0, 0).data(Qt::TextAlignmentRole),
                 QVariant(int(Qt::AlignRight | Qt::AlignVCenter)));
        QVERIFY(!(model->flags(model->index(0, 1)) & Qt::ItemIsEditable));
        QCOMPARE(model->index(0, 0).data(DbfTableModel::RecordRole), QVariant(0));
        QCOMPARE(model->index(0, 0).data(Qt::DecorationRole), QVariant());
        QCOMPARE(model->data(QModelIndex()), QVariant());
        QVERIFY(model->setTextCodec(codec(2086)));
        QCOMPARE(model->headerData(0, Qt::Vertical), QVariant(1));
        QCOMPARE(model->headerData(0, Qt::Vertical, Qt::ToolTipRole), QVariant());
        QCOMPARE(model->headerData(1, Qt::Horizontal), QVariant("Q"));
        QCOMPARE(model->headerData(1, Qt::Horizontal, Qt::ToolTipRole), QVariant("Q(2)"));
        QCOMPARE(model->headerData(1, Qt::Horizontal, Qt::DecorationRole), QVariant());
        for (const int section : {-1, 9})
            QCOMPARE(model->headerData(section, Qt::Horizontal, Qt::ToolTipRole), QVariant());
        QCOMPARE(model->recordOfRow(-1), -1);
        QCOMPARE(open(sample())->headerData(2, Qt::Horizontal, Qt::ToolTipRole),
                 QVariant("N(4,1)"));
        QCOMPARE(model->recordOfRow(3), -1);
    }

    void replacedFileIsFollowed()
    {
        const QString path = m_folder.filePath("replaced.dbf");
        const auto replaceBy = [&path](const QByteArray& bytes) {
            QFile::remove(path);
            writeFile(path, bytes);
        };
        writeFile(path, sample().bytes());
        const auto model = DbfTableModel::open(path);
        QVERIFY(model && model->setShowingDeleted(false));
        QCOMPARE(model->rowCount(), 2);
        const QAbstractItemModelTester tester(
            model.get(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        QVERIFY(model->actualize());
        replaceBy(names({"a", "b", "c"}).bytes());
        QVERIFY(model->actualize());
        QCOMPARE(shown(*model), QVector<int>({0, 1, 2}));
        QVERIFY(model->setTextCodec(codec(2086)));
        replaceBy("no table");
        QVERIFY(!model->actualize());
        QCOMPARE(model->rowCount(), 0);
        QVERIFY(!model->actualize() && !model->errorString().isEmpty());
        QFile::remove(path);
        QVERIFY(!model->actualize() && !QFile::exists(path));
        replaceBy(sample().bytes());
        QVERIFY(model->actualize());
        QCOMPARE(model->rowCount(), 2);
        QVERIFY(model->setData(model->index(0, 2), 7.5));
    }

    void memosAreRead()
    {
        const QString path = m_folder.filePath("notes.dbf");
        writeFile(path, Table{{field("NOTE", 'M', 4)},
                              {QByteArray(" \1\0\0\0", 5)},
                              0x30,
                              0xC9,
                              QByteArray(263, '\0')}
                            .bytes());
        writeFile(m_folder.filePath("notes.fpt"), QByteArray(6, '\0') + "\x02" +
                                                      QByteArray(505, '\0') +
                                                      hex("0000000100000002") + "Hi");
        const auto model = DbfTableModel::open(path);
        QVERIFY(model);
        QCOMPARE(model->index(0, 0).data(), QVariant("Hi"));
        QVERIFY(!(model->flags(model->index(0, 0)) & Qt::ItemIsEditable));
        QVERIFY(model->setTextCodec(codec(2086)));
        QCOMPARE(model->index(0, 0).data(), QVariant("Hi"));
    }

    void nothingOfWhatDoesNotOpen()
    {
        QString error;
        const QString path = m_folder.filePath("missing.dbf");
        QVERIFY(!DbfTableModel::open(path, &error) && !error.isEmpty() && !QFile::exists(path));
        DbfTableModel empty{DbfTable(nullptr)};
        empty.sort(0);
        QVERIFY(!empty.actualize() && !empty.insertRows(0, 1));
        QCOMPARE(empty.rowCount() + empty.columnCount(), 0);
    }

private:
    std::unique_ptr<DbfTableModel> open(const Table& table,
                                        QIODevice::OpenMode mode = QIODevice::ReadWrite)
    {
        device = std::make_unique<RecordingDevice>(table.bytes());
        DbfTable opened(device.get());
        opened.setConverterChoice(nullableConverter);
        opened.open(mode);
        return std::make_unique<DbfTableModel>(std::move(opened));
    }
    static QVector<int> shown(const DbfTableModel& model)
    {
        QVector<int> rows;
        for (int row = 0; row < model.rowCount(); ++row)
            rows << model.recordOfRow(row);
        return rows;
    }
    static Table names(const QByteArrayList& texts)
    {
        Table table{{field("NAME", 'C', 5)}};
        for (const QByteArray& text : texts)
            table.records << ' ' + text.leftJustified(5);
        return table;
    }

    std::unique_ptr<RecordingDevice> device;
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestTableModel)
#include "tst_tablemodel.moc"
