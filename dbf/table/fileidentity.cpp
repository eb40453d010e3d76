// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/table/fileidentity_p.h>

#include <QtCore/QFile>

#include <sys/stat.h>

namespace dbf
{

std::optional<FileIdentity> identityOf(const QFileDevice& file)
{
    struct stat status = {};
    const int result = file.isOpen()
                           ? fstat(file.handle(), &status)
                           : stat(QFile::encodeName(file.fileName()).constData(), &status);
    if (result != 0)
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

} // namespace dbf
