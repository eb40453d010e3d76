// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef FUZZ_FUZZING_H
#define FUZZ_FUZZING_H

#include <dbf/dbf.h>

#include <QTextCodec>
#include <QtCore/QDate>
#include <QtCore/QIODevice>

#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

/// What the harnesses share. Each draws its choices from the fuzzer's bytes and aborts when the
/// library breaks a promise.
namespace fuzzing
{

/// Ends the run, and with it shows the input to the fuzzer, unless \a kept.
inline void demand(bool kept, const char* promise)
{
    if (kept)
        return;
    std::fprintf(stderr, "Broken promise: %s\n", promise);
    std::abort();
}

/// The library never prints, so neither may Qt on its behalf.
inline void forbidMessages()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& message) {
        demand(false, qPrintable(message));
    });
}

/// A file in memory with a full disk behind it: positions beyond the end cost nothing, writes
/// beyond \a limit bytes fail.
class MemoryFile : public QIODevice
{
public:
    explicit MemoryFile(const QByteArray& bytes = {}) : content(bytes) {}

    bool open(OpenMode mode) override
    {
        if ((mode & ReadWrite) == WriteOnly)
            content.clear();
        return QIODevice::open(mode | Unbuffered);
    }
    qint64 size() const override { return content.size(); }

    QByteArray content;

protected:
    qint64 readData(char* data, qint64 size) override
    {
        const qint64 count = qBound<qint64>(0, content.size() - pos(), size);
        if (count > 0)
            std::memcpy(data, content.constData() + pos(), static_cast<size_t>(count));
        return count;
    }

    qint64 writeData(const char* data, qint64 size) override
    {
        constexpr qint64 limit = 1 << 20;
        if (pos() + size > limit)
            return -1;
        if (pos() > content.size())
            content.append(static_cast<int>(pos()) - content.size(), '\0');
        content.replace(static_cast<int>(pos()), static_cast<int>(size), data,
                        static_cast<int>(size));
        return size;
    }
};

inline QByteArray drawBytes(FuzzedDataProvider& choices, size_t maxSize)
{
    return QByteArray::fromStdString(choices.ConsumeRandomLengthString(maxSize));
}

/// Null, single-byte, multi-byte and stateful codecs.
inline QTextCodec* drawCodec(FuzzedDataProvider& choices)
{
    constexpr int mibs[] = {0, 2251, 2086, 2084, 4, 106, 18, 17, 1015};
    return QTextCodec::codecForMib(choices.PickValueInArray(mibs));
}

/// One of the library's converters, or none.
inline dbf::DbfFieldConverter* drawConverter(FuzzedDataProvider& choices)
{
    using namespace dbf;
    DbfFieldConverter* const converters[] = {
        nullptr,
        DbfStringConverter::instance(),
        DbfByteArrayConverter::instance(),
        DbfBoolConverter::instance(),
        DbfDateConverter::instance(),
        DbfDoubleConverter::instance(),
        DbfSmallIntConverter::instance(),
        DbfIntConverter::instance(),
        DbfLargeIntConverter::instance(),
        DbfBinaryDoubleConverter::instance(),
        DbfBinaryFloatConverter::instance(),
    };
    return choices.PickValueInArray(converters);
}

/// A value of any type that a caller may hand in.
inline QVariant drawValue(FuzzedDataProvider& choices)
{
    switch (choices.ConsumeIntegralInRange(0, 8)) {
    case 0:
        return choices.ConsumeIntegral<int>();
    case 1:
        return choices.ConsumeIntegral<qlonglong>();
    case 2:
        return choices.ConsumeFloatingPoint<double>();
    case 3:
        return choices.ConsumeBool();
    case 4:
        return QDate::fromJulianDay(choices.ConsumeIntegral<int>());
    case 5:
        return QString::fromUtf8(drawBytes(choices, 40));
    case 6:
        return drawBytes(choices, 300);
    case 7:
        return QVariant::fromValue(QDecNumber(drawBytes(choices, 40).constData()));
    default:
        return {};
    }
}

/// Edits \a transform at random: columns inserted, changed, moved and deleted, another codec.
inline void edit(FuzzedDataProvider& choices, dbf::DbfSchemaTransform& transform)
{
    const auto position = [&choices] { return choices.ConsumeIntegralInRange(-1, 12); };
    for (int edits = choices.ConsumeIntegralInRange(0, 8); edits > 0; --edits) {
        const dbf::DbfFieldDescriptor field(QString::fromUtf8(drawBytes(choices, 12)),
                                            static_cast<dbf::DbfFieldType>(choices.PickValueInArray(
                                                {'C', 'N', 'D', 'F', 'L', 'I'})),
                                            choices.ConsumeIntegral<quint8>(),
                                            choices.ConsumeIntegral<quint8>());
        switch (choices.ConsumeIntegralInRange(0, 5)) {
        case 0:
            transform.insertNewColumn(position(), field);
            break;
        case 1:
            transform.updateColumn(position(), field);
            break;
        case 2:
            transform.deleteColumn(position());
            break;
        case 3:
            transform.moveColumn(position(), position());
            break;
        case 4:
            transform.schema.setCodec(drawCodec(choices));
            break;
        default:
            if (!transform.schema.columns.isEmpty())
                transform.schema.columns.last().setConverter(drawConverter(choices));
        }
    }
}

/// Whether two values are the same, a NaN being the same as a NaN.
inline bool isSame(const QVariant& a, const QVariant& b)
{
    const auto isNaN = [](const QVariant& value) {
        return (value.userType() == QMetaType::Double || value.userType() == QMetaType::Float) &&
               std::isnan(value.toDouble());
    };
    return a.userType() == b.userType() && (a == b || (isNaN(a) && isNaN(b)));
}

inline bool isSame(const dbf::DbfRecord& a, const dbf::DbfRecord& b)
{
    return a.index() == b.index() && a.isDeleted() == b.isDeleted() &&
           std::equal(
               a.values.cbegin(), a.values.cend(), b.values.cbegin(), b.values.cend(),
               [](const QVariant& left, const QVariant& right) { return isSame(left, right); });
}

} // namespace fuzzing

#endif
