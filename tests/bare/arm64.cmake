# SPDX-License-Identifier: GPL-3.0-or-later
# Builds for ARM64 with Debian's cross compiler and runs what is built under QEMU, with the packages
# for ARM64 that are installed beside those of this machine.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR
    qemu-aarch64 -E LD_PRELOAD=/usr/lib/aarch64-linux-gnu/nopidfd.so)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
