# A toolchain file that compiles the whole project for macOS on Linux; scripts/macos uses it. Nothing is linked: programs
# and libraries are empty files, so nothing can be run.
#
# LWUTILFS_ZIG is the compiler (zig, which contains clang and the system's headers), LWUTILFS_MACOS_PROCESSOR x86_64 or
# aarch64. Qt, Boost and the rest are those installed here: their headers are the same on both systems.

# CMAKE_USER_MAKE_RULES_OVERRIDE below reads this file a second time, to replace settings of CMake's own files.
if(CMAKE_CXX_COMPILER_LOADED)
    foreach(kind IN ITEMS LINK_EXECUTABLE CREATE_SHARED_LIBRARY CREATE_SHARED_MODULE)
        set(CMAKE_CXX_${kind} "<CMAKE_COMMAND> -E touch <TARGET>")
    endforeach()
    # CMake does not pass these folders on; with /usr/include the compiler would use this system's C library.
    set(CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES /usr/include)
    return()
endif()

set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES LWUTILFS_ZIG LWUTILFS_MACOS_PROCESSOR)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
# CMake would ask the compiler with an option that this one does not have.
set(CMAKE_SIZEOF_VOID_P 8)

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 20)
set(CMAKE_SYSTEM_PROCESSOR ${LWUTILFS_MACOS_PROCESSOR})
set(CMAKE_CXX_COMPILER "${LWUTILFS_ZIG}" c++ -target ${LWUTILFS_MACOS_PROCESSOR}-macos)
# Older Boost needs parts of the standard library that C++17 removed. The sanitizer is on by default and only takes time.
string(CONCAT CMAKE_CXX_FLAGS_INIT "-fno-sanitize=undefined "
    "-D_LIBCPP_ENABLE_CXX17_REMOVED_UNARY_BINARY_FUNCTION -D_LIBCPP_ENABLE_CXX17_REMOVED_AUTO_PTR")
set(CMAKE_OSX_SYSROOT "" CACHE STRING "")
set(CMAKE_OSX_ARCHITECTURES "" CACHE STRING "")

find_program(CMAKE_AR ar)
find_program(CMAKE_RANLIB true)
find_program(CMAKE_INSTALL_NAME_TOOL true)
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)

# Find the libraries that are installed here.
execute_process(COMMAND c++ -print-multiarch OUTPUT_VARIABLE CMAKE_LIBRARY_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE)
set(CMAKE_PREFIX_PATH /usr)
set(CMAKE_USER_MAKE_RULES_OVERRIDE "${CMAKE_CURRENT_LIST_FILE}")
get_filename_component(headers "${LWUTILFS_ZIG}" DIRECTORY)
string(APPEND headers "/headers-of-libraries")
file(MAKE_DIRECTORY "${headers}")
foreach(name IN ITEMS boost glog gflags gtest gmock benchmark rapidcheck rapidcheck.h)
    if(EXISTS "/usr/include/${name}")
        file(CREATE_LINK "/usr/include/${name}" "${headers}/${name}" SYMBOLIC)
    endif()
endforeach()
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES "${headers}")

# glog needs it, and its search fails in a cross build.
set(Unwind_INCLUDE_DIR "${headers}" CACHE PATH "")
set(Unwind_LIBRARY "/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/libunwind.so" CACHE FILEPATH "")
set(Unwind_PLATFORM_LIBRARY "${Unwind_LIBRARY}" CACHE FILEPATH "")
