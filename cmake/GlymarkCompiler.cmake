# SPDX-License-Identifier: GPL-3.0-or-later
# Arithmetic, warnings and sanitizers as interface targets, so that a target takes them by linking.

# The same last bit on every machine, for the program and for its tests: nothing multiplies and adds
# in one step. On ARM Eigen asks the processor by name to do so.
add_library(glymark_arithmetic INTERFACE)
target_compile_options(glymark_arithmetic INTERFACE -ffp-contract=off)
include(CheckCXXSymbolExists)
check_cxx_symbol_exists(__ARM_FEATURE_FMA cstddef GLYMARK_ARM_FUSES)
if(GLYMARK_ARM_FUSES)
    target_compile_options(Eigen3::Eigen INTERFACE
        "SHELL:-include \"${CMAKE_CURRENT_LIST_DIR}/unfused.h\"")
endif()

add_library(glymark_warnings INTERFACE)
target_compile_options(glymark_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Woverloaded-virtual
    $<$<BOOL:${GLYMARK_WERROR}>:-Werror>)

# A release is the same wherever its sources lie.
if(CMAKE_BUILD_TYPE STREQUAL Release)
    target_compile_options(glymark_warnings INTERFACE "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
endif()

add_library(glymark_sanitizers INTERFACE)
if(GLYMARK_SANITIZE)
    set(sanitize -fsanitize=address,undefined -fno-sanitize-recover=undefined
        -fno-omit-frame-pointer)
    if(GLYMARK_BUILD_FUZZERS)
        list(APPEND sanitize -fsanitize=fuzzer-no-link)
    endif()
    target_compile_options(glymark_sanitizers INTERFACE ${sanitize})
    # Each compiler has a name of its own for that.
    target_compile_definitions(glymark_sanitizers INTERFACE GLYMARK_SANITIZED)
    target_link_options(glymark_sanitizers INTERFACE ${sanitize})
endif()

# What every target of ours is compiled with, and the programs that make texts for people: there no
# literal becomes a text unnoticed. Tests are full of literals and take them as they are.
add_library(glymark_common_options INTERFACE)
target_link_libraries(glymark_common_options INTERFACE
    glymark_arithmetic glymark_warnings glymark_sanitizers)
target_compile_definitions(glymark_common_options INTERFACE
    QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS
    QT_DEPRECATED_WARNINGS QT_DISABLE_DEPRECATED_BEFORE=0x050F00)

add_library(glymark_options INTERFACE)
target_link_libraries(glymark_options INTERFACE glymark_common_options)
target_compile_definitions(glymark_options INTERFACE QT_NO_CAST_FROM_ASCII)

# QSKIP() is a macro with any number of arguments, called with one. The option has to come after the
# warnings, and so be linked last.
add_library(glymark_one_argument INTERFACE)
target_compile_options(glymark_one_argument INTERFACE
    $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>)

# What the tests themselves do with pointers is left to the address sanitizer, so that they compile a
# fifth faster. Has to come after the sanitizers.
add_library(glymark_unchecked_pointers INTERFACE)
if(GLYMARK_SANITIZE)
    target_compile_options(glymark_unchecked_pointers INTERFACE
        -fno-sanitize=null,alignment,vptr)
endif()

add_library(glymark_test_options INTERFACE)
target_link_libraries(glymark_test_options INTERFACE
    glymark_common_options glymark_one_argument glymark_unchecked_pointers)
# To compile tests takes longer than to run them: what they test is optimised, they are not.
if(BUILD_TESTING AND NOT WIN32)
    target_compile_options(glymark_test_options INTERFACE -O0)
    # Half a minute less for all test programs.
    include(CheckLinkerFlag)
    check_linker_flag(CXX -fuse-ld=mold GLYMARK_HAS_MOLD)
    if(GLYMARK_HAS_MOLD)
        target_link_options(glymark_test_options INTERFACE -fuse-ld=mold)
    endif()
endif()
