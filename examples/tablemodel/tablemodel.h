// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TABLEMODEL_TABLEMODEL_H
#define TABLEMODEL_TABLEMODEL_H

#include <dbf/dbf.h>

#include <QtCore/QAbstractTableModel>
#include <QtCore/QCache>

#include <optional>

/// Shows the records of a table to Qt's item views, and lets them be edited.
///
/// Records are read in pages when a view asks for one of their cells; the pages looked at last are
/// kept, so that a table of any size takes the same memory. Edits go to the table at once. An edit
/// writes the bytes of its own cell; those of the record's other cells stay as they are.
class TableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Role {
        DeletedRole = Qt::UserRole, ///< Whether the record of the cell is marked deleted; editable.
    };

    /// Takes over \a table, which is open. Values go through the converters that its columns have
    /// now. Cells are editable if the device is open for writing, but those of columns with raw
    /// bytes, and with large integers, which stand for amounts in units that a user does not see.
    explicit TableModel(dbf::DbfTable&& table, QObject* parent = nullptr);

    /// Returns the table; its lastError() tells why an edit failed, if the file was the reason.
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
    /// what does not fit the field or is not of its kind. Empty text makes the field blank.
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
    QVariant value(const dbf::DbfRecord& record, int column) const;
    std::optional<QByteArray> fieldBytes(QVariant value, const dbf::DbfColumn& column) const;
    bool edit(const QModelIndex& index, const QVariant& value, int role);
    bool write(const dbf::DbfRecord& record);

    mutable dbf::DbfTable m_table; ///< Gives every field as bytes.
    dbf::DbfSchema m_schema;       ///< Has the converters that make values of them.
    int m_rowCount = 0;
    mutable QCache<int, Page> m_pages;
};

#endif
