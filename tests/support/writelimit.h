// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <csignal>

#include <QtGlobal>
#include <sys/resource.h>

/// No file can grow beyond \p size bytes while this exists; 0 is a full disk.
class WriteLimit
{
public:
    explicit WriteLimit(rlim_t size) : m_previousHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_previous);
        const rlimit limit = {size, m_previous.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~WriteLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_previous);
        std::signal(SIGXFSZ, m_previousHandler);
    }
    Q_DISABLE_COPY_MOVE(WriteLimit)

private:
    void (*m_previousHandler)(int);
    rlimit m_previous = {};
};
