// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "mainwindow.h"

#include "celldelegate.h"
#include "csvexport.h"

#include <QTextCodec>
#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtCore/QMimeData>
#include <QtCore/QSignalBlocker>
#include <QtGui/QDragEnterEvent>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QToolTip>

#include <algorithm>

using namespace dbf;

namespace
{

constexpr int messageMilliseconds = 10000;
constexpr int typingMilliseconds = 300;
constexpr int widestColumn = 400;

const char* const codePages[] = {"windows-1251", "IBM866",     "KOI8-R", "windows-1250", "IBM852",
                                 "windows-1252", "ISO-8859-1", "IBM850", "UTF-8"};

bool hasMemos(const DbfSchema& schema)
{
    return std::any_of(schema.columns.cbegin(), schema.columns.cend(), [](const DbfColumn& column) {
        return static_cast<char>(column.descriptor.type) == 'M';
    });
}

QString hexByte(int byte)
{
    return QStringLiteral("0x%1").arg(byte, 2, 16, QLatin1Char('0'));
}

} // namespace

MainWindow::MainWindow()
    : m_view(new QTableView(this))
    , m_filter(new QLineEdit(this))
    , m_codePages(new QComboBox(this))
    , m_state(new QLabel(this))
    , m_work(new WorkBar(this))
{
    setWindowTitle(QStringLiteral("Table viewer"));
    resize(1080, 640);
    setAcceptDrops(true);
    makeView();
    makeFileBar();
    makeRowBar();
    makeMemoPane();
    statusBar()->addPermanentWidget(m_work);
    statusBar()->addPermanentWidget(m_state);
    m_filterTimer.setSingleShot(true);
    connect(&m_filterTimer, &QTimer::timeout, this, &MainWindow::filter);
    connect(m_work, &WorkBar::shown, this, [this](bool isShown) {
        m_view->setEnabled(!isShown);
        for (QToolBar* const bar : findChildren<QToolBar*>())
            bar->setEnabled(!isShown);
    });
    setModel(nullptr);
}

// The view lets go of the model before that is destroyed.
MainWindow::~MainWindow()
{
    setModel(nullptr);
}

void MainWindow::makeView()
{
    m_view->setItemDelegate(new CellDelegate(m_view));
    m_view->setAlternatingRowColors(true);
    QHeaderView* const titles = m_view->horizontalHeader();
    titles->setSortIndicator(-1, Qt::AscendingOrder); // their own order
    titles->setSortIndicatorShown(true);
    titles->setSectionsClickable(true);
    connect(titles, &QHeaderView::sortIndicatorChanged, this, &MainWindow::sort);
    // Only rows in view are measured; all of them would have to be read.
    titles->setResizeContentsPrecision(0);
    titles->setStretchLastSection(true);
    m_view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_view->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    setCentralWidget(m_view);
}

QAction* MainWindow::addTableAction(QToolBar* bar, const QString& text, void (MainWindow::*slot)())
{
    QAction* const action = bar->addAction(text, this, slot);
    m_tableActions << action;
    return action;
}

void MainWindow::makeFileBar()
{
    QToolBar* const bar = addToolBar(QStringLiteral("File"));
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    bar->addAction(QStringLiteral("Open…"), this, &MainWindow::chooseFile)
        ->setShortcut(QKeySequence::Open);
    addTableAction(bar, QStringLiteral("Export to CSV…"), &MainWindow::chooseTarget);
    addTableAction(bar, QStringLiteral("Pack"), &MainWindow::pack)
        ->setToolTip(QStringLiteral("Drop the deleted records from the file"));
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

void MainWindow::makeRowBar()
{
    addToolBarBreak();
    QToolBar* const bar = addToolBar(QStringLiteral("Records"));
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    addTableAction(bar, QStringLiteral("Add"), &MainWindow::appendRow);
    addTableAction(bar, QStringLiteral("Delete / restore"), &MainWindow::toggleDeleted)
        ->setShortcut(QKeySequence::Delete);
    m_deletedShown = bar->addAction(QStringLiteral("Show deleted"));
    m_deletedShown->setCheckable(true);
    m_deletedShown->setChecked(true);
    connect(m_deletedShown, &QAction::toggled, this, &MainWindow::showDeleted);
    m_tableActions << m_deletedShown;
    m_filter->setPlaceholderText(QStringLiteral("Find in all columns"));
    m_filter->setClearButtonEnabled(true);
    bar->addWidget(m_filter);
    connect(m_filter, &QLineEdit::textChanged, this,
            [this] { m_filterTimer.start(typingMilliseconds); });
}

void MainWindow::makeMemoPane()
{
    m_memo = new QPlainTextEdit(this);
    m_memo->setReadOnly(true);
    m_memoPane = new QDockWidget(QStringLiteral("Memo"), this);
    m_memoPane->setWidget(m_memo);
    addDockWidget(Qt::RightDockWidgetArea, m_memoPane);
}

bool MainWindow::openFile(const QString& path, QString* reason)
{
    auto model = DbfTableModel::open(path, reason);
    if (!model)
        return false;
    m_path = path;
    m_headerCodec = model->table().schema().codec;
    m_codePages->setCurrentIndex(0);
    showModel(std::move(model));
    return true;
}

void MainWindow::openOrSay(const QString& path)
{
    QString reason;
    if (!openFile(path, &reason))
        showProblem(QStringLiteral("%1: %2").arg(path, reason));
}

/// Hands the model to the view, whose selection belongs to the old one.
void MainWindow::setModel(std::unique_ptr<DbfTableModel> model)
{
    const std::unique_ptr<QItemSelectionModel> selection(m_view->selectionModel());
    m_view->setModel(model.get());
    m_model = std::move(model);
    for (QAction* const action : m_tableActions)
        action->setEnabled(m_model != nullptr);
    m_filter->setEnabled(m_model != nullptr);
    m_memoPane->setVisible(m_model && hasMemos(m_model->table().schema()));
    m_memo->clear();
}

void MainWindow::showModel(std::unique_ptr<DbfTableModel> model)
{
    const QSignalBlocker filterBlocker(m_filter);
    const QSignalBlocker headerBlocker(m_view->horizontalHeader());
    const QSignalBlocker deletedBlocker(m_deletedShown);
    m_filter->clear();
    m_filterTimer.stop();
    m_deletedShown->setChecked(true);
    m_view->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    setModel(std::move(model));
    m_model->setProgress(m_work->progress());
    connect(m_model.get(), &DbfTableModel::refused, this, &MainWindow::showRefusal);
    connect(m_model.get(), &DbfTableModel::rowsInserted, this, &MainWindow::showState);
    connect(m_model.get(), &DbfTableModel::rowsRemoved, this, &MainWindow::showState);
    connect(m_model.get(), &DbfTableModel::modelReset, this, &MainWindow::showState);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &MainWindow::showCell);
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
    const DbfTable& table = m_model->table();
    const QTextCodec* const codec = table.schema().codec;
    const bool isWritable = table.device() && table.device()->isWritable();
    m_state->setText(
        QStringLiteral("%1 of %2 records · %3 columns · version %4 · %5%6")
            .arg(QLocale().toString(m_model->rowCount()), QLocale().toString(table.recordCount()))
            .arg(m_model->columnCount())
            .arg(hexByte(table.descriptor().version),
                 codec != nullptr ? QString::fromLatin1(codec->name()) : QString(),
                 isWritable ? QString() : QStringLiteral(" · read only")));
}

/// Shows the whole text of the current cell, which has one line in the table.
void MainWindow::showCell()
{
    m_memo->setPlainText(m_view->currentIndex().data().toString());
}

/// Says at the cell why it did not take a value.
void MainWindow::showRefusal(const QModelIndex& index, const QString& reason)
{
    statusBar()->showMessage(reason, messageMilliseconds);
    if (!index.isValid())
        return;
    // A moment later, as the editor that closes now would take the tip away.
    QTimer::singleShot(0, this, [this, cell = QPersistentModelIndex(index), reason] {
        const QPoint place = m_view->visualRect(cell).bottomLeft();
        QToolTip::showText(m_view->viewport()->mapToGlobal(place), reason, m_view);
    });
}

void MainWindow::showProblem(const QString& text)
{
    auto* box = new QMessageBox(QMessageBox::Warning, windowTitle(), text, QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
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
    if (!path.isEmpty())
        openOrSay(path);
}

void MainWindow::chooseTarget()
{
    const QString path =
        QFileDialog::getSaveFileName(this, QStringLiteral("Export to CSV"), m_path + ".csv");
    if (!path.isEmpty())
        exportTo(path);
}

void MainWindow::exportTo(const QString& path)
{
    QString reason;
    const WorkBar::Run run(*m_work);
    if (exportCsv(*m_model, path, m_work->progress(), &reason))
        statusBar()->showMessage(QStringLiteral("%1 was written").arg(path), messageMilliseconds);
    else if (!reason.isEmpty())
        showProblem(QStringLiteral("%1 cannot be written: %2").arg(path, reason));
}

// The file is replaced by another one: the model lets go of it before.
void MainWindow::pack()
{
    setModel(nullptr);
    DbfFileOptions options;
    options.progress = m_work->progress();
    QString reason;
    {
        const WorkBar::Run run(*m_work);
        packFile(m_path, options, &reason);
    }
    openOrSay(m_path);
    if (!reason.isEmpty())
        showProblem(reason);
}

void MainWindow::chooseCodePage(int choice)
{
    if (!m_model)
        return;
    QTextCodec* const codec =
        choice == 0 ? m_headerCodec
                    : QTextCodec::codecForName(m_codePages->itemText(choice).toLatin1());
    if (!m_model->setTextCodec(codec))
        showProblem(m_model->errorString());
}

void MainWindow::sort(int column, Qt::SortOrder order)
{
    if (!m_model)
        return;
    const WorkBar::Run run(*m_work);
    m_model->sort(column, order);
}

void MainWindow::filter()
{
    if (!m_model || m_work->isRunning())
        return;
    const WorkBar::Run run(*m_work);
    m_model->setFilter(m_filter->text());
}

void MainWindow::showDeleted(bool isShown)
{
    const WorkBar::Run run(*m_work);
    m_model->setShowingDeleted(isShown);
}

void MainWindow::appendRow()
{
    if (m_model->insertRows(m_model->rowCount(), 1))
        goToRow(m_model->rowCount() - 1);
}

void MainWindow::toggleDeleted()
{
    const QModelIndex index = m_view->currentIndex();
    if (index.isValid())
        m_model->setData(index, !index.data(DbfTableModel::DeletedRole).toBool(),
                         DbfTableModel::DeletedRole);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls() && !m_work->isRunning())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    const QString path = event->mimeData()->urls().value(0).toLocalFile();
    if (!path.isEmpty() && !m_work->isRunning())
        openOrSay(path);
}

/// Work under way uses the model: it is stopped first, and the window closed by the next click.
void MainWindow::closeEvent(QCloseEvent* event)
{
    m_work->stop();
    event->setAccepted(!m_work->isRunning());
}
