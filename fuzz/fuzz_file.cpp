// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QtEndian>

#include <stdexcept>

using namespace dbf;
using namespace fuzzing;

/// Takes the bytes as a table file, packs and restructures it. The choices are drawn from the end
/// of the same bytes, so every table file is an input.
namespace
{

/// A folder with one file in it, whose bytes are given anew by every input.
struct TableFile {
    TableFile() : path(folder.filePath(QStringLiteral("t.dbf"))) {}
    QByteArray bytes() const
    {
        QFile file(path);
        demand(file.open(QIODevice::ReadOnly), "the file is there");
        return file.readAll();
    }
    void setBytes(const QByteArray& bytes) const
    {
        QFile file(path);
        demand(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(),
               "the file can be written");
    }
    bool isAlone() const
    {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size() == 1;
    }

    QTemporaryDir folder;
    QString path;
};

/// What ends a rewriting early.
struct Stop : std::runtime_error {
    Stop() : std::runtime_error("stop") {}
};

struct Choices {
    DbfFileOptions options;
    bool throws = false;
    bool stops = false;
};

Choices drawChoices(FuzzedDataProvider& choices)
{
    Choices drawn;
    if (choices.ConsumeBool())
        drawn.options.acceptedVersions = DbfTable::DefaultVersions;
    drawn.options.checkValues = choices.ConsumeBool();
    drawn.options.ignoreIndexes = choices.ConsumeBool();
    if (choices.ConsumeBool())
        drawn.options.codePage = static_cast<DbfCodePage>(choices.ConsumeIntegral<quint8>());
    const int end = choices.ConsumeIntegralInRange(0, 9);
    drawn.stops = end == 0;
    drawn.throws = end == 1;
    drawn.options.progress = [throws = drawn.throws, stops = drawn.stops](int, int) {
        return throws ? throw Stop() : !stops;
    };
    return drawn;
}

/// Calls \a rewrite. Whatever comes of it, the file is whole or as it was, and alone.
template <typename Rewrite>
bool isRewritten(const TableFile& file, const Choices& drawn, Rewrite rewrite)
{
    const QByteArray before = file.bytes();
    QString error = QStringLiteral("left over");
    bool done = false;
    try {
        done = rewrite(&error);
        demand(done ? error.isEmpty() : drawn.stops || !error.isEmpty(), "a failure has words");
        demand(!done || !(drawn.stops || drawn.throws), "progress is asked");
    } catch (const Stop&) {
        demand(drawn.throws, "only what progress throws passes through");
    }
    demand(file.isAlone(), "nothing is left beside the file");
    demand(done || file.bytes() == before, "a file that is not rewritten stays as it was");
    return done;
}

QByteArray packed(const QByteArray& bytes)
{
    const auto count = qFromLittleEndian<quint32>(bytes.constData() + 4);
    const int headerLength = qFromLittleEndian<quint16>(bytes.constData() + 8);
    const int recordLength = qFromLittleEndian<quint16>(bytes.constData() + 10);
    QByteArray result = bytes.left(headerLength);
    quint32 kept = 0;
    for (quint32 i = 0; i < count; ++i) {
        const int start = headerLength + static_cast<int>(i) * recordLength;
        demand(start + recordLength <= bytes.size(), "no record is made up");
        if (bytes.at(start) == '*')
            continue;
        result += bytes.mid(start, recordLength);
        ++kept;
    }
    qToLittleEndian(kept, result.data() + 4);
    result[28] = static_cast<char>(result.at(28) & ~1);
    return result + '\x1A';
}

QVector<DbfRecord> records(const QByteArray& bytes)
{
    MemoryFile file(bytes);
    DbfTable table(&file);
    table.setAcceptedVersions(DbfTable::AllVersions);
    table.setConverterChoice(nullableConverter);
    table.setCodecChoice(codecOfLanguageDriver);
    demand(table.open(QIODevice::ReadOnly), "a table that was rewritten opens");
    QVector<DbfRecord> result = table.readRecords(0, table.recordCount());
    demand(!table.hasError(), "a table that was rewritten is whole");
    return result;
}

void packsWhatIsKept(FuzzedDataProvider& choices, const TableFile& file)
{
    const Choices drawn = drawChoices(choices);
    const QByteArray before = file.bytes();
    const bool done = isRewritten(
        file, drawn, [&](QString* error) { return packFile(file.path, drawn.options, error); });
    if (done)
        demand(file.bytes() == packed(before), "a pack drops the records marked deleted alone");
}

void restructuresAll(FuzzedDataProvider& choices, const TableFile& file)
{
    const Choices drawn = drawChoices(choices);
    const bool edits = choices.ConsumeBool();
    const QByteArray before = file.bytes();
    int columns = 0;
    const bool done = isRewritten(file, drawn, [&](QString* error) {
        return restructureFile(
            file.path,
            [&](DbfSchemaTransform& transform) {
                if (edits)
                    edit(choices, transform);
                columns = static_cast<int>(transform.schema.columns.size());
            },
            drawn.options, error);
    });
    if (!done)
        return;
    const QVector<DbfRecord> now = records(file.bytes());
    const QVector<DbfRecord> old = records(before);
    demand(now.size() == old.size(), "a restructured file has all records");
    for (int i = 0; i < now.size(); ++i)
        demand(now.at(i).values.size() == columns && now.at(i).isDeleted() == old.at(i).isDeleted(),
               "a restructured file has the columns and marks");
    demand(edits || drawn.options.codePage ||
               std::equal(now.begin(), now.end(), old.begin(),
                          [](const DbfRecord& a, const DbfRecord& b) { return isSame(a, b); }),
           "a file that nothing was edited in has the same values");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    forbidMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const TableFile file;
    FuzzedDataProvider choices(data, size);
    file.setBytes(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    packsWhatIsKept(choices, file);
    restructuresAll(choices, file);
    packsWhatIsKept(choices, file);
    return 0;
}
