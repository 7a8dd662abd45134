# shellcheck shell=bash
# Sourced by the other scripts: the project's root, and functions to configure and build it.

set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)

# Prints on standard error why the script cannot continue, and exits.
fail()
{
    printf '%s: %s\n' "$(basename -- "$0")" "$*" >&2
    exit 1
}

processor_count()
{
    getconf _NPROCESSORS_ONLN 2>/dev/null || sysctl -n hw.ncpu
}

# LW_QT is the Qt to build for. Presets and build folders for Qt 6 end in -qt6.
qt=${LW_QT:-5}
[[ ${LW_PRESET:-} != *-qt6 ]] || qt=6
case $qt in
5) qt_suffix='' ;;
6) qt_suffix=-qt6 ;;
*) fail "LW_QT is '$qt': set it to 5 or to 6" ;;
esac
export LW_QT=$qt

# require_qt5 <what is done for Qt 5 only>
require_qt5()
{
    [ "$qt" = 5 ] || fail "$1 for Qt 5 only: run this without LW_QT=$qt"
}

# Sets what CMake reads from the environment when it configures a new build folder.
prepare_build_environment()
{
    if [ "$(uname -s)" = Darwin ] && command -v brew >/dev/null; then
        # Homebrew does not link Qt 5 into its prefix.
        local prefix
        prefix=$(brew --prefix "$([ "$qt" = 5 ] && echo qt@5 || echo qt)")
        CMAKE_PREFIX_PATH="$prefix${CMAKE_PREFIX_PATH:+:$CMAKE_PREFIX_PATH}"
        PKG_CONFIG_PATH="$prefix/lib/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}"
        export CMAKE_PREFIX_PATH PKG_CONFIG_PATH
    fi
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER="${CMAKE_CXX_COMPILER_LAUNCHER-ccache}"
    fi
}

# read_libraries <build folder>: sets `libraries` to the names of the libraries that are built there.
read_libraries()
{
    # shellcheck disable=SC2034 # Used by the scripts that source this file.
    IFS=';' read -ra libraries <<<"$(sed -n 's/^LWUTILFS_LIBRARIES:INTERNAL=//p' "$1/CMakeCache.txt")"
}

# configure_and_build <preset> [<build folder> [<argument for cmake>...]]
#
# Takes the name of a preset for Qt 5; for Qt 6 it uses the preset with -qt6 at its end. Does not change the current
# folder, so that relative paths keep their meaning.
configure_and_build()
{
    local preset=$1$qt_suffix folder=${2:-$root/build/$1$qt_suffix} output
    shift $(($# < 2 ? $# : 2))

    command -v cmake >/dev/null || fail "cmake was not found: install CMake and run this again"
    mkdir -p "$folder" 2>/dev/null || fail "cannot create $folder; to build elsewhere: cmake --preset $preset -B FOLDER, cmake --build FOLDER"
    prepare_build_environment
    output=$(cd "$root" && cmake --preset "$preset" -B "$folder" "$@" 2>&1) || {
        printf '%s\n' "$output" >&2
        fail "cmake could not configure $folder; its output above says why. If something is missing, install it and run this again"
    }
    cmake --build "$folder" || fail "the build in $folder failed; see the output above"
}
