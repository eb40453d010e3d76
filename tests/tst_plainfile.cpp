// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "testtables.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <cstdio>
#include <sys/syscall.h>
#include <unistd.h>

using namespace dbf;
using namespace testtables;

namespace
{

int acceptedCopies = 0; // within the kernel, before it refuses
int kernelCopies = 0;

} // namespace

// In the place of the C library's.
extern "C" ssize_t copy_file_range(int source, off64_t* from, int target, off64_t* to, size_t size,
                                   unsigned flags)
{
    if (++kernelCopies > acceptedCopies)
        return -1;
    const size_t some = std::min<size_t>(size, 300000);
    return syscall(SYS_copy_file_range, source, from, target, to, some, flags);
}

namespace
{

/// Gives out after so many values.
class WearingConverter : public SpyConverter
{
public:
    WearingConverter(int values, bool throwsThen) : m_left(values) { throwing = throwsThen; }

    QByteArray toByteArray(const QVariant& value, const DbfSchema&,
                           const DbfFieldDescriptor& field) const override
    {
        if (m_left-- > 0)
            return value.toByteArray().left(field.length);
        return throwing ? throw std::runtime_error("worn") : QByteArray("short");
    }

private:
    mutable int m_left;
};

/// Comes back to the table in the middle of what it reads.
class ReturningConverter : public SpyConverter
{
public:
    DbfTable* table = nullptr;

    QVariant toVariant(const QByteArray& bytes, const DbfSchema&,
                       const DbfFieldDescriptor&) const override
    {
        const QByteArray own(bytes.constData(), bytes.size());
        if (own.endsWith("000"))
            table->readRecords(0, 2);
        return own;
    }
};

/// Two batches of a copy.
QByteArray manyRecords(const QVector<QByteArray>& fields)
{
    Table table{fields};
    for (int i = 0; i < 100000; ++i)
        table.records += " row\xC0 " + QByteArray::number(i).rightJustified(94, '.');
    return table.bytes();
}

const QVector<QByteArray> twoFields{field("NAME", 'C', 5), field("RAW", 'X', 94)};

} // namespace

class PlainFileTest : public QObject
{
    Q_OBJECT

private slots:
    // What a caller opens a file on may gather writes that no call tells of.
    void onlyFilesOfItsOwnStayInTheKernel()
    {
        writeFile(path("kernel.dbf"), sample().bytes());
        OpenFile side(path("kernel.dbf"));
        const auto movesNot = [&](bool done) {
            const bool stays = lseek(side.file.handle(), 0, SEEK_CUR) == 1;
            return lseek(side.file.handle(), 1, SEEK_SET) == 1 && done && stays;
        };
        movesNot(true);
        QVERIFY(movesNot(side.table.readRecord(2).index() == 2));
        QVERIFY(movesNot(side.table.isRecordDeleted(1)));
        QVERIFY(movesNot(side.table.updateRecord(newRecord(0))));
        QVERIFY(movesNot(side.table.updateValues(newRecord(2))));
        QVERIFY(movesNot(side.table.setRecordDeleted(1, true)));
        QVERIFY(movesNot(side.table.appendRecord(newRecord(0))));
        QVERIFY(movesNot(side.table.appendRecords({newRecord(0), newRecord(0)})));
        QCOMPARE(side.table.recordCount(), 6);

        side.file.close();
        FILE* const stream = std::fopen(side.file.fileName().toLocal8Bit(), "r+b");
        QVERIFY(stream && side.file.open(stream, QIODevice::ReadWrite));
        QVERIFY(side.table.updateRecord(newRecord(1)));
        QVERIFY(lseek(side.file.handle(), 0, SEEK_CUR) > 1);
        QCOMPARE(side.table.readRecord(1).values, newRecord(1).values);
        side.file.close();
        std::fclose(stream);
    }

    void rangeIsTheSameHoweverItIsRead()
    {
        const QByteArray bytes = manyRecords(twoFields);
        writeFile(path("ranges.dbf"), bytes);
        OpenFile own(path("ranges.dbf"));
        OpenTable others(bytes);
        ReturningConverter converter;
        const QVector<QPair<int, int>> ranges{{0, 100000}, {1310, 1},       {7, 1311},
                                              {99999, 1},  {99000, 1001},   {99999, 2},
                                              {-1, 1},     {0, 2147483647}, {100001, 1}};
        for (DbfFieldConverter* const chosen :
             std::initializer_list<DbfFieldConverter*>{nullptr, &converter}) {
            const auto choice = [=](const DbfFieldDescriptor&, const DbfTableDescriptor&) {
                return chosen;
            };
            own.table.setConverterChoice(choice);
            others.table.setConverterChoice(choice);
            QVERIFY(own.table.reopen() && others.table.reopen());
            for (const auto& [first, count] : ranges) {
                converter.table = &own.table;
                const QVector<DbfRecord> ours = own.table.readRecords(first, count);
                converter.table = &others.table;
                const QVector<DbfRecord> theirs = others.table.readRecords(first, count);
                QCOMPARE(ours.size(), theirs.size());
                for (int i = 0; i < ours.size(); ++i) {
                    QCOMPARE(ours.at(i).index(), theirs.at(i).index());
                    QCOMPARE(ours.at(i).values, theirs.at(i).values);
                }
                QCOMPARE(own.file.pos(), others.device.pos());
                QCOMPARE(own.table.errorString(), others.table.errorString());
                own.table.clearError();
                others.table.clearError();
            }
        }
    }

    void copyIsTheSameHoweverItIsMade_data()
    {
        QTest::addColumn<int>("accepted");
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("usesKernel");
        QTest::newRow("within the kernel") << 1000 << "" << true;
        QTest::newRow("refused") << 0 << "" << true;
        QTest::newRow("refused in the middle") << 20 << "" << true;
        QTest::newRow("stopped") << 1000 << "stop" << true;
        QTest::newRow("a source that ends early") << 1000 << "cut" << true;
        QTest::newRow("other columns") << 1000 << "resize" << false;
        QTest::newRow("fewer columns") << 1000 << "drop 1" << false;
        QTest::newRow("fewer columns of a wrong header") << 1000 << "lie, drop 0" << false;
        QTest::newRow("one column in another codec") << 1000 << "recode" << false;
        QTest::newRow("other columns, stopped") << 1000 << "resize stop" << false;
        QTest::newRow("a converter throws") << 1000 << "wear throw" << false;
        QTest::newRow("a converter gives too little") << 1000 << "wear" << false;
    }

    // Into a file as into a device of another class, which sees each record.
    void copyIsTheSameHoweverItIsMade()
    {
        QFETCH(int, accepted);
        QFETCH(QString, change);
        QFETCH(bool, usesKernel);
        QByteArray bytes = manyRecords(change == "recode" ? twoFields.mid(0, 1) : twoFields);
        if (change.contains("lie"))
            bytes[10] = 95; // bytes of a record, which then holds but RAW
        writeFile(path("source.dbf"), bytes.chopped(change == "cut" ? 2 : 0));
        const auto copyTo = [&](QIODevice* target) {
            OpenFile source(path("source.dbf"));
            WearingConverter wearing(90000, change.contains("throw"));
            DbfSchemaTransform transform = identityOf(source.table);
            if (change.contains("resize"))
                transform.resizeColumn(0, 4, 0);
            if (change.contains("drop"))
                transform.deleteColumn(change.endsWith('0') ? 0 : 1);
            if (change == "recode")
                transform.schema.setCodec(codec(2086));
            if (change.contains("wear")) {
                transform.schema.columns[1].setConverter(&wearing);
                transform.resizeColumn(1, 93, 0);
            }
            QVariantList seen;
            const auto progress = [&](int done, int total) {
                seen << done << total << target->pos() << source.file.pos();
                return !change.contains("stop");
            };
            try {
                seen << source.table.copyAndTransform(target, transform, progress);
            } catch (const std::runtime_error&) {
                seen << "thrown";
            }
            return seen << source.table.errorString() << target->isOpen();
        };
        QBuffer buffer;
        const QVariantList expected = copyTo(&buffer);
        acceptedCopies = accepted;
        kernelCopies = 0;
        QFile file(path("target.dbf"));
        QCOMPARE(copyTo(&file), expected);
        file.close();
        QVERIFY(readFile(file.fileName()) == buffer.data());
        QCOMPARE(kernelCopies > 0, usesKernel);
    }

private:
    QTemporaryDir m_folder;
    QString path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
};

QTEST_APPLESS_MAIN(PlainFileTest)

#include "tst_plainfile.moc"
