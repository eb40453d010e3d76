// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TESTS_VALUES_H
#define TESTS_VALUES_H

#include "bytes.h"

#include <dbf/dbf.h>

#include <QtTest/QtTest>

#include <limits>
#include <type_traits>

Q_DECLARE_METATYPE(dbf::DbfFieldConverter*)
Q_DECLARE_METATYPE(dbf::DbfFieldDescriptor)

/// Values as callers give them, and the tables of what becomes of them.
namespace testvalues
{

inline const QVariant none;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr qlonglong least = std::numeric_limits<qlonglong>::min();
constexpr qlonglong most = std::numeric_limits<qlonglong>::max();

inline QVariant decimal(const char* digits)
{
    return QVariant::fromValue(QDecNumber(digits));
}

/// Returns a null variant of a type, for which each Qt has a constructor of its own.
template <typename Variant = QVariant>
Variant nullOf(QMetaType::Type type)
{
    if constexpr (std::is_constructible_v<Variant, QMetaType>)
        return Variant(QMetaType(type));
    else
        return Variant(static_cast<typename Variant::Type>(type));
}

inline dbf::DbfFieldDescriptor described(char type, int length, int decimals = 0)
{
    return {"FIELD", dbf::DbfFieldType(type), static_cast<unsigned char>(length),
            static_cast<unsigned char>(decimals)};
}

inline QByteArray shown(const QVariant& value)
{
    const QString text =
        value.canConvert<QDecNumber>() ? value.value<QDecNumber>().toString() : value.toString();
    return QByteArray(value.isValid() ? value.typeName() : "none") + ' ' + text.left(40).toUtf8();
}

inline void compareVariants(const QVariant& actual, const QVariant& expected)
{
    QCOMPARE(shown(actual), shown(expected));
    QCOMPARE(actual.isNull(), expected.isNull());
    QCOMPARE(actual, expected);
}

inline void addColumns()
{
    QTest::addColumn<dbf::DbfFieldConverter*>("converter");
    QTest::addColumn<dbf::DbfFieldDescriptor>("field");
    QTest::addColumn<QVariant>("given");
    QTest::addColumn<QVariant>("expected");
}

/// Adds a row for each pair of what is given and what comes of it.
inline void addRows(dbf::DbfFieldConverter* converter, const dbf::DbfFieldDescriptor& field,
                    const QVariantList& pairs)
{
    for (int i = 0; i < pairs.size(); i += 2)
        QTest::addRow("%s %d,%d %s #%d", typeid(*converter).name(), field.length, field.decimals,
                      shown(pairs[i]).constData(), i)
            << converter << field << pairs[i] << pairs[i + 1];
}

/// Checks such a row of bytes and their value, of a value and its bytes, or of a value and what it
/// is converted to, which ends well for fields of type Y.
enum class Check { Read, Write, Convert };
inline void checkRow(Check check)
{
    QFETCH(dbf::DbfFieldConverter*, converter);
    QFETCH(dbf::DbfFieldDescriptor, field);
    QFETCH(QVariant, given);
    QFETCH(QVariant, expected);
    if (check == Check::Write) {
        QCOMPARE(converter->toByteArray(given, dbf::DbfSchema(), field), expected.toByteArray());
    } else if (check == Check::Read) {
        ExactBytes slice(given.toByteArray());
        const QVariant result = converter->toVariant(slice.view(), dbf::DbfSchema(), field);
        slice.overwrite();
        compareVariants(result, expected);
    } else {
        QCOMPARE(converter->convertVariant(given), field.type == dbf::DbfFieldType('Y'));
        compareVariants(given, expected);
    }
}

} // namespace testvalues

#endif
