# What `cmake --install` installs: libraries, headers, and the files for find_package() and pkg-config.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# The include root. Headers are installed below it with their paths in the project.
set(LWUTILFS_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/${LWUTILFS_PACKAGE}")
set(LWUTILFS_INSTALL_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/${LWUTILFS_PACKAGE}")

# lw_install_library(<target>)
#
# Installs a library of the project with its headers, and exports it as Zendra::<EXPORT_NAME>.
function(lw_install_library target)
    # The libraries find each other in their own folder, wherever that is.
    if(APPLE)
        set_target_properties(${target} PROPERTIES INSTALL_RPATH "@loader_path")
    else()
        set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
    endif()
    if(NOT LWUTILFS_INSTALL)
        return()
    endif()
    install(TARGETS ${target}
        EXPORT ${LWUTILFS_PACKAGE}Targets
        LIBRARY
            DESTINATION "${CMAKE_INSTALL_LIBDIR}"
            COMPONENT Runtime
            NAMELINK_COMPONENT Development
        FILE_SET HEADERS
            DESTINATION "${LWUTILFS_INSTALL_INCLUDEDIR}"
            COMPONENT Development
        INCLUDES DESTINATION "${LWUTILFS_INSTALL_INCLUDEDIR}")
endfunction()

# Writes and installs the .pc file, which gives pkg-config what the targets give CMake.
function(lw_install_pkgconfig_file)
    set(folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
    file(RELATIVE_PATH prefix "/${folder}" "/")
    string(REGEX REPLACE "/$" "" LWUTILFS_PC_PREFIX "${prefix}")

    list(TRANSFORM LWUTILFS_LIBRARIES PREPEND "-l" OUTPUT_VARIABLE libraries)
    list(TRANSFORM libraries APPEND "${LWUTILFS_SUFFIX}")
    list(JOIN libraries " " LWUTILFS_PC_LIBS)
    # Boost has no file for pkg-config.
    string(APPEND LWUTILFS_PC_LIBS " -lboost_filesystem")
    # Qt requires position-independent code, and only its CMake files say so.
    set(LWUTILFS_PC_CFLAGS "")
    if(NOT APPLE)
        set(LWUTILFS_PC_CFLAGS " -fPIC")
    endif()

    configure_file(cmake/LWUtilFS.pc.in ${LWUTILFS_PACKAGE}.pc @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${LWUTILFS_PACKAGE}.pc" DESTINATION "${folder}" COMPONENT Development)
endfunction()

# Writes and installs the files for find_package().
function(lw_install_cmake_package)
    configure_package_config_file(cmake/LWUtilFSConfig.cmake.in ${LWUTILFS_PACKAGE}Config.cmake
        INSTALL_DESTINATION "${LWUTILFS_INSTALL_CMAKEDIR}"
        NO_SET_AND_CHECK_MACRO)
    write_basic_package_version_file("${PROJECT_BINARY_DIR}/${LWUTILFS_PACKAGE}ConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
    install(FILES
            "${PROJECT_BINARY_DIR}/${LWUTILFS_PACKAGE}Config.cmake"
            "${PROJECT_BINARY_DIR}/${LWUTILFS_PACKAGE}ConfigVersion.cmake"
        DESTINATION "${LWUTILFS_INSTALL_CMAKEDIR}"
        COMPONENT Development)
    install(EXPORT ${LWUTILFS_PACKAGE}Targets
        NAMESPACE Zendra::
        DESTINATION "${LWUTILFS_INSTALL_CMAKEDIR}"
        COMPONENT Development)
endfunction()

if(LWUTILFS_INSTALL)
    lw_install_pkgconfig_file()
    lw_install_cmake_package()
    # The Debian packages install it as Debian requires.
    if(NOT LWUTILFS_DEBIAN_PACKAGES)
        install(FILES CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}${LWUTILFS_SUFFIX}" COMPONENT Development)
    endif()
endif()
