# What `cmake --install` puts where: libraries, headers, and the files by which others find them.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# The root of all includes; the headers are below it with the paths they have in the project.
set(LWUTILFS_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/${LWUTILFS_PACKAGE}")
set(LWUTILFS_INSTALL_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/${LWUTILFS_PACKAGE}")

# lw_install_library(<target>)
#
# Installs a library of the project with its headers and its name outside, Zendra::<EXPORT_NAME>.
function(lw_install_library target)
    # The libraries stand beside one another and find one another there, wherever that is.
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

# Writes and installs the .pc file, which says to pkg-config what the targets say to CMake.
function(lw_install_pkgconfig_file)
    set(folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
    file(RELATIVE_PATH prefix "/${folder}" "/")
    string(REGEX REPLACE "/$" "" LWUTILFS_PC_PREFIX "${prefix}")

    set(libraries LWUtilFS)
    if(LWUTILFS_BUNDLED_COMPANIONS)
        list(APPEND libraries ZendraUtil ZendraCore LWRegistry)
    endif()
    list(TRANSFORM libraries PREPEND "-l")
    list(TRANSFORM libraries APPEND "${LWUTILFS_SUFFIX}")
    list(JOIN libraries " " LWUTILFS_PC_LIBS)
    # Boost comes without a file for pkg-config.
    string(APPEND LWUTILFS_PC_LIBS " -lboost_filesystem")
    # Qt refuses code that is not position-independent, and says so to CMake only.
    set(LWUTILFS_PC_CFLAGS "")
    if(NOT APPLE)
        set(LWUTILFS_PC_CFLAGS " -fPIC")
    endif()

    configure_file(cmake/LWUtilFS.pc.in ${LWUTILFS_PACKAGE}.pc @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${LWUTILFS_PACKAGE}.pc" DESTINATION "${folder}" COMPONENT Development)
endfunction()

# Writes and installs what find_package() reads.
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
    # Debian's packages bring it as Debian wants it.
    if(NOT LWUTILFS_DEBIAN_PACKAGES)
        install(FILES CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}${LWUTILFS_SUFFIX}" COMPONENT Development)
    endif()
endif()
