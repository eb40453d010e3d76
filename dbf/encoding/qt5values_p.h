// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_ENCODING_QT5VALUES_P_H
#define DBF_ENCODING_QT5VALUES_P_H

#include <QtCore/QByteArray>
#include <QtCore/QDate>
#include <QtCore/QString>
#include <QtCore/QVariant>

// A table holds the same bytes whichever Qt the library is built with, and that is what Qt 5.15
// makes of a value: where Qt 6 converts otherwise, it is not asked. This is the one place that
// knows the version of Qt.
namespace dbf::qt5
{

#if QT_VERSION_MAJOR >= 6

/// Returns what \a value is as text, QVariant::toString().
QString toText(const QVariant& value);

/// Returns what \a value is as bytes, QVariant::toByteArray().
QByteArray toBytes(const QVariant& value);

bool toBool(const QVariant& value);
int toInt(const QVariant& value);
qlonglong toLongLong(const QVariant& value);
QDate toDate(const QVariant& value);

/// Returns the number that \a text is, infinity when it is too large, 0 when it is none.
double toDouble(const QByteArray& text);

/// Returns the text in \a bytes, which ends at the first zero byte.
QString fromUtf8(const QByteArray& bytes);

/// Whether \a value holds nothing, or a null text, array, date or time.
bool isNull(const QVariant& value);

/// Makes \a value one of \a type, QVariant::convert(). Several threads may make the first
/// conversion of the process at once.
bool convert(QVariant& value, int type);

#else

inline QString toText(const QVariant& value)
{
    return value.toString();
}

inline QByteArray toBytes(const QVariant& value)
{
    return value.toByteArray();
}

inline bool toBool(const QVariant& value)
{
    return value.toBool();
}

inline int toInt(const QVariant& value)
{
    return value.toInt();
}

inline qlonglong toLongLong(const QVariant& value)
{
    return value.toLongLong();
}

inline QDate toDate(const QVariant& value)
{
    return value.toDate();
}

inline double toDouble(const QByteArray& text)
{
    return text.toDouble();
}

inline QString fromUtf8(const QByteArray& bytes)
{
    return QString::fromUtf8(bytes);
}

inline bool isNull(const QVariant& value)
{
    return value.isNull();
}

inline bool convert(QVariant& value, int type)
{
    // What Qt 5 registers by its first one, it registers once for each of these threads, and
    // prints a warning about all but one of them.
    [[maybe_unused]] static const bool registered = QVariant(0).canConvert(QMetaType::QString);
    return value.convert(type);
}

#endif

} // namespace dbf::qt5

#endif
