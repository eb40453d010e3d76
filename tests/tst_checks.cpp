// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "columns.h"
#include "testtables.h"
#include "values.h"

using namespace dbf;
using namespace testtables;
using namespace testvalues;
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

const QString cyrillic = QStringLiteral("\u0416\u0443\u043A");
const QString japanese = QStringLiteral("\u65E5\u672C");

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

void addRows(const DbfColumn& column, int reason, const QVariantList& values)
{
    for (const QVariant& value : values)
        QTest::addRow("%s %d, %d, %s", typeid(*column.converter).name(), column.descriptor.length,
                      reason, shown(value).constData())
            << column << value << reason;
}

/// Keeps texts but for the spaces around them, and none that is empty.
class TrimmingConverter : public DbfStringConverter
{
public:
    QVariant toVariant(const QByteArray& bytes, const DbfSchema& schema,
                       const DbfFieldDescriptor& field) const override
    {
        const QVariant text = DbfStringConverter::toVariant(bytes, schema, field);
        return text.toString().isEmpty() ? QVariant() : text;
    }
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
        addColumns<DbfColumn, QVariant, int>({"column", "value", "reason"});
        const QDateTime noon(QDate(2024, 2, 29), QTime(12, 0), Qt::UTC);
        const QDateTime midnight(QDate(2024, 2, 29), QTime(0, 0));
        const QDate day(2024, 2, 29);
        const QDate late(10000, 1, 1);
        const QVariant list = QVariantList() << 1;
        const QString withNul = QString("a") + QChar(0) + "b";

        const DbfColumn usualC = usual('C', 4);
        addRows(usualC, noReason,
                {"four", "abc  ", "    ", none, QString(), 12, 1.5, cyrillic + 'x',
                 nullOf(QMetaType::Int), QByteArray("four")});
        addRows(usualC, tooLong, {"five5", QString(300, 'x'), cyrillic + "xy", day});
        addRows(usualC, changed, {" abc", withNul, QByteArray("\xFF"), list});
        addRows(usualC, notInCodePage, {japanese});
        const DbfColumn nullableC = nullable('C', 10);
        addRows(nullableC, noReason, {" abc", "1234567890  ", none, true, day});
        addRows(nullableC, tooLong, {"12345678901", 123456789.25, 12345678901LL});
        addRows(nullableC, notInCodePage, {japanese});
        addRows(nullableC, notOfType, {list});

        for (const auto& column : {usual('N', 8, 2), nullable('N', 8, 2)}) {
            const bool isText = column.converter == DbfStringConverter::instance();
            addRows(column, noReason,
                    {"12345.67", "-12.5", "+7", "  12.5  ", "1e3", QVariant(QChar('7')), "1.50",
                     none, "", 12});
            addRows(column, tooLarge, {"123456.78", "1234567.8", 123456789.0});
            addRows(column, isText ? tooLarge : noReason, {"      12.5"});
            addRows(column, isText ? notOfType : tooLarge, {infinity});
            addRows(column, notOfType, {"abc", "-", "1.2.3", notANumber, day});
        }
        const DbfColumn usualF = usual('F', 8, 2);
        addRows(usualF, changed, {none, nullOf(QMetaType::Double), "", "1,5", decimal("12.34")});
        addRows(usualF, notOfType, {"abc", notANumber});
        addRows(usualF, tooLarge,
                {123456789.0, -99999.96, infinity, 1e300, "1e999999999", 123456789});
        addRows(usualF, noReason, {99999.99, 1.005, 99999.996, -9999.99, 12345LL, true});
        const DbfColumn nullableF = nullable('F', 8, 2);
        addRows(nullableF, noReason, {none, "1,5", 0.125, 999999.5, 12345678});
        addRows(nullableF, tooLarge, {999999.25, decimal("-12345678")});
        addRows(nullable('N', 3, 2), noReason, {0.25, 7, 100});
        addRows(nullable('N', 3, 2), tooLarge, {1.25, -100});
        addRows(nullable('N', 20), noReason, {"12345678901234567890", least, 1e19, 0.5f});
        addRows(nullable('N', 20), tooLarge, {"123456789012345678901"});
        addRows(usual('F', 20), changed, {"12345678901234567", 12345678901234567LL});
        addRows(usual('F', 20), noReason, {12345678901234567.0, "0", 0.5f});

        addRows(usual('L', 1), noReason, {true, false, "yes", QByteArray("T"), 1});
        addRows(usual('L', 1), changed, {"F", "no", none, nullOf(QMetaType::Bool)});
        addRows(usual('L', 1), notOfType, {"maybe", notANumber});
        addRows(nullable('L', 1), noReason, {"F", "no", none});
        const DbfColumn usualD = usual('D', 8);
        addRows(usualD, noReason, {day, none, QDate(), "2024-02-29", midnight, "2024-02-29T00:00"});
        addRows(usualD, tooLarge, {late, QDate(-1, 1, 1), QDateTime(late, QTime(0, 0))});
        addRows(usualD, notOfType, {"soon", "2024-02-29T25:00", "2024-02-29T10:70", 5});
        addRows(usualD, changed, {"20240229", noon});
        addRows(nullable('D', 8), noReason, {"20240229"});
        const DbfColumn instant = nullable('T', 8);
        addRows(instant, noReason,
                {noon, noon.toOffsetFromUtc(7200), day, "2024-02-29T12:00:00", none});
        addRows(instant, notOfType, {"noon", "2024-02-29 1"});
        addRows(instant, tooLarge, {late});

        const DbfColumn money = nullable('Y', 8);
        addRows(money, noReason, {1.00005, "922337203685477.5807", 1e13});
        addRows(money, tooLarge, {"922337203685477.5808", -1e15});
        addRows(nullable('I', 4), noReason, {2147483647, "12"});
        addRows(nullable('I', 4), tooLarge, {2147483648LL, -1e10});
        addRows(nullable('I', 4), changed, {1.5, none, nullOf(QMetaType::Int), decimal("7")});
        addRows(nullable('I', 4), notOfType, {"x"});
        addRows(with(DbfSmallIntConverter::instance(), 'I', 2), tooLarge, {-32769});
        addRows(with(DbfLargeIntConverter::instance(), 'I', 8), tooLarge, {1e19});
        addRows(with(DbfLargeIntConverter::instance(), 'I', 8), noReason, {most});
        addRows(with(DbfIntConverter::instance(), 'I', 5), changed, {1});
        const DbfColumn binary64 = with(DbfBinaryDoubleConverter::instance(), 'B', 8);
        addRows(binary64, noReason, {0.1, notANumber, infinity, "0.1", 9007199254740992LL});
        addRows(binary64, changed, {"0.12345678901234567890", 9007199254740993LL, none});
        addRows(binary64, tooLarge, {"1e400"});
        const DbfColumn binary32 = with(DbfBinaryFloatConverter::instance(), 'B', 4);
        addRows(binary32, noReason, {0.1, "0.1", 16777216});
        addRows(binary32, tooLarge, {1e300, "1e39"});
        addRows(binary32, changed, {"0.12345678901234567", 16777217, decimal("0.5"), none});

        addRows(usual('M', 4), noReason, {QByteArray("abcd"), "abcd"});
        addRows(usual('M', 4), changed, {QByteArray("abc"), none});
        addRows(usual('M', 4), tooLong, {QByteArray("abcde")});
        static TrimmingConverter trimming;
        addRows(with(&trimming, 'X', 3), noReason, {none, "", "abc", 12});
        addRows(with(&trimming, 'X', 3), changed, {" a", "abcd"});
        static SpyConverter spy;
        addRows(with(&spy, 'X', 3), noReason, {QByteArray("abc")});
        addRows(with(&spy, 'X', 3), changed, {"abc", 123});
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
        const auto check = [&](int mib, const QString& text, int reason) {
            schema.codec = codec(mib);
            QVector<int> reasons;
            for (const DbfValueProblem& problem : checkValues({0, {text, text}}, schema))
                reasons << int(problem.reason);
            QCOMPARE(reasons, QVector<int>(reason == noReason ? 0 : 2, reason));
        };
        constexpr int utf8 = 106;
        constexpr int shiftJis = 17;
        check(utf8, cyrillic, noReason);
        check(utf8, cyrillic + 'x', tooLong);
        check(shiftJis, japanese + japanese.left(1), noReason);
        check(shiftJis, japanese + japanese, tooLong);
        check(shiftJis, QString(QChar(0xE9)), notInCodePage);
    }

    void problemsAreSaidInWords()
    {
        using Case = std::tuple<DbfColumn, QVariant, QString>;
        for (const auto& [column, value, text] :
             {Case{nullable('N', 8, 2), 123456789,
                   "123456789 does not fit 8 places with 2 decimals"},
              {nullable('N', 3), decimal("1234"), "1234 does not fit 3 places"},
              {nullable('N', 8, 2), QString(100, 'x'),
               '"' + QString(60, 'x') + QChar(0x2026) + "\" is no number"},
              {nullable('C', 3), "four", "\"four\" is longer than 3 bytes"},
              {nullable('C', 3), japanese,
               '"' + japanese + "\" has characters that the code page lacks"},
              {nullable('D', 8), "soon", "\"soon\" is no date"},
              {nullable('L', 1), "maybe", "\"maybe\" is no truth value"},
              {nullable('T', 8), "later", "\"later\" is no date and time"},
              {nullable('I', 4), 1e10, "10000000000 is beyond what the field holds"},
              {usual('F', 4), none, "no value would read back as something else"}}) {
            DbfSchema schema({}, codec(2251));
            schema.columns = {column};
            QCOMPARE(checkValues({0, {value}}, schema).value(0).text(), "FIELD: " + text);
        }
    }

    void missingValueIsAProblemWhereItBecomesADate()
    {
        DbfSchema schema;
        schema.columns = {usual('F', 4), usual('D', 8), nullable('D', 8), usual('D', 8)};
        const QVector<DbfValueProblem> problems = checkValues({}, schema);
        QCOMPARE(problems.size(), 2);
        QVERIFY(problems.at(0).columnIndex == 1 && problems.at(1).columnIndex == 3);
        QCOMPARE(int(problems.at(0).reason), changed);
    }

    void recordsWithProblemsAreNotWritten()
    {
        CheckingTable open;
        const DbfRecord bad(1, {"Robert", true, 12345});
        const auto isRefused = [&](bool done, int problems) {
            return !done && !open.table.hasError() && open.device.writes().isEmpty() &&
                   open.table.valueProblems().size() == problems &&
                   open.table.valueProblems().last().columnIndex == 2;
        };
        QVERIFY(isRefused(open.table.updateRecord(bad), 2));
        QVERIFY(isRefused(open.table.appendRecord(bad), 2));
        QVERIFY(isRefused(open.table.updateValues(DbfRecord(1, {"Bob", true, 12345})), 1));
        QVector<DbfRecord> records(150, newRecord(0));
        for (int i = 20; i < 150; ++i)
            records[i] = bad;
        QVERIFY(isRefused(open.table.appendRecords(records), 200)); // of the first hundred records
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
