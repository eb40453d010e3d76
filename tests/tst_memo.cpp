// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"
#include "testtables.h"

#include <QtCore/QBuffer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace dbf;
using namespace testtables;

Q_DECLARE_METATYPE(dbf::DbfFieldDescriptor)

namespace
{

constexpr qint64 highestPosition = qint64(0xFFFFFFFF) * 0xFFFF;

/// A memo file: its block size in the header, and what lies behind that.
QByteArray fpt(int blockSize, const QByteArray& blocks)
{
    return QByteArray(6, '\0') + char(blockSize >> 8) + char(blockSize) + QByteArray(504, '\0') +
           blocks;
}

QByteArray dbt(int blockSize, const QByteArray& blocks)
{
    return QByteArray(20, '\0') + littleEndian(quint32(blockSize), 2) + QByteArray(490, '\0') +
           blocks;
}

QByteArray filledUp(const QByteArray& block, int size)
{
    return block.leftJustified(size, '\0');
}

/// Text in block 8 of 64 bytes, a picture in block 9, empty text in block 10.
QByteArray sampleMemos()
{
    return fpt(64, filledUp(hex("00000001 00000004") + "\xCC\xE8\xF0 ", 64) +
                       filledUp(hex("00000000 00000003") + "PIC", 64) + hex("00000001 00000000"));
}

/// A table with a column of each kind of pointer: to text, to a picture, to text by digits.
Table notes(const QVector<QByteArray>& records)
{
    return {{field("NOTE", 'M', 4), field("PICTURE", 'G', 4), field("OLD", 'M', 10),
             field("NAME", 'C', 3), field("OTHER", 'M', 3)},
            records,
            0x30,
            0xC9,
            QByteArray(263, '\0')};
}

const QByteArray noted = hex("20 08000000 09000000") + "         8Annabc";
const QByteArray unnoted = hex("20 00000000 00000000") + "          Bob   ";

const QString text = QStringLiteral("\u041C\u0438\u0440 ");

/// Zeros as far as it goes, but for \a bytes at \a start.
class HugeDevice : public QIODevice
{
public:
    HugeDevice(qint64 start, const QByteArray& bytes) : m_start(start), m_bytes(bytes) {}
    qint64 size() const override { return m_start + m_bytes.size(); }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        for (qint64 i = 0; i < size; ++i) {
            const qint64 place = pos() + i - m_start;
            data[i] = pos() + i == 7 || pos() + i == 6       ? '\xFF'
                      : place >= 0 && place < m_bytes.size() ? m_bytes.at(int(place))
                                                             : '\0';
        }
        return size;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    qint64 m_start;
    QByteArray m_bytes;
};

/// A table of notes, opened with the converters of a memo file.
struct OpenNotes {
    explicit OpenNotes(const QVector<QByteArray>& records) : table(&device)
    {
        device.content = notes(records).bytes();
        memoDevice.setData(sampleMemos());
        table.setConverterChoice(nullableConverters(&memo));
        table.open(QIODevice::ReadWrite);
        device.clearLog();
    }

    QBuffer memoDevice;
    DbfMemoFile memo{&memoDevice, 0x30};
    RecordingDevice device;
    DbfTable table;
};

} // namespace

class TestMemo : public QObject
{
    Q_OBJECT

private slots:
    void everyLayoutIsRead_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("block");
        QTest::addColumn<QByteArray>("memo");
        QTest::addColumn<bool>("isText");
        const auto row = [](const char* name, int version, const QByteArray& file, int block,
                            const QByteArray& memo, bool isText = true) {
            QTest::newRow(name) << version << file << block << memo << isText;
        };
        const QByteArray abc = hex("00000001 00000003") + "abc";
        for (const int version : {0x30, 0x31, 0x32, 0xF5})
            row("fpt", version, sampleMemos(), 8, "\xCC\xE8\xF0 ");
        row("fpt, picture", 0x30, sampleMemos(), 9, "PIC", false);
        row("fpt, object", 0x30, fpt(512, hex("00000002 00000001") + "x"), 1, "x", false);
        row("fpt, unknown type", 0x30, fpt(512, hex("01000001 00000001") + "x"), 1, "x", false);
        row("fpt, empty, ends the file", 0x30, sampleMemos(), 10, "");
        row("fpt, bytes as blocks", 0x30, fpt(1, "#" + abc), 513, "abc");
        row("fpt, blocks of two sizes", 0x30, fpt(0x0102, QByteArray(4, '#') + abc), 2, "abc");
        row("fpt, longer than its block", 0xF5,
            fpt(512, hex("00000001 00000400") + QByteArray(1024, '\x1A')), 1,
            QByteArray(1024, '\x1A'));
        row("dbt", 0x83, dbt(0, "abc\x1A\x1A"), 1, "abc");
        row("dbt, blocks of 512 always", 0x83, dbt(64, filledUp("abc", 512) + "de\x1A"), 2, "de");
        row("dbt, empty", 0x83, dbt(512, "\x1A"), 1, "");
        row("dbt, end behind a block", 0x83, dbt(512, QByteArray(4095, 'x') + "\x1Ay"), 1,
            QByteArray(4095, 'x'));
        row("dbt, long", 0x83, dbt(512, QByteArray(9000, 'x') + '\x1A'), 1, QByteArray(9000, 'x'));
        for (const int version : {0x8B, 0xCB})
            row("dbt with heads", version,
                dbt(1024, filledUp("", 512) + hex("FFFF0800 0B000000") +
                              "a\x1A"
                              "cd"),
                1,
                "a\x1A"
                "c");
        row("dbt with heads, empty", 0x8B, dbt(512, hex("FFFF0800 08000000")), 1, "");
    }

    void everyLayoutIsRead()
    {
        QFETCH(int, version);
        QFETCH(QByteArray, file);
        QFETCH(int, block);
        QBuffer device(&file);
        DbfMemoFile memo(&device, quint8(version));
        bool ok = false;
        const QByteArray bytes = memo.read(quint32(block), &ok);
        QTEST(bytes, "memo");
        QTEST(memo.lastWasText(), "isText");
        QVERIFY(ok && !bytes.isNull() && memo.errorString().isEmpty());
        QVERIFY(device.isReadable() && !device.isWritable());
    }

    void damageIsToldNotRead_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<quint32>("block");
        QTest::addColumn<QString>("reason");
        const auto row = [](int version, const QByteArray& file, quint32 block,
                            const char* reason) {
            QTest::addRow("%02x %s %u", version, reason, block)
                << version << file << block << QString::fromLatin1(reason);
        };
        const QByteArray counted = hex("FFFF0800 09000000") + "x";
        for (const int version : {0x00, 0x03, 0x33, 0x82, 0xFB, 0xFF})
            row(version, sampleMemos(), 8, "tables of this version");
        for (const quint32 block : {0u, 1u, 7u})
            row(0x30, sampleMemos(), block, "lie in the header");
        row(0x30, fpt(511, sampleMemos()), 1, "lie in the header");
        row(0x83, dbt(512, "x\x1A"), 0, "lie in the header");
        row(0x8B, dbt(64, counted), 7, "lie in the header");
        for (const int version : {0x30, 0x83, 0x8B}) {
            row(version, QByteArray(512, '\x01'), 0xFFFFFFFF, "behind the end");
            row(version, QByteArray(512, '\x02').replace(6, 2, hex("0200")), 1, "behind the end");
        }
        row(0x30, "", 8, "no header");
        row(0x30, QByteArray(7, '\1'), 8, "no header");
        row(0xCB, QByteArray(21, '\1'), 8, "no header");
        row(0x83, "", 8, "behind the end");
        row(0x30, fpt(0, sampleMemos()), 8, "have no bytes");
        row(0x8B, dbt(0, counted), 1, "have no bytes");
        row(0x30, fpt(512, hex("00000001 000000")), 1, "within its head");
        row(0x8B, dbt(512, counted.left(7)), 1, "within its head");
        row(0x30, fpt(512, hex("00000001 00000002") + "x"), 1, "longer than what is left");
        row(0x30, fpt(512, hex("00000001 FFFFFFFF") + "x"), 1, "longer than what is left");
        row(0x8B, dbt(512, hex("FFFF0800 0A000000") + "x"), 1, "longer than what is left");
        row(0x8B, dbt(512, hex("FFFF0800 FFFFFFFF") + "x"), 1, "longer than what is left");
        for (const char* const head :
             {"FFFF0800 07000000", "FFFF0800 00000000", "FFFF0900 08000000", "00000001 08000000"})
            row(0x8B, dbt(512, hex(head) + "x"), 1, "no memo begins there");
        row(0x83, dbt(512, "x"), 1, "has no end");
        row(0x83, dbt(512, QByteArray(8192, 'x')), 1, "has no end");
    }

    void damageIsToldNotRead()
    {
        QFETCH(int, version);
        QFETCH(QByteArray, file);
        QFETCH(quint32, block);
        QFETCH(QString, reason);
        RecordingDevice device(file);
        DbfMemoFile memo(&device, quint8(version));
        bool ok = true;
        QVERIFY(memo.read(block, &ok).isEmpty() && !ok && !memo.lastWasText());
        const QString start = QStringLiteral("Memo block %1 cannot be read: ").arg(block);
        QVERIFY2(memo.errorString().startsWith(start) && memo.errorString().contains(reason),
                 qPrintable(memo.errorString()));
    }

    void positionsHave64Bits()
    {
        HugeDevice device(highestPosition, hex("00000001 00000003") + "abc");
        DbfMemoFile memo(&device, 0x30);
        QCOMPARE(memo.read(0xFFFFFFFF), QByteArray("abc"));
    }

    void longerThanTextCanBeIsRefused()
    {
        class LongDevice : public HugeDevice
        {
        public:
            using HugeDevice::HugeDevice;
            qint64 size() const override { return highestPosition; }
        } device(0xFFFF, hex("00000001 40000000"));
        DbfMemoFile memo(&device, 0x30);
        QVERIFY(memo.read(1).isEmpty() && memo.errorString().contains("too long"));
    }

    void deviceFailuresAreTold_data()
    {
        QTest::addColumn<RecordingDevice::Fault>("fault");
        using Device = RecordingDevice;
        QTest::newRow("open") << Device::Fault{Device::Open, 1, Device::Fail};
        for (const int call : {1, 2})
            QTest::addRow("seek %d", call) << Device::Fault{Device::Seek, call, Device::Fail};
        for (const int call : {1, 2, 3}) {
            QTest::addRow("read %d", call) << Device::Fault{Device::Read, call, Device::Fail};
            QTest::addRow("short %d", call) << Device::Fault{Device::Read, call, Device::Short};
        }
    }

    void deviceFailuresAreTold()
    {
        QFETCH(RecordingDevice::Fault, fault);
        RecordingDevice device(sampleMemos());
        DbfMemoFile memo(&device, 0x30);
        device.setFault(fault);
        bool ok = true;
        QVERIFY(memo.read(8, &ok).isEmpty() && !ok && !device.isFaultPending());
        const QString error = memo.errorString();
        QVERIFY(!error.isEmpty());
        QVERIFY(!memo.read(9, &ok).isEmpty() && ok); // The next read goes well,
        QCOMPARE(memo.errorString(), error);         // and the failure stays until it is cleared.
        memo.clearError();
        QVERIFY(memo.errorString().isEmpty());
    }

    void everyReadFailsWithoutReadableDevice()
    {
        QFile nameless; // of which Qt would warn
        QBuffer written;
        QVERIFY(written.open(QIODevice::WriteOnly));
        QBuffer inTextMode;
        inTextMode.setData(sampleMemos());
        QVERIFY(inTextMode.open(QIODevice::ReadOnly | QIODevice::Text));
        QFile missing(QStringLiteral("no such folder/x.fpt"));
        for (QIODevice* const device :
             {static_cast<QIODevice*>(nullptr), static_cast<QIODevice*>(&nameless),
              static_cast<QIODevice*>(&written), static_cast<QIODevice*>(&inTextMode),
              static_cast<QIODevice*>(&missing)}) {
            DbfMemoFile memo(device, 0x30);
            QVERIFY(memo.read(8).isEmpty() && !memo.errorString().isEmpty());
        }
    }

    void memosAreReadAsTheyAreNow()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("notes.fpt"));
        writeFile(path, sampleMemos());
        QFile file(path);
        DbfMemoFile memo(&file, 0x30);
        QCOMPARE(memo.read(9), QByteArray("PIC"));
        writeFile(path, sampleMemos().replace("PIC", "NEW"));
        QCOMPARE(memo.read(9), QByteArray("NEW"));
        file.close();
        writeFile(path, fpt(512, hex("00000001 00000001") + "x"));
        QCOMPARE(memo.read(1), QByteArray("x"));
    }

    void memoFilesAreFoundBeside_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("table");
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("found");
        const auto row = [](const QStringList& files, const QString& table, int version,
                            const QString& found) {
            QTest::addRow("%s %02x %s", qPrintable(files.join('+')), version, qPrintable(found))
                << files << table << version << found;
        };
        row({"a.fpt", "a.dbt"}, "a.dbf", 0x30, "a.fpt");
        row({"a.fpt", "a.dbt"}, "a.dbf", 0x83, "a.dbt");
        row({"a.fpt", "a.dbt"}, "a.dbf", 0xCB, "a.dbt");
        row({"a.fpt", "a.dbt"}, "a.dbf", 0xF5, "a.fpt");
        row({"a.fpt", "a.dbt"}, "a.dbf", 0x03, "");
        row({"a.dbt"}, "a.dbf", 0x30, "");
        row({"a.FPT"}, "a.dbf", 0x30, "a.FPT");
        row({"A.Dbt"}, "A.DBF", 0x8B, "A.Dbt");
        row({"a.FPt", "a.FPT"}, "a.dbf", 0x30, "a.FPT");
        row({"a.FPT", "a.fpt"}, "a.dbf", 0x30, "a.fpt");
        row({"ab.fpt", "a.b.fpt", "A.fpt", "a.fptx"}, "a.dbf", 0x30, "");
        row({"a.b.fpt", "a.fpt"}, "a.b.dbf", 0x30, "a.b.fpt");
        row({"a[1]*.fpt"}, "a[1]*.dbf", 0x30, "a[1]*.fpt");
        row({"a.fpt"}, "a", 0x30, "a.fpt");
        row({"a.fpt"}, "a.", 0x30, "a.fpt");
        row({".fpt"}, "", 0x30, "");
    }

    void memoFilesAreFoundBeside()
    {
        QFETCH(QStringList, files);
        QFETCH(QString, table);
        QFETCH(int, version);
        QFETCH(QString, found);
        QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("folder.fpt")));
        for (const QString& file : qAsConst(files))
            writeFile(folder.filePath(file), "x");
        const QString path = folder.path() + '/';
        QCOMPARE(DbfMemoFile::pathBeside(path + table, quint8(version)),
                 found.isEmpty() ? QString() : path + found);
        QVERIFY(DbfMemoFile::pathBeside(path + "folder.dbf", 0x30).isEmpty());
    }

    void columnsGiveWhatTheyPointTo_data()
    {
        QTest::addColumn<DbfFieldDescriptor>("field");
        QTest::addColumn<QByteArray>("pointer");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("error");
        const auto row = [](char letter, int length, const QByteArray& pointer,
                            const QVariant& value, const char* error = "") {
            QTest::addRow("%c %d %s", letter, length, pointer.toHex().constData())
                << DbfFieldDescriptor("F", DbfFieldType(letter), quint8(length), 0) << pointer
                << value << QString::fromLatin1(error);
        };
        const QVariant none;
        row('M', 4, hex("08000000"), text);
        for (const char letter : {'G', 'P', 'W'})
            row(letter, 4, hex("08000000"), QByteArray("\xCC\xE8\xF0 "));
        row('M', 4, hex("09000000"), QByteArray("PIC"));
        row('M', 4, hex("0A000000"), QString(""));
        row('M', 4, hex("00000000"), none);
        row('M', 4, hex("FFFFFFFF"), none, "4294967295");
        row('M', 4, hex("0800"), none, "is no block number");
        for (const char* const digits : {"         8", "0000000008", "8         ", "  8  "})
            row('M', 10, digits, text);
        row('M', 10, QByteArray("8\0\0\0\0\0\0\0\0\0", 10), text);
        for (const QByteArray& nothing :
             {QByteArray(10, ' '), QByteArray(10, '\0'), QByteArray(10, '0'), QByteArray()})
            row('M', 10, nothing, none);
        row('M', 10, "4294967295", none, "Memo block 4294967295");
        for (const char* const digits : {"4294967296", "9999999999", "        -8", "        +8",
                                         "       8 8", "       8.0", "\xCC\xE8\xF0"})
            row('M', 10, digits, none, "is no block number");
        row('M', 7, "      8", text);
        row('M', 255, QByteArray(254, '9') + '9', none, "is no block number");
    }

    void columnsGiveWhatTheyPointTo()
    {
        QFETCH(DbfFieldDescriptor, field);
        QFETCH(QByteArray, pointer);
        QFETCH(QVariant, value);
        QFETCH(QString, error);
        QByteArray file = sampleMemos();
        QBuffer device(&file);
        DbfMemoFile memo(&device, 0x30);
        ExactBytes slice(pointer);
        const DbfSchema schema({field}, codec(2251));
        const QVariant read = memo.converter()->toVariant(slice.view(), schema, field);
        QCOMPARE(read, value);
        QCOMPARE(read.userType(), value.userType());
        QCOMPARE(read.isNull(), !value.isValid());
        QVERIFY(error.isEmpty() ? memo.errorString().isEmpty()
                                : memo.errorString().contains(error));
        QVERIFY(!DbfMemoConverter(nullptr).toVariant(slice.view(), schema, field).isValid());
    }

    void onlyNothingIsWritten_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("isNothing");
        QTest::addColumn<bool>("isTaken");
        QTest::newRow("invalid") << QVariant() << true << true;
        QTest::newRow("null text") << QVariant(QString()) << true << true;
        QTest::newRow("null date") << QVariant(QDate()) << true << true;
        QTest::newRow("text") << QVariant(text) << false << true;
        QTest::newRow("empty text") << QVariant(QString("")) << false << true;
        QTest::newRow("bytes") << QVariant(QByteArray("8")) << false << true;
        QTest::newRow("number") << QVariant(8) << false << false;
    }

    void onlyNothingIsWritten()
    {
        QFETCH(QVariant, value);
        QFETCH(bool, isNothing);
        QFETCH(bool, isTaken);
        OpenNotes notes({noted});
        const DbfSchema schema = notes.table.schema();
        const DbfFieldConverter* const converter = schema.columns.at(0).converter;
        for (const int column : {0, 2}) {
            const DbfFieldDescriptor& field = schema.columns.at(column).descriptor;
            QByteArray bytes;
            QCOMPARE(thrownBy([&] { bytes = converter->toByteArray(value, schema, field); }),
                     isNothing ? DbfTable::NoError : DbfTable::WriteError);
            if (isNothing)
                QCOMPARE(bytes, column == 0 ? QByteArray(4, '\0') : QByteArray(10, ' '));
        }
        QVariant converted = value;
        QCOMPARE(converter->convertVariant(converted), isTaken);
        QCOMPARE(converted, value);

        const DbfRecord record(0, {value, {}, value});
        const QVector<DbfValueProblem> problems = checkValues(record, schema);
        QCOMPARE(problems.size(), isNothing ? 0 : 2);
        for (const DbfValueProblem& problem : problems) {
            QCOMPARE(problem.reason, DbfValueProblem::Reason::NotWritable);
            QVERIFY(problem.text().endsWith("cannot be written"));
        }
        QVERIFY(checkRecordSizeOverflow(record, schema).isEmpty());
        const bool updated = notes.table.updateRecord(record);
        QCOMPARE(updated, isNothing);
        QCOMPARE(notes.table.lastError(), isNothing ? DbfTable::NoError : DbfTable::WriteError);
        QCOMPARE(notes.device.writes().isEmpty(), !isNothing);
    }

    void pointersStayWhileValuesDo()
    {
        OpenNotes notes({noted, unnoted});
        DbfRecord record = notes.table.readRecord(0);
        const QVector<QVariant> expected{text, QByteArray("PIC"), text, "Ann", QByteArray("abc")};
        QCOMPARE(record.values, expected);
        for (const int index : {0, 1})
            QVERIFY(notes.table.updateValues(notes.table.readRecord(index)));
        QVERIFY(notes.device.writes().isEmpty());

        record.values[3] = "Eva";
        QVERIFY(notes.table.updateValues(record));
        QByteArray changed = noted;
        QVERIFY(notes.device.content.contains(changed.replace("Ann", "Eva")));
        record.values[0] = QVariant();
        QVERIFY(notes.table.updateValues(record));
        QVERIFY(notes.device.content.contains(changed.replace(1, 4, QByteArray(4, '\0'))));
        QVERIFY(notes.table.appendRecord(DbfRecord(-1, {})));
        QVERIFY(notes.device.content.endsWith(hex("20 00000000 00000000") + QByteArray(16, ' ') +
                                              '\x1A'));

        const QByteArray before = notes.device.content;
        record.values[0] = QStringLiteral("new");
        notes.table.setCheckingValues(true);
        QVERIFY(!notes.table.updateValues(record) && !notes.table.appendRecord(record));
        QVERIFY(!notes.table.hasError() && notes.table.valueProblems().size() == 3);
        notes.table.setCheckingValues(false);
        QVERIFY(!notes.table.updateValues(record));
        QCOMPARE(notes.table.lastError(), DbfTable::WriteError);
        QCOMPARE(notes.device.content, before);
    }

    void nullMemoFileLeavesBytes()
    {
        const auto choice = nullableConverters(nullptr);
        const DbfFieldDescriptor field("NOTE", DbfFieldType('M'), 10, 0);
        QCOMPARE(choice(field, {}),
                 static_cast<DbfFieldConverter*>(DbfByteArrayConverter::instance()));
    }

    void copiesKeepPointersOrTakeTheText()
    {
        OpenNotes notes({noted, unnoted});
        DbfSchemaTransform transform = identityOf(notes.table);
        transform.updateColumn(2, nullableColumn(DbfFieldDescriptor::stringField("OLD", 6)));
        RecordingDevice target;
        QVERIFY(notes.table.copyAndTransform(&target, transform));
        QVERIFY(target.content.contains(hex("20 08000000 09000000 CCE8F020 2020") + "Annabc"));
        QVERIFY(target.content.contains(hex("20 00000000 00000000") + "      Bob   "));
    }
};

QTEST_GUILESS_MAIN(TestMemo)
#include "tst_memo.moc"
