# The Qt that the libraries are built for. For Qt 6 the libraries' names end in -qt6, so that both can be installed in
# one prefix. The targets have the same names.

set(LWUTILFS_QT 5 CACHE STRING "The Qt to build for: 5 or 6")
set_property(CACHE LWUTILFS_QT PROPERTY STRINGS 5 6)

if(LWUTILFS_QT STREQUAL "5")
    set(LWUTILFS_QT_MINIMUM 5.15)
    set(LWUTILFS_SUFFIX "")
elseif(LWUTILFS_QT STREQUAL "6")
    set(LWUTILFS_QT_MINIMUM 6.4)
    set(LWUTILFS_SUFFIX "-qt6")
else()
    message(FATAL_ERROR "LWUTILFS_QT is \"${LWUTILFS_QT}\": set it to 5 or to 6, as the application does.")
endif()

# The package's name for find_package() and pkg-config.
set(LWUTILFS_PACKAGE "LWUtilFS${LWUTILFS_SUFFIX}")

if(LWUTILFS_DEBIAN_PACKAGES AND NOT LWUTILFS_QT EQUAL 5)
    message(FATAL_ERROR "LWUTILFS_DEBIAN_PACKAGES makes packages for Qt 5 only: "
        "set LWUTILFS_QT to 5, or install the libraries for Qt 6 with cmake --install.")
endif()

# An installed package, or this project added twice, defines the same targets.
if(TARGET Zendra::LWUtilFS)
    get_target_property(loaded Zendra::LWUtilFS LWUTILFS_QT)
    if(NOT loaded)
        set(loaded 5) # the first release supported no other
    endif()
    message(FATAL_ERROR "Zendra::LWUtilFS is already defined, for Qt ${loaded}, and this would define it for Qt ${LWUTILFS_QT}. "
        "Use it once in a project: by find_package(LWUtilFS) for Qt 5, by find_package(LWUtilFS-qt6) for Qt 6, "
        "or by add_subdirectory() with LWUTILFS_QT set to 5 or 6.")
endif()
