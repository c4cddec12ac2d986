# Everything that the program is built upon, found once.

find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui Widgets Svg PrintSupport)
find_package(Eigen3 3.3 REQUIRED NO_MODULE)
find_package(SimpleIni REQUIRED)
find_package(EXPAT 2.4 REQUIRED)

# The library's own package file asks for its command line tools too, which are packaged apart.
find_package(PkgConfig REQUIRED)
pkg_check_modules(libzip REQUIRED IMPORTED_TARGET libzip>=1.7)

# From version 1.5 on the package carries the Qt version in its name; the target is the same.
find_package(QXlsx CONFIG QUIET)
if(NOT QXlsx_FOUND)
    find_package(QXlsxQt5 CONFIG REQUIRED)
endif()
