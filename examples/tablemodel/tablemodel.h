// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TABLEMODEL_TABLEMODEL_H
#define TABLEMODEL_TABLEMODEL_H

#include <dbf/dbf.h>

#include <QtCore/QAbstractTableModel>
#include <QtCore/QCache>

/// Shows the records of a table to Qt's item views, and lets them be edited.
///
/// Records are read in pages when a view asks for one of their cells; the pages looked at last are
/// kept, so that a table of any size takes the same memory. Edits go to the table at once. An edit
/// writes the bytes of its own cell; those of the record's other cells stay as they are. What the
/// field would not keep is refused.
class TableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Role {
        DeletedRole = Qt::UserRole, ///< Whether the record of the cell is marked deleted; editable.
    };

    /// Takes over \a table, which is open, and lets it check values. They go through the table's
    /// converters; give it the nullable set, or blank numbers show as 0. Cells are editable if the
    /// device is open for writing, but those of columns with raw bytes.
    explicit TableModel(dbf::DbfTable&& table, QObject* parent = nullptr);

    /// Returns the table; its lastError() and valueProblems() tell why an edit failed.
    const dbf::DbfTable& table() const;

    /// Reads the table's text and field names in \a codec from now on. Returns false when the table
    /// cannot be read again; the model is empty then.
    bool setTextCodec(QTextCodec* codec);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// Returns the value of a cell (Qt::EditRole), its text (Qt::DisplayRole), or, of a truth
    /// value, its check mark instead (Qt::CheckStateRole). Records that cannot be read are empty.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    /// Writes a cell or, in the DeletedRole, the mark of its record. Refuses, and emits refused(),
    /// what does not fit the field or is not of its kind. Empty text stands for no value.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    /// Appends blank records; \a row must be rowCount(), since records have no place between
    /// others.
    bool insertRows(int row, int count, const QModelIndex& parent = QModelIndex()) override;

signals:
    /// Says that the cell or record at \a index did not take a value.
    void refused(const QModelIndex& index);

private:
    using Page = QVector<dbf::DbfRecord>;

    void adoptStructure();
    Page* page(int number) const;
    const dbf::DbfRecord* record(int row) const;
    bool isEditable(int column) const;
    bool isTruth(int column) const;
    bool edit(const QModelIndex& index, const QVariant& value, int role);
    bool editCell(const QModelIndex& index, const QVariant& value);

    mutable dbf::DbfTable m_table;
    int m_rowCount = 0;
    mutable QCache<int, Page> m_pages;
};

#endif
