#!/usr/bin/env bash
# What a user of the libraries does with them: check.sh <step>
#
# The environment says where: SOURCE, BINARIES (where the libraries are built), SCRATCH (a folder of the steps' own),
# GENERATOR and CXX (what to build consumers with), VERSION, ABI and QT (what the libraries should be),
# STRIP (yes if what is compiled for debuggers has to go before installed files are searched).

set -euo pipefail

installed=$SCRATCH/installed
moved=$SCRATCH/moved/elsewhere
consumers=$SCRATCH/consumers
case $QT in 5) suffix= ;; *) suffix=-qt$QT ;; esac
package=LWUtilFS$suffix
libraries=(LWUtilFS ZendraCore ZendraUtil LWRegistry)
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

# Where the loader finds the four libraries of a program must be below a folder, and they bring one Qt.
expect_libraries_from()
{
    local folder=$1 program=$2 loaded
    command -v ldd >/dev/null || return 0
    ldd "$program" | sed -nE 's/^.*lib(LWUtilFS|Zendra|LWRegistry).* => (.*) \(0x[0-9a-f]+\)$/\2/p' >"$SCRATCH/loaded"
    [ "$(wc -l <"$SCRATCH/loaded")" -eq ${#libraries[@]} ] || fail "$program does not load the four libraries"
    while read -r loaded; do
        [[ $loaded == "$folder"/* ]] || fail "$program loads $loaded and not what is in $folder"
    done <"$SCRATCH/loaded"
    [ "$(ldd "$program" | grep -o 'libQt[0-9]*Core' | sort -u)" = "libQt${QT}Core" ] || fail "$program does not load Qt $QT alone"
}

# Installs, looks at what was installed, and moves it for the steps that use it.
check_install()
{
    rm -rf "$SCRATCH"
    mkdir -p "$SCRATCH" "$(dirname "$moved")"
    install_to "$installed"

    DESTDIR=$SCRATCH/staged install_to /nowhere/at/all
    [ ! -e /nowhere ] || fail "DESTDIR was not honoured"
    diff <(cd "$installed" && find . | sort) <(cd "$SCRATCH/staged/nowhere/at/all" && find . | sort) ||
        fail "with DESTDIR other files were installed"

    (cd "$installed/include/$package" && find . -type f | sed 's,^\./,,' | LC_ALL=C sort) >"$SCRATCH/headers"
    diff "$SOURCE/Tests/Consumer/headers.txt" "$SCRATCH/headers" || fail "these are not the headers to install"
    [ -s "$(find "$installed" -name CHANGELOG.md)" ] || fail "the changelog is missing"

    local library file tag
    if command -v readelf >/dev/null; then
        for library in "${libraries[@]}"; do
            file=$(find "$installed" -name "lib$library.so.$VERSION")
            [ -f "$file" ] || fail "lib$library.so.$VERSION is missing"
            [ "$(readlink "${file%"$VERSION"}$ABI")" = "lib$library.so.$VERSION" ] || fail "$file: no link for ABI $ABI"
            [ "$(readlink "${file%".$VERSION"}")" = "lib$library.so.$ABI" ] || fail "$file: no link for the linker"
            for tag in "soname: [lib$library.so.$ABI]" "runpath: [\$ORIGIN]"; do
                readelf -d "$file" | grep -qF "$tag" || fail "$file: $tag is missing"
            done
        done
    fi

    if grep -rlF -e "$SOURCE" -e "$BINARIES" -e "$SCRATCH" "$installed"; then
        fail "these installed files name a folder of this build"
    fi

    mv "$installed" "$moved"
}

check_find_package()
{
    build_consumer package -DCMAKE_PREFIX_PATH="$moved"
    cmake --build "$consumers/package"
    "$consumers/package/Consumer"
    expect_libraries_from "$moved" "$consumers/package/Consumer"

    # Another major version is another interface.
    for other in $((${VERSION%%.*} + 1)) 0.9; do
        if build_consumer package -DCMAKE_PREFIX_PATH="$moved" -DCONSUMER_VERSION="$other" >"$SCRATCH/other.log" 2>&1; then
            fail "version $VERSION was taken for $other"
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
    [ "$(pkg-config --modversion "$package")" = "$VERSION" ] || fail "pkg-config knows another version"
    # What it says is meant for a shell: a blank in a path comes with a backslash.
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

# Nothing but four libraries and the consumer itself is built, nothing is installed, and the consumer's compiler gets
# none of our flags.
check_bundled()
{
    local build=$consumers/bundled
    build_consumer bundled
    cmake --build "$build"
    "$build/Consumer"
    expect_libraries_from "$build" "$build/Consumer"

    find "$build" -name 'lib*' -type f ! -name '*.o' | sed 's,.*/lib,,; s,\..*,,' | LC_ALL=C sort >"$SCRATCH/built"
    diff <(printf '%s\n' "${libraries[@]}" | LC_ALL=C sort) "$SCRATCH/built" || fail "these are not the four libraries"
    find "$build" -type f -perm -u+x ! -name 'lib*' ! -path '*/CMakeFiles/*' >"$SCRATCH/programs"
    diff <(echo "$build/Consumer") "$SCRATCH/programs" || fail "more than the consumer was built"
    ctest --test-dir "$build" -N 2>&1 | grep -q '^Total Tests: [^0]' && fail "the consumer got tests of ours"

    cmake --install "$build" --prefix "$SCRATCH/bundled" >"$SCRATCH/install.log"
    [ ! -e "$SCRATCH/bundled" ] || fail "with the consumer, files of ours are installed"

    python3 - "$build/compile_commands.json" <<'PYTHON'
import json, sys

for unit in json.load(open(sys.argv[1])):
    if unit["file"].endswith("Consumer/main.cpp"):
        ours = [flag for flag in unit["command"].split() if flag.startswith(("-W", "-DQT_NO_KEYWORDS", "-DQT_NO_CAST", "-fmacro", "-fvis"))]
        sys.exit("flags of the libraries reach the consumer: " + " ".join(ours) if ours else 0)
sys.exit("the consumer was not compiled")
PYTHON
}

# Neither the companions of this project nor their headers have a part in it.
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
    # The compiler's own list of the files that it read.
    command = re.sub(r" -o \S+", "", unit["command"]) + " -M"
    rule = subprocess.run(command, shell=True, cwd=unit["directory"], check=True, capture_output=True, text=True).stdout
    for path in map(os.path.realpath, shlex.split(rule.replace("\\\n", " "))[1:]):
        if any(path == name or path.startswith(name + "/") for name in own):
            sys.exit(unit["file"] + " was compiled with the bundled " + path)
if not any("DirectoryUtils.cpp" in unit["file"] for unit in units):
    sys.exit("the library was not compiled")
PYTHON

    # Without them there is a word on what to do.
    if cmake -S "$SOURCE" -B "$consumers/none" -G "$GENERATOR" -DCMAKE_CXX_COMPILER="$CXX" \
        -DLWUTILFS_BUNDLED_COMPANIONS=OFF -DLWUTILFS_QT="$QT" >"$SCRATCH/none.log" 2>&1; then
        fail "missing companions were not missed"
    fi
    grep -q "Zendra::Core has to be there" "$SCRATCH/none.log" || fail "$(cat "$SCRATCH/none.log")"
}

# expect_refusal <text> <command>...: it fails, and says why.
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

# The libraries for this Qt and for the other one in one prefix: neither touches the other's files, and a program takes
# the one that it asks for. A project that takes both is told so.
check_side_by_side()
{
    local other=$((11 - QT)) both=$SCRATCH/both build=$SCRATCH/other there way second
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
    there=$(comm -23 "$SCRATCH/before" "$SCRATCH/after")
    [ -z "$there" ] || fail "the libraries for Qt $other took the place of $there"

    build_consumer beside -DCONSUMER_WAY=package -DCMAKE_PREFIX_PATH="$both"
    cmake --build "$consumers/beside"
    "$consumers/beside/Consumer"
    expect_libraries_from "$both" "$consumers/beside/Consumer"

    for way in package bundled; do
        for second in package bundled; do
            expect_refusal "Zendra::LWUtilFS is there already, built for Qt $QT" build_consumer refused \
                -DCONSUMER_WAY="$way" -DCONSUMER_SECOND="$second" -DCMAKE_PREFIX_PATH="$both"
            expect_refusal "Zendra::LWUtilFS is there already, built for Qt $other" build_consumer refused \
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

# The newest release in the changelog is the version of the project, and nobody else writes that number down.
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
