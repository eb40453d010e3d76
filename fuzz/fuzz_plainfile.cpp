// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <csignal>
#include <functional>
#include <optional>
#include <sys/resource.h>
#include <vector>

using namespace dbf;
using namespace fuzzing;

/// Calls the same on two tables and their files in turn. One table opened its file itself, and so
/// reads and writes it by position; nobody may be able to tell it from the other.
namespace
{

/// Lets files grow to so many bytes and no further while it lives, as a full disk does.
class FullDisk
{
public:
    explicit FullDisk(qint64 size)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{static_cast<rlim_t>(std::max<qint64>(size, 0)), m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_before{};
};

DbfRecord newRecord(int index)
{
    return {index, {QStringLiteral("\u0415\u0432\u0430"), false, QStringLiteral("2.50")}};
}

QByteArray tableBytes()
{
    MemoryFile file;
    DbfTable table(&file);
    DbfSchema schema({DbfFieldDescriptor::stringField(QStringLiteral("NAME"), 5),
                      DbfFieldDescriptor(QStringLiteral("SURE"), DbfFieldType::Logical, 1, 0),
                      DbfFieldDescriptor::numberField(QStringLiteral("AMOUNT"), 4, 1)},
                     QTextCodec::codecForMib(2251));
    demand(table.create(schema) && table.open(QIODevice::ReadWrite) &&
               table.appendRecords({newRecord(0), newRecord(0), newRecord(0)}),
           "a table is made");
    return file.content + QByteArray(40, '\x1A');
}

struct Side {
    Side(const QString& path, QIODevice::OpenMode mode, bool isOpenedByTable)
        : file(path), table(&file)
    {
        static const QByteArray bytes = tableBytes();
        QFile made(path);
        demand(made.open(QIODevice::WriteOnly) && made.write(bytes) == bytes.size(),
               "the file can be written");
        made.close();
        const QIODevice::OpenMode plainMode = mode & ~QIODevice::OpenMode(QIODevice::Text);
        if (!isOpenedByTable)
            file.open(plainMode);
        table.open(plainMode);
        file.setTextModeEnabled(mode & QIODevice::Text);
    }

    QByteArray onDisk() const
    {
        QFile bytes(file.fileName());
        bytes.open(QIODevice::ReadOnly);
        return bytes.readAll();
    }

    /// What a caller can ask; some of it, as QFile answers, hands on what was gathered before.
    QVariantList state(bool isHandingOn)
    {
        QVariantList state{file.pos(),           file.error(),      file.errorString(),
                           int(file.openMode()), table.lastError(), file.isTransactionStarted(),
                           table.recordCount()};
        if (isHandingOn)
            state << file.size() << file.atEnd() << file.bytesAvailable() << file.bytesToWrite()
                  << onDisk() << table.wholeRecords() << table.errorString();
        return state;
    }

    QFile file;
    DbfTable table;
};

struct Call {
    int number;
    int place; // 0 to 29
    bool flag;
    int count; // 0 to 3
};

using Calls = std::vector<std::function<QVariant()>>;

QVariant oneOf(const Calls& calls, int number)
{
    return calls[static_cast<size_t>(number) % calls.size()]();
}

QVariant callTable(DbfTable& table, const Call& call)
{
    const int index = call.place % (table.recordCount() + 1);
    DbfRecord record = newRecord(index);
    record.setDeleted(call.flag);
    const QVector<DbfRecord> records(call.count, record);
    return oneOf(
        {[&] {
             const DbfRecord read = table.readRecord(index);
             return read.values.toList() << read.index() << read.isDeleted();
         },
         [&] { return table.isRecordDeleted(index); }, [&] { return table.updateRecord(record); },
         [&] { return table.updateValues(record); },
         [&] { return table.setRecordDeleted(index, call.flag); },
         [&] { return table.appendRecord(record); }, [&] { return table.appendRecords(records); },
         [&] { return static_cast<int>(table.readRecords(index, call.count).size()); },
         [&] { return table.refreshRecordCount(); }},
        call.number);
}

QVariant callFile(QFile& file, const Call& call)
{
    const int size = call.place;
    const bool isTransaction = file.isTransactionStarted();
    const auto start = [&] { return file.startTransaction(), 0; };
    return oneOf({[&] { return file.read(size); }, [&] { return file.peek(size); },
                  [&] { return file.readLine(size + 2); }, [&] { return file.seek(60 + size); },
                  [&] { return isTransaction || (file.ungetChar(static_cast<char>(size)), true); },
                  [&] { return isTransaction ? (file.rollbackTransaction(), 1) : start(); },
                  [&] { return isTransaction ? (file.commitTransaction(), 1) : start(); },
                  [&] { return file.write(QByteArray(size, 'w')); }, [&] { return file.flush(); },
                  // QFile asks the kernel where it stands, so only a seek tells afterwards.
                  [&] { return file.resize(100 + 9 * size) && file.seek(size); },
                  [&] { return file.putChar('p'); }},
                 call.number);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    forbidMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const QTemporaryDir folder;
    FuzzedDataProvider choices(data, size);
    constexpr QIODevice::OpenMode both = QIODevice::ReadWrite;
    const QIODevice::OpenMode modes[] = {both, both | QIODevice::Unbuffered, both | QIODevice::Text,
                                         both | QIODevice::Append, QIODevice::ReadOnly};
    const auto mode = modes[choices.ConsumeIntegralInRange<size_t>(0, std::size(modes) - 1)];
    Side own(folder.filePath(QStringLiteral("own.dbf")), mode, true);
    Side other(folder.filePath(QStringLiteral("other.dbf")), mode, false);
    for (int step = 0; step < 100 && choices.remaining_bytes() > 0; ++step) {
        // A caller's read hands on what he gathered, and ends an error, unless it is served from
        // what Qt read ahead, which positioned calls neither fill nor leave.
        if (own.file.bytesToWrite() != other.file.bytesToWrite())
            demand(own.file.flush() == other.file.flush(), "what was gathered is handed on alike");
        const int kind = choices.ConsumeIntegralInRange(0, 9);
        const Call call{choices.ConsumeIntegral<quint8>(), choices.ConsumeIntegralInRange(0, 29),
                        choices.ConsumeBool(), choices.ConsumeIntegralInRange(0, 3)};
        const bool isCallersTurn = kind > 6 && mode & QIODevice::WriteOnly && own.file.isOpen();
        std::optional<FullDisk> disk;
        if (kind == 0 || kind == 9)
            disk.emplace(own.onDisk().size() + choices.ConsumeIntegralInRange(-8, 7));
        const auto calling = [&](Side& side) {
            if (isCallersTurn)
                side.file.unsetError();
            return isCallersTurn ? callFile(side.file, call) : callTable(side.table, call);
        };
        const QVariant ours = calling(own);
        const QVariant theirs = calling(other);
        disk.reset();
        demand(ours == theirs, "a call on either gives the same");
        const bool isHandingOn = choices.ConsumeBool();
        demand(own.state(isHandingOn) == other.state(isHandingOn), "either looks the same");
        own.table.clearError();
        other.table.clearError();
    }
    return 0;
}
