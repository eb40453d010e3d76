// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "filesizelimit.h"
#include "testtables.h"

#include <QtCore/QProcess>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <functional>

using namespace dbf;
using namespace testtables;

namespace
{

/// Keeps what it is given until somebody waits for it, as sockets do, and drops it when it is
/// closed.
class Socket : public QIODevice
{
public:
    QByteArray arrived;
    qint64 mostKept = 0;
    bool isBroken = false;

    bool isSequential() const override { return true; }
    qint64 bytesToWrite() const override { return m_kept.size(); }
    bool waitForBytesWritten(int milliseconds) override
    {
        if (isBroken || milliseconds != -1)
            return false;
        arrived += m_kept.left(100000);
        m_kept.remove(0, 100000);
        return true;
    }
    void close() override
    {
        m_kept.clear();
        QIODevice::close();
    }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        const QByteArray bytes = arrived.left(static_cast<int>(size));
        arrived.remove(0, bytes.size());
        std::copy(bytes.begin(), bytes.end(), data);
        return bytes.size();
    }
    qint64 writeData(const char* data, qint64 size) override
    {
        m_kept.append(data, static_cast<int>(size));
        mostKept = qMax<qint64>(mostKept, m_kept.size());
        return size;
    }

private:
    QByteArray m_kept;
};

QByteArray largeTable()
{
    Table table{{field("TEXT", 'C', 255)}};
    table.records.fill(' ' + QByteArray(255, 'x'), 100000); // 24 MiB, four batches
    return table.bytes();
}

using Write = std::function<bool(QSaveFile&)>;

} // namespace

Q_DECLARE_METATYPE(Write)

/// Devices onto which new tables are written, and what they do with the last bytes.
class TestTargets : public QObject
{
    Q_OBJECT

private slots:
    void socketGetsTheWholeTableOrTheCopyFails()
    {
        OpenTable source(largeTable());
        Socket socket;
        const auto isEmptied = [&](int, int) { return socket.bytesToWrite() == 0; };
        QVERIFY(source.table.copyAndTransform(&socket, identityOf(source.table), isEmptied));
        QVERIFY(!socket.isOpen() && socket.mostKept < 9000000);
        QCOMPARE(socket.arrived, source.device.content);

        Socket broken;
        broken.isBroken = true;
        QFile full("/dev/full");
        for (QIODevice* const target :
             {static_cast<QIODevice*>(&broken), static_cast<QIODevice*>(&full)}) {
            QVERIFY(!source.table.copyAndTransform(target, identityOf(source.table)));
            target->close();
            DbfTable created(target);
            QVERIFY(!created.create(source.table.schema()));
            QCOMPARE(created.lastError(), DbfTable::WriteError);
        }
    }

    void processGetsTheWholeTableAndEndsByItself()
    {
        OpenTable source(largeTable());
        QProcess process;
        process.setProgram("sh");
        process.setArguments({"-c", "sleep 0.1; cat > \"$0\"", m_folder.filePath("copy.dbf")});
        QVERIFY(source.table.copyAndTransform(&process, identityOf(source.table)));
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(readFile(m_folder.filePath("copy.dbf")), source.device.content);
    }

    void programThatEndsEarlyIsAFailure()
    {
        OpenTable source(largeTable());
        for (const char* program : {"true", "/nonexistent", "head -c 100000"}) {
            QProcess process;
            QStringList words = QString(program).split(' ');
            process.setProgram(words.takeFirst());
            process.setArguments(words);
            QVERIFY2(!source.table.copyAndTransform(&process, identityOf(source.table)), program);
            process.waitForFinished();
        }
    }

    void saveFileOfAFailureIsNeverCommitted_data()
    {
        QTest::addColumn<Write>("write");
        const auto copy = [](QSaveFile& file, const QList<int>& sources, bool goesOn, int room) {
            OpenTable source(largeTable());
            const FileSizeLimit limit(room);
            DbfSchemaTransform transform = identityOf(source.table);
            transform.sourceIndexes = sources;
            return source.table.copyAndTransform(&file, transform,
                                                 [=](int, int) { return goesOn; });
        };
        const auto whole = int(largeTable().size());
        QTest::newRow("disk full at the very end")
            << Write([=](QSaveFile& file) { return copy(file, {0}, true, whole - 1); });
        QTest::newRow("stopped") << Write(
            [=](QSaveFile& file) { return copy(file, {0}, false, whole); });
        QTest::newRow("exception") << Write([=](QSaveFile& file) {
            try {
                return copy(file, {7}, true, whole);
            } catch (const std::out_of_range&) {
                return false;
            }
        });
        QTest::newRow("create") << Write([](QSaveFile& file) {
            const FileSizeLimit limit(10);
            return DbfTable(&file).create({});
        });
    }

    void saveFileOfAFailureIsNeverCommitted()
    {
        QFETCH(Write, write);
        const QString path = m_folder.filePath("kept.dbf");
        writeFile(path, "what stood there");
        {
            QSaveFile file(path);
            QVERIFY(!write(file));
            QVERIFY(!file.commit());
        }
        QCOMPARE(readFile(path), QByteArray("what stood there"));
        QCOMPARE(QDir(m_folder.path()).entryList({"kept*"}, QDir::Files).size(), 1);
    }

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestTargets)

#include "tst_targets.moc"
