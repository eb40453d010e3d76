// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef VIEWER_MAINWINDOW_H
#define VIEWER_MAINWINDOW_H

#include "tablemodel/tablemodel.h"

#include <QtWidgets/QMainWindow>

#include <memory>

class QComboBox;
class QLabel;
class QTableView;

/// Shows one table and lets it be edited in place.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow();

    /// Shows the table in \a path, for reading alone where the file cannot be written. Returns
    /// whether that worked; if not, \a reason says why and the window stays as it is.
    bool openFile(const QString& path, QString* reason);

    /// Brings record \a row to the middle of the window. Returns whether it can be seen then.
    bool goToRow(int row);

private:
    void makeToolBar();
    void showModel(std::unique_ptr<TableModel> model);
    void fitColumns();
    void showState();
    void showRefusal();
    void chooseFile();
    void chooseCodePage(int choice);
    void appendRow();
    void toggleDeleted();

    std::unique_ptr<TableModel> m_model;
    QString m_path;
    QTextCodec* m_headerCodec = nullptr; ///< The one that the table's header asks for.
    QTableView* m_view;
    QComboBox* m_codePages;
    QLabel* m_state;
};

#endif
