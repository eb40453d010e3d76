// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "columns.h"
#include "filesizelimit.h"
#include "testtables.h"

#include <QtCore/QBuffer>
#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <array>
#include <functional>
#include <iconv.h>
#include <numeric>
#include <stdexcept>

using namespace dbf;
using namespace testtables;

namespace
{

Table versioned(int version)
{
    Table table = sample();
    table.version = version;
    if (version >= 0x30 && version <= 0x32)
        table.backLink = QByteArray(263, 'b');
    return table;
}

/// A header of 36 more bytes and two descriptors of 48, as version 7 of the format has them.
QByteArray wideTable(int version)
{
    const auto wide = [](const QByteArray& name, char type, int length) {
        return name.leftJustified(32, '\0') + type + char(length) + QByteArray(14, '\0');
    };
    return header(1, 32 + 36 + 2 * 48 + 1, 8, version) + QByteArray(36, '\0') + wide("A", 'C', 5) +
           wide("B", 'C', 2) + "\x0D ab   cd\x1A";
}

/// A folder with one table file in it.
struct TableFile {
    explicit TableFile(const QByteArray& bytes) : path(folder.filePath("t.dbf"))
    {
        writeFile(path, bytes);
    }
    bool isAlone() const
    {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden) == QStringList("t.dbf");
    }

    QTemporaryDir folder;
    QString path;
};

/// What keeps a file from being rewritten: its own bytes, progress, or the disk.
enum Obstacle { InFile, Stops, Throws, FullDisk };

/// A codec that is known by its name alone.
struct NamedCodec : QTextCodec {
    QByteArray name() const override { return "Windows-1251"; }
    int mibEnum() const override { return 1; }
    QString convertToUnicode(const char*, int, ConverterState*) const override { return {}; }
    QByteArray convertFromUnicode(const QChar*, int, ConverterState*) const override { return {}; }
};

} // namespace

Q_DECLARE_METATYPE(Obstacle)

/// Tables of other programs: their versions and code pages, what is said of them, whole files.
class TestStrangers : public QObject
{
    Q_OBJECT

private slots:
    void versionIsAcceptedOrNamed_data()
    {
        addColumns<QByteArray, bool, bool, QString>({"bytes", "byDefault", "onRequest", "text"});
        const auto rows = [](const QVector<int>& versions, bool byDefault, bool onRequest,
                             const QString& text) {
            for (const int version : versions) {
                const QString name = QString::asprintf("Version 0x%02X", version);
                QTest::newRow(qPrintable(name))
                    << versioned(version).bytes() << byDefault << onRequest
                    << QString(text).replace("Version", name);
            }
        };
        rows({0x02, 0x03, 0x04, 0x07, 0x30, 0x31}, true, true, "");
        rows({0x83, 0x8B, 0xCB, 0xF5, 0xFB}, false, true,
             "Version: tables with memo files are read only on request");
        rows({0x32}, false, true, "Version: tables with null flags are read only on request");
        rows({0x43}, false, true, "Version: SQL tables are read only on request");
        rows({0x00, 0x50, 0xFF}, false, false, "This is no table: Version is none of tables");
        const auto row = [](const QByteArray& bytes, bool byDefault, const char* text) {
            QTest::newRow(text) << bytes << byDefault << false << QString(text);
        };
        row(wideTable(0x04), true,
            "Version 0x04: tables with field descriptors of 48 bytes are not read");
        row(wideTable(0x8C), false,
            "Version 0x8C: tables with field descriptors of 48 bytes are not read");
        // No room for a field, fields beyond the file, no bytes in the records.
        for (const QByteArray& bytes :
             {header(1, 64, 8, 0x02) + QByteArray(100, ' '), versioned(0x02).bytes().left(128),
              header(1, 65, 0, 0x02) + QByteArray(100, ' ')})
            row(bytes, true,
                "Version 0x02: its header makes no sense, as in tables with a header of 8 bytes");
        row("short", false, "This is no table: it has fewer bytes than a header");
        row(header(1, 20, 8), false, "This is no table: its header cannot have 20 bytes");
        row(header(1, 97, 8), false,
            "The table cannot be read: the file ends before its columns do");
    }

    void versionIsAcceptedOrNamed()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, byDefault);
        QFETCH(bool, onRequest);
        QFETCH(QString, text);
        RecordingDevice device(bytes);
        DbfTable table(&device);
        QCOMPARE(table.open(QIODevice::ReadOnly), byDefault);
        QCOMPARE(table.errorString(), byDefault ? QString() : text);
        table.close();
        table.clearError();
        table.setAcceptedVersions(DbfTable::AllVersions);
        QCOMPARE(table.open(QIODevice::ReadOnly), onRequest);
        QCOMPARE(table.errorString(), onRequest ? QString() : text);
        if (!onRequest) {
            QCOMPARE(table.lastError(), text.contains("Version") ? DbfTable::UnsupportedVersionError
                                                                 : DbfTable::ReadError);
            return;
        }
        DbfTable moved(std::move(table));
        QVERIFY(moved.actualize() && moved.acceptedVersions() == DbfTable::AllVersions);
        QCOMPARE(moved.readRecord(2).values.first(), QVariant("Carl"));
    }

    void columnsOfADefaultVersionAreReadFromTheDevice()
    {
        OpenTable open(sample().bytes());
        QVERIFY(open.device.seek(32));
        QCOMPARE(DbfTable::readSchemaData(&open.device, open.table.descriptor()),
                 sample().bytes().mid(32, 96));
    }

    void tableOfAnotherVersionIsWrittenAndCopied()
    {
        for (const int version : {0x32, 0x83, 0xF5}) {
            Table source = versioned(version);
            source.fields << field("REAL", 'B', 8);
            for (QByteArray& record : source.records)
                record += QByteArray::fromHex("000000000000F83F");
            RecordingDevice device(source.bytes());
            DbfTable table(&device);
            table.setAcceptedVersions(DbfTable::AllVersions);
            table.setConverterChoice(nullableConverter);
            QVERIFY(table.open(QIODevice::ReadWrite));
            QCOMPARE(table.readRecord(0).values.at(3).userType() == QMetaType::Double,
                     version == 0x32);
            QVERIFY(table.updateValues(DbfRecord(0, {"Ann"})));
            QVERIFY(table.appendRecord(table.readRecord(0)));
            QBuffer target;
            DbfCopyOptions options;
            options.keepMetadata = true;
            QVERIFY(table.copyAndTransform(&target, identityOf(table), options));
            QCOMPARE(target.data(), device.content);
        }
    }

    void languageDriversMeanWhatOtherProgramsMean()
    {
        const QList<QPair<int, QByteArray>> meanings{
            {0x03, "windows-1252"}, {0x1D, "IBM850"},       {0x65, "IBM866"},
            {0x66, "IBM866"},       {0x6A, "IBM737"},       {0x7D, "windows-1255"},
            {0x7E, "windows-1256"}, {0x86, "IBM737"},       {0xC9, "windows-1251"},
            {0xCB, "windows-1253"}, {0xCC, "windows-1257"}, {0x96, "x-mac-cyrillic"}};
        for (const auto& [id, name] : meanings) {
            QTextCodec* const codec = DbfTable::codecByLanguageDriver(id);
            QVERIFY2(codec, name);
            QCOMPARE(codec->name().toLower(), name.toLower());
            bool ok = false;
            const auto byte = int(DbfTable::languageDriverByCodec(codec, &ok));
            QVERIFY(ok);
            QCOMPARE(DbfTable::codecByLanguageDriver(byte), codec);
        }
        for (const int id : {-1, 0, 0x68, 0x69, 0xFF, 256})
            QVERIFY(!DbfTable::codecByLanguageDriver(id));
        QCOMPARE(int(DbfTable::languageDriverByCodec(QTextCodec::codecForName("IBM866"))), 0x65);
        QCOMPARE(int(DbfTable::languageDriverByCodec(QTextCodec::codecForName("IBM865"))), 0x08);
        bool ok = true;
        QCOMPARE(int(DbfTable::languageDriverByCodec(QTextCodec::codecForName("UTF-8"), &ok)), 0);
        QVERIFY(!ok && int(DbfTable::languageDriverByCodec(nullptr)) == 0);
    }

    void labelsNameCodecs()
    {
        const QMap<QByteArray, QByteArrayList> labelsOfCodecs{
            {"windows-1251", {"1251", "CP1251", "windows-1251", "ANSI 1251"}},
            {"IBM866", {"\xEF\xBB\xBFoem 866\r\n"}},
            {"ISO-8859-1", {"88591", "ISO88591"}},
            {"ISO-8859-15", {"ISO 8859-15"}},
            {"ISO-8859-2", {"28592"}},
            {"UTF-8", {"UTF-8", "utf8", "65001"}},
            {"Big5", {"Big5"}},
            {"GBK", {"ANSI936"}},
            {"IBM737", {"737"}},
            {"KOI8-R", {"koi8_r"}}};
        for (auto codec = labelsOfCodecs.begin(); codec != labelsOfCodecs.end(); ++codec) {
            for (const QByteArray& label : *codec)
                QVERIFY2(DbfTable::codecByLabel(label) == QTextCodec::codecForName(codec.key()),
                         label);
        }
        for (const char* label : {"", "1", "ISO", "8859", "8859-x", "8859-0", "CP", "12510",
                                  "latin", "1251!", "ANSI x", "ISO-8859-99"})
            QVERIFY2(!DbfTable::codecByLabel(label), label);
    }

    void greekCodecIsThatOfOthers()
    {
        std::array<char, 256> bytes;
        std::iota(bytes.begin(), bytes.end(), '\0');
        std::array<char16_t, 256> expected;
        char* from = bytes.data();
        char* to = reinterpret_cast<char*>(expected.data());
        size_t fromLeft = bytes.size();
        size_t toLeft = sizeof expected;
        const iconv_t conversion = iconv_open("UTF-16LE", "CP737");
        QCOMPARE(int(iconv(conversion, &from, &fromLeft, &to, &toLeft)), 0);
        iconv_close(conversion);
        QTextCodec* const codec = DbfTable::codecByLanguageDriver(0x6A);
        const QString text = codec->toUnicode(bytes.data(), 256);
        QCOMPARE(text, QString::fromUtf16(expected.data(), 256));
        QCOMPARE(codec->fromUnicode(text), QByteArray(bytes.data(), 256));

        const QString cyrillic = QStringLiteral("\u0416");
        QCOMPARE(codec->fromUnicode(cyrillic), QByteArray("?"));
        QVERIFY(!codec->canEncode(cyrillic) && codec->canEncode(QStringLiteral("\u0391")));
        QCOMPARE(codec->fromUnicode(cyrillic.data(), 1, nullptr), QByteArray("?"));
        QTextCodec::ConverterState toNull(QTextCodec::ConvertInvalidToNull);
        QCOMPARE(codec->fromUnicode(cyrillic.data(), 1, &toNull), QByteArray(1, '\0'));
        QCOMPARE(QTextCodec::codecForName("CP737"), codec);
    }

    void codecIsChosenByEveryOpening()
    {
        Table dos = sample();
        dos.codePage = 0x65;
        dos.records[0] = " \x80\xAD\xAD\xA0 T 1.5";
        OpenTable open(dos.bytes());
        const QString anna = QStringLiteral("\u0410\u043D\u043D\u0430");
        QVERIFY(open.table.readRecord(0).values.first() != anna);
        open.table.setCodecChoice(codecOfLanguageDriver);
        QVERIFY(open.table.reopen());
        QCOMPARE(open.table.readRecord(0).values.first(), QVariant(anna));
        open.table.overrideTextCodec(codec(2251));
        QVERIFY(open.table.reopen() && open.table.schema().codec == codec(2251));
        open.table.overrideTextCodec(nullptr);
        open.table.setCodecChoice([](const DbfTableDescriptor&) { return nullptr; });
        QVERIFY(open.table.reopen());
        QCOMPARE(open.table.schema().codec, DbfTable::codecByCodePage(DbfCodePage(0x65)));
        open.table.setCodecChoice(
            [](const auto&) -> QTextCodec* { throw std::runtime_error("x"); });
        QVERIFY_EXCEPTION_THROWN(open.table.reopen(), std::runtime_error);
        QVERIFY(!open.table.isOpen() && open.table.schema().columns.size() == 3);
    }

    void tableIsCreatedForACodePage()
    {
        const DbfSchema schema({DbfFieldDescriptor::stringField("\u0416", 5)}, nullptr);
        QBuffer buffer;
        QVERIFY(DbfTable(&buffer).create(schema, DbfCodePage(0x65)));
        QCOMPARE(quint8(buffer.data().at(29)), quint8(0x65));
        QCOMPARE(buffer.data().at(32), '\x86');
        NamedCodec named;
        QCOMPARE(DbfTable::codePageByCodec(&named), DbfCodePage::Windows1251);
        QVERIFY(DbfTable(&buffer).create(schema));
        QCOMPARE(buffer.data().at(29), '\0');
        QCOMPARE(buffer.data().at(32), '\xC6');
    }

    void failuresAreSaidInWords()
    {
        DbfTable none(nullptr);
        QVERIFY(none.errorString().isEmpty() && !none.open(QIODevice::ReadOnly));
        QCOMPARE(none.errorString(), QString("The table cannot be opened: there is no device"));
        QFile missing("/nowhere/at/all");
        DbfTable lost(&missing);
        QVERIFY(!lost.open(QIODevice::ReadOnly) &&
                lost.errorString().contains(missing.errorString()));

        OpenTable open(sample().bytes().left(129 + 2 * 11), QIODevice::ReadOnly);
        DbfTable& table = open.table;
        const auto says = [&table](const char* text, const std::function<void()>& operation) {
            operation();
            QCOMPARE(table.errorString(), QString(text));
            table.clearError();
            QVERIFY(!table.hasError() && table.errorString().isEmpty());
        };
        says("Record 3 of 3 cannot be read: the file ends after 2", [&] { table.readRecord(2); });
        says("There is no record 4 of 3", [&] { table.readRecord(3); });
        says("Records 1 to 3 of 3 cannot be read: the file ends after 2",
             [&] { table.readRecords(0, 3); });
        says("A negative number of records cannot be read", [&] { table.readRecords(0, -1); });
        says("Record 3 of 3 cannot be read: the file ends after 2", [&] {
            DbfRecordCursor cursor(table);
            while (cursor.next()) {
            }
        });
        says("Record 2 of 3 cannot be written: the device is open for reading only",
             [&] { table.updateRecord(newRecord(1)); });
        QBuffer target;
        const auto copyTo = [&table](QIODevice* device) {
            QVERIFY(!table.copyAndTransform(device, identityOf(table)) && !table.hasError());
        };
        says(
            "The table cannot be copied: Records 1 to 3 of 3 cannot be read: the file ends after 2",
            [&] { copyTo(&target); });
        says("The table cannot be copied: there is no target", [&] { copyTo(nullptr); });
        table.close();
        says("The table cannot be copied: it is not open", [&] { copyTo(&target); });
        QStringList texts;
        for (const int code : {0, 1, 2, 3, 5, 7, 9}) {
            table.error(DbfTable::DbfTableError(code));
            texts << table.errorString();
            table.clearError();
        }
        QCOMPARE(texts.mid(0, 4),
                 (QStringList{"", "The table cannot be opened", "The table cannot be read",
                              "The table cannot be written"}));
        QCOMPARE(texts.removeDuplicates(), 0);
    }

    void refusedWritesSayWhy()
    {
        struct Reopening : SpyConverter {
            DbfTable* table = nullptr;
            QByteArray toByteArray(const QVariant& value, const DbfSchema&,
                                   const DbfFieldDescriptor&) const override
            {
                return table ? (table->reopen(), value.toByteArray()) : QByteArray();
            }
        } converter;
        OpenTable open(sample().bytes());
        open.table.setFieldConverter(0, &converter);
        QVERIFY(!open.table.appendRecord(newRecord(0)));
        QCOMPARE(open.table.errorString(),
                 QString("No record can be appended to 3: its converters give "
                         "fewer bytes than a record has"));
        open.table.clearError();
        converter.table = &open.table;
        QVERIFY(!open.table.updateRecord(newRecord(0)));
        QCOMPARE(open.table.errorString(), QString("Record 1 of 3 cannot be written: the table was "
                                                   "opened anew or closed meanwhile"));
        QFile full("/dev/full");
        if (full.open(QIODevice::WriteOnly)) {
            OpenTable source(sample().bytes());
            full.close();
            QVERIFY(!source.table.copyAndTransform(&full, identityOf(source.table)));
            QVERIFY(source.table.errorString().contains("No space left on device"));
        }
    }

    void countIsFollowed()
    {
        TableFile file(sample().bytes());
        QFile device(file.path);
        DbfTable table(&device);
        QVERIFY(table.open(QIODevice::ReadWrite));
        QCOMPARE(table.wholeRecords(), 3);
        QCOMPARE(table.refreshRecordCount(), 0);
        QFile writer(file.path);
        DbfTable other(&writer);
        QVERIFY(other.open(QIODevice::ReadWrite) && other.appendRecord(newRecord(0)));
        QCOMPARE(table.refreshRecordCount(), 1);
        QCOMPARE(table.readRecord(3).values, other.readRecord(3).values);
        for (const auto& [written, followed] : {std::pair(1000, 4), {2, 2}}) { // 1000 too early
            DbfTable::updateRecordCount(&writer, static_cast<quint32>(written));
            writer.flush();
            QCOMPARE(table.refreshRecordCount(), 0);
            QCOMPARE(table.recordCount(), followed);
        }
        QVERIFY(table.appendRecord(newRecord(0)));
        QCOMPARE(table.recordCount(), 3);
        device.close(); // by somebody else
        QCOMPARE(table.refreshRecordCount(), -1);
        QCOMPARE(table.lastError(), DbfTable::ReadError);
        table.close();
        QCOMPARE(table.refreshRecordCount(), -1);
        QCOMPARE(DbfTable(nullptr).wholeRecords(), 0);
        QCOMPARE(DbfTable(&writer).refreshRecordCount(), -1); // never opened
    }

    void deletedRecordsArePassedOver()
    {
        OpenTable open(sample().bytes());
        DbfRecordCursor cursor(open.table);
        cursor.setSkipDeleted(true);
        QVector<int> visited;
        for (const DbfRecordCursor& record : cursor)
            visited << record.index();
        QCOMPARE(visited, (QVector<int>{0, 2}));
        QCOMPARE(open.table.schema().indexOf("amount"), 2);
        QCOMPARE(open.table.schema().indexOf("other"), -1);
    }

    void fileIsPacked()
    {
        QByteArray bytes = sample().bytes();
        bytes[1] = 99;
        bytes[20] = 'x';
        bytes += "what follows the end marker";
        TableFile file(bytes);
        QFile::setPermissions(file.path, QFile::ReadOwner | QFile::WriteOwner);
        const QString link = file.folder.filePath("link");
        QVERIFY(QFile::link(file.path, link));
        QString error = "x";
        QVERIFY(packFile(link, {}, &error) && error.isEmpty());
        const QByteArray without = Table{{field("A", 'C', 1)}}.bytes();
        TableFile empty(without);
        QVERIFY(packFile(empty.path) && readFile(empty.path) == without);
        QByteArray packed = bytes.left(129 + 11) + bytes.mid(129 + 22, 11) + '\x1A';
        packed[4] = 2;
        QCOMPARE(readFile(file.path), packed);
        QVERIFY(QFileInfo(link).isSymLink());
        QVERIFY(!(QFile::permissions(file.path) & (QFile::ReadGroup | QFile::ReadOther)));

        QVERIFY(!packFile(file.folder.path(), {}, &error) && !error.isEmpty());
        DbfFileOptions options;
        options.progress = [&](int, int) { return writeFile(file.path, "other"), true; };
        QVERIFY(!packFile(file.path, options, &error) && error.contains("meanwhile"));
    }

    void fileIsRestructured()
    {
        QByteArray bytes = sample().bytes();
        bytes[28] = 0x01; // an index
        TableFile file(bytes);
        const auto widen = [](DbfSchemaTransform& transform) { transform.resizeColumn(0, 9, 0); };
        QString error;
        QVERIFY(!restructureFile(file.path, widen, {}, &error));
        QVERIFY(error.contains("index") && readFile(file.path) == bytes && file.isAlone());
        DbfFileOptions options;
        options.ignoreIndexes = true;
        QVERIFY(restructureFile(file.path, widen, options, &error));
        const QByteArray wide = readFile(file.path);
        QCOMPARE(wide.at(28), '\0');
        QCOMPARE(wide.mid(129, 15), QByteArray(" \xC0\xED\xED\xE0     T 1.5"));
        const auto narrow = [](DbfSchemaTransform& transform) { transform.resizeColumn(0, 3, 0); };
        QVERIFY(!restructureFile(file.path, narrow, {}, &error));
        QVERIFY2(error.contains("Record 1 of 3, NAME: "), qPrintable(error));
        options.checkValues = false;
        options.converterChoice = [](const auto&, const auto&) {
            return DbfByteArrayConverter::instance();
        };
        options.codecChoice = [](const auto&) { return codec(2086); };
        QVERIFY(readFile(file.path) == wide && restructureFile(file.path, narrow, options));
        QVERIFY(file.isAlone());
    }

    void fileStaysAsItWas_data()
    {
        addColumns<QByteArray, Obstacle, QString>({"bytes", "obstacle", "text"});
        const auto row = [](const char* text, const QByteArray& bytes, Obstacle obstacle = InFile) {
            QTest::addRow("%d %s", obstacle, text) << bytes << obstacle << QString(text);
        };
        const QByteArray whole = sample().bytes();
        row("", whole, Stops);
        row("", whole, Throws);
        row(" cannot be %1: File too large", whole, FullDisk);
        row("the file ends after 1", whole.left(129 + 15));
        row("no table", "abc");
        row("no bytes", header(0, 65, 0) + field("A", 'C', 0) + '\x0D');
        row("ends before", header(0, 400, 8) + field("A", 'C', 7));
        row("header", versioned(0x30).bytes().left(200));
    }

    void fileStaysAsItWas()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(Obstacle, obstacle);
        QFETCH(QString, text);
        TableFile file(bytes);
        DbfFileOptions options;
        options.progress = [obstacle](int, int) {
            return obstacle == Throws ? throw std::runtime_error("stop") : obstacle != Stops;
        };
        const auto same = [](DbfSchemaTransform&) {};
        const FileSizeLimit limit(obstacle == FullDisk ? 100 : 1000000);
        for (const bool packs : {true, false}) {
            QString error;
            const auto rewrite = [&] {
                return packs ? packFile(file.path, options, &error)
                             : restructureFile(file.path, same, options, &error);
            };
            if (obstacle == Throws)
                QVERIFY_EXCEPTION_THROWN(rewrite(), std::runtime_error);
            else
                QVERIFY(!rewrite());
            const QString said = QString(text).replace("%1", packs ? "written" : "copied");
            QVERIFY2(error.contains(said) && error.isEmpty() == said.isEmpty(), qPrintable(error));
            QVERIFY(readFile(file.path) == bytes && file.isAlone());
        }
    }
};

QTEST_APPLESS_MAIN(TestStrangers)

#include "tst_strangers.moc"
