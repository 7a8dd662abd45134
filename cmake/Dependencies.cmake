# What the libraries link; scripts/setup installs it.

find_package(Qt5 5.15 REQUIRED COMPONENTS Widgets DBus)
find_package(Boost 1.74 REQUIRED COMPONENTS filesystem)
find_package(glog REQUIRED)

if(NOT APPLE)
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-2.0)
endif()
