// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/dbf.h>

#include <QTextCodec>
#include <QtCore/QBuffer>
#include <QtCore/QDate>
#include <QtCore/QDir>
#include <QtCore/QFile>

#include <cstdio>
#include <random>
#include <stdexcept>

using namespace dbf;

/// Writes what the fuzzers start from: makeseeds FOLDER makes one folder per harness in it.
namespace
{

void write(const QString& folder, const QString& name, const QByteArray& bytes)
{
    QFile file(folder + QLatin1Char('/') + name);
    if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly) ||
        file.write(bytes) != bytes.size())
        throw std::runtime_error("cannot write " + file.fileName().toStdString());
}

DbfSchema schemaOfEveryType(int mib)
{
    QVector<DbfFieldDescriptor> fields{
        DbfFieldDescriptor::stringField(QStringLiteral("NAME"), 12),
        DbfFieldDescriptor::numberField(QStringLiteral("AMOUNT"), 8, 2),
        DbfFieldDescriptor(QStringLiteral("BORN"), DbfFieldType::Date, 8, 0),
        DbfFieldDescriptor::floatField(QStringLiteral("RATIO"), 4),
        DbfFieldDescriptor::logicalField(QStringLiteral("SURE")),
        DbfFieldDescriptor(QStringLiteral("COUNT"), static_cast<DbfFieldType>('I'), 4, 0),
        DbfFieldDescriptor(QStringLiteral("PRICE"), static_cast<DbfFieldType>('B'), 8, 0),
    };
    return {fields, QTextCodec::codecForMib(mib)};
}

QByteArray tableOf(const DbfSchema& schema, int recordCount)
{
    QBuffer buffer;
    DbfTable table(&buffer);
    if (!table.create(schema) || !table.open(QIODevice::ReadWrite))
        throw std::runtime_error("cannot make a table");
    for (int i = 0; i < recordCount; ++i) {
        DbfRecord record = table.blankRecord(i);
        const QVariantList values{QStringLiteral("\u0410\u043D\u043D\u0430"),
                                  i * 1.25,
                                  QDate(2024, 2, 29),
                                  -0.5,
                                  i % 2 == 0,
                                  QByteArray("\x01\0\0\0", 4),
                                  QByteArray(8, '\0')};
        for (int column = 0; column < record.values.size(); ++column)
            record.values[column] = values.at(column % values.size());
        record.setDeleted(i % 3 == 1);
        if (!table.appendRecord(record))
            throw std::runtime_error("cannot append to a table");
    }
    return buffer.data();
}

/// The table with its header bytes from \a offset on replaced.
QByteArray patched(QByteArray table, int offset, const QByteArray& bytes)
{
    return table.replace(offset, bytes.size(), bytes);
}

void writeTables(const QString& folder)
{
    const QByteArray table = tableOf(schemaOfEveryType(2251), 4);
    write(folder, QStringLiteral("windows-1251"), table);
    write(folder, QStringLiteral("ibm866"), tableOf(schemaOfEveryType(2086), 2));
    write(folder, QStringLiteral("no-records"), tableOf(schemaOfEveryType(2251), 0));
    write(folder, QStringLiteral("no-columns"), tableOf({}, 3));
    write(folder, QStringLiteral("many-records"),
          tableOf({{DbfFieldDescriptor::stringField(QStringLiteral("A"), 3)}, nullptr}, 60));
    write(folder, QStringLiteral("other-code-page"), patched(table, 29, "\x26"));

    const int recordsStart = 33 + 32 * 7;
    const QByteArray longer =
        QByteArray(1, char((recordsStart + 263) & 0xFF)) + char((recordsStart + 263) >> 8);
    const QByteArray withBackLink =
        table.left(recordsStart) + QByteArray(263, '\0') + table.mid(recordsStart);
    write(folder, QStringLiteral("back-link"),
          patched(patched(withBackLink, 0, "\x30"), 8, longer));

    write(folder, QStringLiteral("claims-many-records"), patched(table, 4, "\xFF\xFF\xFF\xFF"));
    write(folder, QStringLiteral("claims-max-index"), patched(table, 4, "\xFF\xFF\xFF\x7F"));
    write(folder, QStringLiteral("claims-long-records"), patched(table, 10, "\xFF\xFF"));
    write(folder, QStringLiteral("claims-empty-records"), patched(table, 10, QByteArray(2, '\0')));
    write(folder, QStringLiteral("claims-long-header"), patched(table, 8, "\xFF\xFF"));
    write(folder, QStringLiteral("claims-short-header"),
          patched(table, 8, QByteArray("\x20\0", 2)));
    write(folder, QStringLiteral("cut"), table.left(table.size() - 20));
    write(folder, QStringLiteral("header-only"), table.left(32));
}

void writeDecimals(const QString& folder)
{
    const char* const texts[] = {"0",
                                 "-0",
                                 "41.6",
                                 "1E+9",
                                 "-1E-999999999",
                                 "NaN",
                                 "Infinity",
                                 "99999999999999999999999999999999995",
                                 ".5",
                                 "5.",
                                 "1e",
                                 "sNaN",
                                 "0.00000000000000000000000000000000000000000005"};
    int number = 0;
    for (const char* const text : texts)
        write(folder, QString::number(number++), text + QByteArray(14, '\x05'));
}

/// A memo file with \a memo in its second block of 512 bytes. Behind it stand the choices, drawn
/// from the end on: the table's version by its place in the harness, one read, of block 1.
void writeMemo(const QString& folder, const char* name, char version, const QByteArray& memo)
{
    QByteArray header(512, '\0');
    header[6] = '\x02';  // the size of blocks where the numbers are big-endian
    header[21] = '\x02'; // and where they are little-endian
    const QByteArray choices = QByteArray("\x01\x01\0", 3) + version; // block, small, one read
    write(folder, QString::fromLatin1(name), header + memo + QByteArray(14, '\0') + choices);
}

void writeMemos(const QString& folder)
{
    const QByteArray typed = QByteArray::fromHex("0000000100000003") + "abc";
    const QByteArray counted = QByteArray::fromHex("FFFF08000B000000") + "abc";
    writeMemo(folder, "typed", 0, typed);
    writeMemo(folder, "typed-picture", 0, QByteArray(typed).replace(3, 1, QByteArray(1, '\0')));
    writeMemo(folder, "typed-too-long", 4, QByteArray(typed).replace(4, 1, "\xFF"));
    writeMemo(folder, "ended", 1, "abc\x1A\x1A");
    writeMemo(folder, "not-ended", 1, "abc");
    writeMemo(folder, "counted", 2, counted);
    writeMemo(folder, "counted-too-short", 3, QByteArray(counted).replace(4, 1, "\x07"));
    writeMemo(folder, "no-layout", 5, typed);
}

// Any bytes are calls; the same ones each time.
void writeCalls(const QString& folder)
{
    std::minstd_rand random;
    for (int seed = 0; seed < 50; ++seed) {
        QByteArray calls(400, Qt::Uninitialized);
        for (char& byte : calls)
            byte = static_cast<char>(random() >> 8);
        write(folder, QString::number(seed), calls);
    }
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2) {
        std::fputs("Usage: makeseeds FOLDER\n", stderr);
        return 2;
    }
    try {
        const QString folder = QFile::decodeName(arguments[1]);
        writeTables(folder + QStringLiteral("/fuzz_table"));
        writeTables(folder + QStringLiteral("/fuzz_file"));
        write(folder + QStringLiteral("/fuzz_roundtrip"), QStringLiteral("zeros"),
              QByteArray(100, '\0'));
        writeDecimals(folder + QStringLiteral("/fuzz_decimal"));
        writeMemos(folder + QStringLiteral("/fuzz_memo"));
        writeCalls(folder + QStringLiteral("/fuzz_plainfile"));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "makeseeds: %s\n", failure.what());
        return 1;
    }
    return 0;
}
