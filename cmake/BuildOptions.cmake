# How this project is compiled. LWBuildOptions is linked PRIVATE, so that it does not affect a user's build.

# The version of the binary interface, not of the release. It increases when a program that was linked to an older
# library would no longer run.
set(LWUTILFS_ABI_VERSION 1)

add_library(LWBuildOptions INTERFACE)
target_compile_features(LWBuildOptions INTERFACE cxx_std_17)
target_compile_options(LWBuildOptions INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    # Log lines name source files by their path in the project.
    "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/="
    "-fmacro-prefix-map=${PROJECT_BINARY_DIR}/include/=")
target_compile_definitions(LWBuildOptions INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII)

set(LWUTILFS_SANITIZERS "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them: address,undefined or thread")
if(LWUTILFS_SANITIZERS)
    target_compile_options(LWBuildOptions INTERFACE
        -fsanitize=${LWUTILFS_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(LWBuildOptions INTERFACE -fsanitize=${LWUTILFS_SANITIZERS})
endif()

# The include root. With companions from outside, it is a folder that has only the library's own headers: in the
# project's root the compiler would find the bundled companions' headers first.
set(LWUTILFS_INCLUDE_ROOT "${PROJECT_SOURCE_DIR}")
if(NOT LWUTILFS_BUNDLED_COMPANIONS)
    set(LWUTILFS_INCLUDE_ROOT "${PROJECT_BINARY_DIR}/include")
    file(MAKE_DIRECTORY "${LWUTILFS_INCLUDE_ROOT}/Lib/Util")
    file(CREATE_LINK "${PROJECT_SOURCE_DIR}/Lib/Util/FS" "${LWUTILFS_INCLUDE_ROOT}/Lib/Util/FS" SYMBOLIC)
endif()

# Hidden visibility does not apply to templates and inline functions in headers of other projects. On ELF a version
# script hides them. On macOS they stay exported, and the loader merges them by name.
set(LWUTILFS_SYMBOLS_SCRIPT "${CMAKE_CURRENT_LIST_DIR}/ExportedSymbols.map")

# lw_add_library(<target> EXPORT_NAME <name> HEADERS ... SOURCES ...
#                [PUBLIC_LIBRARIES ...] [PRIVATE_LIBRARIES ...])
#
# Adds one of the project's shared libraries, also as Zendra::<name>, with hidden visibility. Its headers are installed
# below the include root with the paths that they have here.
function(lw_add_library target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "EXPORT_NAME" "HEADERS;SOURCES;PUBLIC_LIBRARIES;PRIVATE_LIBRARIES")
    if(NOT target IN_LIST LWUTILFS_LIBRARIES)
        message(FATAL_ERROR "Add ${target} to LWUTILFS_LIBRARIES in the root's CMakeLists.txt.")
    endif()

    # Sources and headers must have the same root, or moc processes a header twice.
    file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
    list(TRANSFORM arg_HEADERS PREPEND "${LWUTILFS_INCLUDE_ROOT}/${folder}/" REGEX "^[^/]")
    list(TRANSFORM arg_SOURCES PREPEND "${LWUTILFS_INCLUDE_ROOT}/${folder}/" REGEX "^[^/]")

    add_library(${target} SHARED ${arg_SOURCES})
    add_library(Zendra::${arg_EXPORT_NAME} ALIAS ${target})
    target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS "${LWUTILFS_INCLUDE_ROOT}" FILES ${arg_HEADERS})
    target_compile_features(${target} PUBLIC cxx_std_17)
    target_link_libraries(${target} PUBLIC ${arg_PUBLIC_LIBRARIES} PRIVATE ${arg_PRIVATE_LIBRARIES}
        $<BUILD_INTERFACE:LWBuildOptions>)
    set_target_properties(${target} PROPERTIES
        AUTOMOC ON
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        EXPORT_NAME ${arg_EXPORT_NAME}
        OUTPUT_NAME ${target}${LWUTILFS_SUFFIX}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${LWUTILFS_ABI_VERSION})
    if(NOT APPLE)
        target_link_options(${target} PRIVATE "LINKER:--version-script=${LWUTILFS_SYMBOLS_SCRIPT}")
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${LWUTILFS_SYMBOLS_SCRIPT}")
    endif()
    lw_install_library(${target})
endfunction()
