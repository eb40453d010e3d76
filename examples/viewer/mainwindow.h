// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef VIEWER_MAINWINDOW_H
#define VIEWER_MAINWINDOW_H

#include "workbar.h"

#include <dbf/dbf.h>

#include <QtCore/QTimer>
#include <QtWidgets/QMainWindow>

#include <memory>

class QComboBox;
class QDockWidget;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QTableView;
class QToolBar;

/// Shows one table and lets it be edited in place.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;

    /// Shows the table in \a path with its memos, for reading alone where the file cannot be
    /// written. Returns whether that worked; if not, \a reason says why and the window stays as it
    /// is.
    bool openFile(const QString& path, QString* reason);

    /// Brings record \a row to the middle of the window. Returns whether it can be seen then.
    bool goToRow(int row);

    /// Drops the deleted records from the file and shows it again. Says what goes wrong.
    void pack();

    /// Writes the rows in view into \a path. Says what goes wrong.
    void exportTo(const QString& path);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void makeView();
    void makeFileBar();
    void makeRowBar();
    void makeMemoPane();
    QAction* addTableAction(QToolBar* bar, const QString& text, void (MainWindow::*slot)());
    void showModel(std::unique_ptr<dbf::DbfTableModel> model);
    void setModel(std::unique_ptr<dbf::DbfTableModel> model);
    void fitColumns();
    void showState();
    void showCell();
    void showRefusal(const QModelIndex& index, const QString& reason);
    void showProblem(const QString& text);
    void openOrSay(const QString& path);
    void chooseFile();
    void chooseTarget();
    void chooseCodePage(int choice);
    void sort(int column, Qt::SortOrder order);
    void filter();
    void showDeleted(bool isShown);
    void appendRow();
    void toggleDeleted();

    std::unique_ptr<dbf::DbfTableModel> m_model;
    QString m_path;
    QTextCodec* m_headerCodec = nullptr; ///< The one that the table's header asks for.
    QTableView* m_view;
    QLineEdit* m_filter;
    QTimer m_filterTimer; ///< Waits until nobody types any more.
    QComboBox* m_codePages;
    QAction* m_deletedShown = nullptr;
    QList<QAction*> m_tableActions; ///< Those that need a table.
    QDockWidget* m_memoPane = nullptr;
    QPlainTextEdit* m_memo = nullptr;
    QLabel* m_state;
    WorkBar* m_work;
};

#endif
