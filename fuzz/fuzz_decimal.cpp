// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"

#include <array>

using namespace fuzzing;

/// Feeds texts, exponents and integers to the decimal layer and checks it against what it promises
/// and, where they fit, against 64-bit integers.
namespace
{

QString textOf(const QDecNumber& number)
{
    std::array<char, QDecNumber::TextSize> text;
    text.fill('#');
    demand(decNumberToString(&number, text.data()) == text.data(), "the text goes where it should");
    demand(std::memchr(text.data(), '\0', text.size()) != nullptr, "the text ends in its room");
    demand(number.toString() == QLatin1String(text.data()), "both ways give one text");
    return number.toString();
}

QDecNumber rescaled(const QDecNumber& number, const QDecNumber& exponent)
{
    QDecContext context(0);
    QDecNumber result;
    demand(decNumberRescale(&result, &number, &exponent, &context) == &result, "result comes back");
    return result;
}

qint32 toInt32(const QDecNumber& number)
{
    QDecContext context(0);
    return decNumberToInt32(&number, &context);
}

void textsComeBack(const QDecNumber& number)
{
    const QString text = textOf(number);
    demand(textOf(QDecNumber(text)) == text, "a number's text gives the number");
    QDecNumber copy;
    decNumberCopy(&copy, &number);
    demand(textOf(copy) == text, "a copy is the same number");
}

void rescalingKeepsTheValue(const QDecNumber& number, int exponent)
{
    const QDecNumber result = rescaled(number, QDecNumber(exponent));
    textsComeBack(result);
    if (result.isNaN())
        return;
    demand(!number.isNaN() && !number.isInfinite(), "only finite numbers are rescaled");
    demand(result.isNegative() == number.isNegative(), "the sign stays");
    demand(textOf(rescaled(result, QDecNumber(exponent))) == textOf(result), "once is enough");
}

/// \a number / 10^\a decimals, rounded to an integer.
void roundingIsHalfUp(qint64 number, int decimals)
{
    qint64 scale = 1;
    for (int i = 0; i < decimals; ++i)
        scale *= 10;
    const qint64 quotient = number / scale;
    const qint64 rest = qAbs(number % scale);
    const qint64 expected = quotient + (rest >= scale - rest ? (number < 0 ? -1 : 1) : 0);
    const QString text = QStringLiteral("%1E-%2").arg(number).arg(decimals);
    const QDecNumber result = rescaled(QDecNumber(text), QDecNumber(0));
    if (qAbs(expected) > 999999999) {
        demand(result.isNaN(), "more digits than the context has");
        return;
    }
    demand(textOf(result).remove(QLatin1Char('-')) == QString::number(qAbs(expected)),
           "digits that fall away are rounded half up");
    demand(toInt32(result) == expected, "integers come out");
}

void converterTakesEveryNumber(const QDecNumber& number)
{
    const std::array<dbf::DbfFieldConverter*, 4> converters{
        dbf::DbfBoolConverter::instance(), dbf::DbfSmallIntConverter::instance(),
        dbf::DbfIntConverter::instance(), dbf::DbfLargeIntConverter::instance()};
    constexpr std::array types{QMetaType::Bool, QMetaType::Int, QMetaType::Int,
                               QMetaType::LongLong};
    for (size_t i = 0; i < converters.size(); ++i) {
        QVariant value = QVariant::fromValue(number);
        demand(converters[i]->convertVariant(value) && value.userType() == types[i],
               "converters take decimals");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    forbidMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider choices(data, size);
    const auto exponent = choices.ConsumeIntegral<int>();
    const auto integer = choices.ConsumeIntegral<qint64>() >> choices.ConsumeIntegralInRange(1, 62);
    const int decimals = choices.ConsumeIntegralInRange(0, 18);
    const std::string text = choices.ConsumeRemainingBytesAsString();

    roundingIsHalfUp(integer, decimals);
    demand(textOf(QDecNumber(exponent)) == QString::number(exponent), "integers are exact");
    demand(toInt32(QDecNumber(exponent)) == exponent, "integers come back");

    const QDecNumber number(text.c_str());
    demand(textOf(QDecNumber(QString::fromLatin1(text.c_str()))) == textOf(number),
           "bytes and characters read alike");
    textsComeBack(number);
    converterTakesEveryNumber(number);
    toInt32(number);
    for (const int scale : {exponent, exponent % 40, 0})
        rescalingKeepsTheValue(number, scale);
    textsComeBack(rescaled(QDecNumber(exponent), number));
    return 0;
}
