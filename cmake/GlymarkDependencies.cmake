# SPDX-License-Identifier: GPL-3.0-or-later
# Everything that the program is built upon, found once.

# Version 5 is released; 6 keeps the program alive when a distribution drops 5.
set(GLYMARK_QT 5 CACHE STRING "Major version of Qt: 5 or 6")
set_property(CACHE GLYMARK_QT PROPERTY STRINGS 5 6)
set(qt_minimum_5 5.15)
set(qt_minimum_6 6.4)
find_package(Qt${GLYMARK_QT} ${qt_minimum_${GLYMARK_QT}} REQUIRED
    COMPONENTS Core Gui Widgets Svg PrintSupport)

# Other versions add in another order and give other last bits: 3.3 and 5 do.
find_package(Eigen3 REQUIRED NO_MODULE)
if(NOT Eigen3_VERSION MATCHES "^3\\.4\\.")
    unset(Eigen3_DIR CACHE)
    message(FATAL_ERROR "Eigen 3.4 is needed; this is ${Eigen3_VERSION}. Run script/setup, which "
        "brings it, and use a preset")
endif()
find_package(SimpleIni REQUIRED)
find_package(EXPAT 2.4 REQUIRED)
find_package(ZLIB REQUIRED)

# The library's own package file asks for its command line tools too, which are packaged apart.
find_package(PkgConfig REQUIRED)
pkg_check_modules(libzip REQUIRED IMPORTED_TARGET libzip>=1.7)

# From version 1.5 on the package carries the Qt version in its name; the target is the same.
find_package(QXlsx CONFIG QUIET)
if(NOT QXlsx_FOUND)
    find_package(QXlsxQt${GLYMARK_QT} CONFIG QUIET)
endif()
if(NOT TARGET QXlsx::QXlsx)
    message(FATAL_ERROR "QXlsx for Qt ${GLYMARK_QT} is not here. Run script/setup, which installs or "
        "builds it, and use a preset")
endif()
