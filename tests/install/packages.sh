#!/bin/sh
# packages.sh FOLDER [ROOT] - do the Debian packages in FOLDER work
#
# Those of i386 and of armhf are unpacked, each into a folder, and a program is built and run with
# each. Into ROOT, the root of a fresh i386 system with g++, those of i386 are installed.
set -eu
export LC_ALL=C

source=$(cd "$(dirname "$0")/../.." && pwd)
packages=$(cd "$1" && pwd)
root=${2:+$(cd "$2" && pwd)}
work=$packages/try
. "$source/tests/install/told.sh"

# unpack ARCHITECTURE: what is not for debuggers.
unpack() {
    mkdir -p "$work/$1"
    for package in libkelvofxds1 libkelvofxds-dev kelvofxds-tools; do
        dpkg-deb -x "$packages/${package}"_*_"$1.deb" "$work/$1"
    done
    for package in libkelvofxds1-dbgsym kelvofxds-tools-dbgsym; do
        dpkg-deb -c "$packages/${package}"_*_"$1.deb" | grep '\.debug$' >/dev/null ||
            fail "$package has no debug symbols"
    done
    [ -s "$work/$1/usr/share/doc/libkelvofxds1/copyright" ] || fail "no notice about the licence"
}

# runs COMMAND...: does it print the answer.
runs() {
    [ "$("$@")" = "$answer" ] || fail "does not run: $*"
}

of_i386() {
    fresh try-i386
    unpack i386
    usr=$work/i386/usr
    lib=$usr/lib/i386-linux-gnu
    export LD_LIBRARY_PATH="$lib"

    # shellcheck disable=SC2046 # one word per option
    g++ -std=c++17 host.cpp $(PKG_CONFIG_PATH=$lib/pkgconfig pkg-config --cflags --libs kelvofxds) \
        -o host
    runs ./host
    block "With CMake" cmake >CMakeLists.txt
    refused cmake -S . -B build-64 "-DCMAKE_PREFIX_PATH=$usr"
    cmake -S . -B build -DCMAKE_CXX_FLAGS=-m32 "-DCMAKE_PREFIX_PATH=$usr"
    cmake --build build
    runs build/host
    "$usr/bin/fxdump" --verify capitals
    unset LD_LIBRARY_PATH
}

of_armhf() {
    fresh try-armhf
    unpack armhf
    usr=$work/armhf/usr
    lib=$usr/lib/arm-linux-gnueabihf
    machine="qemu-arm -L /usr/arm-linux-gnueabihf -E LD_LIBRARY_PATH=$lib"

    PKG_CONFIG_PATH=$lib/pkgconfig pkg-config --cflags kelvofxds | grep -e -m32 &&
        fail "an ARM compiler has no -m32"
    block "With CMake" cmake >CMakeLists.txt
    cmake -S . -B build "-DCMAKE_TOOLCHAIN_FILE=$source/cmake/armhf.cmake" \
        "-Dkelvofxds_DIR=$lib/cmake/kelvofxds"
    cmake --build build
    # shellcheck disable=SC2086 # one word per option
    runs $machine build/host
    # shellcheck disable=SC2086 # one word per option
    $machine "$usr/bin/fxdump" --verify capitals
}

# The same program has saved the same on both machines.
exchanged() {
    cmp "$work/try-i386/capitals" "$work/try-armhf/capitals"
}

# As docs/install.md says, on a system that has nothing else.
in_fresh_root() {
    mkdir -p "$root/try"
    cp "$packages"/*_i386.deb "$source/examples/hello/hello.cpp" "$root/try"
    mv "$root/try/hello.cpp" "$root/try/host.cpp"
    block "From Debian packages" sh >"$root/try/commands"
    chroot "$root" sh -euc 'cd /try
        export DEBIAN_FRONTEND=noninteractive
        apt-get -q -y install --no-install-recommends ./libkelvofxds1_*.deb \
            ./libkelvofxds-dev_*.deb ./kelvofxds-tools_*.deb
        sh -eu ./commands >said
        fxdump --verify capitals
        dpkg --purge libkelvofxds-dev libkelvofxds1 kelvofxds-tools
        ! find /usr -name "*kelvofxds*" | grep .'
    [ "$(cat "$root/try/said")" = "$answer" ] || fail "does not run in a fresh root"
}

rm -rf "$work"
of_i386
of_armhf
exchanged
if [ -n "$root" ]; then
    in_fresh_root
fi
rm -rf "$work"
