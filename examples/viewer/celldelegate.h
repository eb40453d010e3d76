// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef VIEWER_CELLDELEGATE_H
#define VIEWER_CELLDELEGATE_H

#include <dbf/dbf.h>

#include <QtWidgets/QLineEdit>
#include <QtWidgets/QStyledItemDelegate>

/// Strikes records that are marked deleted through, and lets every cell be edited as text: Qt's own
/// editors of numbers and dates know neither the decimals of a column nor blank cells.
class CellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                          const QModelIndex& /*index*/) const override
    {
        auto* const editor = new QLineEdit(parent);
        editor->setFrame(false);
        return editor;
    }

    void setEditorData(QWidget* editor, const QModelIndex& index) const override
    {
        static_cast<QLineEdit*>(editor)->setText(index.data().toString());
    }

    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override
    {
        const QString text = static_cast<QLineEdit*>(editor)->text();
        if (text != index.data().toString())
            model->setData(index, text);
    }

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        if (!index.data(dbf::DbfTableModel::DeletedRole).toBool())
            return;
        option->font.setStrikeOut(true);
        option->palette.setColor(QPalette::Text, option->palette.color(QPalette::PlaceholderText));
    }
};

#endif
