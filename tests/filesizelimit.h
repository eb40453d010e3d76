// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TESTS_FILESIZELIMIT_H
#define TESTS_FILESIZELIMIT_H

#include <csignal>
#include <sys/resource.h>

/// Lets no file of this process grow beyond a number of bytes while it lives, as a full disk does.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(long bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = static_cast<rlim_t>(bytes);
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
};

#endif
