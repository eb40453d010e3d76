// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "mainwindow.h"
#include "sampletable.h"

#include <QtCore/QMimeData>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QToolTip>

using namespace dbf;

namespace
{

constexpr int recordCount = 300;
enum Column { Number, Name, City, Price };

} // namespace

/// Does in the window what a person does.
class TestViewer : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath("goods.dbf");
        QVERIFY(makeSampleTable(m_path, recordCount));
        m_window = std::make_unique<MainWindow>();
        QString reason;
        QVERIFY2(m_window->openFile(m_path, &reason), qPrintable(reason));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void cleanup() { m_window.reset(); }

    void clickOnTitleSorts()
    {
        QHeaderView* const titles = view()->horizontalHeader();
        const QPoint price(titles->sectionViewportPosition(Price) + 5, titles->height() / 2);
        QTest::mouseClick(titles->viewport(), Qt::LeftButton, {}, price);
        const double least = value(0, Price).toDouble();
        QTest::mouseClick(titles->viewport(), Qt::LeftButton, {}, price);
        const double greatest = value(0, Price).toDouble();
        QVERIFY(least < greatest);
        QCOMPARE(value(recordCount - 1, Price).toDouble(), least);
    }

    void typedTextFilters()
    {
        auto* const line = m_window->findChild<QLineEdit*>();
        QTest::keyClicks(line, "1000007");
        QTRY_COMPARE(rowCount(), 1);
        QCOMPARE(value(0, Number).toInt(), 1000007);
        line->clear();
        QTRY_COMPARE(rowCount(), recordCount);
    }

    void cellsAreEditedAndRefusalsSaidThere()
    {
        edit(0, Price, "12.5");
        QCOMPARE(value(0, Price).toDouble(), 12.5);
        edit(0, Price, "12345678901");
        QCOMPARE(value(0, Price).toDouble(), 12.5);
        QTRY_VERIFY(QToolTip::text().contains("does not fit 10 places"));
        QCOMPARE(m_window->statusBar()->currentMessage(), QToolTip::text());
    }

    void recordsAreAddedDeletedAndRestored()
    {
        action("Add")->trigger();
        QCOMPARE(rowCount(), recordCount + 1);
        QCOMPARE(view()->currentIndex().row(), recordCount);
        const QModelIndex first = view()->model()->index(0, 0);
        const bool wasDeleted = first.data(DbfTableModel::DeletedRole).toBool();
        view()->setCurrentIndex(first);
        for (const bool isDeleted : {!wasDeleted, wasDeleted}) {
            QTest::keyClick(view(), Qt::Key_Delete);
            QCOMPARE(first.data(DbfTableModel::DeletedRole).toBool(), isDeleted);
        }
    }

    void deletedRecordsAreHiddenAndPacked()
    {
        action("Show deleted")->trigger();
        const int live = rowCount();
        QVERIFY(live > 0 && live < recordCount);
        action("Show deleted")->trigger();
        QCOMPARE(rowCount(), recordCount);
        action("Pack")->trigger();
        QCOMPARE(rowCount(), live);
        QFile file(m_path);
        DbfTable table(&file);
        QVERIFY(table.open(QIODevice::ReadOnly));
        QCOMPARE(table.recordCount(), live);

        QVERIFY(QFile::remove(m_path));
        action("Pack")->trigger();
        const QString said = problem();
        QVERIFY2(said.contains("no such file"), qPrintable(said));
        QVERIFY(!view()->model() && !action("Pack")->isEnabled());
    }

    void rowsInViewAreExported()
    {
        const QString path = m_folder->filePath("goods.csv");
        edit(0, Name, "a \"b\", c");
        m_window->exportTo(path);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = file.readAll().split('\n');
        QCOMPARE(int(lines.size()), recordCount + 2); // the titles, and nothing behind the last
        QVERIFY(lines.at(1).startsWith("1000000,\"a \"\"b\"\", c\","));
        QVERIFY(lines.at(1).endsWith("true\r") || lines.at(1).endsWith("false\r"));
        m_window->exportTo(m_folder->filePath("no folder/goods.csv"));
        QVERIFY(problem().contains("cannot be written"));
    }

    void codePageIsChosen()
    {
        const QVariant name = value(0, Name);
        auto* const choice = m_window->findChild<QComboBox*>();
        choice->setFocus();
        QTest::keyClick(choice, Qt::Key_Down);
        QCOMPARE(choice->currentText(), QString("windows-1251"));
        QCOMPARE(value(0, Name), name);
        QTest::keyClick(choice, Qt::Key_Down);
        QVERIFY(value(0, Name) != name);
        QTest::keyClick(choice, Qt::Key_Home);
        QCOMPARE(value(0, Name), name);
    }

    void droppedFileIsOpenedOrItsDamageTold()
    {
        const QString notes = writeNotes();
        drop(notes);
        QCOMPARE(rowCount(), 1);
        view()->setCurrentIndex(view()->model()->index(0, 0));
        auto* const pane = m_window->findChild<QDockWidget*>();
        QVERIFY(pane->isVisible());
        QCOMPARE(pane->findChild<QPlainTextEdit*>()->toPlainText(), QString("Hi"));
        QVERIFY(m_window->windowTitle().startsWith("notes.dbf"));

        QFile damaged(m_folder->filePath("damaged.dbf"));
        QVERIFY(damaged.open(QIODevice::WriteOnly) && damaged.write("no table") == 8);
        damaged.close();
        drop(damaged.fileName());
        QVERIFY(problem().contains("fewer bytes than a header"));
        QCOMPARE(rowCount(), 1); // The table shown before stays.
    }

    void longWorkCanBeStopped()
    {
        WorkBar bar;
        QSignalSpy shown(&bar, &WorkBar::shown);
        bool goesOn = true;
        {
            const WorkBar::Run run(bar);
            const auto progress = bar.progress();
            QVERIFY(progress(1, 10) && shown.isEmpty());
            QTest::qWait(1100);
            QVERIFY(progress(5, 10) && bar.isVisible());
            QCOMPARE(bar.findChild<QProgressBar*>()->value(), 5);
            QTest::mouseClick(bar.findChild<QPushButton*>(), Qt::LeftButton);
            goesOn = progress(6, 10);
        }
        QVERIFY(!goesOn && !bar.isVisible() && !bar.isRunning());
        QCOMPARE(shown.size(), 2);
    }

private:
    QTableView* view() { return m_window->findChild<QTableView*>(); }
    int rowCount() { return view()->model()->rowCount(); }
    QVariant value(int row, int column)
    {
        return view()->model()->index(row, column).data(DbfTableModel::ValueRole);
    }

    QAction* action(const QString& text)
    {
        for (QAction* const action : m_window->findChildren<QAction*>())
            if (action->text() == text)
                return action;
        qFatal("There is no such action");
    }

    void edit(int row, int column, const QString& text)
    {
        const QModelIndex cell = view()->model()->index(row, column);
        const QPoint place = view()->visualRect(cell).center();
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(view()->viewport(), Qt::LeftButton, {}, place);
        QWidget* const editor = QApplication::focusWidget();
        QVERIFY(editor && editor != view());
        QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
        QApplication::processEvents(); // The delegate takes the text a moment later.
    }

    void drop(const QString& path)
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        const QPoint place(10, 10);
        QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(m_window.get(), &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(m_window.get(), &event);
    }

    /// Returns the text of the box that says a problem, and closes it.
    QString problem()
    {
        const auto boxes = m_window->findChildren<QMessageBox*>();
        if (boxes.isEmpty())
            return {};
        const QString text = boxes.last()->text();
        qDeleteAll(boxes);
        return text;
    }

    /// Makes a table of one record with a memo, and its memo file.
    QString writeNotes()
    {
        const QString path = m_folder->filePath("notes.dbf");
        QFile table(path);
        QFile memo(m_folder->filePath("notes.fpt"));
        const QByteArray header =
            QByteArray::fromHex("30 7c0101 01000000 4801 0500") + QByteArray(20, '\0') +
            QByteArray("NOTE").leftJustified(11, '\0') + 'M' + QByteArray(4, '\0') + '\4' +
            QByteArray(15, '\0') + '\r' + QByteArray(263, '\0');
        const QByteArray block = QByteArray::fromHex("00000001 00000002") + "Hi";
        const bool isWritten = table.open(QIODevice::WriteOnly) &&
                               memo.open(QIODevice::WriteOnly) &&
                               table.write(header + QByteArray::fromHex("20 01000000 1a")) > 0 &&
                               memo.write(QByteArray(6, '\0') + QByteArray::fromHex("0200") +
                                          QByteArray(504, '\0') + block) > 0;
        return isWritten ? path : QString();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    std::unique_ptr<MainWindow> m_window;
};

QTEST_MAIN(TestViewer)
#include "tst_viewer.moc"
