// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

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

/// A file that is being rewritten.
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

    /// Rewrites it by \a operation, which writes the target and returns whether it is whole.
    template <typename Operation>
    bool run(Operation operation)
    {
        return start() && operation(*this) && finish();
    }

    bool pack();
    bool restructure(const std::function<void(DbfSchemaTransform&)>& edit);
    QString errorString() const { return m_error; }

private:
    bool start();
    bool finish();
    bool copyKept(quint32& kept);
    bool read(int first, int count, QByteArray& images);
    bool write(const QByteArray& bytes);
    bool goesOn(int done) const
    {
        return !m_options.progress || m_options.progress(done, m_table.recordCount());
    }
    bool fail(const QString& what)
    {
        m_error = what;
        return false;
    }
    bool writingFails()
    {
        return fail(errortext::because(QStringLiteral("The new file cannot be written"),
                                       m_target.errorString()));
    }

    const DbfFileOptions m_options;
    const QString m_path;
    QFile m_file;
    DbfTable m_table;
    QSaveFile m_target;
    qint64 m_size = 0;
    QDateTime m_modified;
    QByteArray m_start; // what stands before the records
    QString m_error;
};

bool Rewriting::start()
{
    const QFileInfo file(m_path);
    if (m_path.isEmpty() || !file.isFile())
        return fail(QStringLiteral("There is no such file"));
    m_size = file.size();
    m_modified = file.lastModified();
    const DbfTable::CodecChoice byDriver = [](const DbfTableDescriptor& table) {
        return DbfTable::codecByLanguageDriver(static_cast<quint8>(table.codePage));
    };
    m_table.setAcceptedVersions(m_options.acceptedVersions);
    m_table.setConverterChoice(m_options.converterChoice ? m_options.converterChoice
                                                         : nullableConverter);
    m_table.setCodecChoice(m_options.codecChoice ? m_options.codecChoice : byDriver);
    if (!m_table.open(QIODevice::ReadOnly))
        return fail(m_table.errorString());
    if (m_table.descriptor().recordLength == 0 || !m_file.seek(0))
        return fail(QStringLiteral("This is no table: its records have no bytes"));
    m_start = m_file.read(m_table.descriptor().headerLength);
    if (m_start.size() < m_table.descriptor().headerLength)
        return fail(errortext::because(QStringLiteral("The header cannot be read"),
                                       errortext::ofDevice(&m_file)));
    if ((m_start.at(layout::tableFlagsOffset) & hasIndex) && !m_options.ignoreIndexes)
        return fail(QStringLiteral("An index file belongs to the table, which would be wrong"));
    return true;
}

bool Rewriting::write(const QByteArray& bytes)
{
    return m_target.write(bytes) == bytes.size() || writingFails();
}

bool Rewriting::pack()
{
    if (!m_target.open(QIODevice::WriteOnly))
        return writingFails();
    m_start[layout::tableFlagsOffset] = withoutIndex(m_start.at(layout::tableFlagsOffset));
    quint32 kept = 0;
    if (!write(m_start) || !copyKept(kept) || !write(QByteArray(1, layout::endMarker)))
        return false;
    char count[layout::recordCountSize];
    qToLittleEndian(kept, count);
    return (m_target.seek(layout::recordCountOffset) || writingFails()) &&
           write(QByteArray(count, layout::recordCountSize));
}

bool Rewriting::copyKept(quint32& kept)
{
    const int length = m_table.descriptor().recordLength;
    const int total = m_table.recordCount();
    const int batch = std::max(batchBytes / length, 1);
    int done = 0;
    do { // A table without records is one batch of none.
        const int count = std::min(batch, total - done);
        QByteArray images;
        if (!read(done, count, images))
            return false;
        QByteArray live;
        for (int start = 0; start < images.size(); start += length) {
            if (images.at(start) != layout::deletedFlag)
                live.append(images.constData() + start, length);
        }
        kept += static_cast<quint32>(live.size() / length);
        if (!write(live))
            return false;
        done += count;
        if (!goesOn(done))
            return false;
    } while (done < total);
    return true;
}

bool Rewriting::read(int first, int count, QByteArray& images)
{
    if (count == 0)
        return true;
    try {
        images = DbfTable::readRecordsData(&m_file, first, static_cast<unsigned>(count),
                                           m_table.descriptor());
        return true;
    } catch (DbfTable::DbfTableError) {
        const qint64 whole = errortext::wholeRecords(&m_file, m_table.descriptor()).value_or(first);
        return fail(errortext::because(errortext::records(whole, 1, m_table.recordCount()) +
                                           QStringLiteral(" cannot be read"),
                                       QStringLiteral("the file ends after %1").arg(whole)));
    }
}

bool Rewriting::restructure(const std::function<void(DbfSchemaTransform&)>& edit)
{
    DbfSchemaTransform transform = DbfSchemaTransform::identity(m_table.schema());
    edit(transform);
    DbfCopyOptions options;
    options.progress = m_options.progress;
    options.keepMetadata = true;
    options.codePage = m_options.codePage;
    options.checkValues = m_options.checkValues;
    if (!m_table.copyAndTransform(&m_target, transform, options))
        return fail(m_table.errorString());
    const char flags = withoutIndex(m_start.at(layout::tableFlagsOffset));
    return (m_target.seek(layout::tableFlagsOffset) || writingFails()) &&
           write(QByteArray(1, flags));
}

// commit() reports success when the last buffered write fails, so that write comes before.
bool Rewriting::finish()
{
    if (!m_target.flush())
        return writingFails();
    const QFileInfo now(m_path);
    if (now.size() != m_size || now.lastModified() != m_modified)
        return fail(QStringLiteral("Another program has changed the file meanwhile"));
    m_target.setPermissions(now.permissions());
    return m_target.commit() || writingFails();
}

template <typename Operation>
bool rewrite(const QString& path, const DbfFileOptions& options, QString* errorString,
             Operation operation)
{
    Rewriting rewriting(path, options);
    const bool done = rewriting.run(operation);
    if (errorString)
        *errorString = rewriting.errorString();
    return done;
}

} // namespace

bool packFile(const QString& path, const DbfFileOptions& options, QString* errorString)
{
    return rewrite(path, options, errorString,
                   [](Rewriting& rewriting) { return rewriting.pack(); });
}

bool restructureFile(const QString& path,
                     const std::function<void(DbfSchemaTransform& transform)>& edit,
                     const DbfFileOptions& options, QString* errorString)
{
    return rewrite(path, options, errorString,
                   [&edit](Rewriting& rewriting) { return rewriting.restructure(edit); });
}

} // namespace dbf
