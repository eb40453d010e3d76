// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"

#include <dbf/dbf.h>

#include <QTextCodec>
#include <QtTest/QtTest>

#include <functional>

using namespace dbf;

namespace
{

/// A schema of columns A (5 characters), B (a truth value) and C (a date).
DbfSchema sourceSchema()
{
    return DbfSchema({DbfFieldDescriptor::stringField("A", 5),
                      DbfFieldDescriptor::logicalField("B"),
                      {"C", DbfFieldType::Date, 8, 0}},
                     QTextCodec::codecForName("Windows-1251"));
}

/// Lists the target columns with their sources: "A0 X- B1".
QString shown(const DbfSchemaTransform& transform)
{
    QStringList columns;
    for (int i = 0; i < transform.schema.columns.size(); ++i) {
        const int source = transform.sourceIndexes.value(i, -2);
        columns += transform.schema.columns[i].descriptor.name +
                   (source == -1 ? "-" : QString::number(source));
    }
    return columns.join(' ');
}

} // namespace

class TestSchemaTransform : public QObject
{
    Q_OBJECT

private slots:
    void editsKeepColumnsAndSourcesParallel()
    {
        const auto added = DbfFieldDescriptor::stringField("X", 3);
        const auto after = [](const std::function<void(DbfSchemaTransform&)>& edit) {
            DbfSchemaTransform transform = DbfSchemaTransform::identity(sourceSchema());
            edit(transform);
            return shown(transform);
        };
        QCOMPARE(after([&](auto& t) { t.insertNewColumn(0, added); }), QString("X- A0 B1 C2"));
        QCOMPARE(after([&](auto& t) { t.insertNewColumn(3, added); }), QString("A0 B1 C2 X-"));
        QCOMPARE(after([&](auto& t) { t.updateColumn(2, added); }), QString("A0 B1 X2"));
        QCOMPARE(after([](auto& t) { t.deleteColumn(1); }), QString("A0 C2"));
        QCOMPARE(after([](auto& t) { t.moveColumn(0, 2); }), QString("B1 C2 A0"));
        QCOMPARE(after([](auto& t) { t.moveColumn(2, 0); }), QString("C2 A0 B1"));
        QCOMPARE(after([&](auto& t) {
                     t.insertNewColumn(4, added);
                     t.insertNewColumn(-1, added);
                     for (const int beyond : {-1, 3, 2147483647}) {
                         t.updateColumn(beyond, added);
                         t.deleteColumn(beyond);
                         t.moveColumn(beyond, 1);
                         t.moveColumn(1, beyond);
                     }
                 }),
                 QString("A0 B1 C2"));
        QCOMPARE(after([&](auto& t) {
                     t.sourceIndexes = {2}; // too short a map
                     t.moveColumn(0, 2);
                     t.moveColumn(2, 0);
                     t.deleteColumn(2);
                     t.insertNewColumn(2, added);
                 }),
                 QString("A2 B- X-2"));
    }

    void editedColumnsGetDefaultConverters()
    {
        DbfSchema schema = sourceSchema();
        for (DbfColumn& column : schema.columns)
            column.setConverter(DbfIntConverter::instance());
        DbfSchemaTransform transform = DbfSchemaTransform::identity(schema);
        transform.moveColumn(0, 2);
        transform.updateColumn(0, {"X", DbfFieldType('M'), 9, 0});
        transform.insertNewColumn(1, DbfFieldDescriptor::floatField("Y", 0));
        QVector<DbfFieldConverter*> converters;
        for (const DbfColumn& column : transform.schema.columns)
            converters << column.converter;
        QCOMPARE(converters, (QVector<DbfFieldConverter*>{
                                 DbfByteArrayConverter::instance(), DbfDoubleConverter::instance(),
                                 DbfIntConverter::instance(), DbfIntConverter::instance()}));
        QCOMPARE(transform.schema.codec, schema.codec);
    }

    void fieldsAreCopiedOrConverted()
    {
        const auto column = [](char type, unsigned char length, unsigned char decimals = 0) {
            return DbfColumn(DbfFieldDescriptor("F", DbfFieldType(type), length, decimals));
        };
        const auto converted = [](const DbfColumn& source, const DbfColumn& target,
                                  const QByteArray& bytes, const char* codec = "Windows-1251") {
            const DbfSchema targetSchema({}, QTextCodec::codecForName(codec));
            const ExactBytes field(bytes);
            QByteArray result =
                transformField(field.view(), sourceSchema(), source, targetSchema, target);
            result.detach();
            return result;
        };
        const DbfColumn text = column('C', 4);
        DbfColumn renamed = text;
        renamed.descriptor.name = "G";
        DbfColumn integer = column('I', 4);
        integer.setConverter(DbfIntConverter::instance());
        DbfColumn bare = text;
        bare.setConverter(nullptr);

        QCOMPARE(converted(text, renamed, hex("cf20e000")), hex("cf20e000"));
        QCOMPARE(converted(text, renamed, hex("cf20e000"), "IBM 866"), hex("8f20a000"));
        QCOMPARE(converted(column('L', 1), column('L', 1), "y", "IBM 866"), QByteArray("T"));
        QCOMPARE(converted(text, column('C', 6), " ab "), hex("6162 00000000"));
        QCOMPARE(converted(column('N', 6, 2), column('F', 6, 1), "  2.26"), QByteArray("   2.3"));
        QCOMPARE(converted(text, column('F', 5, 1), "abcd"), QByteArray("  0.0"));
        QCOMPARE(converted(column('L', 1), column('D', 8), "T"), QByteArray(8, ' '));
        QCOMPARE(converted(text, integer, " 258"), hex("02010000"));
        QCOMPARE(converted(integer, text, hex("0201")), hex("00000000"));
        QCOMPARE(converted(bare, bare, hex("cf20e000")), hex("cf20e000"));
        QCOMPARE(converted(bare, column('C', 5), "abcd"), hex("61626364 00"));
        QCOMPARE(converted(text, bare, "ab  "), QByteArray("ab"));
    }

    void recordsAreRewritten()
    {
        const auto rewritten = [](const QByteArray& image, const QList<int>& sources,
                                  const char* codec = "Windows-1251") {
            const ExactBytes bytes(image);
            DbfSchemaTransform transform(sourceSchema(), sources);
            transform.schema.setCodec(QTextCodec::codecForName(codec));
            return DbfTable::transformRecord(bytes.view(), sourceSchema(), transform);
        };
        const QByteArray image = hex("41 0062202020 3f") + "baddate!";
        QCOMPARE(rewritten(image, {0, 1, 2}), image);
        QCOMPARE(rewritten(image, {0, 1, 2}, "KOI8-R"), hex("41 0000000000 46 2020202020202020"));
        QCOMPARE(rewritten("*20240", {0, 0, 0, 9}), QByteArray("*20240T        "));
        QCOMPARE(rewritten(image, {-1, -1, -1}), QByteArray("A      19000101"));
        QCOMPARE(rewritten("*te", {0, 1, 2}), QByteArray("*te"));
        QCOMPARE(rewritten("", {0, -1, -1}), QByteArray("  19000101"));
    }

    void fieldsAreResized()
    {
        QCOMPARE(resizeField("abc", 2, 2), QByteArray("abc"));
        QCOMPARE(resizeField("abcdef", 6, 3), QByteArray("abc"));
        QCOMPARE(resizeField("ab", 6, 3), QByteArray("ab"));
        QCOMPARE(resizeField("abcdefg", 3, 6), QByteArray("abcdefg   "));
    }
};

QTEST_APPLESS_MAIN(TestSchemaTransform)

#include "tst_schematransform.moc"
