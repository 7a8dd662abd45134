#!/usr/bin/env bash
# Installs and uses the libraries as other projects do: check.sh <step>
#
# Environment: SOURCE (the project), BINARIES (its build folder), SCRATCH (a folder for the steps), GENERATOR and CXX (to
# build consumers with), LIBRARY_NAMES, VERSION, ABI and QT (as they are expected), STRIP (yes if debugging information
# has to be removed before installed files are searched).

set -euo pipefail

installed=$SCRATCH/installed
moved=$SCRATCH/moved/elsewhere
consumers=$SCRATCH/consumers
case $QT in 5) suffix= ;; *) suffix=-qt$QT ;; esac
package=LWUtilFS$suffix
read -ra libraries <<<"$LIBRARY_NAMES"
libraries=("${libraries[@]/%/$suffix}")

fail()
{
    printf '%s\n' "$*" >&2
    exit 1
}

install_to()
{
    local arguments=(--prefix "$1")
    [ "$STRIP" = no ] || arguments+=(--strip)
    cmake --install "$BINARIES" "${arguments[@]}" >"$SCRATCH/install.log"
}

# build_consumer <way> [<argument for cmake>...]
build_consumer()
{
    local way=$1
    shift
    rm -rf "${consumers:?}/$way"
    cmake -S "$SOURCE/Tests/Consumer" -B "$consumers/$way" -G "$GENERATOR" -DCMAKE_CXX_COMPILER="$CXX" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCONSUMER_WAY="$way" -DCONSUMER_QT="$QT" "$@"
}

# expect_libraries_from <folder> <program>: the program loads all libraries from below the folder, and only one Qt.
expect_libraries_from()
{
    local folder=$1 program=$2 library loaded
    command -v ldd >/dev/null || return 0
    ldd "$program" >"$SCRATCH/loaded"
    for library in "${libraries[@]}"; do
        loaded=$(sed -nE "s/^.*lib$library\.so\.$ABI => (.*) \(0x[0-9a-f]+\)\$/\1/p" "$SCRATCH/loaded")
        [ -n "$loaded" ] || fail "$program does not load lib$library"
        [[ $loaded == "$folder"/* ]] || fail "$program loads $loaded and not what is in $folder"
    done
    [ "$(grep -cE "lib(${LIBRARY_NAMES// /|})" "$SCRATCH/loaded")" -eq ${#libraries[@]} ] ||
        fail "$program loads more than these: ${libraries[*]}"
    [ "$(ldd "$program" | grep -o 'libQt[0-9]*Core' | sort -u)" = "libQt${QT}Core" ] || fail "$program does not load Qt $QT alone"
}

# Installs the libraries, checks the installed files, and moves them for the steps that use them.
check_install()
{
    rm -rf "$SCRATCH"
    mkdir -p "$SCRATCH" "$(dirname "$moved")"
    install_to "$installed"

    DESTDIR=$SCRATCH/staged install_to /nowhere/at/all
    [ ! -e /nowhere ] || fail "DESTDIR was ignored"
    diff <(cd "$installed" && find . | sort) <(cd "$SCRATCH/staged/nowhere/at/all" && find . | sort) ||
        fail "with DESTDIR, other files were installed"

    (cd "$installed/include/$package" && find . -type f | sed 's,^\./,,' | LC_ALL=C sort) >"$SCRATCH/headers"
    diff "$SOURCE/Tests/Consumer/headers.txt" "$SCRATCH/headers" || fail "other headers were installed than headers.txt lists"
    [ -s "$(find "$installed" -name CHANGELOG.md)" ] || fail "the changelog is missing"

    local library file tag
    if command -v readelf >/dev/null; then
        for library in "${libraries[@]}"; do
            file=$(find "$installed" -name "lib$library.so.$VERSION")
            [ -f "$file" ] || fail "lib$library.so.$VERSION is missing"
            [ "$(readlink "${file%"$VERSION"}$ABI")" = "lib$library.so.$VERSION" ] || fail "$file: no link for the loader"
            [ "$(readlink "${file%".$VERSION"}")" = "lib$library.so.$ABI" ] || fail "$file: no link for the linker"
            for tag in "soname: [lib$library.so.$ABI]" "runpath: [\$ORIGIN]"; do
                readelf -d "$file" | grep -qF "$tag" || fail "$file: $tag is missing"
            done
        done
    fi

    if grep -rlF -e "$SOURCE" -e "$BINARIES" -e "$SCRATCH" "$installed"; then
        fail "these installed files contain a path of this build"
    fi

    mv "$installed" "$moved"
}

check_find_package()
{
    build_consumer package -DCMAKE_PREFIX_PATH="$moved"
    cmake --build "$consumers/package"
    "$consumers/package/Consumer"
    expect_libraries_from "$moved" "$consumers/package/Consumer"

    # Another major version has another interface.
    for other in $((${VERSION%%.*} + 1)) 0.9; do
        if build_consumer package -DCMAKE_PREFIX_PATH="$moved" -DCONSUMER_VERSION="$other" >"$SCRATCH/other.log" 2>&1; then
            fail "version $VERSION was accepted for $other"
        fi
        grep -q "considered but not accepted" "$SCRATCH/other.log" || fail "$(cat "$SCRATCH/other.log")"
    done
}

check_pkg_config()
{
    local program=$consumers/pkg-config header flags libdir
    mkdir -p "$consumers"
    PKG_CONFIG_PATH=$(dirname "$(find "$moved" -name "$package.pc")"):${PKG_CONFIG_PATH:-}
    export PKG_CONFIG_PATH
    [ "$(pkg-config --modversion "$package")" = "$VERSION" ] || fail "pkg-config gives another version"
    # Its output is quoted for a shell: a space in a path has a backslash before it.
    eval "flags=($(pkg-config --cflags --libs "$package"))"
    eval "libdir=$(pkg-config --variable=libdir "$package")"

    "$CXX" -std=c++17 "$SOURCE/Tests/Consumer/main.cpp" "${flags[@]}" "-Wl,-rpath,$libdir" -o "$program"
    "$program"
    expect_libraries_from "$moved" "$program"

    while read -r header; do
        printf '#include "%s"\n' "$header"
    done <"$SOURCE/Tests/Consumer/headers.txt" >"$SCRATCH/headers.cpp"
    "$CXX" -std=c++17 -fsyntax-only "$SCRATCH/headers.cpp" "${flags[@]}"
}

# Only the libraries and the consumer itself are built, nothing is installed, and the consumer is compiled without the
# libraries' own flags.
check_bundled()
{
    local build=$consumers/bundled
    build_consumer bundled
    cmake --build "$build"
    "$build/Consumer"
    expect_libraries_from "$build" "$build/Consumer"

    find "$build" -name 'lib*' -type f ! -name '*.o' | sed 's,.*/lib,,; s,\..*,,' | LC_ALL=C sort >"$SCRATCH/built"
    diff <(printf '%s\n' "${libraries[@]}" | LC_ALL=C sort) "$SCRATCH/built" || fail "other libraries were built than these: ${libraries[*]}"
    find "$build" -type f -perm -u+x ! -name 'lib*' ! -path '*/CMakeFiles/*' >"$SCRATCH/programs"
    diff <(echo "$build/Consumer") "$SCRATCH/programs" || fail "other programs were built than the consumer"
    ctest --test-dir "$build" -N 2>&1 | grep -q '^Total Tests: [^0]' && fail "the consumer got the libraries' tests"

    cmake --install "$build" --prefix "$SCRATCH/bundled" >"$SCRATCH/install.log"
    [ ! -e "$SCRATCH/bundled" ] || fail "installing the consumer installed files of the libraries"

    python3 - "$build/compile_commands.json" <<'PYTHON'
import json, sys

for unit in json.load(open(sys.argv[1])):
    if unit["file"].endswith("Consumer/main.cpp"):
        ours = [flag for flag in unit["command"].split() if flag.startswith(("-W", "-DQT_NO_KEYWORDS", "-DQT_NO_CAST", "-fmacro", "-fvis"))]
        sys.exit("the consumer was compiled with flags of the libraries: " + " ".join(ours) if ours else 0)
sys.exit("the consumer was not compiled")
PYTHON
}

# Neither the bundled companions nor their headers are used.
check_companions()
{
    local build=$consumers/companions
    build_consumer companions
    cmake --build "$build"
    "$build/Consumer"

    python3 - "$build/compile_commands.json" "$SOURCE" <<'PYTHON'
import json, os, re, shlex, subprocess, sys

source = os.path.realpath(sys.argv[2])
own = [os.path.join(source, folder) for folder in ("Core", "Util", "Lib/Interfaces", "Pointers.h")]
units = json.load(open(sys.argv[1]))
for unit in units:
    # The compiler lists the files that it read.
    command = re.sub(r" -o \S+", "", unit["command"]) + " -M"
    rule = subprocess.run(command, shell=True, cwd=unit["directory"], check=True, capture_output=True, text=True).stdout
    for path in map(os.path.realpath, shlex.split(rule.replace("\\\n", " "))[1:]):
        if any(path == name or path.startswith(name + "/") for name in own):
            sys.exit(unit["file"] + " was compiled with the bundled " + path)
if not any("DirectoryUtils.cpp" in unit["file"] for unit in units):
    sys.exit("the library was not compiled")
PYTHON

    # If they are missing, the error says what to do.
    expect_refusal "Zendra::Core must be defined already" cmake -S "$SOURCE" -B "$consumers/none" -G "$GENERATOR" \
        -DCMAKE_CXX_COMPILER="$CXX" -DLWUTILFS_BUNDLED_COMPANIONS=OFF -DLWUTILFS_QT="$QT"
}

# expect_refusal <text> <command>...: the command fails, and its output has this text.
expect_refusal()
{
    local text=$1
    shift
    mkdir -p "$SCRATCH"
    if "$@" >"$SCRATCH/refused-$step.log" 2>&1; then
        fail "this was not refused: $*"
    fi
    # CMake breaks lines where it likes.
    tr -s '\n ' ' ' <"$SCRATCH/refused-$step.log" | grep -qF "$text" || fail "$*: no '$text' in $(cat "$SCRATCH/refused-$step.log")"
}

# Installs the libraries for both Qt versions in one prefix: neither overwrites files of the other, and a program gets
# those that it asks for. A project that asks for both gets an error.
check_side_by_side()
{
    local other=$((11 - QT)) both=$SCRATCH/both build=$SCRATCH/other overwritten way second
    pkg-config --exists "Qt${other}Widgets" || {
        echo "Qt $other is not installed"
        exit 77
    }
    rm -rf "$both" "$build"
    cp -R "$moved" "$both"
    (cd "$both" && find . ! -type d -exec ls -l --time-style=full-iso {} + | sort) >"$SCRATCH/before"
    cmake -S "$SOURCE" -B "$build" -G "$GENERATOR" -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_BUILD_TYPE=Release \
        -DLWUTILFS_QT="$other" -DLWUTILFS_BUILD_TESTS=OFF -DLWUTILFS_BUILD_EXAMPLES=OFF
    cmake --build "$build"
    cmake --install "$build" --prefix "$both" >"$build/install.log"
    (cd "$both" && find . ! -type d -exec ls -l --time-style=full-iso {} + | sort) >"$SCRATCH/after"
    overwritten=$(comm -23 "$SCRATCH/before" "$SCRATCH/after")
    [ -z "$overwritten" ] || fail "the libraries for Qt $other overwrote $overwritten"

    build_consumer beside -DCONSUMER_WAY=package -DCMAKE_PREFIX_PATH="$both"
    cmake --build "$consumers/beside"
    "$consumers/beside/Consumer"
    expect_libraries_from "$both" "$consumers/beside/Consumer"

    for way in package bundled; do
        for second in package bundled; do
            expect_refusal "Zendra::LWUtilFS is already defined, for Qt $QT" build_consumer refused \
                -DCONSUMER_WAY="$way" -DCONSUMER_SECOND="$second" -DCMAKE_PREFIX_PATH="$both"
            expect_refusal "Zendra::LWUtilFS is already defined, for Qt $other" build_consumer refused \
                -DCONSUMER_WAY="$way" -DCONSUMER_SECOND="$second" -DCMAKE_PREFIX_PATH="$both" -DCONSUMER_QT="$other"
        done
    done
}

check_settings()
{
    local configure=(cmake -S "$SOURCE" -B "$SCRATCH/settings" -G "$GENERATOR" -DCMAKE_CXX_COMPILER="$CXX")
    rm -rf "$SCRATCH/settings"
    expect_refusal 'LWUTILFS_QT is "4": set it to 5 or to 6' "${configure[@]}" -DLWUTILFS_QT=4
    expect_refusal 'LWUTILFS_QT is "": set it to 5 or to 6' "${configure[@]}" -DLWUTILFS_QT=
    expect_refusal 'packages for Qt 5 only: set LWUTILFS_QT to 5' "${configure[@]}" -DLWUTILFS_QT=6 -DLWUTILFS_DEBIAN_PACKAGES=ON
}

# The newest release in the changelog is the project's version, and no other file repeats it.
check_version()
{
    local newest
    newest=$(sed -n 's/^## \[\([0-9.]*\)\] - [0-9]\{4\}-[0-9][0-9]-[0-9][0-9]$/\1/p' "$SOURCE/CHANGELOG.md" | head -n 1)
    [ "$newest" = "$VERSION" ] || fail "the changelog's newest release is '$newest', the project's version $VERSION"
    if grep -rnwF --include=CMakeLists.txt --include='*.cmake' --include='*.in' -e "$VERSION" \
        "$SOURCE/CMakeLists.txt" "$SOURCE/cmake" "$SOURCE"/{Core,Util,Lib,Examples,Tests} | grep -v ' VERSION '; then
        fail "these lines repeat the version"
    fi
}

step=$1
"check_$step"
