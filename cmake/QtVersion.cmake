# Which Qt the libraries are for. Those for Qt 6 have names of their own, so that both can be installed in one prefix;
# the targets are called the same.

set(LWUTILFS_QT 5 CACHE STRING "The Qt to build for: 5 or 6")
set_property(CACHE LWUTILFS_QT PROPERTY STRINGS 5 6)

if(LWUTILFS_QT STREQUAL "5")
    set(LWUTILFS_QT_MINIMUM 5.15)
    set(LWUTILFS_SUFFIX "")
elseif(LWUTILFS_QT STREQUAL "6")
    set(LWUTILFS_QT_MINIMUM 6.4)
    set(LWUTILFS_SUFFIX "-qt6")
else()
    message(FATAL_ERROR "LWUTILFS_QT is \"${LWUTILFS_QT}\": set it to 5 or to 6, the Qt that the application uses.")
endif()

# What find_package() and pkg-config call the libraries.
set(LWUTILFS_PACKAGE "LWUtilFS${LWUTILFS_SUFFIX}")

if(LWUTILFS_DEBIAN_PACKAGES AND NOT LWUTILFS_QT EQUAL 5)
    message(FATAL_ERROR "LWUTILFS_DEBIAN_PACKAGES makes packages for Qt 5 only: "
        "set LWUTILFS_QT to 5, or install what is built for Qt 6 with cmake --install.")
endif()

# The other package, or this project once more, would define the same targets.
if(TARGET Zendra::LWUtilFS)
    get_target_property(loaded Zendra::LWUtilFS LWUTILFS_QT)
    if(NOT loaded)
        set(loaded 5) # the first release knew no other
    endif()
    message(FATAL_ERROR "Zendra::LWUtilFS is there already, built for Qt ${loaded}, and this would add it for Qt ${LWUTILFS_QT}. "
        "One project takes it once: by find_package(LWUtilFS) for Qt 5, by find_package(LWUtilFS-qt6) for Qt 6, "
        "or by add_subdirectory() with LWUTILFS_QT set to 5 or 6.")
endif()
