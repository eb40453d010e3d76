// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_FIELDRULES_P_H
#define DBF_CONVERTERS_FIELDRULES_P_H

#include <dbf/converters/dbfbinarydoubleconverter.h>
#include <dbf/converters/dbfbinaryfloatconverter.h>
#include <dbf/converters/dbfboolconverter.h>
#include <dbf/converters/dbfdateconverter.h>
#include <dbf/converters/dbfdoubleconverter.h>
#include <dbf/converters/dbfintconverter.h>
#include <dbf/converters/dbflargeintconverter.h>
#include <dbf/converters/dbfsmallintconverter.h>
#include <dbf/converters/dbfstringconverter.h>
#include <dbf/decimal/decimalvalue_p.h>
#include <dbf/encoding/binarynumber_p.h>
#include <dbf/encoding/bytes_p.h>
#include <dbf/encoding/datetext_p.h>
#include <dbf/encoding/numbertext_p.h>
#include <dbf/encoding/qt5values_p.h>
#include <dbf/encoding/text_p.h>

#include <string_view>

namespace dbf
{

/// What a rule needs to know of the field that it reads or writes.
struct FieldContext {
    const TextCodec* codec; ///< Null for rules without text.
    int length;             ///< In bytes.
    int decimals;
};

/// Returns a variant that holds \a text, without touching its reference count.
inline QVariant textVariant(QString&& text)
{
    QVariant value{QString()};
    // data() would look for others who share a value made on the line above.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    static_cast<QString*>(const_cast<void*>(value.constData()))->swap(text);
    return value;
}

// How each kind of field is stored: one rule a kind, which its converter and the loops over whole
// records both call, so that it is decided in one place what a table holds.
//
//     Converter       the class whose shared object has that rule
//     isText          whether it needs a codec
//     size(length)    the bytes written into a field of that length, always
//     read, write     between bytes and value; write fills size() bytes
//     convert         what convertVariant() does
//     blank           what defaultBytes() gives, where that is not spaces

struct TextRule {
    using Converter = DbfStringConverter;
    static constexpr bool isText = true;
    static int size(int length) { return length; }
    static QVariant read(std::string_view bytes, const FieldContext& field)
    {
        return textVariant(field.codec->decode(bytes));
    }
    static void write(const QVariant& value, const FieldContext& field, char* bytes)
    {
        if (value.userType() == QMetaType::QString) {
            field.codec->writeField(*static_cast<const QString*>(value.constData()), bytes,
                                    field.length);
            return;
        }
        prepareDateText(value);
        field.codec->writeField(qt5::toText(value), bytes, field.length);
    }
    static bool convert(QVariant& value)
    {
        prepareDateText(value);
        return qt5::convert(value, QMetaType::QString);
    }
};

struct LogicalRule {
    using Converter = DbfBoolConverter;
    static constexpr bool isText = false;
    static int size(int /*length*/) { return sizeof(char); }
    static QVariant read(std::string_view bytes, const FieldContext& /*field*/)
    {
        constexpr char caseBit = 0x20;
        const char letter = bytes.empty() ? '\0' : static_cast<char>(bytes.front() & ~caseBit);
        return letter == 'T' || letter == 'Y';
    }
    static void write(const QVariant& value, const FieldContext& /*field*/, char* bytes)
    {
        *bytes = qt5::toBool(value) ? 'T' : 'F';
    }
    static bool convert(QVariant& value)
    {
        if (const std::optional<QDecNumber> number = decimalValue(value)) {
            value = !number->isZero();
            return true;
        }
        return qt5::convert(value, QMetaType::Bool);
    }
};

struct NumberRule {
    using Converter = DbfDoubleConverter;
    static constexpr bool isText = false;
    static int size(int length) { return length; }
    static QVariant read(std::string_view bytes, const FieldContext& /*field*/)
    {
        return readNumber(bytes);
    }
    static void write(const QVariant& value, const FieldContext& field, char* bytes)
    {
        writeNumberField(floatingValue<double>(value), field.decimals, bytes, field.length);
    }
    static bool convert(QVariant& value) { return qt5::convert(value, QMetaType::Double); }
    static QByteArray blank(int length)
    {
        return QByteArrayLiteral("0.0").rightJustified(length, ' ', true);
    }
};

struct DateRule {
    using Converter = DbfDateConverter;
    static constexpr bool isText = false;
    static int size(int length) { return length; }
    static QVariant read(std::string_view bytes, const FieldContext& /*field*/)
    {
        return readDate(bytes);
    }
    static void write(const QVariant& value, const FieldContext& field, char* bytes)
    {
        writeDateField(qt5::toDate(value), bytes, field.length);
    }
    static bool convert(QVariant& value) { return qt5::convert(value, QMetaType::QDate); }
    static QByteArray blank(int length)
    {
        return QByteArrayLiteral("19000101").leftJustified(length, ' ', true);
    }
};

/// What the binary numbers have in common: little-endian, of a size of their own, blank as zero
/// bytes. \a Type says how values become a Number and a Number becomes a value.
template <typename Number, typename Type>
struct BinaryRule {
    static constexpr bool isText = false;
    static int size(int /*length*/) { return sizeof(Number); }
    static QVariant read(std::string_view bytes, const FieldContext& /*field*/)
    {
        const std::optional<Number> number = readBinary<Number>(bytes);
        return number ? Type::valueOf(*number) : QVariant();
    }
    static void write(const QVariant& value, const FieldContext& /*field*/, char* bytes)
    {
        qToLittleEndian(Type::numberOf(value), bytes);
    }
    static QByteArray blank(int length) { return QByteArray(length, '\0'); }
};

struct SmallIntRule : BinaryRule<qint16, SmallIntRule> {
    using Converter = DbfSmallIntConverter;
    static QVariant valueOf(qint16 number) { return int(number); }
    static qint16 numberOf(const QVariant& value) { return static_cast<qint16>(qt5::toInt(value)); }
    static bool convert(QVariant& value)
    {
        if (const std::optional<QDecNumber> number = decimalValue(value)) {
            value = int(static_cast<qint16>(decimalToInt(*number)));
            return true;
        }
        return qt5::convert(value, QMetaType::Short);
    }
};

struct IntRule : BinaryRule<qint32, IntRule> {
    using Converter = DbfIntConverter;
    static QVariant valueOf(qint32 number) { return number; }
    static qint32 numberOf(const QVariant& value) { return qt5::toInt(value); }
    static bool convert(QVariant& value)
    {
        if (const std::optional<QDecNumber> number = decimalValue(value)) {
            value = decimalToInt(*number);
            return true;
        }
        return qt5::convert(value, QMetaType::Int);
    }
};

struct LargeIntRule : BinaryRule<qint64, LargeIntRule> {
    using Converter = DbfLargeIntConverter;
    static QVariant valueOf(qint64 number) { return number; }
    static qint64 numberOf(const QVariant& value) { return qt5::toLongLong(value); }
    static bool convert(QVariant& value)
    {
        if (const std::optional<QDecNumber> number = decimalValue(value)) {
            value = decimalToLongLong(*number);
            return true;
        }
        return qt5::convert(value, QMetaType::LongLong);
    }
};

struct BinaryDoubleRule : BinaryRule<double, BinaryDoubleRule> {
    using Converter = DbfBinaryDoubleConverter;
    static QVariant valueOf(double number) { return number; }
    static double numberOf(const QVariant& value) { return floatingValue<double>(value); }
    static bool convert(QVariant& value) { return qt5::convert(value, QMetaType::Double); }
};

struct BinaryFloatRule : BinaryRule<float, BinaryFloatRule> {
    using Converter = DbfBinaryFloatConverter;
    static QVariant valueOf(float number) { return number; }
    static float numberOf(const QVariant& value) { return floatingValue<float>(value); }
    static bool convert(QVariant& value) { return qt5::convert(value, QMetaType::Double); }
};

} // namespace dbf

#endif
