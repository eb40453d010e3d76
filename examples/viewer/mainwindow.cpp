// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "mainwindow.h"

#include "quickstart/opentable.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QStyledItemDelegate>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolBar>

#include <algorithm>

using namespace dbf;

namespace
{

constexpr int messageMilliseconds = 5000;
constexpr int widestColumn = 400;

/// Strikes deleted records through.
class RecordDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        if (!index.data(TableModel::DeletedRole).toBool())
            return;
        option->font.setStrikeOut(true);
        option->palette.setColor(QPalette::Text, option->palette.color(QPalette::PlaceholderText));
    }
};

const char* const codePages[] = {"windows-1251", "IBM866",     "KOI8-R", "windows-1250", "IBM852",
                                 "windows-1252", "ISO-8859-1", "IBM850", "UTF-8"};

/// Opens \a table, for writing if the file allows it.
bool openForEditing(DbfTable& table, const QString& path, QString* reason)
{
    const bool isWritable = QFileInfo(path).isWritable();
    return openTable(table, isWritable ? QIODevice::ReadWrite : QIODevice::ReadOnly, nullptr,
                     reason);
}

} // namespace

MainWindow::MainWindow()
    : m_view(new QTableView(this)), m_codePages(new QComboBox(this)), m_state(new QLabel(this))
{
    setWindowTitle(QStringLiteral("Table viewer"));
    resize(1080, 640);
    m_view->setItemDelegate(new RecordDelegate(m_view));
    m_view->setAlternatingRowColors(true);
    // Only rows in view are measured; all of them would have to be read.
    m_view->horizontalHeader()->setResizeContentsPrecision(0);
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_view->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    setCentralWidget(m_view);
    makeToolBar();
    statusBar()->addPermanentWidget(m_state);
}

void MainWindow::makeToolBar()
{
    QToolBar* bar = addToolBar(QStringLiteral("Table"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    QAction* action = bar->addAction(QStringLiteral("Open…"), this, &MainWindow::chooseFile);
    action->setShortcut(QKeySequence::Open);
    bar->addSeparator();
    bar->addAction(QStringLiteral("Append record"), this, &MainWindow::appendRow);
    action = bar->addAction(QStringLiteral("Delete / restore"), this, &MainWindow::toggleDeleted);
    action->setShortcut(QKeySequence::Delete);
    bar->addSeparator();
    bar->addWidget(new QLabel(QStringLiteral("  Code page:  "), bar));
    m_codePages->addItem(QStringLiteral("as the header says"));
    for (const char* const name : codePages) {
        if (QTextCodec::codecForName(name) != nullptr)
            m_codePages->addItem(QString::fromLatin1(name));
    }
    bar->addWidget(m_codePages);
    connect(m_codePages, qOverload<int>(&QComboBox::activated), this, &MainWindow::chooseCodePage);
}

bool MainWindow::openFile(const QString& path, QString* reason)
{
    DbfTable table(new QFile(path));
    table.destroyDeviceAtExit(true);
    if (!openForEditing(table, path, reason))
        return false;
    m_path = path;
    m_headerCodec = table.schema().codec;
    m_codePages->setCurrentIndex(0);
    showModel(std::make_unique<TableModel>(std::move(table)));
    return true;
}

void MainWindow::showModel(std::unique_ptr<TableModel> model)
{
    // The view lets go of the old model before that is destroyed.
    m_view->setModel(model.get());
    m_model = std::move(model);
    connect(m_model.get(), &TableModel::refused, this, &MainWindow::showRefusal);
    connect(m_model.get(), &TableModel::rowsInserted, this, &MainWindow::showState);
    connect(m_model.get(), &TableModel::modelReset, this, &MainWindow::showState);
    setWindowTitle(QFileInfo(m_path).fileName() + QStringLiteral(" – Table viewer"));
    fitColumns();
    showState();
}

void MainWindow::fitColumns()
{
    m_view->resizeColumnsToContents();
    for (int i = 0; i < m_model->columnCount(); ++i)
        m_view->setColumnWidth(i, std::min(m_view->columnWidth(i) + 16, widestColumn));
}

void MainWindow::showState()
{
    const QTextCodec* codec = m_model->table().schema().codec;
    m_state->setText(QStringLiteral("%1 records · %2 columns · %3%4")
                         .arg(QLocale().toString(m_model->rowCount()))
                         .arg(m_model->columnCount())
                         .arg(codec != nullptr ? QString::fromLatin1(codec->name()) : QString(),
                              m_model->table().device()->isWritable()
                                  ? QString()
                                  : QStringLiteral(" · read only")));
}

void MainWindow::showRefusal()
{
    const DbfTable& table = m_model->table();
    QString reason = QStringLiteral("it cannot be changed");
    if (table.hasError())
        reason = errorText(table.lastError());
    else if (!table.valueProblems().isEmpty())
        reason = table.valueProblems().first().text();
    statusBar()->showMessage(QStringLiteral("Not written: %1").arg(reason), messageMilliseconds);
}

bool MainWindow::goToRow(int row)
{
    if (!m_model || row < 0 || row >= m_model->rowCount())
        return false;
    const QModelIndex index = m_model->index(row, 0);
    m_view->scrollTo(index, QAbstractItemView::PositionAtCenter);
    m_view->setCurrentIndex(index);
    return m_view->viewport()->rect().contains(m_view->visualRect(index)) && index.data().isValid();
}

void MainWindow::chooseFile()
{
    const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("Open a table"), m_path,
                                                      QStringLiteral("Tables (*.dbf *.DBF)"));
    QString reason;
    if (!path.isEmpty() && !openFile(path, &reason))
        QMessageBox::warning(this, windowTitle(),
                             QStringLiteral("%1 does not open: %2").arg(path, reason));
}

void MainWindow::chooseCodePage(int choice)
{
    if (!m_model)
        return;
    QTextCodec* codec = choice == 0
                            ? m_headerCodec
                            : QTextCodec::codecForName(m_codePages->itemText(choice).toLatin1());
    if (!m_model->setTextCodec(codec))
        showRefusal();
}

void MainWindow::appendRow()
{
    if (!m_model)
        return;
    const int row = m_model->rowCount();
    if (m_model->insertRows(row, 1))
        goToRow(row);
    else
        showRefusal();
}

void MainWindow::toggleDeleted()
{
    const QModelIndex index = m_view->currentIndex();
    if (index.isValid())
        m_model->setData(index, !index.data(TableModel::DeletedRole).toBool(),
                         TableModel::DeletedRole);
}
