# SPDX-License-Identifier: GPL-3.0-or-later
# SimpleIni has no CMake package in the releases that we support.
#
# Defines the target SimpleIni::SimpleIni. The library is optional: it only holds the character
# conversions, which SI_NO_CONVERSION leaves out, but some builds keep other symbols there too.

find_path(SimpleIni_INCLUDE_DIR NAMES SimpleIni.h PATH_SUFFIXES simpleini)
find_library(SimpleIni_LIBRARY NAMES simpleini)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(SimpleIni REQUIRED_VARS SimpleIni_INCLUDE_DIR)

if(SimpleIni_FOUND AND NOT TARGET SimpleIni::SimpleIni)
    add_library(SimpleIni::SimpleIni INTERFACE IMPORTED)
    set_target_properties(SimpleIni::SimpleIni PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES "${SimpleIni_INCLUDE_DIR}"
        INTERFACE_COMPILE_DEFINITIONS SI_NO_CONVERSION)
    if(SimpleIni_LIBRARY)
        set_property(TARGET SimpleIni::SimpleIni
            PROPERTY INTERFACE_LINK_LIBRARIES "${SimpleIni_LIBRARY}")
    endif()
endif()
mark_as_advanced(SimpleIni_INCLUDE_DIR SimpleIni_LIBRARY)
