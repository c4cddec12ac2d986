// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>
#include <unistd.h>
#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif

/// Runs as an ordinary user while this exists: root may open everything.
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
            qFatal("cannot become root again");
        }
#ifdef Q_OS_LINUX
        // Lost with the change of user, and needed by the leak check.
        prctl(PR_SET_DUMPABLE, 1);
#endif
    }
    Q_DISABLE_COPY_MOVE(OrdinaryUser)

    /// The tests run as root and cannot become another user.
    const bool failed;

private:
    static constexpr uid_t nobody = 65534;
};
