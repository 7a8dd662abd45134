# shellcheck shell=bash
# Sourced by the other scripts: where the project is, and how it is built.

set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)

# Says on standard error why the script cannot go on, and ends it.
fail()
{
    printf '%s: %s\n' "$(basename -- "$0")" "$*" >&2
    exit 1
}

processor_count()
{
    getconf _NPROCESSORS_ONLN 2>/dev/null || sysctl -n hw.ncpu
}

# Settings that CMake reads from the environment when a build folder is made.
prepare_build_environment()
{
    if [ "$(uname -s)" = Darwin ] && command -v brew >/dev/null; then
        # Homebrew keeps Qt 5 beside its prefix and not in it.
        CMAKE_PREFIX_PATH="$(brew --prefix qt@5)${CMAKE_PREFIX_PATH:+:$CMAKE_PREFIX_PATH}"
        PKG_CONFIG_PATH="$(brew --prefix qt@5)/lib/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}"
        export CMAKE_PREFIX_PATH PKG_CONFIG_PATH
    fi
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER="${CMAKE_CXX_COMPILER_LAUNCHER-ccache}"
    fi
}

# configure_and_build <preset> [<build folder> [<argument for cmake>...]]
#
# Leaves the current folder as it is: relative paths are meant from where the user stands.
configure_and_build()
{
    local preset=$1 folder=${2:-$root/build/$1} words
    shift $(($# < 2 ? $# : 2))

    mkdir -p "$folder" 2>/dev/null || fail "cannot make $folder; to build elsewhere: cmake --preset $preset -B FOLDER, cmake --build FOLDER"
    prepare_build_environment
    words=$(cd "$root" && cmake --preset "$preset" -B "$folder" "$@" 2>&1) || {
        printf '%s\n' "$words" >&2
        fail "cmake could not configure $folder; its own words are above"
    }
    cmake --build "$folder" || fail "the build in $folder failed; the compiler's own words are above"
}
