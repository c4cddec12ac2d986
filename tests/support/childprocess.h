// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

/// What tests run in a process of its own. It must not use the macros of the tests.
namespace ChildProcess
{

/// Exit codes, besides those of the test. The last two say that this machine does not allow it.
enum Result { Done = 0, NoUser = 90, NoNamespace = 91 };

/// A user without privileges who owns nothing.
constexpr uid_t nobody = 65534;

/// The exit code of \p run, or -1.
inline int run(const std::function<int()> &run)
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(run());
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
        return -1;
    }
    return WEXITSTATUS(status);
}

/// If the tests run as root, becomes a user to whom the permissions of files apply, in one more
/// group if \p group says so.
inline bool becomeOrdinaryUser(gid_t group = nobody)
{
    return geteuid() != 0
        || (setgroups(1, &group) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0);
}

/// The same as run(), as an ordinary user.
inline int runAsOrdinaryUser(const std::function<int()> &run)
{
    return ChildProcess::run([&run] { return becomeOrdinaryUser() ? run() : int(NoUser); });
}

/// Mounts a file system of its own, which goes with the process.
inline bool mountOwn(const char *type, const char *folder, const char *options)
{
    return unshare(CLONE_NEWNS) == 0
        && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
        && mount(type, folder, type, 0, options) == 0;
}

} // namespace ChildProcess
