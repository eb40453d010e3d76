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

void DbfTable::overrideTextCodec(QTextCodec* codec)
{
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
    return false;
}

DbfTable::Private& DbfTable::Private::of(DbfTable& table)
{
    if (!table.d)
        table.d = std::make_unique<Private>();
    return *table.d;
}

} // namespace dbf
