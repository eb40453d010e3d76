// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/format/dbflanguagedriver.h>
#include <dbf/format/dbfnullablecolumn.h>
#include <dbf/format/layout_p.h>
#include <dbf/table/deviceprimitives_p.h>
#include <dbf/table/errortext_p.h>
#include <dbf/transform/dbfcopyoptions.h>
#include <dbf/transform/dbffile.h>

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QtEndian>

#include <algorithm>

namespace dbf
{

namespace
{

constexpr int batchBytes = 1048576;
constexpr char hasIndex = 0x01; // of the table flags

char withoutIndex(char flags)
{
    return static_cast<char>(flags & ~hasIndex);
}

/// Why a file is not rewritten; empty when progress stopped it.
struct Failure {
    QString text;
};

[[noreturn]] void fail(const QString& what, const QString& reason = {})
{
    throw Failure{errortext::because(what, reason)};
}

/// A file that is being rewritten. Its functions throw a Failure.
class Rewriting
{
public:
    Rewriting(const QString& path, const DbfFileOptions& options)
        : m_options(options)
        , m_path(QFileInfo(path).canonicalFilePath())
        , m_file(m_path)
        , m_table(&m_file)
        , m_target(m_path)
    {
    }

    void start();
    void pack();
    void restructure(const std::function<void(DbfSchemaTransform&)>& edit);
    void finish();

private:
    quint32 copyKept();
    QByteArray read(int first, int count);
    void write(qint64 position, const QByteArray& bytes);
    void requireWritten(bool written)
    {
        if (written)
            return;
        fail(QStringLiteral("The new file cannot be written"), errortext::ofFailedWrite(&m_target));
    }

    const DbfFileOptions m_options;
    const QString m_path;
    QFile m_file;
    DbfTable m_table;
    QSaveFile m_target;
    qint64 m_size = 0;
    QDateTime m_modified;
    QByteArray m_start; // what stands before the records
};

void Rewriting::start()
{
    const QFileInfo file(m_path);
    if (!file.isFile())
        fail(QStringLiteral("There is no such file"));
    m_size = file.size();
    m_modified = file.lastModified();
    m_table.setAcceptedVersions(m_options.acceptedVersions);
    m_table.setConverterChoice(nullableConverter);
    if (m_options.converterChoice)
        m_table.setConverterChoice(m_options.converterChoice);
    m_table.setCodecChoice(codecOfLanguageDriver);
    if (m_options.codecChoice)
        m_table.setCodecChoice(m_options.codecChoice);
    if (!m_table.open(QIODevice::ReadOnly))
        fail(m_table.errorString());
    if (m_table.descriptor().recordLength == 0)
        fail(QStringLiteral("This is no table: its records have no bytes"));
    m_file.seek(0);
    m_start = m_file.read(m_table.descriptor().headerLength);
    if (m_start.size() < m_table.descriptor().headerLength)
        fail(QStringLiteral("The header cannot be read"), errortext::ofDevice(&m_file));
    if ((m_start.at(layout::tableFlagsOffset) & hasIndex) && !m_options.ignoreIndexes)
        fail(QStringLiteral("An index file belongs to the table, which would be wrong"));
    m_start[layout::tableFlagsOffset] = withoutIndex(m_start.at(layout::tableFlagsOffset));
}

void Rewriting::write(qint64 position, const QByteArray& bytes)
{
    if (m_target.pos() != position) {
        requireWritten(m_target.flush()); // which seek() does, too, but forgets why it failed
        requireWritten(m_target.seek(position));
    }
    requireWritten(m_target.write(bytes) == bytes.size());
}

void Rewriting::pack()
{
    requireWritten(m_target.open(QIODevice::WriteOnly));
    write(0, m_start);
    const quint32 kept = copyKept();
    write(m_target.pos(), QByteArray(1, layout::endMarker));
    char count[layout::recordCountSize];
    qToLittleEndian(kept, count);
    write(layout::recordCountOffset, QByteArray(count, layout::recordCountSize));
}

quint32 Rewriting::copyKept()
{
    const int length = m_table.descriptor().recordLength;
    const int total = m_table.recordCount();
    const int batch = std::max(batchBytes / length, 1);
    quint32 kept = 0;
    int done = 0;
    do { // A table without records is one batch of none.
        const int count = std::min(batch, total - done);
        const QByteArray images = read(done, count);
        QByteArray live;
        for (int start = 0; start < images.size(); start += length) {
            if (images.at(start) != layout::deletedFlag)
                live.append(images.constData() + start, length);
        }
        kept += static_cast<quint32>(live.size() / length);
        write(m_target.pos(), live);
        done += count;
        if (m_options.progress && !m_options.progress(done, total))
            throw Failure{};
    } while (done < total);
    return kept;
}

QByteArray Rewriting::read(int first, int count)
{
    try {
        return DbfTable::readRecordsData(&m_file, first, static_cast<unsigned>(count),
                                         m_table.descriptor());
    } catch (DbfTable::DbfTableError) {
        const qint64 whole = errortext::wholeRecords(&m_file, m_table.descriptor()).value_or(first);
        fail(errortext::records(whole, 1, m_table.recordCount()) +
                 QStringLiteral(" cannot be read"),
             QStringLiteral("the file ends after %1").arg(whole));
    }
}

void Rewriting::restructure(const std::function<void(DbfSchemaTransform&)>& edit)
{
    DbfSchemaTransform transform = DbfSchemaTransform::identity(m_table.schema());
    edit(transform);
    DbfCopyOptions options;
    options.progress = m_options.progress;
    options.keepMetadata = true;
    options.codePage = m_options.codePage;
    options.checkValues = m_options.checkValues;
    if (!m_table.copyAndTransform(&m_target, transform, options))
        fail(m_table.errorString());
    write(layout::tableFlagsOffset, m_start.mid(layout::tableFlagsOffset, 1));
}

// commit() reports success when the last buffered write fails, so that write comes before.
void Rewriting::finish()
{
    requireWritten(m_target.flush());
    const QFileInfo now(m_path);
    if (now.size() != m_size || now.lastModified() != m_modified)
        fail(QStringLiteral("Another program has changed the file meanwhile"));
    m_target.setPermissions(now.permissions());
    requireWritten(m_target.commit());
}

template <typename Operation>
bool rewrite(const QString& path, const DbfFileOptions& options, QString* errorString,
             Operation operation)
{
    QString text;
    bool done = false;
    try {
        Rewriting rewriting(path, options);
        rewriting.start();
        operation(rewriting);
        rewriting.finish();
        done = true;
    } catch (const Failure& failure) {
        text = failure.text;
    }
    if (errorString)
        *errorString = text;
    return done;
}

} // namespace

bool packFile(const QString& path, const DbfFileOptions& options, QString* errorString)
{
    return rewrite(path, options, errorString, [](Rewriting& rewriting) { rewriting.pack(); });
}

bool restructureFile(const QString& path,
                     const std::function<void(DbfSchemaTransform& transform)>& edit,
                     const DbfFileOptions& options, QString* errorString)
{
    return rewrite(path, options, errorString,
                   [&edit](Rewriting& rewriting) { rewriting.restructure(edit); });
}

} // namespace dbf
