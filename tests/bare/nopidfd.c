// SPDX-License-Identifier: GPL-3.0-or-later
// Loaded into the tests that QEMU runs: its version 7 cannot start a process with a descriptor for
// it, so the toolkit is told that the kernel is too old for that.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdlib.h>
#include <sys/syscall.h>

// The programs that tests start are native.
__attribute__((constructor)) static void load_into_no_other(void)
{
    unsetenv("LD_PRELOAD");
}

long syscall(long number, long a, long b, long c, long d, long e, long f)
{
    const long by_descriptor = 3; // P_PIDFD
    if (number == SYS_waitid && a == by_descriptor) {
        errno = EINVAL;
        return -1;
    }
    long (*next)(long, ...) = (long (*)(long, ...))dlsym(RTLD_NEXT, "syscall");
    return next(number, a, b, c, d, e, f);
}
