# Tests of the libraries as their users get them: installed and moved, found, bundled, with other companions; the symbols
# that they export; the version. Programs without sanitizers cannot load sanitized libraries, and libraries built for
# coverage contain the path of their build folder.

find_program(BASH_PROGRAM bash)
if(LWUTILFS_SANITIZERS OR LWUTILFS_COVERAGE OR NOT BASH_PROGRAM)
    return()
endif()

if(CMAKE_BUILD_TYPE STREQUAL "Release")
    set(strip no)
else()
    set(strip yes)
endif()

list(JOIN LWUTILFS_LIBRARIES " " libraries)
set(environment
    "SOURCE=${PROJECT_SOURCE_DIR}"
    "BINARIES=${PROJECT_BINARY_DIR}"
    "SCRATCH=${PROJECT_BINARY_DIR}/Tests/Package"
    "GENERATOR=${CMAKE_GENERATOR}"
    "CXX=${CMAKE_CXX_COMPILER}"
    "LIBRARY_NAMES=${libraries}"
    "VERSION=${PROJECT_VERSION}"
    "ABI=${LWUTILFS_ABI_VERSION}"
    "QT=${LWUTILFS_QT}"
    "STRIP=${strip}")

# lw_add_package_test(<name> <step of Consumer/check.sh> [<property> <value>...])
function(lw_add_package_test name step)
    add_test(NAME Package.${name} COMMAND ${BASH_PROGRAM} "${CMAKE_CURRENT_SOURCE_DIR}/Consumer/check.sh" ${step})
    set_tests_properties(Package.${name} PROPERTIES
        LABELS package
        TIMEOUT 900
        ENVIRONMENT "${environment}"
        ${ARGN})
endfunction()

if(LWUTILFS_BUNDLED_COMPANIONS)
    lw_add_package_test(InstallsTheExpectedFilesAndCanBeMoved install FIXTURES_SETUP Installed)
    lw_add_package_test(IsFoundByCMake find_package FIXTURES_REQUIRED Installed)
    lw_add_package_test(IsFoundByPkgConfig pkg_config FIXTURES_REQUIRED Installed)
    # These compile the libraries again.
    if(LWUTILFS_TEST_PACKAGE)
        lw_add_package_test(IsBundledByAnotherProject bundled FIXTURES_REQUIRED Installed)
        lw_add_package_test(UsesOtherCompanions companions FIXTURES_REQUIRED Installed)
        # Tests both directions, so it is enough to run it for one Qt.
        if(LWUTILFS_QT EQUAL 6)
            lw_add_package_test(CanBeInstalledBesideTheOneForQt5 side_by_side FIXTURES_REQUIRED Installed SKIP_RETURN_CODE 77)
        endif()
    endif()
endif()
lw_add_package_test(HasTheVersionOfTheChangelog version)
lw_add_package_test(RejectsInvalidSettings settings FIXTURES_REQUIRED Installed)

# The lists of mangled names are valid for one kind of compiler, one processor and one Qt.
if(LWUTILFS_BUNDLED_COMPANIONS AND LWUTILFS_QT EQUAL 5 AND CMAKE_SYSTEM_NAME STREQUAL "Linux" AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    set(whatToCompare FUNCTIONS_ONLY)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo)$")
        set(whatToCompare "")
    endif()
    add_test(NAME Abi.ExportsTheRecordedSymbols
        COMMAND "${PROJECT_SOURCE_DIR}/scripts/abi" symbols "${PROJECT_BINARY_DIR}" ${whatToCompare})
    set_tests_properties(Abi.ExportsTheRecordedSymbols PROPERTIES LABELS abi TIMEOUT 120)
endif()
