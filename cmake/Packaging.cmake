# Debian packages, built by scripts/package: liblwutilfs<ABI> to run programs, liblwutilfs-dev to build them.

set(LWUTILFS_PACKAGE_MAINTAINER "LWUtilFS maintainers <maintainers@lwutilfs.invalid>" CACHE STRING
    "The maintainer of the packages, in Debian's form: name <address>")
set(LWUTILFS_RUNTIME_PACKAGE "liblwutilfs${LWUTILFS_ABI_VERSION}")
set(LWUTILFS_DEVELOPMENT_PACKAGE "liblwutilfs-dev")
set(LWUTILFS_PACKAGE_REVISION 1)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME "${PROJECT_NAME}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR "${PROJECT_NAME}")
set(CPACK_PACKAGE_CONTACT "${LWUTILFS_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${LWUTILFS_PACKAGE_REVISION})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(description "LWUtilFS watches a folder tree for files that appear, change and
disappear, chooses the next free number for a new file, validates output
folders, moves files to the trash and notifies observers of it.

")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${LWUTILFS_RUNTIME_PACKAGE}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${description}This package contains the library and its three companions.")
# The project's own libraries are searched for where they were built, those of other packages through these packages.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
foreach(library IN LISTS LWUTILFS_LIBRARIES)
    list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "$<TARGET_FILE_DIR:${library}>")
endforeach()
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME "${LWUTILFS_DEVELOPMENT_PACKAGE}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${description}This package contains the headers and the files for CMake and pkg-config.")
string(CONCAT CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${LWUTILFS_RUNTIME_PACKAGE} (= ${PROJECT_VERSION}-${LWUTILFS_PACKAGE_REVISION}), "
    "qtbase5-dev (>= 5.15), libboost-dev (>= 1.74), libboost-filesystem-dev (>= 1.74), libgoogle-glog-dev")

# lw_write_symbols_file(<output>)
#
# The symbols file of the package: for each symbol the release that a program which uses it needs.
function(lw_write_symbols_file output)
    set(text "")
    foreach(library IN LISTS LWUTILFS_LIBRARIES)
        set(list "${PROJECT_SOURCE_DIR}/abi/${library}.symbols")
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${list}")
        string(APPEND text "lib${library}.so.${LWUTILFS_ABI_VERSION} ${LWUTILFS_RUNTIME_PACKAGE} #MINVER#\n"
            "* Build-Depends-Package: ${LWUTILFS_DEVELOPMENT_PACKAGE}\n")
        file(STRINGS "${list}" lines REGEX "^[0-9]")
        foreach(line IN LISTS lines)
            if(NOT line MATCHES "^([0-9.]+) ([^ ]+) ")
                message(FATAL_ERROR "${list}: expected a release and a symbol: ${line}")
            endif()
            string(APPEND text " ${CMAKE_MATCH_2}@Base ${CMAKE_MATCH_1}\n")
        endforeach()
    endforeach()
    file(WRITE "${output}" "${text}")
endfunction()

# lw_compress(<input> <output>): compresses without a time stamp, so that the output is always the same.
function(lw_compress input output)
    execute_process(COMMAND gzip -9nc "${input}" OUTPUT_FILE "${output}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The documents in each package: the copyright, the changelog, and Debian's changelog.
function(lw_install_package_documents)
    file(STRINGS CHANGELOG.md releases REGEX "^## \\[[0-9.]+\\] - ")
    list(GET releases 0 newest)
    string(REGEX MATCH "[0-9-]+$" date "${newest}")
    execute_process(COMMAND date --utc --rfc-email --date "${date}" OUTPUT_VARIABLE LWUTILFS_PACKAGE_DATE
        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(SUBSTRING "${date}" 0 4 LWUTILFS_PACKAGE_YEAR)

    set(documents "${PROJECT_BINARY_DIR}/debian")
    configure_file(cmake/debian/changelog.in debian/changelog.Debian @ONLY)
    configure_file(cmake/debian/copyright.in debian/copyright @ONLY)
    lw_compress("${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${documents}/changelog.gz")
    lw_compress("${documents}/changelog.Debian" "${documents}/changelog.Debian.gz")
    set(files "${documents}/changelog.gz" "${documents}/changelog.Debian.gz" "${documents}/copyright")
    install(FILES ${files} DESTINATION "share/doc/${LWUTILFS_RUNTIME_PACKAGE}" COMPONENT Runtime)
    install(FILES ${files} DESTINATION "share/doc/${LWUTILFS_DEVELOPMENT_PACKAGE}" COMPONENT Development)
    configure_file(cmake/debian/lintian-overrides.in debian/lintian-overrides @ONLY)
    install(FILES "${documents}/lintian-overrides" DESTINATION share/lintian/overrides
        RENAME "${LWUTILFS_DEVELOPMENT_PACKAGE}" COMPONENT Development)
endfunction()

lw_write_symbols_file("${PROJECT_BINARY_DIR}/debian/symbols")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    "${PROJECT_BINARY_DIR}/debian/symbols" "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
lw_install_package_documents()

include(CPack)
