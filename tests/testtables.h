// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TESTS_TESTTABLES_H
#define TESTS_TESTTABLES_H

#include "recordingdevice.h"

#include <dbf/dbf.h>

#include <QTextCodec>
#include <QtCore/QFile>

#include <stdexcept>

/// Table files made byte by byte, without the library's help.
namespace testtables
{

inline QByteArray littleEndian(quint32 value, int size)
{
    QByteArray bytes;
    for (int i = 0; i < size; ++i)
        bytes.append(static_cast<char>(value >> (8 * i) & 0xFF));
    return bytes;
}

inline QByteArray header(quint32 recordCount, int headerLength, int recordLength,
                         int version = 0x03, int codePage = 0xC9)
{
    return char(version) + QByteArray(3, '\0') + littleEndian(recordCount, 4) +
           littleEndian(quint32(headerLength), 2) + littleEndian(quint32(recordLength), 2) +
           QByteArray(17, '\0') + char(codePage) + QByteArray(2, '\0');
}

inline QByteArray field(const QByteArray& name, char type, int length, int decimals = 0)
{
    return name.leftJustified(11, '\0') + type + QByteArray(4, '\0') + char(length) +
           char(decimals) + QByteArray(14, '\0');
}

struct Table {
    QVector<QByteArray> fields;
    QVector<QByteArray> records = {}; ///< Whole images, deletion flag included.
    int version = 0x03;
    int codePage = 0xC9;
    QByteArray backLink = {}; ///< What stands between the terminator and the records.

    QByteArray bytes() const
    {
        int recordLength = 1;
        for (const QByteArray& descriptor : fields)
            recordLength += quint8(descriptor.at(16));
        const auto headerLength = int(33 + 32 * fields.size() + backLink.size());
        QByteArray file =
            header(quint32(records.size()), headerLength, recordLength, version, codePage);
        file += fields.toList().join() + '\x0D' + backLink;
        return file + records.toList().join() + '\x1A';
    }
};

/// Three records of 11 bytes from byte 129 on, the second one deleted; Windows Cyrillic.
inline Table sample()
{
    return {{field("NAME", 'C', 5), field("SURE", 'L', 1), field("AMOUNT", 'N', 4, 1)},
            {" \xC0\xED\xED\xE0 T 1.5", "*Bob  F  20", " Carl T   3"}};
}

/// A new row for the sample table.
inline dbf::DbfRecord newRecord(int index)
{
    return {index, {QStringLiteral("\u0415\u0432\u0430"), false, QStringLiteral("2.50")}};
}

inline dbf::DbfSchemaTransform identityOf(const dbf::DbfTable& table)
{
    return dbf::DbfSchemaTransform::identity(table.schema());
}

/// The codec of that IANA MIB number: 2251 for Windows Cyrillic, 2086 for DOS Cyrillic.
inline QTextCodec* codec(int mib)
{
    return QTextCodec::codecForMib(mib);
}

/// A table on a device of its own, opened, the log cleared.
struct OpenTable {
    explicit OpenTable(const QByteArray& bytes, QIODevice::OpenMode mode = QIODevice::ReadWrite)
        : device(bytes), table(&device)
    {
        table.open(mode);
        device.clearLog();
    }

    RecordingDevice device;
    dbf::DbfTable table;
};

/// A table in a file, opened as Qt opens files by default.
struct OpenFile {
    explicit OpenFile(const QString& path, QIODevice::OpenMode mode = QIODevice::ReadWrite)
        : file(path), table(&file)
    {
        table.open(mode);
    }

    QFile file;
    dbf::DbfTable table;
};

/// A caller's own converter: passes bytes through, notes what it is given, throws when told to.
class SpyConverter : public dbf::DbfFieldConverter
{
public:
    bool throwing = false;
    mutable QByteArrayList calls; ///< "read <bytes> FIELD 2251", the codec by its MIB number.

    QByteArray toByteArray(const QVariant& value, const dbf::DbfSchema& schema,
                           const dbf::DbfFieldDescriptor& field) const override
    {
        return note("write <" + value.toByteArray() + "> ", schema, field), value.toByteArray();
    }

    QVariant toVariant(const QByteArray& bytes, const dbf::DbfSchema& schema,
                       const dbf::DbfFieldDescriptor& field) const override
    {
        return note("read <" + bytes + "> ", schema, field),
               QByteArray(bytes.constData(), bytes.size());
    }

    bool convertVariant(QVariant& value) const override
    {
        calls << "convert <" + value.toByteArray() + '>';
        return false;
    }

private:
    void note(const QByteArray& call, const dbf::DbfSchema& schema,
              const dbf::DbfFieldDescriptor& field) const
    {
        if (throwing)
            throw std::runtime_error("the converter was told to throw");
        calls << call + field.name.toLatin1() + ' ' + QByteArray::number(schema.codec->mibEnum());
    }
};

inline void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("cannot write a file of the test");
}

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace testtables

#endif
