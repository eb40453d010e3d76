// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/format/layout_p.h>
#include <dbf/table/dbftable_p.h>
#include <dbf/table/deviceprimitives_p.h>

#include <utility>

namespace dbf
{

namespace
{

void deleteDevice(QIODevice* device)
{
    delete device;
}

void leaveDevice(QIODevice* /*device*/) {}

} // namespace

DbfTable::DbfTable(std::unique_ptr<QIODevice, void (*)(QIODevice*)> device)
    : m_device(std::move(device)), d(std::make_unique<Private>())
{
}

DbfTable::DbfTable(QIODevice* device)
    : m_device(device, leaveDevice), d(std::make_unique<Private>())
{
}

DbfTable::DbfTable(DbfTable&& other) noexcept = default;

DbfTable& DbfTable::operator=(DbfTable&& other) noexcept
{
    swap(*this, other);
    return *this;
}

DbfTable::~DbfTable() = default;

void swap(DbfTable& a, DbfTable& b) noexcept
{
    using std::swap;
    swap(a.m_device, b.m_device);
    swap(a.m_descriptor, b.m_descriptor);
    swap(a.m_lastError, b.m_lastError);
    swap(a.m_opened, b.m_opened);
    swap(a.m_schema, b.m_schema);
    swap(a.d, b.d);
}

void DbfTable::destroyDeviceAtExit(bool destroy)
{
    m_device.get_deleter() = destroy ? deleteDevice : leaveDevice;
}

void DbfTable::close()
{
    Private::restoreEndMarker(*this);
    if (m_device)
        closeDevice(m_device.get());
    m_opened = false;
    ++Private::of(*this).changes;
}

const DbfSchema& DbfTable::schema() const
{
    return m_schema;
}

const DbfTableDescriptor& DbfTable::descriptor() const
{
    return m_descriptor;
}

DbfTable::DbfTableError DbfTable::lastError() const
{
    return m_lastError;
}

bool DbfTable::hasError() const
{
    return m_lastError != NoError;
}

bool DbfTable::isOpen() const
{
    return m_opened;
}

QIODevice* DbfTable::device() const
{
    return m_device.get();
}

int DbfTable::recordCount() const
{
    constexpr quint32 maxCount = layout::maxRecordIndex;
    return static_cast<int>(qMin(m_descriptor.recordCount, maxCount));
}

qint64 DbfTable::wholeRecords() const
{
    return errortext::wholeRecords(device(), m_descriptor).value_or(0);
}

void DbfTable::overrideTextCodec(QTextCodec* codec)
{
    Private::of(*this).isCodecImposed = codec;
    m_schema.setCodec(codec);
}

void DbfTable::setFieldConverter(int column, DbfFieldConverter* converter)
{
    if (column >= 0 && column < m_schema.columns.size())
        m_schema.columns[column].setConverter(converter);
}

void DbfTable::setConverterChoice(ConverterChoice choice)
{
    Private::of(*this).converterChoice = std::move(choice);
}

void DbfTable::setCodecChoice(CodecChoice choice)
{
    Private::of(*this).codecChoice = std::move(choice);
}

void DbfTable::setAcceptedVersions(AcceptedVersions versions)
{
    Private::of(*this).acceptedVersions = versions;
}

DbfTable::AcceptedVersions DbfTable::acceptedVersions() const
{
    return d ? d->acceptedVersions : DefaultVersions;
}

void DbfTable::setCheckingValues(bool checking)
{
    Private::of(*this).isCheckingValues = checking;
}

bool DbfTable::isCheckingValues() const
{
    return d && d->isCheckingValues;
}

QVector<DbfValueProblem> DbfTable::valueProblems() const
{
    return d ? d->valueProblems : QVector<DbfValueProblem>();
}

bool DbfTable::error(DbfTableError code)
{
    m_lastError = code;
    Private::of(*this).errorText.clear();
    return false;
}

QString DbfTable::errorString() const
{
    if (!hasError())
        return d ? d->copyErrorText : QString();
    return d && !d->errorText.isEmpty() ? d->errorText : errortext::ofCode(m_lastError);
}

void DbfTable::clearError()
{
    m_lastError = NoError;
    Private::of(*this).errorText.clear();
    Private::of(*this).copyErrorText.clear();
}

QString DbfTable::Private::unreadable(const DbfTable& table, qint64 first, qint64 count)
{
    const qint64 total = table.m_descriptor.recordCount;
    if (first < 0 || first > total || (first == total && count == 1))
        return QStringLiteral("There is no record %1 of %2").arg(first + 1).arg(total);
    if (count < 0)
        return QStringLiteral("A negative number of records cannot be read");
    const QString what =
        errortext::records(first, count, total) + QStringLiteral(" cannot be read");
    const QIODevice* const device = table.device();
    const QString obstacle = errortext::obstacle(device, false);
    if (!obstacle.isEmpty() || (table.d && !table.d->reason.isEmpty()))
        return errortext::because(what, obstacle.isEmpty() ? table.d->reason : obstacle);
    const auto whole = errortext::wholeRecords(device, table.m_descriptor);
    if (whole && *whole < first + count)
        return errortext::because(what, QStringLiteral("the file ends after %1").arg(*whole));
    return errortext::because(what, QStringLiteral("the device gives fewer bytes"));
}

QString DbfTable::Private::unwritable(const DbfTable& table, qint64 first, qint64 count)
{
    const qint64 total = table.m_descriptor.recordCount;
    QString what = QStringLiteral("No record can be appended to %1").arg(total);
    if (first < total)
        what = errortext::records(first, count, total) + QStringLiteral(" cannot be written");
    if (table.d && !table.d->reason.isEmpty())
        return errortext::because(what, table.d->reason);
    const QString obstacle = errortext::obstacle(table.device(), true);
    if (!obstacle.isEmpty())
        return errortext::because(what, obstacle);
    return errortext::because(what, table.m_lastError == ReadError
                                        ? QStringLiteral("its place cannot be reached")
                                        : QStringLiteral("the device takes fewer bytes"));
}

bool DbfTable::Private::readingFailed(DbfTable& table, qint64 first, qint64 count)
{
    table.error(ReadError);
    of(table).errorText = unreadable(table, first, count);
    return false;
}

DbfTable::Private& DbfTable::Private::of(DbfTable& table)
{
    if (!table.d)
        table.d = std::make_unique<Private>();
    return *table.d;
}

} // namespace dbf
