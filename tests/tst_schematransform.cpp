// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "bytes.h"

#include <dbf/dbf.h>

#include <QTextCodec>
#include <QtTest/QtTest>

#include <stdexcept>

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
    void editsCopeWithAShortMap()
    {
        DbfSchemaTransform transform(sourceSchema(), {2});
        transform.moveColumn(0, 2);
        transform.moveColumn(2, 0);
        transform.deleteColumn(2);
        transform.insertNewColumn(2, DbfFieldDescriptor());
        QCOMPARE(transform.sourceIndexes, (QList<int>{2, -1}));
        QCOMPARE(transform.schema.columns.size(), 3);
    }

    void ownConvertersAreAskedForEachBlank()
    {
        struct Numbering : DbfByteArrayConverter {
            mutable char next = '1';
            QByteArray defaultBytes(int length) const override
            {
                return QByteArray(length, next++);
            }
        } numbering;
        DbfSchemaTransform transform = DbfSchemaTransform::identity(sourceSchema());
        transform.insertNewColumn(0, DbfFieldDescriptor::stringField("X", 2));
        transform.schema.columns[0].setConverter(&numbering);
        const QByteArray image = " Text y20240229";
        for (const char* blank : {" 11", " 22"})
            QCOMPARE(DbfTable::transformRecord(image, sourceSchema(), transform),
                     blank + image.mid(1));
    }

    void numbersOutOfWideTextAreConvertedToo()
    {
        QTextCodec* const wide = QTextCodec::codecForName("UTF-16LE");
        const DbfSchema source({DbfFieldDescriptor::stringField("N", 8)}, wide);
        DbfSchemaTransform transform = DbfSchemaTransform::identity(source);
        transform.updateColumn(0, DbfFieldDescriptor::floatField("N", 1));
        // UTF-16 text ends at its first zero byte, after "4" alone.
        QCOMPARE(DbfTable::transformRecord(" 4\0"
                                           "2\0 \0 \0",
                                           source, transform),
                 ' ' + transformField(QByteArray("4\0"
                                                 "2\0 \0 \0",
                                                 8),
                                      source, source.columns[0], transform.schema,
                                      transform.schema.columns[0]));
    }

    void editsKeepColumnsAndSourcesParallel()
    {
        const auto added = DbfFieldDescriptor::stringField("X", 3);
        const auto after = [](auto edit, auto... arguments) {
            DbfSchemaTransform transform = DbfSchemaTransform::identity(sourceSchema());
            (transform.*edit)(arguments...);
            return shown(transform);
        };
        using Edit = void (DbfSchemaTransform::*)(int, const DbfFieldDescriptor&);
        const Edit insert = &DbfSchemaTransform::insertNewColumn;
        const Edit update = &DbfSchemaTransform::updateColumn;
        const auto remove = &DbfSchemaTransform::deleteColumn;
        const auto move = &DbfSchemaTransform::moveColumn;
        const QString unchanged = "A0 B1 C2";
        QCOMPARE(after(insert, 0, added), QString("X- A0 B1 C2"));
        QCOMPARE(after(insert, 3, added), QString("A0 B1 C2 X-"));
        QCOMPARE(after(update, 2, added), QString("A0 B1 X2"));
        QCOMPARE(after(remove, 1), QString("A0 C2"));
        QCOMPARE(after(move, 0, 2), QString("B1 C2 A0"));
        QCOMPARE(after(move, 2, 0), QString("C2 A0 B1"));
        QCOMPARE(after(move, 1, 1), unchanged);
        QCOMPARE(after(insert, 4, added), unchanged);
        QCOMPARE(after(insert, -1, added), unchanged);
        for (const int beyond : {-1, 3, 2147483647}) {
            QCOMPARE(after(update, beyond, added), unchanged);
            QCOMPARE(after(remove, beyond), unchanged);
            QCOMPARE(after(move, beyond, 1), unchanged);
            QCOMPARE(after(move, 1, beyond), unchanged);
        }
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
        const QVector<DbfFieldConverter*> expected = {
            DbfByteArrayConverter::instance(), DbfDoubleConverter::instance(),
            DbfIntConverter::instance(), DbfIntConverter::instance()};
        for (int i = 0; i < expected.size(); ++i)
            QCOMPARE(transform.schema.columns[i].converter, expected[i]);
        QCOMPARE(transform.schema.codec, schema.codec);
        QCOMPARE(schema.columns[0].converter, DbfIntConverter::instance());
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
        const QByteArray eight(8, ' ');

        QCOMPARE(converted(text, renamed, hex("cf20e000")), hex("cf20e000"));
        QCOMPARE(converted(text, renamed, hex("cf20e000"), "IBM 866"), hex("8f20a000"));
        QCOMPARE(converted(column('D', 8), column('D', 8), "no date!", "IBM 866"), eight);
        QCOMPARE(converted(column('L', 1), column('L', 1), "y", "IBM 866"), QByteArray("T"));
        QCOMPARE(converted(text, column('C', 6), " ab "), hex("6162 00000000"));
        QCOMPARE(converted(text, column('C', 2), "abcd"), QByteArray("ab"));
        QCOMPARE(converted(column('N', 6, 2), column('F', 6, 1), "  2.26"), QByteArray("   2.3"));
        QCOMPARE(converted(text, column('F', 5, 1), "abcd"), QByteArray("  0.0"));
        QCOMPARE(converted(column('L', 1), column('D', 8), "T"), eight);
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

    void sourcesOutOfRangeThrow()
    {
        const QByteArray image("*text T20240229");
        for (const QList<int>& sources :
             {QList<int>{0, 1, 3}, {-2, 1, 2}, {0, 2147483647, 2}, {0, 1}, {}}) {
            const DbfSchemaTransform transform(sourceSchema(), sources);
            QVERIFY_EXCEPTION_THROWN(DbfTable::transformRecord(image, sourceSchema(), transform),
                                     std::out_of_range);
        }
    }

    void fieldsAreResized()
    {
        QCOMPARE(resizeField("ab", 2, 2), QByteArray("ab"));
        QCOMPARE(resizeField("abcdef", 6, 3), QByteArray("abc"));
        QCOMPARE(resizeField("ab", 6, 3), QByteArray("ab"));
        QCOMPARE(resizeField("ab", 2, 5), QByteArray("ab   "));
        QCOMPARE(resizeField("abcdefg", 3, 6), QByteArray("abcdefg   "));
    }
};

QTEST_APPLESS_MAIN(TestSchemaTransform)

#include "tst_schematransform.moc"
