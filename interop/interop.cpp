// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

/// \file
/// The library's side of the comparison with other programs: writes tables for them to read, and
/// prints tables as the library reads them.

#include <dbf/dbf.h>

#include <QTextCodec>
#include <QtCore/QDate>
#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSaveFile>

#include <cstdio>

using namespace dbf;

namespace
{

DbfFieldDescriptor field(const char* name, char type, unsigned char length,
                         unsigned char decimals = 0)
{
    return {QString::fromUtf8(name), DbfFieldType(static_cast<unsigned char>(type)), length,
            decimals};
}

struct Sample {
    DbfSchema schema;
    QVector<DbfRecord> records;
    DbfTable::ConverterChoice converters = nullableConverter;
    char version = 3;
};

const QVector<DbfFieldDescriptor> everyTextType{
    field("TEXT", 'C', 20),        field("WHOLE", 'N', 6), field("PARTS", 'N', 10, 2),
    field("FLOATING", 'F', 20, 6), field("DAY", 'D', 8),   field("TRUTH", 'L', 1)};

QVector<DbfRecord> recordsOfEveryTextType(const QString& text)
{
    return {DbfRecord(-1, {text, 42, 1234.5, 0.000001, QDate(2024, 2, 29), true}),
            DbfRecord(-1, {"inner  spaces", -99999, -0.25, -1e12, QDate(1900, 1, 1), false}),
            DbfRecord(-1, {"", QVariant(), QVariant(), QVariant(), QVariant(), QVariant()}),
            DbfRecord(-1, {"0", 0, 0, 0, QDate(1970, 1, 1), false}),
            DbfRecord(-1, {"12345678901234567890", 999999, 9999999.99, 3.141593,
                           QDate(9999, 12, 31), true})};
}

Sample textTypes(int mib)
{
    const QString cyrillic =
        QStringLiteral("\u0427\u0430\u0439 \u0447\u0451\u0440\u043D\u044B\u0439");
    return {{everyTextType, QTextCodec::codecForMib(mib)}, recordsOfEveryTextType(cyrillic)};
}

/// The types of versions 0x30 and 0x31.
Sample binaryTypes()
{
    const QDateTime moment(QDate(2024, 2, 29), QTime(23, 59, 58), Qt::UTC);
    return {{{field("I", 'I', 4), field("Y", 'Y', 8, 4), field("T", 'T', 8), field("B", 'B', 8)},
             nullptr},
            {DbfRecord(-1, {-2147483647, "922337203685477.5807", moment, -1.5}),
             DbfRecord(-1, {0, 0, QVariant(), 0}),
             DbfRecord(-1, {7, -1.2345, QDate(1900, 1, 1), 1e300})},
            nullableConverter,
            0x30};
}

Sample wideTable()
{
    QVector<DbfFieldDescriptor> fields;
    QVector<QVariant> values;
    for (int i = 0; i < 250; ++i) {
        const QByteArray name = "COLUMN" + QByteArray::number(i).rightJustified(4, '0');
        fields << field(name.constData(), 'C', 255);
        values << QString(i, QLatin1Char('x')) + QString::number(i);
    }
    return {{fields, nullptr}, {DbfRecord(-1, values)}};
}

Sample sample(const QString& name)
{
    if (name == QLatin1String("windows-cyrillic"))
        return textTypes(2251);
    if (name == QLatin1String("dos-cyrillic"))
        return textTypes(2086);
    if (name == QLatin1String("default-converters"))
        return {{everyTextType, nullptr},
                {DbfRecord(-1, {"text", "42", "1234.5", 0.000001, QDate(2024, 2, 29), true}),
                 DbfRecord(-1, {"", "-7", "0.25", -1e12, QDate(1900, 1, 1), false})},
                {}};
    if (name == QLatin1String("binary"))
        return binaryTypes();
    if (name == QLatin1String("wide"))
        return wideTable();
    return {{everyTextType, nullptr}, {}};
}

/// Gives an empty table the version \a version, with the back-link area that belongs to it.
bool setVersion(QFile& file, char version)
{
    constexpr int backLinkLength = 263;
    if (!file.open(QIODevice::ReadWrite))
        return false;
    QByteArray bytes = file.readAll();
    DbfTableDescriptor header = DbfTable::parseTableDescriptor(bytes);
    bytes.chop(1); // the end marker
    header.version = static_cast<unsigned char>(version);
    header.headerLength = static_cast<unsigned short>(header.headerLength + backLinkLength);
    bytes.replace(0, 32, DbfTable::serializeTableDescriptor(header));
    const bool isWritten =
        file.seek(0) && file.write(bytes + QByteArray(backLinkLength, '\0') + '\x1A') > 0;
    file.close();
    return isWritten;
}

/// Writes the sample, its second record marked deleted when it has more than three.
bool write(const QString& name, const QString& path)
{
    const Sample content = sample(name);
    QFile file(path);
    DbfTable table(&file);
    table.setConverterChoice(content.converters);
    if (!table.create(content.schema) ||
        (content.version != 3 && !setVersion(file, content.version)))
        return false;
    return table.open(QIODevice::ReadWrite) && table.appendRecords(content.records) &&
           (content.records.size() < 4 || table.setRecordDeleted(1, true));
}

/// Writes a copy of a table: one column inserted, two widened, one moved.
bool restructure(const QString& source, const QString& path)
{
    QFile file(source);
    DbfTable table(&file);
    table.setConverterChoice(nullableConverter);
    if (!table.open(QIODevice::ReadOnly))
        return false;
    auto transform = DbfSchemaTransform::identity(table.schema());
    transform.insertNewColumn(1, nullableColumn(field("ADDED", 'D', 8)));
    transform.resizeColumn(0, 30, 0);
    transform.resizeColumn(3, 14, 3);
    transform.moveColumn(5, 0);
    QSaveFile target(path);
    return table.copyAndTransform(&target, transform) && target.commit();
}

QJsonValue json(const QVariant& value)
{
    if (value.userType() == QMetaType::QDate)
        return value.toDate().toString(Qt::ISODate);
    if (value.userType() == QMetaType::QDateTime)
        return value.toDateTime().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzz"));
    if (value.userType() == QMetaType::QByteArray)
        return QJsonObject{
            {QStringLiteral("hex"), QString::fromLatin1(value.toByteArray().toHex())}};
    return QJsonValue::fromVariant(value);
}

void print(const QJsonArray& line)
{
    std::printf("%s\n", QJsonDocument(line).toJson(QJsonDocument::Compact).constData());
}

bool fail(const QString& reason)
{
    std::fprintf(stderr, "%s\n", qPrintable(reason));
    return false;
}

void printColumns(const DbfSchema& schema)
{
    QJsonArray columns;
    for (const DbfColumn& column : schema.columns)
        columns.append(QJsonArray{column.descriptor.name,
                                  QString(QLatin1Char(static_cast<char>(column.descriptor.type)))});
    print(columns);
}

quint8 versionOf(QFile& file)
{
    char version = 0;
    return file.open(QIODevice::ReadOnly) && file.peek(&version, 1) == 1
               ? static_cast<quint8>(version)
               : 0;
}

/// A table of any program, opened the way in which nothing is lost.
struct AnyTable {
    AnyTable(const QString& path, QIODevice::OpenMode mode, QTextCodec* codec = nullptr)
        : file(path)
        , version(versionOf(file))
        , memoFile(DbfMemoFile::pathBeside(path, version))
        , memo(&memoFile, version)
        , table(&file)
    {
        file.close();
        table.setAcceptedVersions(DbfTable::AllVersions);
        table.setConverterChoice(nullableConverters(&memo));
        table.setCodecChoice(codecOfLanguageDriver);
        table.setCheckingValues(true);
        table.overrideTextCodec(codec);
        table.open(mode);
    }

    QFile file;
    quint8 version;
    QFile memoFile;
    DbfMemoFile memo;
    DbfTable table;
};

/// Changes a value of the second record, appends a copy of the first one without its memos, and
/// inserts a column.
bool change(const QString& path)
{
    AnyTable any(path, QIODevice::ReadWrite);
    DbfRecord second = any.table.readRecord(1);
    second.values[any.table.schema().indexOf(QStringLiteral("WHOLE"))] = 7;
    DbfRecord copy = any.table.readRecord(0);
    for (int i = 0; i < copy.values.size(); ++i) {
        if (any.table.schema().columns.at(i).converter == any.memo.converter())
            copy.values[i] = QVariant();
    }
    if (!any.table.updateValues(second) || !any.table.appendRecord(copy))
        return fail(any.table.errorString());
    any.table.close();

    QString error;
    const auto insert = [](DbfSchemaTransform& transform) {
        transform.insertNewColumn(1, nullableColumn(field("ADDED", 'D', 8)));
    };
    return restructureFile(path, insert, {}, &error) || fail(error);
}

/// Prints a line with the columns, [name, type letter] each, then one per record: whether it is
/// marked deleted, and its values; bytes are {"hex": digits}.
bool dump(const QString& path, QTextCodec* codec)
{
    AnyTable any(path, QIODevice::ReadOnly, codec);
    DbfTable& table = any.table;
    if (!table.isOpen())
        return fail(table.errorString());

    printColumns(table.schema());
    DbfRecordCursor cursor(table);
    while (cursor.next()) {
        QJsonArray line{cursor.isDeleted()};
        for (int i = 0; i < table.schema().columns.size(); ++i)
            line.append(json(cursor.value(i)));
        print(line);
    }
    if (!any.memo.errorString().isEmpty())
        return fail(any.memo.errorString());
    return !cursor.hasError();
}

/// Prints a line per language driver that has a codec: its number and the codec's name.
bool listCodecs()
{
    for (int id = 0; id < 256; ++id) {
        if (const QTextCodec* const codec = DbfTable::codecByLanguageDriver(id))
            print({id, QString::fromLatin1(codec->name())});
    }
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const QString command = arguments.value(0);
    const QString first = arguments.value(1);
    const QString second = arguments.value(2);
    bool done = false;
    if (command == QLatin1String("write"))
        done = write(first, second);
    else if (command == QLatin1String("restructure"))
        done = restructure(first, second);
    else if (command == QLatin1String("change"))
        done = change(first);
    else if (command == QLatin1String("dump"))
        done = dump(first, DbfTable::codecByLabel(second.toLatin1()));
    else if (command == QLatin1String("codecs"))
        done = listCodecs();
    if (!done)
        std::fprintf(
            stderr,
            "Usage: interop write SAMPLE FILE | restructure FILE FILE | change FILE | "
            "dump FILE [CODEC] | codecs\nor a table that does not open or is not written\n");
    return done ? 0 : 1;
}
