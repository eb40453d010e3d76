// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/format/tableheader_p.h>
#include <dbf/table/errortext_p.h>

#include <QtCore/QBuffer>
#include <QtCore/QFileDevice>

namespace dbf::errortext
{

namespace
{

QString kindOf(quint8 version, DbfTable::AcceptedVersions accepted)
{
    switch (version) {
    case 0x02:
        return QStringLiteral("its header makes no sense, as in tables with a header of 8 bytes");
    case 0x04:
    case 0x8C:
        return QStringLiteral("tables with field descriptors of 48 bytes are not read");
    case 0x32:
        return QStringLiteral("tables with null flags are read only on request");
    case 0x43:
    case 0x63:
        return QStringLiteral("SQL tables are read only on request");
    default:
        return accepted == DbfTable::DefaultVersions
                   ? QStringLiteral("tables with memo files are read only on request")
                   : QStringLiteral("such tables are not read");
    }
}

/// Whether tables of that version exist.
bool isKnown(quint8 version)
{
    return format::hasSameLayout(version) || version == 0x8C;
}

} // namespace

QString ofCode(DbfTable::DbfTableError code)
{
    struct Text {
        DbfTable::DbfTableError code;
        const char* text;
    };
    static constexpr Text texts[] = {
        {DbfTable::OpenError, "The table cannot be opened"},
        {DbfTable::ReadError, "The table cannot be read"},
        {DbfTable::WriteError, "The table cannot be written"},
        {DbfTable::UnsupportedVersionError, "The table's version is not read"},
        {DbfTable::HeaderTooLongError, "The header or a record would be longer than 65535 bytes"}};
    for (const Text& known : texts) {
        if (known.code == code)
            return QLatin1String(known.text);
    }
    return QStringLiteral("The table failed"); // as a caller may record any number
}

QString ofVersion(quint8 version, DbfTable::AcceptedVersions accepted)
{
    const QString name = QStringLiteral("0x%1").arg(version, 2, 16, QLatin1Char('0')).toUpper();
    const QString named = QStringLiteral("Version 0x") + name.mid(2);
    if (!isKnown(version))
        return QStringLiteral("This is no table: ") + named + QStringLiteral(" is none of tables");
    return named + QStringLiteral(": ") + kindOf(version, accepted);
}

QString ofDevice(const QIODevice* device)
{
    const auto* const file = qobject_cast<const QFileDevice*>(device);
    if (file && file->error() == QFileDevice::NoError)
        return {};
    static const QString nothingSaid = QBuffer().errorString();
    QString said = device->errorString();
    if (said == nothingSaid)
        said.clear();
    return said;
}

QString ofFailedWrite(QIODevice* device)
{
    if (auto* const file = qobject_cast<QFileDevice*>(device))
        file->flush();
    return ofDevice(device);
}

QString obstacle(const QIODevice* device, bool writing)
{
    if (!device)
        return QStringLiteral("there is no device");
    if (!device->isOpen())
        return because(QStringLiteral("the device is not open"), ofDevice(device));
    if (device->isTextModeEnabled())
        return QStringLiteral("the device is in text mode");
    if (writing && (device->openMode() & QIODevice::Append))
        return QStringLiteral("the device is in append mode");
    if (writing && !device->isWritable())
        return QStringLiteral("the device is open for reading only");
    if (!writing && !device->isReadable())
        return QStringLiteral("the device is open for writing only");
    return ofDevice(device);
}

QString records(qint64 first, qint64 count, qint64 total)
{
    const QString start = QString::number(first + 1);
    const QString all = QString::number(total);
    if (count == 1)
        return QStringLiteral("Record %1 of %2").arg(start, all);
    return QStringLiteral("Records %1 to %2 of %3").arg(start, QString::number(first + count), all);
}

QString because(const QString& what, const QString& reason)
{
    if (reason.isEmpty())
        return what;
    return what + QStringLiteral(": ") + reason;
}

std::optional<qint64> wholeRecords(const QIODevice* device, const DbfTableDescriptor& descriptor)
{
    if (!device || device->isSequential() || descriptor.recordLength == 0)
        return std::nullopt;
    const qint64 size = device->size();
    if (size <= 0)
        return std::nullopt;
    return std::max<qint64>(size - descriptor.headerLength, 0) / descriptor.recordLength;
}

} // namespace dbf::errortext
