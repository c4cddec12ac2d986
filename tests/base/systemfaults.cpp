// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/systemfaults.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace
{

using SystemFaults::Kind;
using SystemFaults::Plan;

bool isRunning = false;
Plan plan;
std::array<const char *, 1000> names;
size_t count = 0;

bool hasName(size_t call, const char *name)
{
    return std::strcmp(names.at(call - 1), name) == 0;
}

// What happens to the call that is made now.
Kind next(const char *name)
{
    if (!isRunning) {
        return Kind::None;
    }
    names.at(count) = name;
    ++count;
    const auto call = size_t(plan.call);
    if (count < call || call == 0) {
        return Kind::None;
    }
    const bool isLater = count > call;
    switch (plan.kind) {
    case Kind::End:
        return Kind::Once;
    case Kind::EndHalfway:
        return isLater ? Kind::Once : Kind::Half;
    case Kind::FromThenOn:
        return hasName(call, name) ? Kind::Once : Kind::None;
    case Kind::Kill:
        kill(getpid(), SIGKILL);
        break;
    default:
        break;
    }
    return isLater ? Kind::None : plan.kind;
}

bool fails(const char *name)
{
    const bool failing = next(name) == Kind::Once;
    if (failing) {
        errno = plan.error;
    }
    return failing;
}

template<typename Result, typename... Arguments>
Result real(const char *name, Arguments... arguments)
{
    using Function = Result (*)(Arguments...);
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name))(arguments...);
}

template<typename Result, typename... Arguments>
Result call(const char *name, Arguments... arguments)
{
    return fails(name) ? -1 : real<Result>(name, arguments...);
}

} // namespace

void SystemFaults::start(const Plan &newPlan)
{
    plan = newPlan;
    count = 0;
    isRunning = true;
}

std::vector<const char *> SystemFaults::stop()
{
    isRunning = false;
    return {names.begin(), names.begin() + count};
}

extern "C" {

int openat(int fd, const char *file, int oflag, ...)
{
    va_list rest;
    va_start(rest, oflag);
    const bool isUnnamed = (oflag & O_TMPFILE) == O_TMPFILE;
    const bool hasMode = isUnnamed || (oflag & O_CREAT) != 0;
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it is
    const mode_t mode = hasMode ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    if (fails("openat")) {
        return -1;
    }
    if (isRunning && isUnnamed && !plan.hasUnnamedFiles) {
        errno = EOPNOTSUPP;
        return -1;
    }
    return real<int>("openat", fd, file, oflag, mode);
}

ssize_t write(int fd, const void *buf, size_t n)
{
    const Kind kind = next("write");
    if (kind == Kind::Once) {
        errno = plan.error;
        return -1;
    }
    return real<ssize_t>("write", fd, buf, kind == Kind::Half ? (n + 1) / 2 : n);
}

ssize_t read(int fd, void *buf, size_t nbytes)
{
    return call<ssize_t>("read", fd, buf, nbytes);
}

// The file is still closed.
int close(int fd)
{
    const bool failing = fails("close");
    const int result = real<int>("close", fd);
    if (failing) {
        errno = plan.error;
        return -1;
    }
    return result;
}

// Never to the disk, which would take time.
int fsync(int /*fd*/)
{
    return fails("fsync") ? -1 : 0;
}

int dup(int fd) noexcept
{
    return call<int>("dup", fd);
}

int ftruncate(int fd, off_t length) noexcept
{
    return call<int>("ftruncate", fd, length);
}

int ftruncate64(int fd, off64_t length) noexcept
{
    return call<int>("ftruncate64", fd, length);
}

int fchmod(int fd, mode_t mode) noexcept
{
    return call<int>("fchmod", fd, mode);
}

int fstat(int fd, struct stat *buf) noexcept
{
    return call<int>("fstat", fd, buf);
}

int fstatat(int fd, const char *file, struct stat *buf, int flag) noexcept
{
    return call<int>("fstatat", fd, file, buf, flag);
}

int faccessat(int fd, const char *file, int type, int flag) noexcept
{
    return call<int>("faccessat", fd, file, type, flag);
}

ssize_t readlinkat(int fd, const char *path, char *buf, size_t len) noexcept
{
    return call<ssize_t>("readlinkat", fd, path, buf, len);
}

ssize_t flistxattr(int fd, char *list, size_t size) noexcept
{
    return call<ssize_t>("flistxattr", fd, list, size);
}

ssize_t fgetxattr(int fd, const char *name, void *value, size_t size) noexcept
{
    return call<ssize_t>("fgetxattr", fd, name, value, size);
}

int memfd_create(const char *name, unsigned int flags) noexcept
{
    return call<int>("memfd_create", name, flags);
}

int linkat(int fromfd, const char *from, int tofd, const char *to, int flags) noexcept
{
    return call<int>("linkat", fromfd, from, tofd, to, flags);
}

int renameat(int oldfd, const char *old, int newfd, const char *newName) noexcept
{
    return call<int>("renameat", oldfd, old, newfd, newName);
}

int unlinkat(int fd, const char *name, int flag) noexcept
{
    return call<int>("unlinkat", fd, name, flag);
}

} // extern "C"
