#!/bin/sh
# prefix.sh WHAT SOURCE BUILD WORK - is an installed library what docs/install.md says
#
# WHAT is the name of a function below. SOURCE is this project, BUILD its build folder, WORK where
# all takes place: WORK/kelvofxds is the prefix, which `install` makes and `uninstall` removes.
set -eu
export LC_ALL=C

what=$1
source=$2
build=$3
work=$4
prefix=$work/kelvofxds
mkdir -p "$work"
export HOME="$work"
. "$source/tests/install/told.sh"

install() {
    rm -rf "$prefix"
    "$source/cmake/install.sh" "$build" "$prefix"
}

# --- programs -----------------------------------------------------------------------------------

cmake_package() { fresh cmake && told "With CMake"; }
pkg_config() { fresh pkg-config && told "With pkg-config"; }
compiler() { fresh compiler && told "With the compiler alone"; }

subdirectory() {
    fresh subdirectory
    ln -s "$source" libkelvofxds
    told "As a part of another project"
}

# It is the same project, so that it is only configured.
fetch_content() {
    fresh fetch
    ln -s "$source" libkelvofxds
    block "With FetchContent" cmake >CMakeLists.txt
    block "With FetchContent" sh | grep '^cmake -S' >commands
    sh -eu ./commands
    cmake --build build --target help | grep -w kelvofxds
}

examples() { fresh examples && told "The examples"; }

# --- refusals -----------------------------------------------------------------------------------

# The installed package and the source tree say the same, the latter also as a part of another.
refusals() {
    fresh refusals
    block "With CMake" cmake >CMakeLists.txt
    refused cmake -S . -B build "-DCMAKE_PREFIX_PATH=$prefix"
    refused cmake -S "$source" -B build-source
    ln -s "$source" libkelvofxds
    block "As a part of another project" cmake >CMakeLists.txt
    refused cmake -S . -B build-part
}

# --- what is there ------------------------------------------------------------------------------

headers() {
    cd "$prefix/include"
    if find . -name '*Internal*' | grep .; then
        fail "the internal headers above are installed"
    fi
    find . -type f ! -name '*.h' | grep . && fail "the files above are no headers"
    (cd "$source" && find ./kelvofxds -name '*.h' ! -name '*Internal.h') | sort >"$work/public"
    find . -type f | sort >"$work/installed"
    diff "$work/public" "$work/installed" || fail "not all public headers are installed, or others"
}

documents() {
    cd "$prefix/share/doc/libkelvofxds"
    [ -s LICENSE ] || fail "no place for a licence"
    [ -s "$prefix/share/man/man1/fxdump.1" ] || fail "no manual of fxdump"
    # What the documents link to, in each file's own folder.
    for file in *.md docs/*.md docs/*/*.md; do
        awk '/^```/ { inCode = !inCode } !inCode' "$file" | sed 's,`[^`]*`,,g' | grep -o '](\([^):#]*\)[)#]' |
            sed -e 's/^](//' -e 's/.$//' -e '/^$/d' | while read -r link; do
            [ -e "$(dirname "$file")/$link" ] || echo "$file: $link"
        done
    done | grep . && fail "the links above lead nowhere"
    true
}

# One version, whoever is asked.
version() {
    fresh version
    told=$(PKG_CONFIG_PATH=$prefix/lib/pkgconfig pkg-config --modversion kelvofxds)
    cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.21)
project(version LANGUAGES CXX)
find_package(kelvofxds REQUIRED)
message(STATUS "version ${kelvofxds_VERSION}.")
END
    cmake -S . -B build -DCMAKE_CXX_FLAGS=-m32 "-DCMAKE_PREFIX_PATH=$prefix" >said
    grep -qxF -e "-- version $told." said || fail "not $told to CMake:" "$(cat said)"
    printf '#include <kelvofxds/version.h>\nKELVOFXDS_VERSION\n' >version.cpp
    [ "$(g++ -E -P "-I$prefix/include" version.cpp | tail -n 1)" = "\"$told\"" ] ||
        fail "not $told in version.h"
    [ -f "$prefix/lib/libkelvofxds.so.1.$told" ] || fail "the library's file is not named for $told"
    head -n 1 "$source/debian/changelog" | grep -qF "($told)" || fail "not $told in debian/changelog"
    [ "$("$prefix/bin/fxdump" --version)" = "fxdump $told" ] || fail "not $told to fxdump"
}

# --- removing -----------------------------------------------------------------------------------

# What was there before stays, whatever was installed twice goes.
uninstall_beside_others() {
    fresh shared
    mkdir -p usr/lib/pkgconfig usr/share/doc
    echo mine >usr/lib/pkgconfig/mine.pc
    find usr | sort >before
    "$source/cmake/install.sh" "$build" "$PWD/usr"
    "$source/cmake/install.sh" "$build" "$PWD/usr"
    "$source/cmake/uninstall.sh" "$PWD/usr"
    find usr | sort | diff before - || fail "another tree is left"
    ! "$source/cmake/uninstall.sh" "$PWD/usr" || fail "removed what is not there"
}

uninstall() {
    "$source/cmake/uninstall.sh" "$prefix"
    [ ! -e "$prefix" ] || fail "left behind:" "$(find "$prefix")"
}

"$what"
