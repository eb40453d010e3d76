// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "columns.h"
#include "testtables.h"

#include <QtCore/QTemporaryDir>

#include <functional>
#include <utility>

using namespace dbf;
using namespace testtables;

namespace
{

constexpr int fieldLength = 9;

QByteArray image(const QByteArray& text, char flag = ' ')
{
    return flag + text.leftJustified(fieldLength, '.');
}

Table tableOf(const QVector<QByteArray>& records)
{
    return {{field("TEXT", 'C', fieldLength)}, records};
}

/// A caller's own converter that does something else each time before it gives its bytes.
class Meddler : public DbfFieldConverter
{
public:
    std::function<void()> deed = [] {};

    QByteArray toByteArray(const QVariant& value, const DbfSchema&,
                           const DbfFieldDescriptor& field) const override
    {
        deed();
        return value.toByteArray().leftJustified(field.length, '.', true);
    }

    QVariant toVariant(const QByteArray& bytes, const DbfSchema&,
                       const DbfFieldDescriptor&) const override
    {
        const std::string before(bytes.constData(), static_cast<size_t>(bytes.size()));
        deed();
        return before == bytes.toStdString() ? QVariant(QByteArray(before.c_str())) : QVariant();
    }

    bool convertVariant(QVariant& /*value*/) const override { return true; }
};

/// A table in a file, its records known, with a converter that meddles.
struct MeddledTable {
    explicit MeddledTable(const QString& path)
    {
        writeFile(path, tableOf(records).bytes());
        file.setFileName(path);
        table.open(QIODevice::ReadWrite);
        install();
    }

    void install() { table.setFieldConverter(0, &meddler); }

    bool update(int index, const QByteArray& text)
    {
        const bool updated = table.updateRecord({index, {text}});
        if (updated)
            records[index] = image(text);
        return updated;
    }

    bool append(const QByteArray& text, int count)
    {
        const DbfRecord record(-1, {text});
        const bool appended = count == 1 ? table.appendRecord(record)
                                         : table.appendRecords(QVector<DbfRecord>(count, record));
        if (appended)
            records += QVector<QByteArray>(count, image(text));
        return appended;
    }

    /// Compares the file with the records that it must hold. Behind them a refused bulk append may
    /// have left some that nobody counts.
    bool holdsItsRecords() const
    {
        return readFile(file.fileName()).startsWith(tableOf(records).bytes());
    }

    QFile file;
    Meddler meddler;
    DbfTable table{&file};
    QVector<QByteArray> records{image("old 0"), image("old 1"), image("old 2")};
};

/// What a converter does when it is called, and what becomes of the write that calls it.
enum Effect { Nothing, Appends, Refused };
struct Deed {
    const char* name;
    std::function<void(MeddledTable&)> run;
    Effect effect;
};
using Write = std::function<bool(MeddledTable&)>;

} // namespace

Q_DECLARE_METATYPE(Deed)
Q_DECLARE_METATYPE(Write)

/// What converters and callbacks of a caller's own may do with the table that calls them.
class TestCallbacks : public QObject
{
    Q_OBJECT

private slots:
    void writesLandWhereTheyBelong_data()
    {
        addColumns<Write, int, Deed>({"write", "meddledCall", "deed"});
        const Deed deeds[] = {
            {"reads", [](MeddledTable& t) { t.table.readRecord(0); }, Nothing},
            {"looks at a flag", [](MeddledTable& t) { t.table.isRecordDeleted(1); }, Nothing},
            {"walks", [](MeddledTable& t) { DbfRecordCursor(t.table).next(); }, Nothing},
            {"seeks", [](MeddledTable& t) { t.file.seek(7); }, Nothing},
            {"updates", [](MeddledTable& t) { t.update(1, "nested"); }, Nothing},
            {"appends", [](MeddledTable& t) { t.append("nested", 1); }, Appends},
            {"appends many", [](MeddledTable& t) { t.append("nested", 8000); }, Appends},
            {"closes", [](MeddledTable& t) { t.table.close(); }, Refused},
            {"reopens", [](MeddledTable& t) { t.table.reopen(); }, Refused},
            {"opens", [](MeddledTable& t) { t.file.seek(0), t.table.open({}); }, Refused},
        };
        const auto rows = [&](const QByteArray& name, int call, const Write& write) {
            for (const Deed& deed : deeds)
                QTest::newRow(name + ' ' + deed.name) << write << call << deed;
        };
        rows("update", 1, [](MeddledTable& t) { return t.update(2, "outer"); });
        rows("update of values", 2, [](MeddledTable& t) {
            const bool updated = t.table.updateValues({2, {QByteArray("outer")}});
            return updated && (t.records[2] = image("outer"), true);
        });
        rows("checked update", 1, [](MeddledTable& t) {
            t.table.setCheckingValues(true);
            return t.update(2, "nine.byte"); // as they are read
        });
        rows("append", 1, [](MeddledTable& t) { return t.append("outer", 1); });
        rows("bulk append", 1, [](MeddledTable& t) { return t.append("outer", 20000); });
        rows("bulk append under way", 15000,
             [](MeddledTable& t) { return t.append("outer", 20000); });
    }

    void writesLandWhereTheyBelong()
    {
        QFETCH(Write, write);
        QFETCH(int, meddledCall);
        QFETCH(Deed, deed);
        const bool isRefused =
            deed.effect == Refused || (deed.effect == Appends && meddledCall > 2);
        MeddledTable t(path());
        int calls = 0;
        t.meddler.deed = [&] {
            if (++calls == meddledCall)
                deed.run(t);
        };
        QCOMPARE(write(t), !isRefused);
        QCOMPARE(t.table.lastError(), isRefused ? DbfTable::WriteError : DbfTable::NoError);
        QCOMPARE(t.table.recordCount(), t.records.size());
        QVERIFY(t.holdsItsRecords());
    }

    // It holds on to what the table was until then.
    void copyStopsWhenItsTableIsOpenedAnew()
    {
        const QByteArray other = Table{{field("X", 'C', 99)}, {QByteArray(100, ' ')}}.bytes();
        const QByteArray same = tableOf({image("new"), image("new"), image("new")}).bytes();
        // By the converter or progress, other or same, reopened or not.
        for (int i = 0; i < 8; ++i) {
            const bool byProgress = i & 1;
            const bool reopens = i & 2;
            MeddledTable t(path());
            RecordingDevice target;
            const auto replace = [&] {
                QFile::remove(path());
                writeFile(path(), i & 4 ? other : same);
                return !reopens || t.table.reopen();
            };
            DbfSchemaTransform transform = identityOf(t.table);
            transform.schema.columns[0].setConverter(DbfStringConverter::instance());
            if (!byProgress)
                t.meddler.deed = replace;
            const auto progress = [&](int, int) { return !byProgress || replace(); };
            QCOMPARE(t.table.copyAndTransform(&target, transform, progress), !reopens);
            QCOMPARE(target.isOpen(), reopens);
            QVERIFY(!t.table.hasError());
        }
    }

    void converterKeepsItsBytesWhateverTheCursorDoes()
    {
        Table table{{field("A", 'C', 9), field("B", 'C', 9)}};
        for (int i = 0; i < 40000; ++i) // some blocks
            table.records << ' ' + QByteArray::number(i).leftJustified(9, 'a') +
                                 QByteArray::number(i).leftJustified(9, 'b');
        OpenTable open(table.bytes());
        Meddler meddler;
        open.table.setFieldConverter(0, &meddler);
        open.table.setFieldConverter(1, &meddler);
        DbfRecordCursor cursor(open.table);
        QVERIFY(cursor.next());
        bool isNested = false;
        meddler.deed = [&] {
            if (std::exchange(isNested, true))
                return;
            QCOMPARE(cursor.value(1).toByteArray().at(8), 'b');
            for (int i = 0; i < 6000; ++i)
                cursor.next();
            cursor.record();
            isNested = false;
        };
        QVERIFY(cursor.value(0).toByteArray().startsWith("0a"));
        for (const char* expected : {"6000", "18000"}) // a record has two values to read
            for (const QVariant& value : cursor.record().values)
                QVERIFY(value.toByteArray().startsWith(expected));
    }

    // Blocks are out when the device, which a converter has moved, does not go back.
    void bulkAppendThatCannotGoOnIsTakenBack()
    {
        OpenTable open(tableOf({image("old")}).bytes());
        Meddler meddler;
        open.table.setFieldConverter(0, &meddler);
        int calls = 0;
        meddler.deed = [&] {
            if (++calls == 10000) {
                open.device.seek(0);
                open.device.setFault({RecordingDevice::Seek, 1});
            }
        };
        QVERIFY(!open.table.appendRecords(QVector<DbfRecord>(20000, DbfRecord(-1, {"new"}))));
        QCOMPARE(open.table.lastError(), DbfTable::ReadError);
        QVERIFY(open.device.content.startsWith(tableOf({image("old")}).bytes()));
    }

    void modeThatIsSwitchedMeanwhileIsRefused()
    {
        MeddledTable t(path());
        t.meddler.deed = [&] { t.file.setTextModeEnabled(true); };
        QVERIFY(!t.update(1, "a\nb"));
        QCOMPARE(t.table.lastError(), DbfTable::WriteError);
        t.file.setTextModeEnabled(false);
        QVERIFY(t.holdsItsRecords());
    }

    void sizeCheckSurvivesAnOpening()
    {
        MeddledTable t(path());
        t.meddler.deed = [&] { t.table.reopen(); };
        QVERIFY(
            checkRecordSizeOverflow({0, {"longer than the field"}}, t.table.schema()).isEmpty());
        t.install();
        const DbfColumn target(DbfFieldDescriptor::stringField("TARGET", 20));
        QCOMPARE(transformField("bytes", t.table.schema(), t.table.schema().columns.at(0),
                                t.table.schema(), target),
                 QByteArray("bytes").leftJustified(20, '\0'));
    }

private:
    QString path() const { return m_folder.filePath("a.dbf"); }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestCallbacks)

#include "tst_callbacks.moc"
