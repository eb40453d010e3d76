// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "testtables.h"

#include <QtTest/QtTest>

#include <cmath>
#include <limits>

using namespace dbf;
using namespace testtables;
using Reason = DbfValueProblem::Reason;

Q_DECLARE_METATYPE(dbf::DbfColumn)

namespace
{

constexpr int noReason = -1;
constexpr int tooLong = int(Reason::TooLong);
constexpr int tooLarge = int(Reason::TooLarge);
constexpr int notInCodePage = int(Reason::NotInCodePage);
constexpr int notOfType = int(Reason::NotOfType);
constexpr int changed = int(Reason::Changed);

const QVariant none;
constexpr double infinity = std::numeric_limits<double>::infinity();
const double notANumber = std::nan("");
const QString cyrillic = QStringLiteral("\u0416\u0443\u043A");
const QString japanese = QStringLiteral("\u65E5\u672C");

QVariant decimal(const char* digits)
{
    return QVariant::fromValue(QDecNumber(digits));
}

DbfFieldDescriptor described(char type, int length, int decimals = 0)
{
    return {"FIELD", DbfFieldType(type), static_cast<unsigned char>(length),
            static_cast<unsigned char>(decimals)};
}

DbfColumn usual(char type, int length, int decimals = 0)
{
    return described(type, length, decimals);
}

DbfColumn nullable(char type, int length, int decimals = 0)
{
    return nullableColumn(described(type, length, decimals));
}

DbfColumn with(DbfFieldConverter* converter, char type, int length)
{
    DbfColumn column(described(type, length));
    column.setConverter(converter);
    return column;
}

struct Expected {
    QVariant value;
    int reason;
};

void addRows(const char* name, const DbfColumn& column, const QVector<Expected>& rows)
{
    int row = 0;
    for (const Expected& expected : rows)
        QTest::addRow("%s #%d: %s", name, row++, expected.value.toByteArray().left(30).constData())
            << column << expected.value << expected.reason;
}

/// Keeps texts but for the spaces around them, and writes none of more than three characters.
class TrimmingConverter : public DbfFieldConverter
{
public:
    QByteArray toByteArray(const QVariant& value, const DbfSchema&,
                           const DbfFieldDescriptor& field) const override
    {
        return value.toByteArray().leftJustified(field.length, ' ');
    }
    QVariant toVariant(const QByteArray& bytes, const DbfSchema&,
                       const DbfFieldDescriptor&) const override
    {
        const QString text = QString::fromLatin1(bytes).trimmed();
        return text.isEmpty() ? QVariant() : text;
    }
    bool convertVariant(QVariant& value) const override { return value.convert(QVariant::String); }
};

/// One text column of five places and one number of four with a decimal, blank means blank.
struct CheckingTable : OpenTable {
    CheckingTable() : OpenTable(sample().bytes())
    {
        table.setConverterChoice(nullableConverter);
        table.setCheckingValues(true);
        table.reopen();
        device.clearLog();
    }
};

} // namespace

/// Values that their fields would not keep, and writes and copies that refuse them.
class TestChecks : public QObject
{
    Q_OBJECT

private slots:
    void problemIsFound_data()
    {
        QTest::addColumn<DbfColumn>("column");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("reason");
        const QDateTime noon(QDate(2024, 2, 29), QTime(12, 0), Qt::UTC);

        addRows("C", usual('C', 4),
                {{"four", noReason},
                 {"five5", tooLong},
                 {"abc  ", noReason},
                 {" abc", changed},
                 {"    ", noReason},
                 {none, noReason},
                 {QString(), noReason},
                 {12, noReason},
                 {1.5, noReason},
                 {cyrillic, noReason},
                 {japanese, notInCodePage},
                 {QString(QChar('a')) + QChar(0) + 'b', changed},
                 {QByteArray("\xFF"), changed},
                 {QVariant(QVariant::Int), noReason},
                 {QString(300, 'x'), tooLong},
                 {QByteArray("abc"), noReason},
                 {QVariantList{1}, changed},
                 {QByteArray("four"), noReason},
                 {cyrillic + 'x', noReason},
                 {cyrillic + "xy", tooLong},
                 {QDate(2024, 2, 29), tooLong}});
        addRows("nullable C", nullable('C', 10),
                {{" abc", noReason},
                 {"12345678901", tooLong},
                 {"1234567890  ", noReason},
                 {japanese, notInCodePage},
                 {QVariantList{1}, notOfType},

                 {QString("a") + QChar(0) + "b", changed},
                 {none, noReason},
                 {true, noReason},
                 {QDate(2024, 2, 29), noReason},
                 {123456789.25, tooLong},
                 {12345678901LL, tooLong}});
        for (const auto& column : {usual('N', 8, 2), nullable('N', 8, 2)}) {
            const bool isText = column.converter == DbfStringConverter::instance();
            addRows(isText ? "N" : "nullable N", column,
                    {{"12345.67", noReason},
                     {"123456.78", tooLarge},
                     {"1234567.8", tooLarge},
                     {"  12.5  ", noReason},
                     {"      12.5", isText ? tooLarge : noReason},
                     {"1e3", noReason},
                     {QVariant(QChar('7')), noReason},
                     {"abc", notOfType},
                     {"1.50", noReason},
                     {none, noReason},
                     {"", noReason},
                     {123456789.0, tooLarge},
                     {12, noReason},
                     {infinity, isText ? notOfType : tooLarge},
                     {notANumber, notOfType},
                     {QDate(2024, 2, 29), notOfType}});
        }
        addRows("number", with(DbfDoubleConverter::instance(), 'N', 8),
                {{none, changed}, {"abc", notOfType}, {"", changed}});
        addRows("F", usual('F', 8, 2),
                {{none, changed},
                 {"", changed},
                 {"1,5", changed},
                 {"abc", notOfType},
                 {123456789.0, tooLarge},
                 {99999.99, noReason},
                 {1.005, noReason},
                 {99999.996, noReason},
                 {-9999.99, noReason},
                 {-99999.96, tooLarge},
                 {infinity, tooLarge},
                 {notANumber, notOfType},
                 {1e300, tooLarge},
                 {"1e999999999", tooLarge},
                 {12345LL, noReason},
                 {123456789, tooLarge},
                 {true, noReason},
                 {decimal("12.34"), changed}});
        addRows("nullable F", nullable('F', 8, 2),
                {{none, noReason},
                 {"1,5", noReason},
                 {0.125, noReason},
                 {999999.5, noReason},
                 {999999.25, tooLarge},
                 {12345678, noReason},
                 {decimal("-12345678"), tooLarge},
                 {QVariantList{1}, notOfType}});
        addRows(
            "narrow", nullable('N', 3, 2),
            {{0.25, noReason}, {7, noReason}, {1.25, tooLarge}, {100, noReason}, {-100, tooLarge}});
        addRows("wide", nullable('N', 20, 0),
                {{"12345678901234567890", noReason},
                 {"123456789012345678901", tooLarge},
                 {std::numeric_limits<qlonglong>::min(), noReason},
                 {1e19, noReason},
                 {float(0.5), noReason}});
        addRows("digits", usual('F', 20, 0),
                {{"12345678901234567", changed},
                 {12345678901234567.0, noReason},
                 {"0", noReason},
                 {12345678901234567LL, changed},
                 {float(0.5), noReason}});
        addRows("L", usual('L', 1),
                {{true, noReason},
                 {false, noReason},
                 {"F", changed},
                 {"no", changed},
                 {"yes", noReason},
                 {"maybe", notOfType},
                 {none, changed},
                 {QByteArray("T"), noReason},
                 {1, noReason},
                 {notANumber, notOfType}});
        addRows("L too long", usual('L', 2), {{true, changed}});
        addRows("nullable L", nullable('L', 1),
                {{"F", noReason}, {"no", noReason}, {none, noReason}, {"maybe", notOfType}});
        addRows("D", usual('D', 8),
                {{QDate(2024, 2, 29), noReason},
                 {QDate(10000, 1, 1), tooLarge},
                 {QDate(-1, 1, 1), tooLarge},
                 {none, noReason},
                 {QDate(), noReason},
                 {"soon", notOfType},
                 {"2024-02-29", noReason},
                 {"20240229", changed},
                 {QDateTime(QDate(2024, 2, 29), QTime(0, 0)), noReason},
                 {"2024-02-29T00:00", noReason},
                 {"2024-02-29T25:00", notOfType},
                 {"2024-02-29T10:70", notOfType},
                 {noon, changed},
                 {5, notOfType}});
        addRows("nullable D", nullable('D', 8),
                {{"20240229", noReason},
                 {"2024-02-30", notOfType},
                 {noon, changed},
                 {QDateTime(QDate(10000, 1, 1), QTime(0, 0)), tooLarge}});
        addRows("T", nullable('T', 8),
                {{noon, noReason},
                 {noon.toOffsetFromUtc(7200), noReason},
                 {QDate(2024, 2, 29), noReason},
                 {"2024-02-29T12:00:00", noReason},
                 {none, noReason},
                 {"noon", notOfType},
                 {"2024-02-29 1", notOfType},
                 {QDate(10000, 1, 1), tooLarge}});
        addRows("Y", nullable('Y', 8),
                {{1.00005, noReason},
                 {"922337203685477.5807", noReason},
                 {"922337203685477.5808", tooLarge},
                 {-1e15, tooLarge},
                 {1e13, noReason},
                 {none, changed},
                 {"abc", notOfType},
                 {notANumber, notOfType}});
        addRows("I", nullable('I', 4),
                {{2147483647, noReason},
                 {2147483648LL, tooLarge},
                 {1.5, changed},
                 {"12", noReason},
                 {"x", notOfType},
                 {none, changed},
                 {-1e10, tooLarge},
                 {decimal("7"), changed}});
        addRows("I2", with(DbfSmallIntConverter::instance(), 'I', 2),
                {{32767, noReason}, {-32769, tooLarge}});
        addRows("I8", with(DbfLargeIntConverter::instance(), 'I', 8),
                {{std::numeric_limits<qlonglong>::max(), noReason}, {1e19, tooLarge}});
        addRows("I too long", with(DbfIntConverter::instance(), 'I', 5), {{1, changed}});
        addRows("B", with(DbfBinaryDoubleConverter::instance(), 'B', 8),
                {{0.1, noReason},
                 {notANumber, noReason},
                 {infinity, noReason},
                 {"0.1", noReason},
                 {"0.12345678901234567890", changed},
                 {9007199254740993LL, changed},
                 {9007199254740992LL, noReason},
                 {none, changed},
                 {"x", notOfType},
                 {"1e400", tooLarge}});
        addRows("B4", with(DbfBinaryFloatConverter::instance(), 'B', 4),
                {{0.1, noReason},
                 {1e300, tooLarge},
                 {"0.1", noReason},
                 {"0.12345678901234567", changed},
                 {16777217, changed},
                 {16777216, noReason},

                 {decimal("0.5"), changed},
                 {none, changed},
                 {"x", notOfType},
                 {"1e39", tooLarge}});
        addRows("M", usual('M', 4),
                {{QByteArray("abcd"), noReason},
                 {QByteArray("abc"), changed},
                 {"abcd", noReason},
                 {none, changed},
                 {QByteArray("abcde"), tooLong}});
        static TrimmingConverter trimming;
        addRows("own and trimming", with(&trimming, 'X', 3),
                {{none, noReason},
                 {"", noReason},
                 {"abc", noReason},
                 {12, noReason},
                 {" a", changed},
                 {"abcd", tooLong}});
        static SpyConverter spy;
        addRows("own", with(&spy, 'X', 3),
                {{QByteArray("abc"), noReason}, {"abc", changed}, {123, changed}});
    }

    void problemIsFound()
    {
        QFETCH(DbfColumn, column);
        QFETCH(QVariant, value);
        QFETCH(int, reason);
        DbfSchema schema;
        schema.codec = codec(2251);
        schema.columns = {usual('C', 1), column};
        const QVector<DbfValueProblem> problems = checkValues({0, {"x", value}}, schema);
        QCOMPARE(problems.isEmpty() ? noReason : int(problems.first().reason), reason);
        for (const DbfValueProblem& problem : problems) {
            QCOMPARE(problem.columnIndex, 1);
            QVERIFY(problem.text().startsWith("FIELD: "));
        }
    }

    void textIsMeasuredInBytesOfItsCodec()
    {
        DbfSchema schema;
        schema.columns = {usual('C', 6), nullable('C', 6)};
        const auto reasons = [&](int mib, const QString& text) {
            schema.codec = codec(mib);
            QVector<int> found;
            for (const DbfValueProblem& problem : checkValues({0, {text, text}}, schema))
                found << int(problem.reason);
            return found;
        };
        constexpr int utf8 = 106;
        constexpr int shiftJis = 17;
        QCOMPARE(reasons(utf8, cyrillic), QVector<int>());
        QCOMPARE(reasons(utf8, cyrillic + 'x'), QVector<int>(2, tooLong));
        QCOMPARE(reasons(utf8, "abcdef"), QVector<int>());
        QCOMPARE(reasons(shiftJis, japanese + japanese.left(1)), QVector<int>());
        QCOMPARE(reasons(shiftJis, japanese + japanese), QVector<int>(2, tooLong));
        QCOMPARE(reasons(shiftJis, QString(QChar(0xE9))), QVector<int>(2, notInCodePage));
    }

    void problemsAreSaidInWords()
    {
        DbfSchema schema;
        schema.codec = codec(2251);
        schema.columns = {nullable('N', 8, 2), nullable('N', 3), nullable('C', 3),
                          nullable('C', 3),    nullable('D', 8), nullable('L', 1),
                          nullable('T', 8),    nullable('I', 4), usual('F', 4)};
        const QVariantList values{123456789, decimal("1234"), "four", japanese, "soon",
                                  "maybe",   "later",         1e10,   none};
        QStringList texts;
        for (const DbfValueProblem& problem : checkValues({0, values.toVector()}, schema))
            texts << problem.text();
        QCOMPARE(texts,
                 (QStringList{"FIELD: 123456789 does not fit 8 places with 2 decimals",
                              "FIELD: 1234 does not fit 3 places",
                              "FIELD: \"four\" is longer than 3 bytes",
                              "FIELD: \"" + japanese + "\" has characters that the code page lacks",
                              "FIELD: \"soon\" is no date", "FIELD: \"maybe\" is no truth value",
                              "FIELD: \"later\" is no date and time",
                              "FIELD: 10000000000 is beyond what the field holds",
                              "FIELD: no value would read back as something else"}));
        const QString longText = checkValues({0, {QString(100, 'x')}}, schema).first().text();
        QCOMPARE(longText, "FIELD: \"" + QString(60, 'x') + QChar(0x2026) + "\" is no number");
    }

    void missingValueIsAProblemWhereItBecomesADate()
    {
        DbfSchema schema;
        schema.columns = {usual('F', 4), usual('D', 8), nullable('D', 8), usual('D', 8)};
        const QVector<DbfValueProblem> problems = checkValues({}, schema);
        QCOMPARE(problems.size(), 2);
        QCOMPARE(problems.at(0).columnIndex, 1);
        QCOMPARE(problems.at(1).columnIndex, 3);
        QCOMPARE(int(problems.at(0).reason), changed);
    }

    void recordsWithProblemsAreNotWritten()
    {
        CheckingTable open;
        const DbfRecord bad(1, {"Robert", true, 12345});
        const auto isRefused = [&](bool done, const QVector<int>& columns) {
            QVector<int> found;
            for (const DbfValueProblem& problem : open.table.valueProblems())
                found << problem.columnIndex;
            return !done && !open.table.hasError() && found == columns &&
                   open.device.writes().isEmpty();
        };
        QVERIFY(isRefused(open.table.updateRecord(bad), {0, 2}));
        QVERIFY(isRefused(open.table.appendRecord(bad), {0, 2}));
        QVERIFY(isRefused(open.table.updateValues(DbfRecord(1, {"Bob", true, 12345})), {2}));
        QVector<DbfRecord> records(150, newRecord(0));
        for (int i = 20; i < 150; ++i)
            records[i] = bad;
        QVERIFY(!open.table.appendRecords(records) && open.device.writes().isEmpty());
        QCOMPARE(open.table.valueProblems().size(), 200); // of the first hundred records
        QCOMPARE(open.table.valueProblems().first().record, 20);
        QCOMPARE(open.table.valueProblems().last().record, 119);

        QVERIFY(open.table.appendRecords(records.mid(0, 3)));
        QVERIFY(open.table.valueProblems().isEmpty());
        QVERIFY(!open.table.appendRecord(bad));
        QVERIFY(open.table.updateValues(DbfRecord(1, {"Rober"})));
        QVERIFY(!open.table.updateValues(DbfRecord(1, {"Robert"}))); // cut, it stands there already
        QVERIFY(open.table.updateValues(DbfRecord(1, {"Rob"})));
        QVERIFY(open.table.valueProblems().isEmpty());
        QCOMPARE(open.table.recordCount(), 6);
        DbfTable moved(std::move(open.table));
        QVERIFY(moved.isCheckingValues() && !moved.appendRecord(bad));
        QCOMPARE(moved.valueProblems().size(), 2);
        QVERIFY(!open.table.isCheckingValues() && open.table.valueProblems().isEmpty());
        moved.setCheckingValues(false);
        QVERIFY(moved.appendRecord(bad));
    }

    void converterThatReopensTheTableWhileItIsCheckedStopsTheWrite()
    {
        struct Reopening : SpyConverter {
            DbfTable* table = nullptr;
            QByteArray toByteArray(const QVariant& value, const DbfSchema&,
                                   const DbfFieldDescriptor&) const override
            {
                table->reopen();
                return value.toByteArray();
            }
        } converter;
        CheckingTable open;
        converter.table = &open.table;
        open.table.setFieldConverter(0, &converter);
        QVERIFY(!open.table.appendRecord(DbfRecord(0, {QByteArray("abcde"), true, 1})));
        QCOMPARE(open.table.lastError(), DbfTable::WriteError);
        QVERIFY(open.device.writes().isEmpty());
    }

    void copyStopsBeforeAValueThatWouldBeLost()
    {
        CheckingTable open;
        DbfSchemaTransform narrower = identityOf(open.table);
        narrower.resizeColumn(0, 3, 0);
        narrower.insertNewColumn(1, nullable('D', 8));
        DbfCopyOptions options;
        const auto copies = [&] {
            RecordingDevice target;
            return open.table.copyAndTransform(&target, narrower, options);
        };
        QVERIFY(copies());
        options.checkValues = true;
        QVERIFY(!copies() && !open.table.hasError());
        const QVector<DbfValueProblem> problems = open.table.valueProblems();
        QCOMPARE(problems.size(), 1);
        QCOMPARE(problems.first().record, 0);
        QCOMPARE(problems.first().columnIndex, 0);
        QCOMPARE(problems.first().value, open.table.readRecord(0).values.first());

        QVERIFY(open.table.updateValues(DbfRecord(0, {"Ann"})));
        QVERIFY(!copies());
        QCOMPARE(open.table.valueProblems().value(0).record, 2);
        QVERIFY(open.table.setRecordDeleted(2, true));
        options.skipDeleted = true;
        QVERIFY(copies());
        QVERIFY(open.table.valueProblems().isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestChecks)

#include "tst_checks.moc"
