// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_GIVENVALUE_P_H
#define DBF_CONVERTERS_GIVENVALUE_P_H

#include <dbf/encoding/decimaltext_p.h>

#include <QtCore/QDate>
#include <QtCore/QVarLengthArray>
#include <QtCore/QVariant>

namespace dbf
{

// What a value of any type means to a field whose blank means "no value". Qt's own conversions are
// not asked for numbers and dates: they differ between its versions, and give 0 for what is none.

/// What a value is to a type of field.
enum class Given : quint8 {
    Value,   ///< A value of the type.
    Nothing, ///< None at all: an invalid or null variant, a blank text.
    Other,   ///< Something that the type does not hold.
};

/// Returns what a variant of that very type holds.
template <typename Type>
const Type& held(const QVariant& value)
{
    return *static_cast<const Type*>(value.constData());
}

/// A number digit by digit: a number of any type, a bool, a decimal, or a text that is one.
class GivenNumber
{
public:
    explicit GivenNumber(const QVariant& value);
    Q_DISABLE_COPY(GivenNumber)

    Given given() const { return m_given; }
    bool isInfinite() const { return m_given == Given::Value && !m_digits; }
    bool isNegative() const { return m_negative; }

    /// Returns the digits of a number that is neither missing nor infinite; as long as this lives.
    const DecimalText& digits() const { return *m_digits; }

private:
    void setText(const QVariant& value);
    void setDigits(std::string_view text);
    template <typename Number>
    void setFloating(Number number);

    QVarLengthArray<char, 48> m_text;
    std::optional<DecimalText> m_digits;
    Given m_given = Given::Value;
    bool m_negative = false;
};

/// A date and the time of its day, without a time zone.
struct GivenClock {
    Given given = Given::Value;
    QDate date;
    int milliseconds = 0; ///< Since midnight.
};

/// Returns the date of a date, of a date-time (the one that it shows), or of a text `20240229` or
/// `2024-02-29`, if it is one of the years 1 to 9999.
GivenClock givenDate(const QVariant& value);

/// Returns what a date-time shows, whatever its time spec, and even where local time left it out;
/// or a date's midnight, or the clock of an ISO text, whose zone counts for nothing.
GivenClock givenClock(const QVariant& value);

struct GivenTruth {
    Given given = Given::Value;
    bool truth = false;
};

/// Returns whether a number is other than zero, or which of t, f, y, n, true, false, yes, no, 1 and
/// 0 a text is.
GivenTruth givenTruth(const QVariant& value);

struct GivenText {
    Given given = Given::Value;
    QString text;
};

/// Returns the text of a value for a field of \a length places. Numbers are their shortest text, or
/// written into the field as into a number field where that is too long; dates are ISO texts, or
/// eight digits below ten places; bools are T and F.
GivenText givenText(const QVariant& value, int length);

/// Returns whether \a date is of the years 1 to 9999, which the fields hold.
inline bool isStorable(const QDate& date)
{
    constexpr qint64 firstDay = 1721426;
    constexpr qint64 lastDay = 5373484;
    const qint64 day = date.toJulianDay();
    return day >= firstDay && day <= lastDay;
}

} // namespace dbf

#endif
