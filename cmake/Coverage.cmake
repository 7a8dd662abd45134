# The target coverage runs the tests and prints which lines and branches of the library and its companions they reach.
# It fails below 98 % of the lines or 90 % of the branches.

option(LWUTILFS_COVERAGE "Measure the coverage and add the target coverage (gcc and gcovr)" OFF)

if(LWUTILFS_COVERAGE)
    find_program(LWUTILFS_GCOVR gcovr REQUIRED)
    # Atomic, since tests use threads; absolute paths, so that gcovr merges the counts of all programs.
    add_compile_options(--coverage -fprofile-update=atomic -fprofile-abs-path)
    # This check adds a branch for every temporary in a condition. The preset asan still has it.
    add_compile_options(-fno-sanitize-address-use-after-scope)
    add_link_options(--coverage)

    cmake_host_system_information(RESULT processors QUERY NUMBER_OF_LOGICAL_CORES)
    # The filters are relative to the folder in which gcovr runs. Branches that the compiler adds for exceptions are left
    # out, also on lines without a condition (hence the pattern), and those that it knows to be unreachable. Files for
    # other systems are not compiled and do not count. One test fills a disk, and the counts cannot be written there:
    # GCOV_ERROR_FILE hides that message.
    add_custom_target(coverage
        COMMAND "${CMAKE_COMMAND}" --build "${PROJECT_BINARY_DIR}"
        COMMAND find "${PROJECT_BINARY_DIR}" -name "*.gcda" -delete
        COMMAND "${CMAKE_COMMAND}" -E env QT_QPA_PLATFORM=offscreen GCOV_ERROR_FILE=/dev/null
            "LSAN_OPTIONS=suppressions='${PROJECT_SOURCE_DIR}/Tests/Support/lsan.supp':print_suppressions=0"
            "${CMAKE_CTEST_COMMAND}" --test-dir "${PROJECT_BINARY_DIR}" --parallel ${processors} --output-on-failure
            --no-tests=error --label-exclude "^(abi|package|soak)$"
        COMMAND "${LWUTILFS_GCOVR}" --root . "${PROJECT_BINARY_DIR}" --filter Core/ --filter Util/ --filter Lib/
            --exclude-throw-branches --exclude-unreachable-branches
            --exclude-branches-by-pattern "^(?!.*(\\b(if|for|while|switch|case|catch)\\b|\\?|&&|\\|\\|)).*$"
            --print-summary --fail-under-line 98 --fail-under-branch 90
        WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
        USES_TERMINAL VERBATIM)
endif()
