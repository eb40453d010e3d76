// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_DECIMAL_QDECNUMBER_H
#define DBF_DECIMAL_QDECNUMBER_H

#include <dbf/dbfexport.h>

#include <QtCore/QMetaType>
#include <QtCore/QString>

#include <array>
#include <cstring>
#include <optional>
#include <type_traits>

class QDecContext;

/// A decimal number that keeps its digits as they were written: "1.50" stays "1.50".
///
/// A finite number is a sign, a coefficient of 1 to 34 decimal digits and an exponent of ten. The
/// adjusted exponent, that of the first digit, is at most 999,999,999. The exponent itself is at
/// least -1,000,000,032, so 34 digits fit down to an adjusted exponent of -999,999,999 and fewer
/// below it. Zeros have a sign and an exponent too. Infinities and NaNs complete the type.
///
/// A plain value: trivially copied and destroyed, no heap memory, no shared state, no failure
/// other than NaN.
class DBFTABLE_EXPORT QDecNumber
{
public:
    /// The digits a coefficient has at most.
    static constexpr int MaxDigits = 34;

    /// Room that every number's text fits in, the terminating NUL included.
    static constexpr int TextSize = 48;

    /// Makes a zero with a positive sign and exponent 0.
    QDecNumber() = default;

    /// Makes the number `value` with exponent 0.
    QDecNumber(int value);

    /// Reads a number from NUL-terminated text.
    ///
    /// Accepted, in upper or lower case and with an optional sign: digits with at most one point
    /// anywhere among or around them and an optional exponent ("41.6", "-0", ".5", "5.", "1E+9"),
    /// "Inf", "Infinity", "NaN" and "sNaN". Anything else gives NaN: null, empty text, white space
    /// in any place, digits other than 0 to 9, a NaN with a payload.
    ///
    /// More than 34 digits, leading zeros not counted, are rounded half up to 34. A number too
    /// large gives an infinity of its sign, one too small is rounded half up to the smallest
    /// exponent, which may leave a zero of its sign. The exponent of a zero is moved into the range
    /// -1,000,000,032 to 999,999,999. Takes time linear in the length of the text.
    explicit QDecNumber(const char* text);

    /// Reads a number from `text`, all of it, by the same rules.
    explicit QDecNumber(const QString& text);

    /// Returns whether this is a NaN, quiet or signaling.
    bool isNaN() const { return m_kind == Kind::QuietNaN || m_kind == Kind::SignalingNaN; }

    /// Returns whether this is an infinity of either sign.
    bool isInfinite() const { return m_kind == Kind::Infinity; }

    /// Returns whether this is a finite number with coefficient 0, whatever its sign and exponent.
    bool isZero() const { return m_kind == Kind::Finite && m_digits[0] == 0; }

    /// Returns whether the sign is negative; negative zeros, infinities and NaNs count.
    bool isNegative() const { return m_negative; }

    /// Returns the text of the number, which gives the same number when read back.
    ///
    /// Plain notation when the exponent is at most 0 and the adjusted exponent at least -6, else
    /// scientific with one digit before the point and a signed exponent: "-0.00", "1.5E+9", "1E-7".
    /// The others are "Infinity", "NaN" and "sNaN", with a leading "-" when negative.
    QString toString() const;

    /// Returns whether both are the same: kind, sign, digits and exponent. So 1.5 is not 1.50, -0
    /// is not 0, and a NaN is equal to itself.
    friend bool operator==(const QDecNumber& a, const QDecNumber& b)
    {
        return std::memcmp(&a, &b, sizeof(QDecNumber)) == 0;
    }

    /// Returns whether the two differ in any of these.
    friend bool operator!=(const QDecNumber& a, const QDecNumber& b) { return !(a == b); }

private:
    enum class Kind : quint8 { Finite, Infinity, QuietNaN, SignalingNaN };

    static constexpr qint32 MaxExponent = 999'999'999;
    static constexpr qint32 MinExponent = -MaxExponent - (MaxDigits - 1);

    explicit QDecNumber(Kind kind, bool negative = false) : m_kind(kind), m_negative(negative) {}

    template <typename Reader>
    static QDecNumber read(Reader text);
    void setRounded(const quint8* digits, int digitCount, qint64 keptCount, qint32 exponent);
    qint32 adjustedExponent() const { return m_exponent + m_digitCount - 1; }
    QDecNumber rescaled(const QDecNumber& exponent, int maxDigits) const;
    std::optional<qint64> toInteger() const;
    void write(char* text) const;

    friend DBFTABLE_EXPORT QDecNumber* decNumberRescale(QDecNumber* result,
                                                        const QDecNumber* number,
                                                        const QDecNumber* exponent,
                                                        QDecContext* context);
    friend DBFTABLE_EXPORT qint32 decNumberToInt32(const QDecNumber* number, QDecContext* context);
    friend DBFTABLE_EXPORT char* decNumberToString(const QDecNumber* number, char* text);

    // The digits' values, the most significant first. The first is 0 only in zero, which has one
    // digit; isZero() and the adjusted exponent rely on that.
    std::array<quint8, MaxDigits> m_digits = {};
    quint8 m_digitCount = 1;
    Kind m_kind = Kind::Finite;
    bool m_negative = false;
    std::array<quint8, 3> m_padding = {};
    qint32 m_exponent = 0;
};

// Variants that hold numbers are compared by memory. Unused digits are always 0.
static_assert(std::has_unique_object_representations_v<QDecNumber>);

Q_DECLARE_TYPEINFO(QDecNumber, Q_MOVABLE_TYPE);
Q_DECLARE_METATYPE(QDecNumber)

#endif
