// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "csvexport.h"

#include <QtCore/QSaveFile>

#include <algorithm>

namespace
{

constexpr int rowsPerReport = 1000;

QByteArray cell(const QString& text)
{
    const bool isPlain = std::none_of(text.cbegin(), text.cend(), [](QChar character) {
        return character == QLatin1Char('"') || character == QLatin1Char(',') ||
               character.isSpace();
    });
    if (isPlain)
        return text.toUtf8();
    return '"' + QString(text).replace(QLatin1Char('"'), QLatin1String("\"\"")).toUtf8() + '"';
}

/// Truth values are marks in a view, and have no text there.
QString textOf(const QModelIndex& index)
{
    const QVariant mark = index.data(Qt::CheckStateRole);
    if (!mark.isValid())
        return index.data().toString();
    const bool isKnown = mark.toInt() != Qt::PartiallyChecked;
    return isKnown ? QLatin1String(mark.toInt() == Qt::Checked ? "true" : "false") : QString();
}

QByteArray line(int columns, const std::function<QString(int column)>& text)
{
    QByteArray cells;
    for (int column = 0; column < columns; ++column) {
        if (column > 0)
            cells += ',';
        cells += cell(text(column));
    }
    return cells + "\r\n";
}

} // namespace

bool exportCsv(const QAbstractItemModel& model, const QString& path,
               const std::function<bool(int, int)>& progress, QString* reason)
{
    reason->clear();
    QSaveFile file(path);
    const int columns = model.columnCount();
    const int rows = model.rowCount();
    bool isWritten = file.open(QIODevice::WriteOnly);
    if (isWritten)
        file.write(line(columns, [&](int column) {
            return model.headerData(column, Qt::Horizontal).toString();
        }));
    for (int row = 0; isWritten && row < rows; ++row) {
        if (row % rowsPerReport == 0 && !progress(row, rows))
            return false;
        file.write(line(columns, [&](int column) { return textOf(model.index(row, column)); }));
        isWritten = file.error() == QFileDevice::NoError;
    }
    // commit() alone would report success when the last buffered write fails.
    if (isWritten && file.flush() && file.commit())
        return true;
    *reason = file.errorString();
    return false;
}
