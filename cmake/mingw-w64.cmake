# SPDX-License-Identifier: GPL-3.0-or-later
# Builds for 64-bit Windows with Debian's cross compiler, against the libraries in
# build/windows-kept/root: what script/package-windows puts there.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# The variant whose standard library has threads.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# One file that takes nothing along but what every Windows has.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,--gc-sections")
set(CMAKE_C_FLAGS_INIT "-ffunction-sections -fdata-sections")
set(CMAKE_CXX_FLAGS_INIT "-ffunction-sections -fdata-sections")

# Without "..", so that a path below it is known as one.
cmake_path(SET CMAKE_FIND_ROOT_PATH NORMALIZE
    "${CMAKE_CURRENT_LIST_DIR}/../build/windows-kept/root")
# And what every Windows has.
list(APPEND CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# What pkg-config tells of is linked statically too.
list(GET CMAKE_FIND_ROOT_PATH 0 kept)
set(ENV{PKG_CONFIG_LIBDIR} "${kept}/lib/pkgconfig")
set(PKG_CONFIG_ARGN --static)
