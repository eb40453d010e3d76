// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"
#include "columns.h"
#include "testtables.h"

#include <QtCore/QBuffer>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTemporaryFile>

using namespace dbf;
using namespace testtables;

namespace
{

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

/// Text in block 8 of 64 bytes, a picture in block 9, empty text in block 10.
const QByteArray memos = fpt(
    64, (hex("00000001 00000004") + "\xCC\xE8\xF0 ").leftJustified(64, '\0') +
            (hex("00000000 00000003") + "PIC").leftJustified(64, '\0') + hex("00000001 00000000"));
const QString text = QStringLiteral("\u041C\u0438\u0440 ");

const QByteArray abc = hex("00000001 00000003") + "abc";
const QByteArray counted = hex("FFFF0800 0B000000") + "a\x1A" + "cd";

const QByteArray noted = hex("20 08000000 09000000") + "         8Annabc";
const QByteArray unnoted = hex("20 00000000 00000000") + "          Bob   ";

/// A table with columns that point to text, to a picture and, by digits, to text, and two others.
struct OpenNotes {
    OpenNotes() : table(&device)
    {
        memoDevice.setData(memos);
        table.setConverterChoice(nullableConverters(&memo));
        table.open(QIODevice::ReadWrite);
        device.clearLog();
    }

    QBuffer memoDevice;
    DbfMemoFile memo{&memoDevice, 0x30};
    RecordingDevice device{
        Table{{field("NOTE", 'M', 4), field("PICTURE", 'G', 4), field("OLD", 'M', 10),
               field("NAME", 'C', 3), field("OTHER", 'M', 3)},
              {noted, unnoted},
              0x30,
              0xC9,
              QByteArray(263, '\0')}
            .bytes()};
    DbfTable table;
};

} // namespace

class TestMemo : public QObject
{
    Q_OBJECT

private slots:
    void memosAreReadOrTheirDamageTold_data()
    {
        addColumns<int, QByteArray, quint32, QByteArray, bool, QString>(
            {"version", "file", "block", "memo", "isText", "damage"});
        const auto read = [](int version, const QByteArray& file, quint32 block,
                             const QByteArray& memo, bool isText = true) {
            QTest::addRow("%02x %u %s", version, block, memo.left(9).toHex().constData())
                << version << file << block << memo << isText << "";
        };
        for (const int version : {0x30, 0x31, 0x32, 0xF5})
            read(version, memos, 8, "\xCC\xE8\xF0 ");
        read(0x30, memos, 9, "PIC", false);
        read(0x30, fpt(512, hex("01000001 00000001") + "x"), 1, "x", false); // of no known type
        read(0x30, memos, 10, "");
        read(0x30, fpt(1, '#' + abc), 513, "abc");
        read(0x30, fpt(0x0102, "####" + abc), 2, "abc");
        const QByteArray ends(1024, '\x1A');
        read(0xF5, fpt(512, hex("00000001 00000400") + ends), 1, ends);
        read(0x83, dbt(0, "abc\x1A\x1A"), 1, "abc");
        read(0x83, dbt(64, QByteArray(512, '#') + "de\x1A"), 2, "de");
        read(0x83, dbt(512, "\x1A"), 1, "");
        for (const int size : {4095, 4096, 9000})
            read(0x83, dbt(512, QByteArray(size, 'x') + "\x1Ay"), 1, QByteArray(size, 'x'));
        for (const int version : {0x8B, 0xCB})
            read(version, dbt(1024, QByteArray(512, '\0') + counted), 1, counted.mid(8, 3));
        read(0x8B, dbt(512, hex("FFFF0800 08000000")), 1, "");

        const auto damaged = [](int version, const QByteArray& file, quint32 block,
                                const char* damage) {
            QTest::addRow("%02x %s %u", version, damage, block)
                << version << file << block << QByteArray() << false << QString(damage);
        };
        for (const int version : {0x00, 0x03, 0x33, 0x82, 0xFB, 0xFF})
            damaged(version, memos, 8, "tables of this version");
        for (const quint32 block : {0u, 7u})
            damaged(0x30, memos, block, "lie in the header");
        damaged(0x83, dbt(512, "x\x1A"), 0, "lie in the header");
        for (const int version : {0x30, 0x83, 0x8B}) {
            for (const quint32 block : {1u, 0xFFFFFFFFu})
                damaged(version, QByteArray(512, '\2'), block, "behind the end");
        }
        damaged(0x30, QByteArray(7, '\1'), 8, "no header");
        damaged(0xCB, QByteArray(21, '\1'), 8, "no header");
        damaged(0x83, "", 8, "behind the end");
        damaged(0x30, fpt(0, abc), 8, "have no bytes");
        damaged(0x30, fpt(512, abc.left(7)), 1, "within its head");
        damaged(0x8B, dbt(512, counted.left(7)), 1, "within its head");
        damaged(0x30, fpt(512, abc.chopped(1)), 1, "longer than what is left");
        damaged(0x30, fpt(512, hex("00000001 FFFFFFFF") + "x"), 1, "longer than what is left");
        damaged(0x8B, dbt(512, counted.left(10)), 1, "longer than what is left");
        for (const char* const start : {"FFFF0800 07000000", "FFFF0900 08000000"})
            damaged(0x8B, dbt(512, hex(start) + "x"), 1, "no memo begins there");
        for (const int size : {1, 8192})
            damaged(0x83, dbt(512, QByteArray(size, 'x')), 1, "has no end");
    }

    void memosAreReadOrTheirDamageTold()
    {
        QFETCH(int, version);
        QFETCH(QByteArray, file);
        QFETCH(quint32, block);
        QFETCH(QString, damage);
        const bool isWhole = damage.isEmpty();
        RecordingDevice device(file);
        DbfMemoFile memo(&device, quint8(version));
        bool ok = !isWhole;
        const QByteArray bytes = memo.read(block, &ok);
        QCOMPARE(ok, isWhole);
        QTEST(bytes, "memo");
        QTEST(memo.lastWasText(), "isText");
        if (isWhole) {
            QVERIFY(!bytes.isNull() && memo.errorString().isEmpty());
            QVERIFY(device.isReadable() && !device.isWritable());
        } else {
            const QString start = QStringLiteral("Memo block %1 cannot be read: ").arg(block);
            QVERIFY2(memo.errorString().startsWith(start) && memo.errorString().contains(damage),
                     qPrintable(memo.errorString()));
        }
    }

    void bigFilesAreReadButNoGigabytes()
    {
        QTemporaryFile file;
        QVERIFY(file.open() && file.write(fpt(0xFFFF, "")) == 512);
        QVERIFY(file.seek(0xFFFF) && file.write(hex("00000001 40000000")) == 8);
        QVERIFY(file.seek(Q_INT64_C(0xFFFF) * 0x10002) && file.write(abc) == abc.size());
        DbfMemoFile memo(&file, 0x30);
        QCOMPARE(memo.read(0x10002), QByteArray("abc"));
        QVERIFY(memo.read(1).isEmpty() && memo.errorString().contains("too long"));
    }

    void deviceFailuresAreTold()
    {
        using Device = RecordingDevice;
        for (const auto& fault : {Device::Fault{Device::Open, 1, Device::Fail},
                                  {Device::Seek, 1, Device::Fail},
                                  {Device::Seek, 2, Device::Fail},
                                  {Device::Read, 1, Device::Short},
                                  {Device::Read, 2, Device::Short},
                                  {Device::Read, 3, Device::Short}}) {
            RecordingDevice device(memos);
            DbfMemoFile memo(&device, 0x30);
            device.setFault(fault);
            QVERIFY(memo.read(8).isEmpty() && !device.isFaultPending());
            const QString error = memo.errorString();
            QVERIFY(!error.isEmpty());
            QCOMPARE(memo.read(9), QByteArray("PIC")); // The next read goes well,
            QCOMPARE(memo.errorString(), error);       // and the failure stays until it is cleared.
            memo.clearError();
            QVERIFY(memo.errorString().isEmpty());
        }
        QFile nameless;
        QFile missing(QStringLiteral("no such folder/x.fpt"));
        RecordingDevice written(memos);
        QVERIFY(written.open(QIODevice::WriteOnly));
        RecordingDevice inTextMode(memos);
        QVERIFY(inTextMode.open(QIODevice::ReadOnly | QIODevice::Text));
        for (QIODevice* const device :
             QVector<QIODevice*>{nullptr, &nameless, &missing, &written, &inTextMode}) {
            DbfMemoFile memo(device, 0x30);
            QVERIFY(memo.read(8).isEmpty() && !memo.errorString().isEmpty());
        }
    }

    void memosAreReadAsTheyAreNow()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("notes.fpt")));
        DbfMemoFile memo(&file, 0x30);
        for (const char* const picture : {"PIC", "NEW"}) {
            writeFile(file.fileName(), QByteArray(memos).replace("PIC", picture));
            QCOMPARE(memo.read(9), QByteArray(picture));
            QVERIFY(!memo.read(8).isEmpty()); // Qt reads ahead to where the picture is.
        }
        file.close();
        writeFile(file.fileName(), fpt(512, abc));
        QCOMPARE(memo.read(1), QByteArray("abc"));
    }

    void memoFilesAreFoundBeside()
    {
        using Case = std::tuple<QStringList, QString, int, QString>; // files, table, version, found
        for (const auto& [files, table, version, found] :
             {Case{{"a.fpt", "a.dbt"}, "a.dbf", 0x30, "a.fpt"},
              {{"a.fpt", "a.dbt"}, "a.dbf", 0x83, "a.dbt"},
              {{"a.fpt", "a.dbt"}, "a.dbf", 0x03, ""},
              {{"a.dbt"}, "a.dbf", 0x30, ""},
              {{"A.Dbt"}, "A.DBF", 0x8B, "A.Dbt"},
              {{"a.FPt", "a.FPT"}, "a.dbf", 0x30, "a.FPT"},
              {{"a.FPT", "a.fpt"}, "a.dbf", 0x30, "a.fpt"},
              {{"ab.fpt", "a.b.fpt", "A.fpt", "a.fptx"}, "a.dbf", 0x30, ""},
              {{"a.b.fpt", "a.fpt"}, "a.b.dbf", 0x30, "a.b.fpt"},
              {{"a[1]*.fpt"}, "a[1]*.dbf", 0x30, "a[1]*.fpt"},
              {{"a.fpt"}, "a", 0x30, "a.fpt"},
              {{".fpt"}, "", 0x30, ""}}) {
            QTemporaryDir folder;
            QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("folder.fpt")));
            for (const QString& file : files)
                writeFile(folder.filePath(file), "x");
            const QString path = folder.path() + '/';
            QCOMPARE(DbfMemoFile::pathBeside(path + table, quint8(version)),
                     found.isEmpty() ? QString() : path + found);
            QVERIFY(DbfMemoFile::pathBeside(path + "folder.dbf", 0x30).isEmpty());
        }
    }

    void columnsGiveWhatTheyPointTo_data()
    {
        addColumns<QByteArray, int, QVariant, QString>({"pointer", "length", "value", "error"});
        const auto row = [](const QByteArray& pointer, int length, const QVariant& value,
                            const char* error = "") {
            QTest::addRow("%d %s", length, pointer.toHex().constData())
                << pointer << length << value << QString::fromLatin1(error);
        };
        const QVariant none;
        row(hex("08000000"), 4, text);
        row(hex("09000000"), 4, QByteArray("PIC"));
        row(hex("0A000000"), 4, QString(""));
        row(hex("00000000"), 4, none);
        row(hex("FFFFFFFF"), 4, none, "Memo block 4294967295");
        row(hex("0800"), 4, none, "is no block number");
        for (const char* const digits : {"         8", "0000000008", "8         ", "  8  "})
            row(digits, 10, text);
        row(QByteArray("8").leftJustified(10, '\0'), 10, text);
        for (const char filler : {' ', '\0', '0'})
            row(QByteArray(10, filler), 10, none);
        row("", 10, none);
        row("4294967295", 10, none, "Memo block 4294967295");
        for (const char* const digits : {"4294967296", "9999999999", "        -8", "        +8",
                                         "       8 8", "       8.0", "\xCC\xE8\xF0"})
            row(digits, 10, none, "is no block number");
        row("      8", 7, text);
        row(QByteArray(255, '9'), 255, none, "is no block number");
    }

    void columnsGiveWhatTheyPointTo()
    {
        QFETCH(QByteArray, pointer);
        QFETCH(int, length);
        QFETCH(QVariant, value);
        QFETCH(QString, error);
        QBuffer device;
        device.setData(memos);
        DbfMemoFile memo(&device, 0x30);
        ExactBytes slice(pointer);
        for (const char letter : {'G', 'P', 'W', 'M'}) {
            const DbfSchema schema({{"F", DbfFieldType(letter), quint8(length), 0}}, codec(2251));
            const DbfFieldDescriptor& field = schema.columns.at(0).descriptor;
            memo.clearError();
            const QVariant read = memo.converter()->toVariant(slice.view(), schema, field);
            QCOMPARE(read.isValid() && !read.isNull(), value.isValid());
            QCOMPARE(memo.errorString().isEmpty(), error.isEmpty());
            QVERIFY(memo.errorString().contains(error));
            const bool isBytes = letter != 'M' && value.isValid();
            QCOMPARE(read.userType(), isBytes ? int(QMetaType::QByteArray) : value.userType());
            QCOMPARE(read, isBytes ? codec(2251)->fromUnicode(value.toString()) : value);
            QVERIFY(!DbfMemoConverter(nullptr).toVariant(slice.view(), schema, field).isValid());
        }
    }

    void onlyNothingIsWritten_data()
    {
        addColumns<QVariant, bool>({"value", "isNothing"});
        for (const QVariant& value : {QVariant(), QVariant(QString()), QVariant(QDate())})
            QTest::addRow("no %s", value.typeName()) << value << true;
        for (const QVariant& value :
             {QVariant(text), QVariant(""), QVariant(QByteArray("8")), QVariant(8)})
            QTest::addRow("%s %s", value.typeName(), qPrintable(value.toString()))
                << value << false;
    }

    void onlyNothingIsWritten()
    {
        QFETCH(QVariant, value);
        QFETCH(bool, isNothing);
        OpenNotes notes;
        const DbfSchema schema = notes.table.schema();
        const DbfRecord record(0, {value, {}, value});
        const QVector<DbfValueProblem> problems = checkValues(record, schema);
        QCOMPARE(problems.size(), isNothing ? 0 : 2);
        for (const DbfValueProblem& problem : problems) {
            QCOMPARE(int(problem.reason), int(DbfValueProblem::Reason::NotWritable));
            QVERIFY(problem.text().endsWith("cannot be written"));
        }
        QVERIFY(checkRecordSizeOverflow(record, schema).isEmpty());

        QVariant converted = value;
        QCOMPARE(notes.memo.converter()->convertVariant(converted),
                 value.userType() != QMetaType::Int);
        QCOMPARE(converted, value);
        QCOMPARE(notes.table.updateRecord(record), isNothing);
        QCOMPARE(notes.table.lastError(), isNothing ? DbfTable::NoError : DbfTable::WriteError);
        QCOMPARE(notes.device.writes().size(), isNothing ? 1 : 0);
        if (isNothing)
            QVERIFY(notes.device.writes().at(0).bytes.startsWith(unnoted.left(19)));
    }

    void pointersStayWhileValuesDo()
    {
        OpenNotes notes;
        DbfRecord record = notes.table.readRecord(0);
        const QVector<QVariant> expected{text, QByteArray("PIC"), text, "Ann", QByteArray("abc")};
        QCOMPARE(record.values, expected);
        for (const int index : {0, 1})
            QVERIFY(notes.table.updateValues(notes.table.readRecord(index)));
        QVERIFY(notes.device.writes().isEmpty());

        record.values[0] = QVariant();
        record.values[3] = "Eva";
        QVERIFY(notes.table.updateValues(record));
        QVERIFY(notes.table.appendRecord(DbfRecord(-1, {})));
        const QByteArray before = notes.device.content;
        QVERIFY(before.contains(hex("20 00000000 09000000") + "         8Evaabc"));
        QVERIFY(before.endsWith(unnoted.left(9) + QByteArray(16, ' ') + '\x1A'));

        record.values[0] = QStringLiteral("new");
        notes.table.setCheckingValues(true);
        QVERIFY(!notes.table.updateValues(record) && !notes.table.hasError());
        QCOMPARE(notes.table.valueProblems().size(), 1);
        notes.table.setCheckingValues(false);
        QVERIFY(!notes.table.updateValues(record));
        QCOMPARE(notes.table.lastError(), DbfTable::WriteError);
        QCOMPARE(notes.device.content, before);
    }

    void copiesKeepPointersOrTakeTheText()
    {
        OpenNotes notes;
        DbfSchemaTransform transform = identityOf(notes.table);
        transform.updateColumn(2, nullableColumn(DbfFieldDescriptor::stringField("OLD", 6)));
        RecordingDevice target;
        QVERIFY(notes.table.copyAndTransform(&target, transform));
        QVERIFY(target.content.contains(noted.left(9) + hex("CCE8F020 2020") + "Annabc"));
        QVERIFY(target.content.contains(unnoted.left(9) + "      Bob   "));

        const auto choice = nullableConverters(nullptr);
        QVERIFY(choice(notes.table.schema().columns.at(0).descriptor, {}) ==
                DbfByteArrayConverter::instance());
    }
};

QTEST_GUILESS_MAIN(TestMemo)
#include "tst_memo.moc"
