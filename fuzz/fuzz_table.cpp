// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

using namespace dbf;
using namespace fuzzing;

/// Takes the bytes as a table file and does everything to it that a table allows. The choices are
/// drawn from the end of the same bytes, so every table file is an input.
namespace
{

constexpr int maxVisited = 40; // records of a table, so that none takes long

int visitedCount(const DbfTable& table)
{
    return std::min(table.recordCount(), maxVisited);
}

DbfRecord drawRecord(FuzzedDataProvider& choices, const DbfTable& table)
{
    DbfRecord record = table.blankRecord(choices.ConsumeIntegralInRange(0, maxVisited));
    record.setDeleted(choices.ConsumeBool());
    for (QVariant& value : record.values)
        value = drawValue(choices);
    if (choices.ConsumeBool())
        record.values.resize(choices.ConsumeIntegralInRange(0, 4));
    return record;
}

void waysOfReadingAgree(DbfTable& table)
{
    const int count = visitedCount(table);
    const QVector<DbfRecord> range = table.readRecords(0, count);
    DbfRecordCursor cursor(table, 0, count);
    int visited = 0;
    for (; cursor.next(); ++visited) {
        const DbfRecord record = table.readRecord(visited);
        demand(!record.isTransient() && isSame(cursor.record(), record), "cursor reads records");
        const bool hasFlag = table.descriptor().recordLength > 0;
        demand(!hasFlag || cursor.isDeleted() == table.isRecordDeleted(visited),
               "cursor reads flags");
        demand(range.isEmpty() || isSame(range.at(visited), record), "range reads records");
        for (int column = 0; column < record.values.size(); ++column) {
            demand(isSame(cursor.value(column), record.values.at(column)), "cursor reads values");
            if (table.schema().columns.at(column).converter == DbfStringConverter::instance())
                demand(cursor.text(column) == record.values.at(column).toString(),
                       "cursor reads text");
        }
    }
    demand(range.isEmpty() || visited == count, "cursor visits what the range holds");
    demand(cursor.hasError() == (visited < count), "cursor tells of an early end");
}

void impossibleReadsAreRefused(DbfTable& table)
{
    for (const int index : {-1, table.recordCount(), table.recordCount() - 1})
        table.readRecord(index), table.isRecordDeleted(index), table.readRecords(index, 2);
    demand(table.readRecords(0, -1).isEmpty(), "no negative range");
    table.readRecords(0, std::numeric_limits<int>::max());
}

void updatesStayInTheirSlots(FuzzedDataProvider& choices, DbfTable& table, const MemoryFile& file)
{
    const DbfRecord record = drawRecord(choices, table);
    const QByteArray before = file.content;
    const bool updated = table.updateRecord(record);
    if (!updated) {
        demand(file.content == before, "a refused update writes nothing");
        return;
    }
    const DbfTableDescriptor& header = table.descriptor();
    const auto start = static_cast<int>(DbfTable::recordOffset(record.index(), header));
    const QByteArray image = DbfTable::serializeRecord(record, header, table.schema());
    demand(file.content.mid(start, header.recordLength) == image.left(header.recordLength),
           "an update writes the image");
    demand(file.content.left(start) == before.left(start).leftJustified(start, '\0') &&
               file.content.mid(start + header.recordLength) ==
                   before.mid(start + header.recordLength),
           "an update writes its slot only");
    demand(table.isRecordDeleted(record.index()) == record.isDeleted() || header.recordLength == 0,
           "an update marks and unmarks");
}

void appendsAreCounted(FuzzedDataProvider& choices, DbfTable& table, const MemoryFile& file)
{
    QVector<DbfRecord> records;
    for (int i = choices.ConsumeIntegralInRange(0, 3); i >= 0; --i)
        records << drawRecord(choices, table);
    const quint32 before = table.descriptor().recordCount;
    const bool single = records.size() == 1;
    const bool appended =
        single ? table.appendRecord(records.first()) : table.appendRecords(records);
    const DbfTableDescriptor& header = table.descriptor();
    const quint32 expected = before + (appended ? static_cast<quint32>(records.size()) : 0);
    demand(header.recordCount == expected, "the count follows the records");
    if (!appended)
        return;
    demand(DbfTable::parseTableDescriptor(file.content).recordCount == expected,
           "the file's count follows the records");
    const qint64 end = header.headerLength + qint64(expected) * header.recordLength;
    demand(file.content.at(static_cast<int>(end)) == '\x1A', "the end marker follows the records");
    for (int i = 0; i < records.size(); ++i) {
        const QByteArray image = DbfTable::serializeRecord(records.at(i), header, table.schema())
                                     .left(header.recordLength);
        const qint64 start = end - qint64(records.size() - i) * header.recordLength;
        demand(file.content.mid(static_cast<int>(start), header.recordLength) == image,
               "appended records are stored");
    }
}

DbfSchemaTransform drawTransform(FuzzedDataProvider& choices, const DbfSchema& schema)
{
    DbfSchemaTransform transform = DbfSchemaTransform::identity(schema);
    const auto position = [&choices] { return choices.ConsumeIntegralInRange(-1, 12); };
    for (int edits = choices.ConsumeIntegralInRange(0, 8); edits > 0; --edits) {
        const DbfFieldDescriptor field(
            QString::fromUtf8(drawBytes(choices, 12)),
            static_cast<DbfFieldType>(choices.PickValueInArray({'C', 'N', 'D', 'F', 'L', 'I'})),
            choices.ConsumeIntegral<quint8>(), choices.ConsumeIntegral<quint8>());
        switch (choices.ConsumeIntegralInRange(0, 5)) {
        case 0:
            transform.insertNewColumn(position(), field);
            break;
        case 1:
            transform.updateColumn(position(), field);
            break;
        case 2:
            transform.deleteColumn(position());
            break;
        case 3:
            transform.moveColumn(position(), position());
            break;
        case 4:
            transform.schema.setCodec(drawCodec(choices));
            break;
        default:
            if (!transform.schema.columns.isEmpty())
                transform.schema.columns.last().setConverter(drawConverter(choices));
        }
    }
    return transform;
}

void copiesAreTables(FuzzedDataProvider& choices, DbfTable& table, const MemoryFile& file)
{
    DbfSchemaTransform transform = drawTransform(choices, table.schema());
    const bool isBroken = choices.ConsumeBool() && choices.ConsumeBool();
    if (isBroken)
        transform.sourceIndexes = {choices.ConsumeIntegral<int>()};
    const QByteArray before = file.content;
    const auto errorBefore = table.lastError();
    MemoryFile target;
    bool copied = false;
    try {
        copied = table.copyAndTransform(&target, transform);
    } catch (const std::out_of_range&) {
        demand(isBroken, "edits never break a transform");
    }
    demand(file.content == before && table.lastError() == errorBefore, "a copy changes no source");
    demand(!copied || !target.isOpen(), "a whole copy is closed");
    if (!copied)
        return;

    DbfTable copy(&target);
    copy.overrideTextCodec(transform.schema.codec);
    demand(copy.open(QIODevice::ReadWrite), "a copy opens");
    demand(copy.recordCount() == table.recordCount() &&
               copy.schema().columns.size() == transform.schema.columns.size(),
           "a copy has the records and columns");
    demand(target.size() == DbfTable::recordOffset(copy.recordCount(), copy.descriptor()) + 1,
           "a copy is as long as its header says");
    waysOfReadingAgree(copy);
    demand(!copy.hasError(), "a copy is whole");
}

void writingBackChangesNothing(DbfTable& table, const MemoryFile& file)
{
    const QByteArray before = file.content;
    for (int i = 0; i < visitedCount(table); ++i) {
        const DbfRecord record = table.readRecord(i);
        demand(record.isTransient() || table.updateValues(record), "what was read is taken");
    }
    demand(file.content == before, "what was read and written back changes no byte");
}

void problemsKeepRecordsOut(FuzzedDataProvider& choices, DbfTable& table, const MemoryFile& file)
{
    const QByteArray before = file.content;
    const DbfRecord record = drawRecord(choices, table);
    const bool appends = choices.ConsumeBool();
    const bool written = appends ? table.appendRecord(record) : table.updateValues(record);
    const QVector<DbfValueProblem> problems = table.valueProblems();
    demand(problems.isEmpty() || (!written && file.content == before), "problems stop a write");
    demand(!appends || written || !problems.isEmpty() || table.hasError(), "a failure is told");
    if (appends && !problems.isEmpty())
        demand(problems.size() == checkValues(record, table.schema()).size(), "all are named");
    for (const DbfValueProblem& problem : problems)
        demand(!problem.text().isEmpty(), "a problem has words");
}

/// Does the same to a table of any version with the converters in which blank means blank.
void safeWaysLoseNothing(const uint8_t* data, size_t size)
{
    FuzzedDataProvider choices(data, size);
    MemoryFile file(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    DbfTable table(&file);
    table.setAcceptedVersions(DbfTable::AllVersions);
    table.setConverterChoice(nullableConverter);
    table.setCodecChoice(codecOfLanguageDriver);
    table.setCheckingValues(true);
    if (!table.open(QIODevice::ReadWrite)) {
        demand(!table.errorString().isEmpty(), "a refusal has words");
        return;
    }
    waysOfReadingAgree(table);
    writingBackChangesNothing(table, file);
    for (int i = 0; i < 3; ++i)
        problemsKeepRecordsOut(choices, table, file);
    table.clearError();
    demand(table.refreshRecordCount() >= 0 || table.hasError(), "a count is read or not");

    DbfCopyOptions options;
    options.skipDeleted = choices.ConsumeBool();
    options.keepMetadata = choices.ConsumeBool();
    options.checkValues = choices.ConsumeBool();
    const DbfSchemaTransform transform = drawTransform(choices, table.schema());
    const QByteArray before = file.content;
    MemoryFile target;
    const bool copied = table.copyAndTransform(&target, transform, options);
    demand(!copied || table.valueProblems().isEmpty(), "problems stop a copy");
    demand(file.content == before, "a copy changes no source");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    forbidMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    safeWaysLoseNothing(data, size);
    FuzzedDataProvider choices(data, size);
    MemoryFile file(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    DbfTable table(&file);
    table.overrideTextCodec(drawCodec(choices));
    if (!table.open(QIODevice::ReadWrite)) {
        demand(table.hasError() && !table.isOpen(), "a refused table is told");
        return 0;
    }
    while (choices.ConsumeBool())
        table.setFieldConverter(choices.ConsumeIntegralInRange(-1, 12), drawConverter(choices));

    waysOfReadingAgree(table);
    impossibleReadsAreRefused(table);
    for (int i = 0; i < 3; ++i) {
        updatesStayInTheirSlots(choices, table, file);
        appendsAreCounted(choices, table, file);
    }
    waysOfReadingAgree(table);
    copiesAreTables(choices, table, file);
    table.close();
    return 0;
}
