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

# LW_QT says which Qt to build for; with Qt 6 presets and build folders have names of their own.
qt=${LW_QT:-5}
# Whoever names one of these presets means its Qt.
[[ ${LW_PRESET:-} != *-qt6 ]] || qt=6
case $qt in
5) qt_suffix='' ;;
6) qt_suffix=-qt6 ;;
*) fail "LW_QT is '$qt': set it to 5 or to 6" ;;
esac
export LW_QT=$qt

# For what is done with Qt 5 alone.
require_qt5()
{
    [ "$qt" = 5 ] || fail "$1 for Qt 5 only: run this without LW_QT=$qt"
}

# Settings that CMake reads from the environment when a build folder is made.
prepare_build_environment()
{
    if [ "$(uname -s)" = Darwin ] && command -v brew >/dev/null; then
        # Homebrew keeps Qt 5 beside its prefix and not in it.
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

# configure_and_build <preset> [<build folder> [<argument for cmake>...]]
#
# The preset's name is that for Qt 5; for Qt 6 its twin is taken.
# Leaves the current folder as it is: relative paths are meant from where the user stands.
configure_and_build()
{
    local preset=$1$qt_suffix folder=${2:-$root/build/$1$qt_suffix} words
    shift $(($# < 2 ? $# : 2))

    mkdir -p "$folder" 2>/dev/null || fail "cannot make $folder; to build elsewhere: cmake --preset $preset -B FOLDER, cmake --build FOLDER"
    prepare_build_environment
    words=$(cd "$root" && cmake --preset "$preset" -B "$folder" "$@" 2>&1) || {
        printf '%s\n' "$words" >&2
        fail "cmake could not configure $folder; its own words are above"
    }
    cmake --build "$folder" || fail "the build in $folder failed; the compiler's own words are above"
}
