// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/givenvalue_p.h>
#include <dbf/converters/plainlykept_p.h>
#include <dbf/converters/valuechecker_p.h>
#include <dbf/model/samevalue_p.h>

#include <QTextCodec>

#include <array>
#include <cmath>
#include <limits>
#include <string>

namespace dbf
{

namespace
{

using Reason = DbfValueProblem::Reason;
using Problem = std::optional<Reason>;

constexpr int longestField = 255; // bytes
constexpr int manyDecimals = 60;  // by which numbers that are not rounded are compared
constexpr int exactDigits = 15;   // that a double always keeps

using Case = ValueInField;

bool isFloating(const QVariant& value)
{
    return value.userType() == QMetaType::Double || value.userType() == QMetaType::Float;
}

/// What the rule would store.
template <typename Rule>
class Stored
{
public:
    explicit Stored(const Case& c) : m_size(Rule::size(c.field.length))
    {
        Rule::write(c.value, c.field, m_bytes.data());
    }
    std::string_view bytes() const { return {m_bytes.data(), static_cast<size_t>(m_size)}; }

private:
    std::array<char, longestField + 1> m_bytes;
    int m_size;
};

/// The digits of \a number with so many decimals, as long as they need to be.
std::string rounded(const DecimalText& number, int decimals)
{
    constexpr int signAndPoint = 3; // and a zero before it
    std::string text(
        static_cast<size_t>(std::max<qint64>(number.wholeDigits(), 0) + decimals + signAndPoint),
        ' ');
    writeDecimalField(number, decimals, text.data(), static_cast<int>(text.size()));
    return text.substr(text.find_first_not_of(' '));
}

/// Whether \a found, which a field stores, is a number that is \a expected with so many decimals.
bool isStoredAs(const std::string& expected, const std::optional<DecimalText>& found, int decimals)
{
    if (!found)
        return false;
    const std::string text = rounded(*found, decimals);
    return text == expected;
}

bool isSameNumber(const DecimalText& a, const DecimalText& b)
{
    return rounded(a, manyDecimals) == rounded(b, manyDecimals);
}

/// Whether \a number is too long to be written out: its whole digits exceed every field.
bool isBeyondFields(const GivenNumber& number)
{
    return number.isInfinite() || number.digits().wholeDigits() > longestField;
}

int significantDigits(const std::string& digits)
{
    const size_t first = digits.find_first_of("123456789");
    const size_t last = digits.find_last_of("123456789");
    const size_t point = digits.find('.');
    return static_cast<int>(last - first + 1 - (point > first && point < last ? 1 : 0));
}

/// What is wrong with a value where a number is due, apart from its size. \a keepsNothing tells
/// whether the field can say that there is none.
Problem kindProblem(const GivenNumber& number, bool keepsNothing)
{
    switch (number.given()) {
    case Given::Other:
        return Reason::NotOfType;
    case Given::Nothing:
        return keepsNothing ? Problem() : Reason::Changed;
    case Given::Value:
        break;
    }
    return isBeyondFields(number) ? Reason::TooLarge : Problem();
}

/// Whether \a found is as near to \a expected as a double rounds it.
bool isRoundedAlike(const std::string& expected, std::string_view found, int decimals)
{
    const std::optional<double> one = nearestDouble(expected);
    const std::optional<double> other = nearestDouble(found);
    return one && other && std::abs(*one - *other) <= 1.5 * std::pow(10.0, -decimals);
}

/// What is wrong with a number that is stored as text.
Problem numberTextProblem(const Case& c, std::string_view stored, bool keepsNothing)
{
    const GivenNumber number(c.value);
    if (const Problem problem = kindProblem(number, keepsNothing))
        return problem;
    if (number.given() == Given::Nothing)
        return std::nullopt;
    const std::string expected = rounded(number.digits(), c.field.decimals);
    const std::string_view found = trimmedAscii(untilZero(stored));
    const std::optional<DecimalText> digits = DecimalText::read(found);
    if (isStoredAs(expected, digits, c.field.decimals))
        return std::nullopt;
    if (static_cast<int>(expected.size()) > c.field.length)
        return Reason::TooLarge;
    const bool isShort = isFloating(c.value) || significantDigits(expected) <= exactDigits;
    return isShort && digits && isRoundedAlike(expected, found, c.field.decimals) ? Problem()
                                                                                  : Reason::Changed;
}

/// What is wrong with text, which \a decoded shows as it would read back.
Problem textProblem(QStringView content, const FieldContext& field, bool isPadded)
{
    if (field.codec->writesExactly(content, field.length))
        return std::nullopt;
    if (content.contains(QChar(0)))
        return Reason::Changed;
    const QByteArray bytes = field.codec->encode(content);
    const QString back =
        isPadded ? field.codec->decodePadded(viewOf(bytes)) : field.codec->decode(viewOf(bytes));
    if (back != content)
        return Reason::NotInCodePage;
    return bytes.size() > field.length ? Reason::TooLong : Problem();
}

/// The text that the default converter makes of a value; nothing where it loses the value.
std::optional<QString> textOf(const QVariant& value)
{
    if (value.userType() == QMetaType::QByteArray) {
        const QByteArray bytes = value.toByteArray();
        const QString text = qt5::fromUtf8(bytes);
        return text.toUtf8() == bytes ? std::optional(text) : std::nullopt;
    }
    QVariant copy = value;
    if (qt5::isNull(value))
        return QString();
    return TextRule::convert(copy) ? std::optional(copy.toString()) : std::nullopt;
}

Problem problemIn(TextRule, const Case& c)
{
    const std::optional<QString> text =
        c.value.userType() == QMetaType::QString ? c.value.toString() : textOf(c.value);
    if (!text)
        return Reason::Changed;
    if (c.descriptor.type == DbfFieldType::Numeric && !text->trimmed().isEmpty()) {
        const GivenNumber number{QVariant(*text)};
        if (const Problem problem = kindProblem(number, true))
            return problem;
        const QByteArray kept = text->left(c.field.length).toLatin1();
        const std::optional<DecimalText> stored = DecimalText::read(trimmedAscii(viewOf(kept)));
        if (!stored || !isSameNumber(*stored, number.digits()))
            return Reason::TooLarge;
        return std::nullopt;
    }
    const QStringView content = QStringView(*text).trimmed();
    if (!content.isEmpty() && content.data() != text->data())
        return Reason::Changed;
    return textProblem(content, c.field, false);
}

Problem problemIn(NullableTextRule, const Case& c)
{
    const GivenText given = givenText(c.value, c.field.length);
    switch (given.given) {
    case Given::Nothing:
        return std::nullopt;
    case Given::Other:
        return Reason::NotOfType;
    case Given::Value:
        break;
    }
    const int type = c.value.userType();
    if (type != QMetaType::QString && type != QMetaType::QDate && type != QMetaType::QDateTime &&
        givenText(c.value, longestField).text != given.text) // A number was made shorter.
        return Reason::TooLong;
    QStringView content(given.text);
    while (!content.isEmpty() && content.back() == QLatin1Char(' '))
        content.chop(1);
    return textProblem(content, c.field, true);
}

Problem problemIn(NumberRule, const Case& c)
{
    return numberTextProblem(c, Stored<NumberRule>(c).bytes(), false);
}

Problem problemIn(NullableNumberRule, const Case& c)
{
    return numberTextProblem(c, Stored<NullableNumberRule>(c).bytes(), true);
}

template <typename Rule>
Problem truthProblem(Rule, const Case& c, bool keepsNothing)
{
    const GivenTruth given = givenTruth(c.value);
    if (given.given == Given::Other)
        return Reason::NotOfType;
    if (given.given == Given::Nothing)
        return keepsNothing ? Problem() : Reason::Changed;
    const QVariant back = Rule::read(Stored<Rule>(c).bytes(), c.field);
    return back.isValid() && back.toBool() == given.truth ? Problem() : Reason::Changed;
}

Problem problemIn(LogicalRule rule, const Case& c)
{
    return truthProblem(rule, c, false);
}

Problem problemIn(NullableLogicalRule rule, const Case& c)
{
    return truthProblem(rule, c, true);
}

bool isDateBeyondFields(const QVariant& value)
{
    const bool isDate =
        value.userType() == QMetaType::QDate || value.userType() == QMetaType::QDateTime;
    return isDate && value.toDate().isValid() && !isStorable(value.toDate());
}

template <typename Rule>
Problem dateProblem(Rule, const Case& c)
{
    if (isDateBeyondFields(c.value))
        return Reason::TooLarge;
    const GivenClock given = givenClock(c.value);
    const GivenClock date = givenDate(c.value);
    if (given.given == Given::Nothing || date.given == Given::Nothing)
        return std::nullopt;
    if (given.given == Given::Other && date.given == Given::Other)
        return Reason::NotOfType;
    const bool losesTime = given.given == Given::Value && given.milliseconds != 0;
    const QDate back = Rule::read(Stored<Rule>(c).bytes(), c.field).toDate();
    const QDate expected = date.given == Given::Value ? date.date : given.date;
    return !losesTime && back == expected ? Problem() : Reason::Changed;
}

Problem problemIn(DateRule rule, const Case& c)
{
    return dateProblem(rule, c);
}

Problem problemIn(NullableDateRule rule, const Case& c)
{
    return dateProblem(rule, c);
}

Problem problemIn(NullableDateTimeRule, const Case& c)
{
    if (isDateBeyondFields(c.value))
        return Reason::TooLarge;
    const GivenClock given = givenClock(c.value);
    if (given.given == Given::Nothing)
        return std::nullopt;
    if (given.given == Given::Other)
        return Reason::NotOfType;
    using Rule = NullableDateTimeRule;
    const QDateTime back = Rule::read(Stored<Rule>(c).bytes(), c.field).toDateTime();
    return back.date() == given.date && back.time().msecsSinceStartOfDay() == given.milliseconds
               ? Problem()
               : Reason::Changed;
}

/// What is wrong with a number of \a decimals decimals that a binary field stores as \a stored.
Problem exactProblem(const Case& c, const QByteArray& stored, int decimals, qint64 lowest,
                     qint64 highest)
{
    const GivenNumber number(c.value);
    if (const Problem problem = kindProblem(number, false))
        return problem;
    const std::string expected = rounded(number.digits(), decimals);
    const std::optional<DecimalText> digits = DecimalText::read(viewOf(stored));
    if (isStoredAs(expected, digits, decimals))
        return std::nullopt;
    const qint64 whole = unitsOfDecimal(number.digits(), 0);
    return whole <= lowest || whole >= highest ? Reason::TooLarge : Reason::Changed;
}

Problem problemIn(NullableCurrencyRule, const Case& c)
{
    constexpr int decimals = 4;
    constexpr qint64 unit = 10000;
    using Limits = std::numeric_limits<qint64>;
    using Rule = NullableCurrencyRule;
    const QVariant back = Rule::read(Stored<Rule>(c).bytes(), c.field);
    const QByteArray text = back.userType() == QMetaType::Double
                                ? QByteArray::number(back.toDouble(), 'f', decimals)
                                : back.toByteArray();
    return exactProblem(c, text, decimals, Limits::min() / unit, Limits::max() / unit);
}

template <typename Rule, typename Number>
Problem integerProblem(const Case& c)
{
    using Limits = std::numeric_limits<Number>;
    const QByteArray stored = QByteArray::number(qlonglong(Rule::numberOf(c.value)));
    return exactProblem(c, stored, manyDecimals, Limits::min(), Limits::max());
}

Problem problemIn(SmallIntRule, const Case& c)
{
    return integerProblem<SmallIntRule, qint16>(c);
}

Problem problemIn(IntRule, const Case& c)
{
    return integerProblem<IntRule, qint32>(c);
}

Problem problemIn(LargeIntRule, const Case& c)
{
    return integerProblem<LargeIntRule, qint64>(c);
}

/// What is wrong with a number that is stored as \a stored, of a type that keeps \a keptDigits
/// digits and turns other numbers into what \a asStored returns.
Problem binaryProblem(const Case& c, double stored, int keptDigits, double (*asStored)(double))
{
    if (isFloating(c.value))
        return std::isinf(stored) && !std::isinf(c.value.toDouble()) ? Reason::TooLarge : Problem();
    const GivenNumber number(c.value);
    if (const Problem problem = kindProblem(number, false))
        return problem;
    const std::string expected = rounded(number.digits(), manyDecimals);
    const std::optional<double> nearest = nearestDouble(expected);
    if (!nearest || std::isinf(asStored(*nearest)))
        return Reason::TooLarge;
    const ShortestText shortest(stored);
    const std::optional<DecimalText> digits = DecimalText::read(shortest.text());
    if (digits && isSameNumber(*digits, number.digits()))
        return std::nullopt;
    const bool isKept = significantDigits(expected) <= keptDigits && asStored(*nearest) == stored;
    return isKept ? Problem() : Reason::Changed;
}

template <typename Rule>
Problem binaryProblem(Rule, const Case& c)
{
    using Number = decltype(Rule::numberOf(QVariant()));
    return binaryProblem(c, static_cast<double>(Rule::numberOf(c.value)),
                         std::numeric_limits<Number>::digits10,
                         [](double number) { return double(static_cast<Number>(number)); });
}

Problem problemIn(BinaryDoubleRule rule, const Case& c)
{
    return binaryProblem(rule, c);
}

Problem problemIn(BinaryFloatRule rule, const Case& c)
{
    return binaryProblem(rule, c);
}

bool isNothing(const QVariant& value)
{
    return qt5::isNull(value) ||
           (value.userType() == QMetaType::QString && held<QString>(value).isEmpty());
}

/// What is wrong where the converter itself must be asked.
Problem askedProblem(const QVariant& value, const DbfColumn& column, const DbfSchema& schema)
{
    if (!isWritable(value, column))
        return Reason::NotWritable;
    const DbfFieldConverter* const converter = converterOf(column);
    const QByteArray bytes = converter->toByteArray(value, schema, column.descriptor);
    if (bytes.size() > column.descriptor.length)
        return Reason::TooLong;
    if (bytes.size() < column.descriptor.length)
        return Reason::Changed;
    const QVariant back = converter->toVariant(bytes, schema, column.descriptor);
    QVariant converted = value;
    if (isSameValue(back, value) ||
        (converter->convertVariant(converted) && isSameValue(back, converted)))
        return std::nullopt;
    return isNothing(value) && isNothing(back) ? Problem() : Reason::Changed;
}

} // namespace

ValueChecker::ValueChecker(const DbfSchema& schema) : m_schema(schema), m_codec(schema.codec)
{
    m_kinds.reserve(m_schema.columns.size());
    for (const DbfColumn& column : m_schema.columns)
        m_kinds.append(fieldKind(column));
}

bool ValueChecker::keepsPlainly(const QVariant& value, int column) const
{
    const DbfFieldDescriptor& field = m_schema.columns.at(column).descriptor;
    const ValueInField c{value, {&m_codec, field.length, field.decimals}, field};
    return visitRule(
        m_kinds.at(column),
        [&](auto rule) {
            return rule.size(field.length) == field.length && isPlainlyKept(rule, c);
        },
        [] { return false; });
}

std::optional<DbfValueProblem> ValueChecker::problemOf(const QVariant& value, int column,
                                                       int position) const
{
    if (keepsPlainly(value, column))
        return std::nullopt;
    const DbfColumn& target = m_schema.columns.at(column);
    const DbfFieldDescriptor& field = target.descriptor;
    const Case c{value, {&m_codec, field.length, field.decimals}, field};
    const Problem problem = visitRule(
        m_kinds.at(column),
        [&](auto rule) {
            return rule.size(field.length) == field.length ? problemIn(rule, c)
                                                           : Problem(Reason::Changed);
        },
        [&] { return askedProblem(value, target, m_schema); });
    if (!problem)
        return std::nullopt;
    DbfValueProblem found;
    found.record = position;
    found.columnIndex = column;
    found.reason = *problem;
    found.field = field;
    found.value = value;
    return found;
}

QVector<DbfValueProblem> ValueChecker::problemsOf(const DbfRecord& record, int position) const
{
    QVector<DbfValueProblem> problems;
    for (int column = 0; column < m_kinds.size(); ++column) {
        const bool isMissing = column >= record.values.size();
        if (isMissing ? m_kinds.at(column) != FieldKind::Date
                      : keepsPlainly(record.values.at(column), column))
            continue;
        std::optional<DbfValueProblem> problem =
            problemOf(isMissing ? QVariant() : record.values.at(column), column, position);
        if (isMissing && !problem) { // The blank of such a column is a date.
            problem.emplace();
            problem->record = position;
            problem->columnIndex = column;
            problem->field = m_schema.columns.at(column).descriptor;
        }
        if (problem)
            problems.append(*problem);
    }
    return problems;
}

} // namespace dbf
