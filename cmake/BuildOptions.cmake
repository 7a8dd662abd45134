# How this project is compiled. Linked PRIVATE, so that none of it reaches a user's build.

include(GNUInstallDirs)

# The number of the binary interface, not of the release: it grows when a program that was
# linked against the older libraries would no longer run.
set(LWUTILFS_ABI_VERSION 1)

add_library(LWBuildOptions INTERFACE)
target_compile_features(LWBuildOptions INTERFACE cxx_std_17)
target_compile_options(LWBuildOptions INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
target_compile_definitions(LWBuildOptions INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII)

set(LWUTILFS_SANITIZERS "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them: address,undefined or thread")
if(LWUTILFS_SANITIZERS)
    target_compile_options(LWBuildOptions INTERFACE
        -fsanitize=${LWUTILFS_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(LWBuildOptions INTERFACE -fsanitize=${LWUTILFS_SANITIZERS})
endif()

# lw_add_library(<target> EXPORT_NAME <name> HEADERS ... SOURCES ...
#                [PUBLIC_LIBRARIES ...] [PRIVATE_LIBRARIES ...])
#
# One of the project's shared libraries: Zendra::<name> inside and outside of the tree, hidden
# visibility, headers installed under the include root with the paths they have here.
function(lw_add_library target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "EXPORT_NAME" "HEADERS;SOURCES;PUBLIC_LIBRARIES;PRIVATE_LIBRARIES")

    add_library(${target} SHARED ${arg_SOURCES})
    add_library(Zendra::${arg_EXPORT_NAME} ALIAS ${target})
    target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${arg_HEADERS})
    target_compile_features(${target} PUBLIC cxx_std_17)
    target_link_libraries(${target} PUBLIC ${arg_PUBLIC_LIBRARIES} PRIVATE ${arg_PRIVATE_LIBRARIES}
        $<BUILD_INTERFACE:LWBuildOptions>)
    set_target_properties(${target} PROPERTIES
        AUTOMOC ON
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        EXPORT_NAME ${arg_EXPORT_NAME}
        VERSION ${LWUTILFS_ABI_VERSION}.0.0
        SOVERSION ${LWUTILFS_ABI_VERSION})
endfunction()
