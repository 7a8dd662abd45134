# What the libraries link; scripts/setup installs it. The installed package finds the first three, too.

find_package(Qt${LWUTILFS_QT} ${LWUTILFS_QT_MINIMUM} REQUIRED COMPONENTS Widgets)
find_package(Boost 1.74 REQUIRED COMPONENTS filesystem)
find_package(glog REQUIRED)

if(LWUTILFS_BUNDLED_COMPANIONS)
    if(NOT APPLE)
        find_package(PkgConfig REQUIRED)
        pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-2.0)
    endif()
else()
    foreach(companion IN ITEMS Zendra::Core Zendra::Util Zendra::Registry)
        if(NOT TARGET ${companion})
            message(FATAL_ERROR "LWUTILFS_BUNDLED_COMPANIONS is OFF, so ${companion} must be defined already: "
                "add or find the application's own companion libraries before this project, "
                "or set CMAKE_PROJECT_LWUtilFS_INCLUDE to a file that does.")
        endif()
    endforeach()
endif()
