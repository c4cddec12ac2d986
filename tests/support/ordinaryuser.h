// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>
#include <unistd.h>
#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif

/// Runs as an ordinary user as long as it lives: the superuser is let in everywhere.
class OrdinaryUser
{
public:
    OrdinaryUser() : failed(geteuid() == 0 && seteuid(nobody) != 0) { }
    ~OrdinaryUser()
    {
        if (getuid() != 0) {
            return;
        }
        if (seteuid(0) != 0) {
            qFatal("cannot become the superuser again");
        }
#ifdef Q_OS_LINUX
        // Lost with the change of user, and needed by the leak check.
        prctl(PR_SET_DUMPABLE, 1);
#endif
    }
    Q_DISABLE_COPY_MOVE(OrdinaryUser)

    /// The tests run as root, and cannot become anybody else.
    const bool failed;

private:
    static constexpr uid_t nobody = 65534;
};
