// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

// Copies of whole tables, in this process and, beside other programs, in processes of their own.

#include "copies.h"
#include "program.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>

namespace bench
{

namespace
{

using Copier = std::function<void(const Table& source, const QString& target)>;

QString sourceOf(const Table& table)
{
    return QString::fromStdString(table.path);
}

// ogr2ogr leaves the name of the codec in a file beside the table.
void removeTable(const QString& path)
{
    QFile::remove(path);
    QFile::remove(path.section('.', 0, -2) + ".cpg");
}

void addCopier(const char* subject, Copy copy, const Table& table, const Sums& original,
               const Copier& copier)
{
    const std::string name =
        benchmarkName(subject, copyNames[static_cast<int>(copy)], table.records);
    const QString target = sourceOf(table) + ".copy.dbf";
    add({name, table.records, [=] { copier(table, target); },
         [=] {
             checkCopy(name, copy, target.toStdString(), original);
             removeTable(target);
         },
         [=] {
             removeTable(target);
             ::sync(); // so that nobody pays for what the one before has written
         }});
}

void copyWithCp(const Table& source, const QString& target)
{
    runProcess({"cp", sourceOf(source), target});
}

/// \a options say what is to change.
void copyWithOgr2ogr(const Table& source, const QString& target, const QStringList& options)
{
    runProcess(QStringList{"ogr2ogr", "-f", "ESRI Shapefile", target, sourceOf(source)} + options);
}

QStringList ogr2ogrOptions(Copy copy, const Table& source)
{
    if (copy == Copy::Recode)
        return {"-lco", "ENCODING=CP866"};
    const QStringList sameCodec = {"-lco", "ENCODING=CP1251"};
    if (copy == Copy::Identity)
        return sameCodec;
    const QString layer = sourceOf(source).section('/', -1).section('.', 0, 0);
    return sameCodec +
           QStringList{
               "-sql",
               "SELECT ID, QUANTITY, CAST('' AS character(12)) AS NOTE, NAME, "
               "CAST(CITY AS character(40)) AS CITY, CAST(PRICE AS numeric(20,2)) AS PRICE, "
               "SOLD, ACTIVE, WEIGHT, ADDRESS FROM \"" +
                   layer + '"'};
}

/// Ends the program unless \a path holds a line for each record, with the row's number first.
void checkCsv(const std::string& name, const QString& path, int records)
{
    std::ifstream file(path.toStdString());
    std::string line;
    std::getline(file, line);
    for (int row = 1; row <= records; ++row) {
        if (std::getline(file, line) && std::atoi(line.c_str() + (line[0] == '"' ? 1 : 0)) == row)
            continue;
        std::cerr << name << ": row " << row << " is \"" << line << "\"\n";
        std::exit(1);
    }
}

void addCsv(const char* subject, const Table& table, const Copier& exporter)
{
    const std::string name = benchmarkName(subject, "csv", table.records);
    const QString target = sourceOf(table) + ".csv";
    add({name, table.records, [=] { exporter(table, target); },
         [=] {
             checkCsv(name, target, table.records);
             QFile::remove(target);
         },
         [=] {
             QFile::remove(target);
             ::sync(); // so that nobody pays for what the one before has written
         }});
}

void addWorkloads(const Table& table, const QString& programFolder)
{
    addCsv("command", table, [=](const Table& source, const QString& target) {
        runProcess({BENCH_COMMAND, "cat", "--csv", sourceOf(source)}, target);
    });
    addCsv("ogr2ogr", table, [=](const Table& source, const QString& target) {
        runProcess({"ogr2ogr", "-f", "CSV", target, sourceOf(source)});
    });
    const Sums original = sumsOfRows(table.records, Numeric::AsNumber);
    for (const Copy copy : {Copy::Identity, Copy::Restructure, Copy::Recode}) {
        addCopier("dbftable", copy, table, original,
                  [=](const Table& source, const QString& target) {
                      copyTable(copy, source.path, target.toStdString());
                  });
        addCopier("copytable", copy, table, original,
                  [=](const Table& source, const QString& target) {
                      runProcess({programFolder + "/copytable", copyNames[static_cast<int>(copy)],
                                  sourceOf(source), target});
                  });
        addCopier("ogr2ogr", copy, table, original,
                  [=](const Table& source, const QString& target) {
                      copyWithOgr2ogr(source, target, ogr2ogrOptions(copy, source));
                  });
    }
    addCopier("cp", Copy::Identity, table, original, copyWithCp);
}

} // namespace

} // namespace bench

int main(int argc, char** argv)
{
    const QString programFolder = QString::fromLocal8Bit(argv[0]).section('/', 0, -2);
    for (const bench::Table& table : bench::initialize(argc, argv))
        bench::addWorkloads(table, programFolder);
    return bench::run();
}
