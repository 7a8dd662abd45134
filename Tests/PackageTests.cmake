# The libraries as their users get them: installed and moved, found, bundled, with other companions; what they
# export, and the one version of it all. Sanitized libraries cannot be loaded by programs that are not, and
# those built for coverage know where they were built.

find_program(BASH_PROGRAM bash)
if(LWUTILFS_SANITIZERS OR LWUTILFS_COVERAGE OR NOT BASH_PROGRAM)
    return()
endif()

if(CMAKE_BUILD_TYPE STREQUAL "Release")
    set(strip no)
else()
    set(strip yes)
endif()

# lw_add_package_test(<name> <step of Consumer/check.sh> [<property> <value>...])
function(lw_add_package_test name step)
    add_test(NAME Package.${name} COMMAND ${BASH_PROGRAM} "${CMAKE_CURRENT_SOURCE_DIR}/Consumer/check.sh" ${step})
    set_tests_properties(Package.${name} PROPERTIES
        LABELS package
        TIMEOUT 900
        ENVIRONMENT "SOURCE=${PROJECT_SOURCE_DIR};BINARIES=${PROJECT_BINARY_DIR};SCRATCH=${PROJECT_BINARY_DIR}/Tests/Package;GENERATOR=${CMAKE_GENERATOR};CXX=${CMAKE_CXX_COMPILER};VERSION=${PROJECT_VERSION};QT=${LWUTILFS_QT};ABI=${LWUTILFS_ABI_VERSION};STRIP=${strip}"
        ${ARGN})
endfunction()

if(LWUTILFS_BUNDLED_COMPANIONS)
    lw_add_package_test(InstallsWhatItShouldAndCanBeMoved install FIXTURES_SETUP Installed)
    lw_add_package_test(IsFoundByCMake find_package FIXTURES_REQUIRED Installed)
    lw_add_package_test(IsFoundByPkgConfig pkg_config FIXTURES_REQUIRED Installed)
    # These compile the libraries once more.
    if(LWUTILFS_TEST_PACKAGE)
        lw_add_package_test(IsBundledByAnotherProject bundled FIXTURES_REQUIRED Installed)
        lw_add_package_test(StandsOnOtherCompanions companions FIXTURES_REQUIRED Installed)
        # What this finds out is the same whichever of the two is built first.
        if(LWUTILFS_QT EQUAL 6)
            lw_add_package_test(StandsBesideThatOfQt5 side_by_side FIXTURES_REQUIRED Installed SKIP_RETURN_CODE 77)
        endif()
    endif()
endif()
lw_add_package_test(HasOneVersion version)
lw_add_package_test(SaysWhatIsWrongWithItsSettings settings FIXTURES_REQUIRED Installed)

# Symbols are mangled, so the lists hold for one compiler's names, one processor's types and one Qt.
if(LWUTILFS_BUNDLED_COMPANIONS AND LWUTILFS_QT EQUAL 5 AND CMAKE_SYSTEM_NAME STREQUAL "Linux" AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    set(whatToCompare FUNCTIONS_ONLY)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo)$")
        set(whatToCompare "")
    endif()
    add_test(NAME Abi.ExportsTheSymbolsThatAreWrittenDown
        COMMAND "${PROJECT_SOURCE_DIR}/scripts/abi" symbols "${PROJECT_BINARY_DIR}" ${whatToCompare})
    set_tests_properties(Abi.ExportsTheSymbolsThatAreWrittenDown PROPERTIES LABELS abi TIMEOUT 120)
endif()
