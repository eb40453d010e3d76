// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "source.h"

#include "failure.h"

#include <QTextCodec>
#include <QtCore/QFileInfo>

using namespace dbf;

Source::Source(const QString& path, const QString& label)
    : m_path(path), m_file(path), m_table(&m_file)
{
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile())
        fail(path, QStringLiteral("it is no regular file"));
    if (!m_file.open(QIODevice::ReadOnly))
        fail(path, m_file.errorString());
    char version = 0;
    static_cast<void>(m_file.peek(&version, 1)); // An empty file fails at open().
    m_memoPath = DbfMemoFile::pathBeside(path, static_cast<quint8>(version));
    m_memoFile.setFileName(m_memoPath);
    m_memo = std::make_unique<DbfMemoFile>(&m_memoFile, static_cast<quint8>(version));
    m_table.setAcceptedVersions(DbfTable::AllVersions);
    m_table.setConverterChoice(nullableConverters(m_memo.get()));
    m_table.setCodecChoice(codecOfLanguageDriver);
    chooseCodec(label);
}

void Source::chooseCodec(const QString& label)
{
    for (const char* const suffix : {".cpg", ".CPG"}) {
        const QString path = withSuffix(m_path, QLatin1String(suffix));
        if (m_codePagePath.isEmpty() && QFileInfo(path).isFile())
            m_codePagePath = path;
    }
    if (!label.isEmpty()) {
        m_table.overrideTextCodec(codecOf(label));
        return;
    }
    constexpr int longestLabel = 64;
    QFile file(m_codePagePath);
    if (!m_codePagePath.isEmpty() && file.open(QIODevice::ReadOnly))
        m_table.overrideTextCodec(DbfTable::codecByLabel(file.read(longestLabel)));
}

void Source::open()
{
    if (!m_table.open(QIODevice::ReadOnly))
        fail(m_path, m_table.errorString());
}

void Source::requireNoError()
{
    if (m_table.hasError())
        fail(m_path, m_table.errorString());
}

QTextCodec* codecOf(const QString& label)
{
    QTextCodec* codec = DbfTable::codecByLabel(label.toLatin1());
    if (codec == nullptr)
        codec = QTextCodec::codecForName(label.toLatin1());
    if (codec == nullptr)
        throw Failure{UsageError, QStringLiteral("there is no code page %1").arg(label)};
    if (codec->fromUnicode(QStringLiteral("A")) != "A")
        throw Failure{UsageError, QStringLiteral("tables cannot be in %1").arg(label)};
    return codec;
}

QString withSuffix(const QString& path, const QString& suffix)
{
    const QFileInfo file(path);
    return file.path() + QLatin1Char('/') + file.completeBaseName() + suffix;
}
