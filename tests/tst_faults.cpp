// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "recordingdevice.h"
#include "testtables.h"

#include <QtTest/QtTest>

#include <array>
#include <functional>
#include <optional>
#include <tuple>

using namespace dbf;
using namespace testtables;
using Device = RecordingDevice;

namespace
{

constexpr int fillers = 200;
constexpr int recordsStart = 33 + 32 * (3 + fillers);
constexpr int recordLength = 11 + 255 * fillers;
constexpr int recordCount = 3;

/// The sample table with records so long that reading and writing ahead takes two blocks.
QByteArray wideTable()
{
    Table table = sample();
    table.fields.insert(3, fillers, field("FILLER", 'C', 255));
    for (QByteArray& record : table.records)
        record += QByteArray(255 * fillers, ' ');
    return table.bytes();
}

/// A table with other columns and another code page.
QByteArray otherTable()
{
    return Table{{field("X", 'C', 3)}, {" abc", "*def", " ghi"}, 0x03, 0x66}.bytes();
}

QStringList textsOf(const QVector<DbfRecord>& records)
{
    QStringList texts;
    for (const DbfRecord& record : records) {
        texts << QString::number(record.index()) + QLatin1Char(record.isDeleted() ? '*' : ' ');
        for (const QVariant& value : record.values)
            texts.last() += QLatin1Char('|') + value.toString();
    }
    return texts;
}

/// What a new table on those bytes reads of the records that it counts.
QStringList readAnew(const QByteArray& bytes)
{
    OpenTable opened(bytes, QIODevice::ReadOnly);
    return textsOf(opened.table.readRecords(0, opened.table.recordCount()));
}

/// What a table keeps in memory: header, columns, codec, open state.
using Memory = std::tuple<QByteArray, QByteArray, QTextCodec*, bool>;

Memory memoryOf(const DbfTable& table)
{
    return {DbfTable::serializeTableDescriptor(table.descriptor()),
            DbfTable::serializeSchema(table.schema()), table.schema().codec, table.isOpen()};
}

/// An opened table and its devices.
struct Stage {
    Stage() { table.open(QIODevice::ReadWrite); }

    Device device{wideTable()};
    Device target;
    DbfTable table{&device};
    Device::Fault fault; ///< What is to go wrong.
};

/// What the operation came to: true for its success value, false for its failure value, nothing for
/// any other.
using Result = std::optional<bool>;

Result resultOf(bool isSuccess, bool isFailure)
{
    return isSuccess == isFailure ? std::nullopt : Result(isSuccess);
}

struct Operation {
    enum Reach { Nothing, SecondSlot, BehindRecords, NewTable, Target, Memory };
    enum FaultyDevice { TableDevice, TargetDevice };

    std::function<Result(Stage&)> run;
    std::array<int, 4> calls; ///< Device calls when nothing goes wrong: open, read, write, seek.
    Reach reach = Nothing;    ///< What the operation may change.
    std::function<void(Stage&)> prepare = [](Stage&) {};
    int appended = 0;
    FaultyDevice faulty = TableDevice;

    /// The bytes that the operation must leave alone.
    QByteArray untouched(const QByteArray& content) const
    {
        if (reach == SecondSlot)
            return content.left(recordsStart + recordLength) +
                   content.mid(recordsStart + 2 * recordLength);
        if (reach == BehindRecords)
            return content.left(4) + content.mid(8, recordsStart + recordCount * recordLength - 8);
        return reach == NewTable ? QByteArray() : content;
    }
};

/// Visits two records by each seek and read; those that are whole on the device before a failure
/// are to be visited, too.
Result visitAll(Stage& stage)
{
    DbfRecordCursor cursor(stage.table);
    QVector<DbfRecord> visited;
    while (cursor.next())
        visited << cursor.record();
    if (textsOf(visited) != readAnew(stage.device.content).mid(0, visited.size()))
        return std::nullopt;
    const bool cutsSecondRecord = stage.fault.outcome == Device::Short && stage.fault.call == 1;
    const int whole = 2 * (stage.fault.call - 1) + (cutsSecondRecord ? 1 : 0);
    return resultOf(visited.size() == recordCount && !cursor.hasError(),
                    visited.size() == whole && cursor.hasError() && cursor.index() == -1);
}

Result copyWithNewColumn(Stage& stage)
{
    auto transform = DbfSchemaTransform::identity(stage.table.schema());
    transform.insertNewColumn(1, DbfFieldDescriptor::stringField(QStringLiteral("NEW"), 3));
    return stage.table.copyAndTransform(&stage.target, transform);
}

/// One run of an operation with a fault, beside one without.
class Trial
{
public:
    Trial(const Operation& operation, const Device::Fault& fault)
        : m_operation(operation), m_fault(fault)
    {
    }

    bool hasStruck() const { return m_struck; }

    void run()
    {
        m_operation.prepare(m_clean);
        QCOMPARE(m_operation.run(m_clean), Result(true));
        m_operation.prepare(m_stage);
        const Memory memory = memoryOf(m_stage.table);
        const QByteArray content = m_stage.device.content;
        const Result result = runWithFault();

        // The count is rewritten last, by one seek and one write, and unchecked.
        const bool isLastCall = m_fault.call == m_operation.calls.at(m_fault.operation);
        const bool isUnnoticed = m_struck && m_operation.appended > 0 && isLastCall;
        m_fails = m_struck && !isUnnoticed;
        // Three bytes of a count written short are all that a small one needs.
        m_counted = !m_struck || (isUnnoticed && m_fault.outcome == Device::Short);

        QCOMPARE(result, Result(!m_fails));
        QCOMPARE(m_stage.table.lastError(), expectedCode());
        QCOMPARE(memoryOf(m_stage.table), expectedMemory(memory));
        QCOMPARE(m_operation.untouched(m_stage.device.content), m_operation.untouched(content));
        if (isUnnoticed) // Only the four bytes of the count are missing, and nowhere else.
            QCOMPARE(m_stage.device.content.mid(8), m_clean.device.content.mid(8));
        if (m_operation.reach == Operation::NewTable)
            checkNewTable(m_stage.device, m_clean.device.content);
        else
            checkCommittedRecords(content);
        if (m_operation.reach == Operation::Target)
            checkNewTable(m_stage.target, m_clean.target.content);
        checkCodeSticks();
    }

private:
    Result runWithFault()
    {
        const bool onTarget = m_operation.faulty == Operation::TargetDevice;
        Device& device = onTarget ? m_stage.target : m_stage.device;
        m_stage.fault = m_fault;
        device.setFault(m_fault);
        const Result result = m_operation.run(m_stage);
        m_struck = !device.isFaultPending();
        device.setFault({});
        return result;
    }

    DbfTable::DbfTableError expectedCode() const
    {
        constexpr std::array codes{DbfTable::OpenError, DbfTable::ReadError, DbfTable::WriteError,
                                   DbfTable::ReadError};
        const bool isRecorded = m_fails && m_operation.reach != Operation::Target;
        return isRecorded ? codes.at(m_fault.operation) : DbfTable::NoError;
    }

    Memory expectedMemory(Memory before) const
    {
        const Memory whole = memoryOf(m_clean.table);
        if (!m_fails)
            return whole;
        if (m_operation.reach != Operation::Memory)
            return before;
        std::get<bool>(before) = false;
        const bool hasReadHeader = m_fault.operation == Device::Read && m_fault.call == 2;
        if (hasReadHeader) {
            std::get<0>(before) = std::get<0>(whole);
            std::get<QTextCodec*>(before) = std::get<QTextCodec*>(whole);
        }
        return before;
    }

    /// What was written up to a failure is the start of the table, on a device left open.
    void checkNewTable(const Device& device, const QByteArray& whole) const
    {
        const bool isOpened = m_fault.operation != Device::Open || !m_struck;
        QCOMPARE(device.isOpen(), m_fails && isOpened);
        if (isOpened)
            QVERIFY(whole.startsWith(device.content) && m_fails == (device.content != whole));
    }

    /// A table that starts anew counts and reads every record that stood there before.
    void checkCommittedRecords(const QByteArray& before) const
    {
        QStringList expected = readAnew(before);
        const QStringList found = readAnew(m_stage.device.content);
        QCOMPARE(expected.size(), recordCount);
        QCOMPARE(found.size(), recordCount + (m_counted ? m_operation.appended : 0));
        if (m_operation.reach == Operation::SecondSlot)
            expected[1] = found.at(1);
        QCOMPARE(found.mid(0, recordCount), expected);
        if (m_fails && m_operation.appended > 1) // A bulk append puts the end marker back.
            QCOMPARE(m_stage.device.content.at(recordsStart + recordCount * recordLength), '\x1A');
    }

    /// What was recorded stays, whatever goes well later, and keeps the table from being opened.
    void checkCodeSticks()
    {
        DbfTable& table = m_stage.table;
        const auto code = table.lastError();
        if (code == DbfTable::NoError)
            return;
        if (table.isOpen() && table.device()->isReadable())
            QVERIFY(!table.readRecord(0).isTransient());
        QVERIFY(!table.open(QIODevice::ReadWrite) && !table.reopen() && !table.isOpen());
        QCOMPARE(table.lastError(), code);
    }

    const Operation& m_operation;
    const Device::Fault m_fault;
    Stage m_clean;
    Stage m_stage;
    bool m_struck = false;
    bool m_fails = false;
    bool m_counted = false;
};

} // namespace

Q_DECLARE_METATYPE(Operation)

class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    void everyDeviceCallMayFail_data()
    {
        QTest::addColumn<Operation>("operation");
        QTest::addColumn<Device::Fault>("fault");
        const auto row = [](const QByteArray& name, const Operation& operation) {
            const auto faultRow = [&](const char* fault, Device::Operation call,
                                      Device::Outcome outcome) {
                QTest::newRow(name + ", " + fault) << operation << Device::Fault{call, 1, outcome};
            };
            faultRow("open", Device::Open, Device::Fail);
            faultRow("read", Device::Read, Device::Fail);
            faultRow("read short", Device::Read, Device::Short);
            faultRow("write", Device::Write, Device::Fail);
            faultRow("write short", Device::Write, Device::Short);
            faultRow("seek", Device::Seek, Device::Fail);
        };

        const auto unopened = [](Stage& s) {
            s.device.close();
            s.table = DbfTable(&s.device);
        };
        const auto changed = [](Stage& s) { s.device.content = otherTable(); };
        const auto open = [](Stage& s) { return s.table.open(QIODevice::ReadWrite); };
        const auto reopen = [](Stage& s) { return s.table.reopen(); };
        row("open", {open, {1, 2, 0, 0}, Operation::Memory, unopened});
        row("reopen", {reopen, {1, 2, 0, 0}, Operation::Memory, changed});

        const QStringList records = readAnew(wideTable());
        const auto readRecord = [=](Stage& s) {
            const DbfRecord record = s.table.readRecord(1);
            return resultOf(textsOf({record}) == records.mid(1, 1),
                            record.isTransient() &&
                                record.values == QVector<QVariant>(3 + fillers));
        };
        const auto readRecords = [=](Stage& s) {
            const QVector<DbfRecord> read = s.table.readRecords(0, recordCount);
            return resultOf(textsOf(read) == records, read.isEmpty());
        };
        const auto isLive = [](Stage& s) { return !s.table.isRecordDeleted(2); };
        row("readRecord", {readRecord, {0, 1, 0, 1}});
        row("readRecords", {readRecords, {0, 1, 0, 1}});
        row("isRecordDeleted", {isLive, {0, 1, 0, 1}});
        row("cursor", {visitAll, {0, 2, 0, 2}});

        const auto update = [](Stage& s) { return s.table.updateRecord(newRecord(1)); };
        const auto append = [](Stage& s) { return s.table.appendRecord(newRecord(1)); };
        const auto appendFour = [](Stage& s) {
            return s.table.appendRecords(QVector<DbfRecord>(4, newRecord(1)));
        };
        const auto same = [](Stage&) {};
        row("updateRecord", {update, {0, 0, 1, 1}, Operation::SecondSlot});
        const auto updateValues = [](Stage& s) { return s.table.updateValues(newRecord(1)); };
        const auto setDeleted = [](Stage& s) { return s.table.setRecordDeleted(1, false); };
        row("updateValues", {updateValues, {0, 1, 1, 2}, Operation::SecondSlot});
        row("setRecordDeleted", {setDeleted, {0, 0, 1, 1}, Operation::SecondSlot});
        row("appendRecord", {append, {0, 0, 3, 2}, Operation::BehindRecords, same, 1});
        row("appendRecords", {appendFour, {0, 0, 4, 2}, Operation::BehindRecords, same, 4});

        const auto closed = [](Stage& s) { s.device.close(); };
        const auto create = [](Stage& s) { return s.table.create(s.table.schema()); };
        row("create", {create, {1, 0, 4, 0}, Operation::NewTable, closed});
        const auto copy = copyWithNewColumn;
        row("copy, source", {copy, {0, 1, 0, 1}, Operation::Target});
        row("copy, target",
            {copy, {1, 0, 7, 0}, Operation::Target, same, 0, Operation::TargetDevice});
    }

    void everyDeviceCallMayFail()
    {
        QFETCH(Operation, operation);
        QFETCH(Device::Fault, fault);
        for (;; ++fault.call) {
            Trial trial(operation, fault);
            trial.run();
            if (QTest::currentTestFailed())
                return;
            if (!trial.hasStruck())
                break;
        }
        QCOMPARE(fault.call - 1, operation.calls.at(fault.operation));
    }
};

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_faults.moc"
