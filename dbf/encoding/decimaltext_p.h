// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_ENCODING_DECIMALTEXT_P_H
#define DBF_ENCODING_DECIMALTEXT_P_H

#include <QtCore/QtGlobal>

#include <array>
#include <optional>
#include <string_view>

namespace dbf
{

/// A decimal number of any length, digit by digit: what it is made from is neither rounded nor
/// turned into a binary number. A view of its text, which must outlive it.
class DecimalText
{
public:
    /// Reads all of \a text: an optional sign, digits around at most one point or comma, an
    /// optional exponent. Gives nothing for anything else, white space included.
    static std::optional<DecimalText> read(std::string_view text);

    bool isNegative() const { return m_negative; }

    bool isZero() const { return m_isZero; }

    /// Returns how many digits stand before the point, leading zeros not counted.
    qint64 wholeDigits() const { return m_wholeDigits; }

    /// Returns the digit that counts 10 to the power of \a power, '0' beyond both ends.
    char digit(qint64 power) const;

private:
    std::string_view m_whole;    // the digits before the point of the text
    std::string_view m_fraction; // the ones behind it
    qint64 m_firstPower = 0;     // of the first of these digits, with the exponent
    qint64 m_wholeDigits = 0;
    bool m_isZero = true;
    bool m_negative = false;
};

/// The shortest text that reads as one number and no other of its type, with one digit before the
/// point and an exponent.
class ShortestText
{
public:
    /// Takes a finite number.
    explicit ShortestText(double number);
    explicit ShortestText(float number);

    std::string_view text() const { return {m_text.data(), m_size}; }

private:
    std::array<char, 32> m_text;
    size_t m_size;
};

// Writing a number field: right-justified, with \a decimals rounded half away from zero. Where it
// has no room for that, the zero before the point goes first and then the decimals, one by one. A
// number whose whole digits have no room fills the field with asterisks. A zero has no sign.

void writeDecimalField(const DecimalText& number, int decimals, char* field, int width);

/// Writes as above the number that \a magnitude and \a negative make.
void writeIntegerField(quint64 magnitude, bool negative, int decimals, char* field, int width);

/// Writes as above the shortest text of \a number, which must be finite.
void writeShortestField(double number, int decimals, char* field, int width);

/// Returns \a number in units of its decimal number \a decimals, rounded half away from zero; the
/// nearest limit where 64 bits do not hold it.
qint64 unitsOfDecimal(const DecimalText& number, int decimals);

/// Returns the nearest double of a text that DecimalText reads, nothing when it is too large.
std::optional<double> nearestDouble(std::string_view text);

} // namespace dbf

#endif
